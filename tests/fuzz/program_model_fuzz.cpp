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

class Bytes {
public:
    Bytes(const uint8_t* data, size_t size) : data_(data), size_(size) {}
    bool Empty() const { return at_ >= size_; }
    uint8_t Next() { return at_ < size_ ? data_[at_++] : 0; }
    // A field of printable text and the characters that matter to the file's syntax; no tab,
    // CR, LF or NUL (a line holds no line end, and tabs are not kept).
    std::string Field(bool quotes) {
        static const char alphabet[] = "ab C:\\.exe/-=,;(){}[]\"' 0123456789%&_$";
        std::string s;
        size_t n = Next() % 24;
        for (size_t i = 0; i < n; ++i) {
            char c = alphabet[Next() % (sizeof alphabet - 1)];
            if (c == '"' && !quotes)
                c = '\'';
            s.push_back(c);
        }
        return s;
    }

private:
    const uint8_t* data_;
    size_t size_;
    size_t at_ = 0;
};

std::string written; // the file of the current input, shown when it fails

[[noreturn]] void Fail(const char* what, const std::string& a, const std::string& b) {
    std::fprintf(stderr, "%s: [%s] became [%s]\nin the file:\n%s\n", what, a.c_str(), b.c_str(),
                 written.substr(written.find("\nvoid ")).c_str());
    std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const std::vector<LanguageEntry> languages = {{"English", "en"}};
    static const char* const commands[] = {"Execute", "ExecuteReg", "ExecuteAU", "ExecuteRegAU"};
    Bytes in(data, size);
    ProgramModel model;
    SetDefaultModel(model);
    auto& programs = model.ProgramGroups[0].Programs;
    programs.clear();
    model.StoppedPrograms.clear();
    while (!in.Empty() && programs.size() < 12) {
        GroupProgram p;
        p.Command = commands[in.Next() % 4];
        // A path has quotes only around it, as a quoted command's path does.
        std::string path = Trim(in.Field(false));
        if (path.empty())
            path = "x";
        p.Path = (in.Next() % 2) ? "\"" + path + "\"" : path;
        p.Parameters = Trim(in.Field(true));
        p.Delay = static_cast<float>(in.Next() % 100) / 4;
        // Value names may hold quotes, but not a quote, a comma, a number, a comma and a
        // quote in a row: that is how the file marks the delay, and it has no escapes.
        p.RegistryKeyName = Trim(in.Field(false));
        programs.push_back(p);
        std::string stopped = Trim(in.Field(false));
        while (EndsWith(stopped, ","))
            stopped.pop_back();
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
    ProgramGroupReadResult r = ReadProgramGroupFile(written, back, context);
    if (!r.Ok)
        Fail("unreadable", r.Error, std::to_string(r.LineNumber));
    // A group without programs reads back with its one free slot.
    if (programs.empty())
        programs.emplace_back();
    if (back.ProgramGroups.size() != 1 || back.ProgramGroups[0].Programs.size() != programs.size())
        Fail(
            "programs lost", std::to_string(programs.size()),
            std::to_string(back.ProgramGroups.empty() ? 0 : back.ProgramGroups[0].Programs.size()));
    for (size_t i = 0; i < programs.size(); ++i) {
        const GroupProgram& a = programs[i];
        const GroupProgram& b = back.ProgramGroups[0].Programs[i];
        if (b.Command != a.Command)
            Fail("command", a.Command, b.Command);
        if (b.Path != Trim(a.Path))
            Fail("path", a.Path, b.Path);
        if (b.Parameters != a.Parameters)
            Fail("parameters", a.Parameters, b.Parameters);
        if (b.Delay != a.Delay)
            Fail("delay", std::to_string(a.Delay), std::to_string(b.Delay));
        if (b.RegistryKeyName != a.RegistryKeyName)
            Fail("value name", a.RegistryKeyName, b.RegistryKeyName);
    }
    if (back.StoppedPrograms.size() != model.StoppedPrograms.size())
        Fail("stopped entries", std::to_string(model.StoppedPrograms.size()),
             std::to_string(back.StoppedPrograms.size()));
    // A stopped entry is kept without quotes, blanks around it and trailing commas.
    for (size_t i = 0; i < model.StoppedPrograms.size(); ++i) {
        std::string expected = Trim(RemoveAll(model.StoppedPrograms[i], '"'));
        while (EndsWith(expected, ","))
            expected.pop_back();
        if (back.StoppedPrograms[i] != Trim(expected))
            Fail("stopped", model.StoppedPrograms[i], back.StoppedPrograms[i]);
    }
    return 0;
}
