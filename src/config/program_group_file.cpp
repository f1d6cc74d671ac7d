#include "config/program_group_file.h"

#include <optional>

#include "text/code_page.h"
#include "text/language.h"
#include "text/strings.h"

namespace tolvane {

namespace {

// The comment header that every written file starts with; it explains the syntax to whoever
// opens the file.
const char* const kHeader[] = {
    "// ProgGroup.c",
    "//",
    "// Follows a general C format structure, however it can't be compiled",
    "// -- it's a bit more relaxed than normal C code!",
    "//",
    "// NOTE: You can use /* */ however they must appear on their own line",
    "// and on 2 separate lines (see below)",
    "//",
    "// EX:",
    "/*",
    "     void ProgramGroupName()",
    "     {",
    "          Execute( \"C:\\Program Files\\Office Apps\\WordProcessor.exe\", \"-Parameters\", 5, "
    "\"Registry Key Name\");",
    "     }",
    "*/",
    "// If you want a space in the program group name, use a _, the program will automatically",
    "// convert it for you",
    "//",
    "// Available commands (NOTE: itmes marked with * are not implemented, but may work in future "
    "releases):",
    "//",
    "// Execute - Runs the program",
    "//      Execute( \"Path & FileName.ext\", \"Parameters\", delay, \"Registry Key Name\");",
    "// Close* - Closes the program (if possible)",
    "//      Close (\"Program Taskbar Entry\", \"Taskbar Caption\" );",
    "// DelayReg* - Adds program to delayed list, if doesn't already; exist",
    "//      DelayReg ( \"REGISTRY location(HKLM / HKCU)\", \"REGISTRY Entry Name\");",
    "// DelayStartup*",
    "//      DelayStartup ( \"Startup Folder location (All Users [AU]/Current User [CU])\", \"Link "
    "name\" );",
    "//",
    "//",
    "//",
    "//",
    "// WARNING: SOME COMMANDS SUCH AS \"Format\", \"FDISK\", ARE NOT ALLOWED BY THE PROGRAM",
    "//      THIS IS FOR SECURITY TYPE OF REASONS. ADDITIONAL ITEMS CAN BE ADDED BELOW",
    "",
    "",
    "// Please enter any disallowed programs to this list",
    "// Note, that while these are listed. they also are blocked",
    "// by the program itself even if removed",
    "// While the numbers in []'s aren't intrepreted literally... you may wish to modify",
    "// them appropriately. (you can NOT change the name of the \"DisallowedPrograms\"",
    "// doing so will cause it not to work",
    "// You MUST keep this in this format, one item per line",
};

constexpr std::string_view kCrLf = "\r\n";

// Collects the lines in a chunk that goes to the sink whenever it is full: a big file never
// needs a buffer of its own size.
class Writer {
public:
    explicit Writer(const ProgramGroupSink& sink) : sink_(sink) { chunk_.reserve(kChunk + 4096); }
    ~Writer() = default;
    template <class... Parts> void Line(const Parts&... parts) {
        (chunk_.append(parts), ...);
        chunk_ += kCrLf;
        if (chunk_.size() >= kChunk)
            Flush();
    }
    void Flush() {
        if (!chunk_.empty())
            sink_(chunk_);
        chunk_.clear();
    }

private:
    static constexpr size_t kChunk = 64 * 1024;
    const ProgramGroupSink& sink_;
    std::string chunk_;
};

} // namespace

std::vector<std::string> BuiltInDisallowedWords() {
    std::vector<std::string> words;
    for (std::string& piece : Split(kBuiltInDisallowed, ' '))
        if (!Trim(piece).empty())
            words.push_back(std::move(piece));
    return words;
}

void SetDefaultModel(ProgramModel& model) {
    model.ProgramGroups.assign(1, ProgramGroup{std::string(kStartupGroup), {GroupProgram{}}});
    model.MainStartupDelay = 30;
    model.StartupType = 1;
    model.CloseType = 1;
    model.ShowTipsAtStartup = 1;
    model.Language = "en";
    model.DisallowedPrograms = BuiltInDisallowedWords();
    model.StoppedPrograms.assign(1, std::string());
}

std::string FormatProgramGroupFile(const ProgramModel& model,
                                   const std::vector<LanguageEntry>& languages) {
    std::string out;
    WriteProgramGroupFile(model, languages, [&](std::string_view chunk) { out += chunk; });
    return out;
}

void WriteProgramGroupFile(const ProgramModel& model, const std::vector<LanguageEntry>& languages,
                           const ProgramGroupSink& sink) {
    Writer w(sink);
    for (const char* line : kHeader)
        w.Line(std::string_view(line));

    const auto& disallowed = model.DisallowedPrograms;
    w.Line("char DisallowedPrograms[256][", std::to_string(disallowed.size()), "]=");
    w.Line("{");
    for (size_t i = 0; i < disallowed.size(); ++i) {
        const bool last = i + 1 == disallowed.size();
        w.Line("     \"", Trim(disallowed[i]), last ? "\"" : "\", ");
    }
    w.Line("};");
    w.Line("");

    const auto& stopped = model.StoppedPrograms;
    w.Line("// DO NOT EDIT THIS ");
    w.Line("// It's only used to show items that the program removed");
    w.Line("// from the startup");
    const bool firstUsed = !stopped.empty() && !stopped[0].empty();
    w.Line("char StoppedPrograms[256][", std::to_string(firstUsed ? stopped.size() : 0), "]=");
    w.Line("{");
    for (size_t i = 0; i < stopped.size(); ++i) {
        if (stopped[i].empty())
            continue; // a free slot; the line before may end in ", "
        const bool last = i + 1 == stopped.size();
        w.Line("     \"", Trim(stopped[i]), last ? "\"" : "\", ");
    }
    w.Line("}");

    w.Line("// This delay is the number of seconds that pass, before");
    w.Line("// ANY program is run. The delays for the programs are added to");
    w.Line("// this number. (i.e. a 30 sec delay here, a 5 sec delay for a program =");
    w.Line("// 35 sec from this program's start before it runs the program");
    w.Line("const MainStartupDelay = ", FormatSingle(model.MainStartupDelay), ";");
    w.Line("");

    w.Line("// Program startup...");
    w.Line("// 0 = Don't Run at Startup");
    w.Line("// 1 = Don't Run at Startup, unless are delayed items");
    w.Line("// 2 = Always Run at Startup, for me only");
    w.Line("// 3 = Always Run at Startup, for all users");
    w.Line("// The program must run once before this takes effect");
    w.Line("const StartupType = ", std::to_string(model.StartupType), ";");
    w.Line("");

    w.Line("// Program Closing (X - button)");
    w.Line("// 0 = Close the program when click X");
    w.Line("// 1 = Minimize to the tray when click X");
    w.Line("const CloseType = ", std::to_string(model.CloseType), ";");
    w.Line("");

    w.Line("// Default Language");
    for (const LanguageEntry& language : languages) {
        if (language.Code == model.Language) {
            w.Line("const Language = ", language.Name, ";");
            break;
        }
    }
    w.Line("");

    w.Line("// Show Tips At Startup");
    w.Line("const ShowTipsAtStartup = ", std::to_string(model.ShowTipsAtStartup), ";");
    w.Line("");

    // Written only when on: a file with the default stays as older versions wrote it, and
    // their readers pass over a line they do not know.
    if (model.WaitForIdle != 0) {
        w.Line("// Start delayed programs when the machine is idle (1), not on the clock (0)");
        w.Line("const WaitForIdle = ", std::to_string(model.WaitForIdle), ";");
        w.Line("");
    }

    bool groupWritten = false;
    for (const ProgramGroup& group : model.ProgramGroups) {
        if (group.Name.empty())
            continue; // a removed group's hole
        if (groupWritten) {
            w.Line("}");
            w.Line("");
        }
        w.Line("void ", ReplaceAll(group.Name, " ", "_"), "()");
        w.Line("{");
        for (const GroupProgram& p : group.Programs) {
            if (IsFreeSlot(p))
                continue;
            w.Line("     ", p.Command, " (\"", p.Path, "\", \"", p.Parameters, "\", ",
                   FormatSingle(p.Delay), ", \"", p.RegistryKeyName, "\");");
        }
        groupWritten = true;
    }
    w.Line("}");
    w.Line("");
    w.Flush();
}

std::string StripComment(std::string_view line) {
    return RemoveAll(CutComment(line), '\t');
}

namespace {

// The load ends here; the message says why.
struct ReadFailure {
    std::string Message;
};

struct ParsedProgram {
    std::string Command;
    std::string Path;
    std::string Parameters;
    float Delay = 0;
    std::string RegistryKeyName;
};

std::string ReplaceAllNoCase(std::string_view s, std::string_view from, std::string_view to) {
    std::string out(s);
    size_t at = FindNoCase(out, from);
    while (at != std::string::npos) {
        out.replace(at, from.size(), to);
        at = FindNoCase(out, from, at + to.size());
    }
    return out;
}

// The reading of a program line that hand-written files rely on: a command, "(", and then
// the quoted path, parameters, the delay and the quoted value name, found by their quotes and
// commas. Throws ReadFailure where the line does not have that shape. A result with an empty
// path leaves the slot free.
ParsedProgram ParseProgramLine(const std::string& line) {
    ParsedProgram p;
    size_t a = line.find('(');
    if (a == std::string::npos)
        throw ReadFailure{"a program line without \"(\""};
    p.Command = Trim(line.substr(0, a));
    // The "(" and the character after it (normally the path's opening quote) are dropped.
    std::string rest = a + 2 <= line.size() ? line.substr(a + 2) : std::string();
    rest = ReplaceAll(rest, "\" ,", "\",");
    size_t b = rest.find("\",");
    if (b == std::string::npos)
        throw ReadFailure{"a program line without a quote and a comma after its path"};
    p.Path = Trim(rest.substr(0, b));
    // Without a path the line is a free slot, unless it names a Run value (one whose command
    // is empty); such a line is read on as far as it goes.
    if (p.Path.empty()) {
        try {
            const ParsedProgram named = ParseProgramLine(p.Command + " (\"-" + rest.substr(b));
            p.Parameters = named.Parameters;
            p.Delay = named.Delay;
            p.RegistryKeyName = named.RegistryKeyName;
        } catch (const ReadFailure&) {
        }
        return p;
    }
    rest = Trim(rest.substr(b + 2));
    if (StartsWith(rest, "\""))
        rest.erase(0, 1);
    size_t c = rest.find('"');
    if (c == std::string::npos)
        throw ReadFailure{"a program line whose parameters have no closing quote"};
    p.Parameters = Trim(rest.substr(0, c));
    rest = rest.substr(c + 1);
    if (StartsWith(rest, ", "))
        rest.erase(0, 2);
    size_t d = rest.find(',');
    if (d == std::string::npos)
        throw ReadFailure{"a program line without a comma after its delay"};
    auto delay = ParseSingle(rest.substr(0, d));
    if (!delay)
        throw ReadFailure{"a program line whose delay is not a number"};
    p.Delay = *delay;
    rest = rest.substr(d + 1);
    rest = ReplaceAll(rest, ");", "");
    rest = RemoveAll(rest, ')');
    rest = RemoveAll(rest, '"');
    rest = RemoveAll(rest, ',');
    p.RegistryKeyName = Trim(rest);
    return p;
}

size_t SkipBlanks(std::string_view s, size_t i) {
    while (i < s.size() && s[i] == ' ')
        ++i;
    return i;
}

// At a quote: the end of `"  ,  "` (just past the second quote), or npos.
size_t QuoteCommaQuote(std::string_view s, size_t quote) {
    size_t i = SkipBlanks(s, quote + 1);
    if (i >= s.size() || s[i] != ',')
        return std::string_view::npos;
    i = SkipBlanks(s, i + 1);
    if (i >= s.size() || s[i] != '"')
        return std::string_view::npos;
    return i + 1;
}

// The program line exactly as the writer lays it out: Command ("path", "parameters", delay,
// "name"); with any character inside the fields. This file has no escapes, and the fields
// copied from a Run value hold quotes (--processStart "Teams.exe"), web addresses with "//",
// value names with "(", ")" and ",". Read by its quotes and commas alone, such a line would
// end the load (and every program after it would drop out of the model and the next write) or
// lose characters of the value name. The delay, a bare number between two quoted fields,
// anchors the line.
struct WrittenProgramLine {
    ParsedProgram Program;
    std::string Rest; // what follows the closing ")" of the fields
};

// The fields between the brackets, `"path", "parameters", delay, "name"`, or nothing when they
// do not have that shape. The command is left to the caller.
std::optional<ParsedProgram> ParseWrittenFields(std::string_view body) {
    while (!body.empty() && body.front() == ' ')
        body.remove_prefix(1);
    while (!body.empty() && body.back() == ' ')
        body.remove_suffix(1);
    if (body.size() < 2 || body.front() != '"' || body.back() != '"')
        return std::nullopt;
    std::string_view inner = body.substr(1, body.size() - 2);

    // The delay: the last `", number, "` in the fields.
    for (size_t q = inner.rfind('"'); q != std::string_view::npos && q > 0;
         q = inner.rfind('"', q - 1)) {
        size_t i = SkipBlanks(inner, q + 1);
        if (i >= inner.size() || inner[i] != ',')
            continue;
        i = SkipBlanks(inner, i + 1);
        size_t numberStart = i;
        while (i < inner.size() &&
               std::string_view("+-0123456789.eE").find(inner[i]) != std::string_view::npos)
            ++i;
        std::string_view number = inner.substr(numberStart, i - numberStart);
        i = SkipBlanks(inner, i);
        if (number.empty() || i >= inner.size() || inner[i] != ',')
            continue;
        i = SkipBlanks(inner, i + 1);
        if (i >= inner.size() || inner[i] != '"')
            continue;
        auto delay = ParseSingle(number);
        if (!delay)
            continue;
        std::string_view left = inner.substr(0, q);
        std::string_view name = inner.substr(i + 1);
        // A Run value whose command is empty: no path and no parameters, as the writer writes
        // them. Any other path is never empty.
        if (left == "\", \"") {
            ParsedProgram parsed;
            parsed.Delay = *delay;
            parsed.RegistryKeyName = Trim(name);
            return parsed;
        }
        // Path and parameters part at the first `", "` after the path's first character: a
        // path holds no quote but around it.
        for (size_t p = left.find('"', 1); p != std::string_view::npos; p = left.find('"', p + 1)) {
            size_t paramsStart = QuoteCommaQuote(left, p);
            if (paramsStart == std::string_view::npos)
                continue;
            ParsedProgram parsed;
            parsed.Path = Trim(left.substr(0, p));
            parsed.Parameters = Trim(left.substr(paramsStart));
            parsed.Delay = *delay;
            parsed.RegistryKeyName = Trim(name);
            return parsed;
        }
        return std::nullopt;
    }
    return std::nullopt;
}

// Whether what follows a ")" lets it close the fields: blanks, one ";", blanks and at most a
// "//" comment.
bool EndsProgramLine(std::string_view after) {
    size_t i = SkipBlanks(after, 0);
    if (i < after.size() && after[i] == ';')
        i = SkipBlanks(after, i + 1);
    return i == after.size() || after.compare(i, 2, "//") == 0;
}

std::optional<WrittenProgramLine> ParseWrittenProgramLine(std::string_view raw) {
    std::string withoutTabs;
    if (raw.find('\t') != std::string_view::npos) {
        withoutTabs = RemoveAll(raw, '\t');
        raw = withoutTabs;
    }
    const std::string_view line = raw;
    size_t open = line.find('(');
    if (open == std::string_view::npos)
        return std::nullopt;
    // The command word comes first; a "//" or a quote before the "(" means the "(" stands in
    // a comment or a field of something that is not a program line.
    std::string_view command = line.substr(0, open);
    if (command.find("//") != std::string_view::npos || command.find('"') != std::string_view::npos)
        return std::nullopt;
    // A value name may hold a ")" followed by a comment-like text, and a trailing comment may
    // hold a whole old program line: the fields end at the first ")" that may close them and
    // whose inside reads as the four fields, so that a comment never changes the program.
    for (size_t close = line.find(')', open + 1); close != std::string_view::npos;
         close = line.find(')', close + 1)) {
        if (!EndsProgramLine(line.substr(close + 1)))
            continue;
        if (auto parsed = ParseWrittenFields(line.substr(open + 1, close - open - 1))) {
            parsed->Command = Trim(command);
            return WrittenProgramLine{std::move(*parsed), std::string(line.substr(close + 1))};
        }
    }
    return std::nullopt;
}

class Reader {
public:
    Reader(std::string_view bytes, ProgramModel& model, const ProgramGroupReadContext& context)
        : lines_(SplitTextLineViews(bytes)), model_(model), context_(context) {}

    void Run() {
        model_.ProgramGroups.assign(1, ProgramGroup{"", {GroupProgram{}}});
        // An existing file without a single line cannot be a program-group file.
        if (lines_.empty())
            throw ReadFailure{"the file is empty"};
        while (More()) {
            std::string_view raw = Next();
            if (StartsWith(raw, "/*") && More()) {
                do
                    raw = Next();
                while (!StartsWith(raw, "*/") && More());
                if (More())
                    raw = Next(); // the line after the block is not tested for "/*"
            }
            std::string line = StripComment(raw);
            if (line.empty())
                continue;
            if (StartsWith(line, "char DisallowedPrograms"))
                DisallowedBlock();
            else if (StartsWith(line, "char StoppedPrograms"))
                StoppedBlock();
            else if (StartsWith(line, "const MainStartupDelay"))
                Setting(line, [&](const std::string* value) {
                    model_.MainStartupDelay = 30;
                    if (!value)
                        return;
                    if (auto v = ParseSingle(*value))
                        model_.MainStartupDelay = *v;
                });
            else if (StartsWith(line, "const Language"))
                Setting(line, [&](const std::string* value) {
                    model_.Language = "en";
                    if (value)
                        ChooseLanguage(*value);
                });
            else if (StartsWith(line, "const StartupType"))
                Setting(line, [&](const std::string* value) {
                    model_.StartupType = 1;
                    if (value)
                        if (auto v = ParseInteger16(*value))
                            model_.StartupType = *v;
                });
            else if (StartsWith(line, "const CloseType"))
                Setting(line, [&](const std::string* value) {
                    model_.CloseType = 1;
                    if (value)
                        if (auto v = ParseInteger16(*value))
                            model_.CloseType = *v;
                });
            else if (StartsWith(line, "const ShowTipsAtStartup"))
                Setting(line, [&](const std::string* value) {
                    if (!value)
                        return;
                    if (*value == "True")
                        model_.ShowTipsAtStartup = -1;
                    else if (*value == "False")
                        model_.ShowTipsAtStartup = 0;
                    else if (auto v = ParseInteger16(*value))
                        model_.ShowTipsAtStartup = *v;
                });
            else if (StartsWith(line, "const WaitForIdle"))
                Setting(line, [&](const std::string* value) {
                    model_.WaitForIdle = 0;
                    if (value)
                        if (auto v = ParseInteger16(*value))
                            model_.WaitForIdle = *v;
                });
            else if (StartsWith(Trim(line), "void"))
                GroupHeader(Trim(line));
        }
    }

    size_t LineNumber() const { return next_; }

private:
    bool More() const { return next_ < lines_.size(); }
    std::string_view Next() {
        if (!More())
            throw ReadFailure{"the file ends too early"};
        return lines_[next_++];
    }

    // The setting's value: after the first "=", without one trailing ";", trimmed. A line
    // without "=" only sets the default. A value that does not convert leaves the default.
    // The blanks before a cut comment do not hide the ";": "2; // note" is 2.
    template <class Apply> void Setting(const std::string& line, Apply apply) {
        size_t eq = line.find('=');
        if (eq == std::string::npos) {
            apply(nullptr);
            return;
        }
        std::string value = TrimRight(line.substr(eq + 1));
        if (EndsWith(value, ";"))
            value.pop_back();
        value = Trim(value);
        apply(&value);
    }

    void ChooseLanguage(const std::string& name) {
        if (!context_.Languages)
            return;
        for (const LanguageEntry& language : *context_.Languages) {
            if (language.Name == name) {
                model_.Language = language.Code;
                if (context_.LanguageChosen)
                    context_.LanguageChosen(language.Code);
                return;
            }
        }
    }

    // Lines up to and including the first that closes the block, each after StripComment and
    // without trailing blanks, so that "}; // end" closes it like "};".
    // In the lists a "//" between quotes is part of an entry (a stopped command's path may
    // hold a web address): list entries hold no quotes of their own, so the pairs are sure.
    template <class Handle> void Block(Handle handle, bool quotesProtect = false) {
        while (More()) {
            std::string_view raw = Next();
            std::string line = TrimRight(
                quotesProtect ? RemoveAll(CutCommentOutsideQuotes(raw), '\t') : StripComment(raw));
            handle(line);
            if (ClosesBlock(line))
                return;
        }
    }

    static std::string CutCommentOutsideQuotes(std::string_view line) {
        bool quoted = false;
        for (size_t i = 0; i < line.size(); ++i) {
            if (line[i] == '"')
                quoted = !quoted;
            else if (!quoted && line.compare(i, 2, "//") == 0)
                return std::string(line.substr(0, i));
        }
        return std::string(line);
    }

    // A "}" closes a block where it stands outside quotes. Inside them it belongs to a name or
    // a path ("C:\ProgramData\{GUID}\setup.exe", "Tool {2}.lnk"): ending the block there
    // would drop every later entry of the block from the model, and the next write would
    // lose them for good.
    // A double-byte character may end in the byte of "}" (Shift-JIS 83 7D): that is no brace.
    static bool ClosesBlock(std::string_view line) {
        bool quoted = false;
        const unsigned codePage = ActiveCodePage();
        for (size_t i = 0; i < line.size(); i += CharacterLength(line, i, codePage)) {
            if (line[i] == '"')
                quoted = !quoted;
            else if (line[i] == '}' && !quoted)
                return true;
        }
        return false;
    }

    static void StoreListItem(std::vector<std::string>& list, std::string item) {
        if (!list.back().empty())
            list.emplace_back();
        list.back() = Trim(item);
    }

    void StoppedBlock() {
        auto& list = model_.StoppedPrograms;
        list.assign(1, std::string());
        Block(
            [&](const std::string& line) {
                if (line == "{" || line == "}" || line == "};")
                    return;
                std::string item = Trim(RemoveAll(RemoveAll(line, '"'), '\t'));
                while (EndsWith(item, ","))
                    item.pop_back();
                StoreListItem(list, std::move(item));
            },
            true);
    }

    void DisallowedBlock() {
        auto& list = model_.DisallowedPrograms;
        list.assign(1, std::string());
        Block(
            [&](const std::string& line) {
                if (line == "{" || line == "}" || line == "};")
                    return;
                std::string item = RemoveAll(RemoveAll(RemoveAll(line, '"'), '\t'), ' ');
                if (EndsWith(item, ","))
                    item.pop_back();
                StoreListItem(list, std::move(item));
            },
            true);
        // The built-in words are always there: those the file does not list come after the
        // file's own words, so deleting one from the file cannot lift it.
        std::string builtIn(kBuiltInDisallowed);
        for (const std::string& word : list) {
            std::string w = Trim(word);
            if (!w.empty())
                builtIn = ReplaceAllNoCase(builtIn, w + " ", "");
        }
        if (Trim(builtIn).empty())
            return;
        for (const std::string& piece : Split(builtIn, ' '))
            if (!Trim(piece).empty())
                list.push_back(piece);
    }

    void GroupHeader(const std::string& trimmed) {
        std::string name = trimmed.size() > 5 ? trimmed.substr(5) : std::string();
        if (EndsWith(name, "()"))
            name.resize(name.size() - 2);
        // Blanks as the model spells them; only a real "_": a double-byte character may end in
        // its byte (Shift-JIS 83 5F).
        name = NormalGroupName(name);
        auto& groups = model_.ProgramGroups;
        if (!groups.back().Name.empty())
            groups.push_back(ProgramGroup{"", {GroupProgram{}}});
        ProgramGroup& group = groups.back();
        group.Name = name;
        group.Programs.reserve(group.Programs.size() + LinesBeforeNextGroup());
        while (More()) {
            std::string_view raw = Next();
            // Most lines hold no tab: they are looked at in place, without a copy.
            std::string withoutTabs;
            const size_t comment = raw.find("//");
            std::string_view line = raw.substr(0, comment);
            if (line.find('\t') != std::string_view::npos) {
                withoutTabs = RemoveAll(line, '\t');
                line = withoutTabs;
            }
            // The blanks before a comment belong to it: "} // end" closes the group, and an
            // indented comment line is no program line.
            if (comment != std::string_view::npos)
                while (!line.empty() && line.back() == ' ')
                    line.remove_suffix(1);
            bool closes = ClosesBlock(line);
            if (line != "{" && line != "}" && line != "}," && !line.empty()) {
                // A program line in the writer's layout ends the group only with a "}" after
                // its fields: a quoted path may hold braces ("C:\ProgramData\{ID}\a.exe"), and
                // its own quotes beside the field's make such a brace look unquoted.
                if (auto written = ParseWrittenProgramLine(raw)) {
                    closes = Contains(StripComment(written->Rest), "}");
                    StoreProgram(group, std::move(written->Program));
                } else {
                    ProgramLine(group, std::string(line));
                }
            }
            if (closes)
                return;
        }
    }

    // Room for a group's programs: the lines up to the next group header, a fair bound of
    // them, so a big group is not copied into ever larger lists while it is read.
    size_t LinesBeforeNextGroup() const {
        size_t n = 0;
        for (size_t i = next_; i < lines_.size() && !StartsWith(lines_[i], "void"); ++i)
            ++n;
        return n;
    }

    // A program line in another shape, read by its quotes and commas.
    void ProgramLine(ProgramGroup& group, const std::string& line) {
        GroupProgram& slot = FreeSlot(group);
        size_t a = line.find('(');
        if (a != std::string::npos)
            slot.Command = Trim(line.substr(0, a));
        StoreProgram(group, ParseProgramLine(line)); // throws where the line cannot be read
    }

    static GroupProgram& FreeSlot(ProgramGroup& group) {
        auto& programs = group.Programs;
        if (programs.empty() || !IsFreeSlot(programs.back()))
            programs.emplace_back();
        return programs.back();
    }

    void StoreProgram(ProgramGroup& group, ParsedProgram parsed) {
        GroupProgram& program = FreeSlot(group);
        program.Command = std::move(parsed.Command);
        program.Path = ShortenItemsFolderPath(std::move(parsed.Path));
        if (program.Path.empty() && parsed.RegistryKeyName.empty())
            return; // the slot stays free
        program.Parameters = std::move(parsed.Parameters);
        program.Delay = parsed.Delay;
        program.RegistryKeyName = std::move(parsed.RegistryKeyName);
    }

    // A shortcut that the program keeps in one of its items folders is stored by its name.
    std::string ShortenItemsFolderPath(std::string path) const {
        for (const std::string* folder :
             {&context_.UserItemsFolder, &context_.AllUsersItemsFolder}) {
            if (folder->empty() || !StartsWith(path, *folder))
                continue;
            std::string rest = path.substr(folder->size());
            if (StartsWith(rest, "\\"))
                rest.erase(0, 1);
            return rest;
        }
        return path;
    }

    std::vector<std::string_view> lines_; // views into the file's bytes
    size_t next_ = 0;
    ProgramModel& model_;
    const ProgramGroupReadContext& context_;
};

} // namespace

ProgramGroupReadResult ReadProgramGroupFile(std::string_view bytes, ProgramModel& model,
                                            const ProgramGroupReadContext& context) {
    model.WaitForIdle = 0; // only a file that turns it on says so
    Reader reader(bytes, model, context);
    try {
        reader.Run();
    } catch (const ReadFailure& failure) {
        return {false, failure.Message, reader.LineNumber()};
    }
    model.SortArray();
    model.StartupGroupIndex = model.GetGroupID(kStartupGroup);
    return {};
}

} // namespace tolvane
