// Models whose fields hold whatever Run values and shortcut names may hold (quotes, braces,
// "//", commas, brackets, semicolons): every delayed program and stopped item must come back
// from the file exactly, apart from the blanks around a field, which the file does not keep.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "config/program_group_file.h"
#include "text/strings.h"

using namespace tolvane;

namespace {

std::string written; // the file of the current input, shown when it fails

void Expect(bool ok, const char* what, const std::string& before, const std::string& after) {
    if (ok)
        return;
    std::fprintf(stderr, "%s: [%s] became [%s]\nin the file:\n%s\n", what, before.c_str(),
                 after.c_str(), written.substr(written.find("\nvoid ")).c_str());
    std::abort();
}

// Without the trailing commas, which the file does not keep either.
std::string NoTrailingCommas(std::string s) {
    while (EndsWith(s, ","))
        s.pop_back();
    return s;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const std::vector<LanguageEntry> languages = {{"English", "en"}};
    static const char* const commands[] = {"Execute", "ExecuteReg", "ExecuteAU", "ExecuteRegAU"};
    size_t at = 0;
    auto next = [&]() -> uint8_t { return at < size ? data[at++] : 0; };
    // A field of printable text and the characters that matter to the file's syntax; no tab,
    // CR, LF or NUL (a line holds no line end, and tabs are not kept).
    auto field = [&](bool quotes) {
        static const char alphabet[] = "ab C:\\.exe/-=,;(){}[]\"' 0123456789%&_$";
        std::string s;
        for (size_t n = next() % 24; n > 0; --n) {
            const char c = alphabet[next() % (sizeof alphabet - 1)];
            s.push_back(c == '"' && !quotes ? '\'' : c);
        }
        return Trim(s);
    };
    ProgramModel model;
    SetDefaultModel(model);
    auto& programs = model.ProgramGroups[0].Programs;
    programs.clear();
    model.StoppedPrograms.clear();
    while (at < size && programs.size() < 12) {
        GroupProgram p;
        p.Command = commands[next() % 4];
        // A path has quotes only around it, as a quoted command's path does.
        std::string path = field(false);
        if (path.empty())
            path = "x";
        p.Path = (next() % 2) ? "\"" + path + "\"" : path;
        p.Parameters = field(true);
        p.Delay = static_cast<float>(next() % 100) / 4;
        // Value names may hold quotes, but not a quote, a comma, a number, a comma and a
        // quote in a row: that is how the file marks the delay, and it has no escapes.
        p.RegistryKeyName = field(false);
        programs.push_back(p);
        const std::string stopped = NoTrailingCommas(field(false));
        if (!Trim(stopped).empty())
            model.StoppedPrograms.push_back("_REGCU_" + stopped);
    }
    if (model.StoppedPrograms.empty())
        model.StoppedPrograms.emplace_back();
    model.SortArray();

    ProgramGroupReadContext context;
    context.Languages = &languages;
    ProgramModel back;
    written = FormatProgramGroupFile(model, languages);
    const ProgramGroupReadResult r = ReadProgramGroupFile(written, back, context);
    Expect(r.Ok, "unreadable", r.Error, std::to_string(r.LineNumber));
    // A group without programs reads back with its one free slot.
    if (programs.empty())
        programs.emplace_back();
    const size_t count = back.ProgramGroups.empty() ? 0 : back.ProgramGroups[0].Programs.size();
    Expect(back.ProgramGroups.size() == 1 && count == programs.size(), "programs lost",
           std::to_string(programs.size()), std::to_string(count));
    for (size_t i = 0; i < programs.size(); ++i) {
        const GroupProgram &a = programs[i], &b = back.ProgramGroups[0].Programs[i];
        Expect(b.Command == a.Command, "command", a.Command, b.Command);
        Expect(b.Path == Trim(a.Path), "path", a.Path, b.Path);
        Expect(b.Parameters == a.Parameters, "parameters", a.Parameters, b.Parameters);
        Expect(b.Delay == a.Delay, "delay", std::to_string(a.Delay), std::to_string(b.Delay));
        Expect(b.RegistryKeyName == a.RegistryKeyName, "value name", a.RegistryKeyName,
               b.RegistryKeyName);
    }
    Expect(back.StoppedPrograms.size() == model.StoppedPrograms.size(), "stopped entries",
           std::to_string(model.StoppedPrograms.size()),
           std::to_string(back.StoppedPrograms.size()));
    // A stopped entry is kept without quotes, blanks around it and trailing commas.
    for (size_t i = 0; i < model.StoppedPrograms.size(); ++i) {
        const std::string& a = model.StoppedPrograms[i];
        Expect(back.StoppedPrograms[i] == Trim(NoTrailingCommas(Trim(RemoveAll(a, '"')))),
               "stopped", a, back.StoppedPrograms[i]);
    }
    return 0;
}
