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

// Without the trailing commas, which the file does not keep either.
std::string NoTrailingCommas(std::string s) {
    while (EndsWith(s, ","))
        s.pop_back();
    return s;
}

// The groups, their programs and the stopped entries, one line each, every field in brackets.
std::string Listing(const ProgramModel& m) {
    std::string s;
    for (const ProgramGroup& g : m.ProgramGroups) {
        s += "group [" + g.Name + "]\n";
        for (const GroupProgram& p : g.Programs)
            s += p.Command + " [" + p.Path + "] [" + p.Parameters + "] " + std::to_string(p.Delay) +
                 " [" + p.RegistryKeyName + "]\n";
    }
    for (const std::string& entry : m.StoppedPrograms)
        s += "stopped [" + entry + "]\n";
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
    const std::string written = FormatProgramGroupFile(model, languages);
    ProgramModel back;
    const ProgramGroupReadResult r = ReadProgramGroupFile(written, back, context);
    // A group without programs reads back with its one free slot, a stopped entry without the
    // blanks around it and its trailing commas.
    if (programs.empty())
        programs.emplace_back();
    for (std::string& entry : model.StoppedPrograms)
        entry = Trim(NoTrailingCommas(Trim(entry)));
    if (!r.Ok || Listing(back) != Listing(model)) {
        std::fprintf(stderr, "%s at line %zu\nwritten:\n%sread back:\n%sthe file:\n%s\n",
                     r.Error.c_str(), r.LineNumber, Listing(model).c_str(), Listing(back).c_str(),
                     written.c_str());
        std::abort();
    }
    return 0;
}
