#include <gtest/gtest.h>

#include "config/program_group_file.h"
#include "config/app_state.h"
#include "support/test_support.h"
#include "text/code_page.h"
#include "text/language.h"
#include "text/strings.h"

namespace tolvane {
namespace {

using Lines = std::vector<std::string>;
using test::GroupNames;
using test::ProgramLines;

const std::vector<LanguageEntry> kLanguages = {{"English", "en"}, {"Deutsch", "de"}};
const std::string kUserItems = "C:\\Tolvane\\Tolvane Items\\Current User\\";
const std::string kAllItems = "C:\\Tolvane\\Tolvane Items\\All Users\\";

ProgramGroupReadContext Context() {
    ProgramGroupReadContext c;
    c.UserItemsFolder = kUserItems;
    c.AllUsersItemsFolder = kAllItems;
    c.Languages = &kLanguages;
    return c;
}

// Lines [from, to) of what follows the 43-line header, joined by "|"; negative counts from
// the end.
std::string BodyLines(const std::string& file, int from, int to) {
    const Lines lines = SplitTextLines(file);
    const int size = static_cast<int>(lines.size());
    std::string out;
    for (int i = (from < 0 ? size : 43) + from; i < (to <= 0 ? size : 43) + to; ++i)
        out += (out.empty() ? "" : "|") + lines[static_cast<size_t>(i)];
    return out;
}

// A file of just these lines.
std::string File(std::initializer_list<const char*> lines) {
    std::string s;
    for (const char* l : lines)
        s += std::string(l) + "\r\n";
    return s;
}

ProgramModel Read(const std::string& bytes, ProgramGroupReadResult* result = nullptr) {
    ProgramModel m;
    m.DisallowedPrograms = {"kept"};
    m.StoppedPrograms = {"_STPCU_kept.lnk"};
    m.StartupType = 3;
    m.StartupGroupIndex = 42;
    auto r = ReadProgramGroupFile(bytes, m, Context());
    if (result)
        *result = r;
    return m;
}

TEST(ProgramGroupFile, WriterLaysOutListsSettingsAndGroups) {
    ProgramModel m;
    SetDefaultModel(m);
    m.StoppedPrograms = {"_STPCU_A.lnk", ""};
    m.MainStartupDelay = 2.5f;
    m.StartupType = 3;
    m.CloseType = 0;
    m.ShowTipsAtStartup = -1;
    m.Language = "de";
    m.ProgramGroups[0].Programs.push_back({"C:\\Tools\\Clock.exe", "-min", "Execute", 5, "Clock"});
    m.ProgramGroups[0].Programs.push_back({"C:\\half.exe", "", "ExecuteReg", 0.5f, "Half"});
    m.ProgramGroups[0].Programs.push_back({"", "", "Execute", 0, ""}); // free: left out
    m.ProgramGroups.push_back({"", {}});                               // a hole: left out
    m.ProgramGroups.push_back({"My Group", {{"C:\\x.exe", "", "Execute", 10, ""}}});
    std::string file = FormatProgramGroupFile(m, kLanguages);

    // The count is of all slots; a free slot is left out, the entry before it keeps its ", ".
    EXPECT_EQ(BodyLines(file, 13, 17), "char StoppedPrograms[256][2]=|{|     \"_STPCU_A.lnk\", |}");
    const Lines lines = SplitTextLines(file);
    for (const char* setting :
         {"const MainStartupDelay = 2.5;", "const StartupType = 3;", "const CloseType = 0;",
          "const Language = Deutsch;", "const ShowTipsAtStartup = -1;"})
        EXPECT_NE(std::find(lines.begin(), lines.end(), setting), lines.end()) << setting;
    EXPECT_EQ(BodyLines(file, -11, 0),
              "void Startup()|{|     Execute (\"C:\\Tools\\Clock.exe\", \"-min\", 5, \"Clock\");|"
              "     ExecuteReg (\"C:\\half.exe\", \"\", 0.5, \"Half\");|}||void My_Group()|{|"
              "     Execute (\"C:\\x.exe\", \"\", 10, \"\");|}|");

    // Element 0 free: the count reads 0, the later entry is written without a comma.
    m.StoppedPrograms = {"", "_REGCU_X"};
    m.Language = "xx"; // not in the list: no Language line
    m.ProgramGroups.assign(1, ProgramGroup{"", {}});
    file = FormatProgramGroupFile(m, kLanguages);
    EXPECT_EQ(BodyLines(file, 13, 17), "char StoppedPrograms[256][0]=|{|     \"_REGCU_X\"|}");
    EXPECT_EQ(file.find("const Language"), std::string::npos);
    EXPECT_EQ(BodyLines(file, -2, 0), "}|"); // no named group: a lone "}" closes the file
}

TEST(ProgramGroupFile, WhatIsWrittenReadsBackAndWritesTheSameBytes) {
    ProgramModel m;
    SetDefaultModel(m);
    m.DisallowedPrograms.insert(m.DisallowedPrograms.begin(), "badtool");
    // As a load leaves a model: no free slots (the writer drops them).
    m.StoppedPrograms = {"_STPCU_Tool {2}.lnk", "_REGCU_C:\\stopped.exe", "_REGAU_C:\\q.exe"};
    m.MainStartupDelay = 12.25f;
    m.Language = "de";
    m.WaitForIdle = 1;
    m.ProgramGroups[0].Programs = {
        {"Tool.lnk", "", "Execute", 0, ""}, // shortcuts as a load leaves them
        {"Word.lnk", "", "ExecuteAU", 1.5f, ""},
        // Fields copied from Run values: quotes, a web address, braces, brackets and commas.
        {"\"C:\\Users\\a\\AppData\\Local\\Microsoft\\Teams\\Update.exe\"",
         "--processStart \"Teams.exe\" --process-start-args \"--system-initiated\"", "ExecuteReg",
         3, "com.squirrel.Teams.Teams"},
        {"C:\\ProgramData\\{4F1A}\\setup.exe", "--url=https://example.com/a?b=1", "ExecuteRegAU", 4,
         "Vendor (x86), Updater"},
        {"C:\\last.exe", "", "ExecuteReg", 20, "Last"}, // after the braces: still in its group
        // A Run value whose command is empty is kept by its name; a quoted path of a comma is
        // no empty path.
        {"", "", "ExecuteReg", 21, "Empty, (x86)"},
        {"\",\"", "a\"\" -b", "ExecuteRegAU", 22, "Comma"},
    };
    m.ProgramGroups.push_back({"My_Tools", {{"C:\\Tools\\Clock.exe", "-min", "Execute", 5, ""}}});

    const std::string first = FormatProgramGroupFile(m, kLanguages);
    std::string chosen;
    ProgramModel back;
    auto context = Context();
    context.LanguageChosen = [&](const std::string& code) { chosen = code; };
    ProgramGroupReadResult result = ReadProgramGroupFile(first, back, context);
    ASSERT_TRUE(result.Ok) << result.Error << " at line " << result.LineNumber;
    // The same bytes again: every setting, list entry and field was read as written.
    EXPECT_EQ(FormatProgramGroupFile(back, kLanguages), first);
    EXPECT_EQ(chosen, "de");
    EXPECT_NE(first.find("\r\nconst WaitForIdle = 1;\r\n"), std::string::npos);
    EXPECT_EQ(GroupNames(back), (Lines{"Startup", "My Tools"})); // "_" reads back as a blank
    EXPECT_EQ(back.StartupGroupIndex, 0);
    EXPECT_EQ(ProgramLines(back.ProgramGroups[0]), ProgramLines(m.ProgramGroups[0]));
    EXPECT_EQ(back.DisallowedPrograms[0], "badtool");

    // Saved again by an editor that ends lines with LF alone, it reads the same.
    ProgramModel fromLf;
    result = ReadProgramGroupFile(ReplaceAll(first, "\r\n", "\n"), fromLf, Context());
    ASSERT_TRUE(result.Ok) << result.Error << " at line " << result.LineNumber;
    EXPECT_EQ(FormatProgramGroupFile(fromLf, kLanguages), first);

    // A delayed shortcut is written with its items-folder path and comes back by its name;
    // a quoted stopped path comes back without its quotes.
    m.ProgramGroups[0].Programs[0].Path = kUserItems + "\\Tool.lnk";
    m.ProgramGroups[0].Programs[1].Path = kAllItems + "Word.lnk";
    m.StoppedPrograms[2] = "_REGAU_\"C:\\q.exe\"";
    m.WaitForIdle = 0; // off: no line, and a file without it reads as off
    const std::string off = FormatProgramGroupFile(m, kLanguages);
    EXPECT_EQ(off.find("WaitForIdle"), std::string::npos);
    ASSERT_TRUE(ReadProgramGroupFile(off, back, Context()).Ok);
    EXPECT_EQ(back.WaitForIdle, 0);
    EXPECT_EQ(back.ProgramGroups[0].Programs[0].Path, "Tool.lnk");
    EXPECT_EQ(back.ProgramGroups[0].Programs[1].Path, "Word.lnk");
    EXPECT_EQ(back.StoppedPrograms[2], "_REGAU_C:\\q.exe");
}

TEST(ProgramGroupFile, HandWrittenLinesReadAsTheFileFormatAllows) {
    ProgramGroupReadResult r;
    // Groups, comments and the forms a user may type.
    ProgramModel m =
        Read(File({
                 "/*",
                 "void Hidden()",
                 "*/",
                 "void NotHidden()", // the line after a block is read
                 "{",
                 "}",
                 "/* one line */",
                 "void AlsoHidden()",
                 "*/ closes",
                 "void My_Group()",
                 "{",
                 "\tExecute(\"C:\\a.exe\" , \"-x\",\t2, \"A\");   // tabs, blank before the comma",
                 "     Execute( \"C:\\b.exe\", \"\", 5, \"B\");",
                 "     Execute (\"C:\\c.exe\", \"\", 1, \"C\")",
                 "     // a comment line",
                 // Comments after a line, holding an old line, quotes and brackets.
                 "     Execute (\"C:\\d.exe\", \"-x\", 3, \"D\"); // was Execute (\"C:\\o.exe\", "
                 "\"\", 4, \"O\")",
                 "     ExecuteReg (\"C:\\t.exe \", \"--processStart \"T.exe\"\", 0, \"Vendor "
                 "(x86)\"); // old: \"x\" (y)",
                 // Hand-typed: the name without its opening quote.
                 "     Execute (\"C:\\e.exe\", \"\", 12, E\");",
                 "} // end of the group",
                 "void Startup",
                 "{",
                 "     ExecuteAU (\"\", \"\", 0, \"\");", // an empty path keeps the slot free
                 "}",
                 "void  Startup()",
                 "{",
                 "}",
             }),
             &r);
    ASSERT_TRUE(r.Ok) << r.Error << " at line " << r.LineNumber;
    // Two blanks: not the "Startup" group.
    EXPECT_EQ(GroupNames(m), (Lines{"NotHidden", "My Group", "Startup", " Startup"}));
    EXPECT_EQ(m.StartupGroupIndex, 2);
    // Sorted by delay; a blank after "(" is read like the written form: no stray quote.
    EXPECT_EQ(
        ProgramLines(m.ProgramGroups[1]),
        (Lines{"ExecuteReg|C:\\t.exe|--processStart \"T.exe\"|0|Vendor (x86)",
               "Execute|C:\\c.exe||1|C", "Execute|C:\\a.exe|-x|2|A", "Execute|C:\\d.exe|-x|3|D",
               "Execute|C:\\b.exe||5|B", "Execute|C:\\e.exe||12|E"}));
    EXPECT_EQ(ProgramLines(m.ProgramGroups[2]), Lines{"ExecuteAU|||0|"});
    // No list blocks in the file: the lists stay as they were.
    EXPECT_EQ(m.DisallowedPrograms, Lines{"kept"});
    EXPECT_EQ(m.StoppedPrograms, Lines{"_STPCU_kept.lnk"});
}

TEST(ProgramGroupFile, SettingsTakeTheirDefaultWhenTheValueDoesNotConvert) {
    struct Case {
        const char* line;
        int startup, close, tips;
        float delay;
        const char* language;
    };
    // Before each line: StartupType 3, CloseType 0, tips 7, delay 99, language "de".
    const Case cases[] = {
        {"const StartupType = 2;", 2, 0, 7, 99, "de"},
        {"const StartupType = x;", 1, 0, 7, 99, "de"},
        {"const StartupType = 2.5;", 2, 0, 7, 99, "de"},
        {"const StartupType = 2; // note", 2, 0, 7, 99, "de"},
        {"const StartupType", 1, 0, 7, 99, "de"}, // no "=": the default
        {"const StartupType = 70000;", 1, 0, 7, 99, "de"},
        {"const CloseType = 0;", 3, 0, 7, 99, "de"},
        {"const CloseType = ;", 3, 1, 7, 99, "de"},
        {"const ShowTipsAtStartup = True;", 3, 0, -1, 99, "de"},
        {"const ShowTipsAtStartup = False;", 3, 0, 0, 99, "de"},
        {"const ShowTipsAtStartup = 1;", 3, 0, 1, 99, "de"},
        {"const ShowTipsAtStartup = maybe;", 3, 0, 7, 99, "de"}, // no default of its own
        {"const MainStartupDelay = 2,5;", 3, 0, 7, 2.5f, "de"},
        {"const MainStartupDelay = 1.2.3;", 3, 0, 7, 30, "de"},
        {"const Language = English;", 3, 0, 7, 99, "en"},
        {"const Language = Klingon;", 3, 0, 7, 99, "en"},
        {"  const StartupType = 2;", 3, 0, 7, 99, "de"}, // indented: not a setting
    };
    for (const Case& c : cases) {
        ProgramModel m;
        m.StartupType = 3;
        m.ShowTipsAtStartup = 7;
        m.MainStartupDelay = 99;
        m.Language = "de";
        EXPECT_TRUE(ReadProgramGroupFile(File({c.line}), m, Context()).Ok) << c.line;
        EXPECT_EQ(std::tie(m.StartupType, m.CloseType, m.ShowTipsAtStartup, m.MainStartupDelay,
                           m.Language),
                  std::make_tuple(c.startup, c.close, c.tips, c.delay, std::string(c.language)))
            << c.line;
    }
}

TEST(ProgramGroupFile, ListBlocksAndTheBuiltInWords) {
    ProgramModel m =
        Read(File({"char DisallowedPrograms[256][2]=", "{", "     \"FORMAT\", ", "     \"d e l\"",
                   "}; // end", "char StoppedPrograms[256][3]=", "{", "     \"_STPCU_A.lnk\", ", "",
                   "\"_REGCU_C:\\b.exe\",, // a note", "}"}));
    EXPECT_EQ(m.DisallowedPrograms, (Lines{"FORMAT", "del", "fdisk", "rmdir", "mkdir", "delete"}));
    // The empty line left a free slot that the next item filled.
    EXPECT_EQ(m.StoppedPrograms, (Lines{"_STPCU_A.lnk", "_REGCU_C:\\b.exe"}));

    m = Read(File({"char DisallowedPrograms[256][1]=", "{", "     \"\"", "};"}));
    EXPECT_EQ(m.DisallowedPrograms,
              (Lines{"", "format", "fdisk", "del", "rmdir", "mkdir", "delete"}));
    m = Read(File({"char StoppedPrograms[256][0]=", "{", "}"}));
    EXPECT_EQ(m.StoppedPrograms, Lines{""});
}

// The system code page for the rules that use it, until the end of the scope.
struct CodePageScope {
    explicit CodePageScope(unsigned codePage) { SetActiveCodePage(codePage); }
    ~CodePageScope() { SetActiveCodePage(kDefaultCodePage); }
};

// In Shift-JIS and GBK alike 83 5C ends in the byte of "\", 83 5F in that of "_" and 83 7D in
// that of "}".
TEST(ProgramGroupFile, DoubleByteCharactersKeepTheirTrailBytes) {
    for (unsigned codePage : {932u, 936u}) {
        CodePageScope scope(codePage);
        // The program's folder ends in such a character; its items folders are inside it.
        const AppFolders folders = FoldersForProgramFolder("C:\\\x83\x5C\\");
        EXPECT_EQ(folders.ProgramFolder, "C:\\\x83\x5C");
        EXPECT_EQ(folders.UserItemsFolder, "C:\\\x83\x5C\\Tolvane Items\\Current User\\");
        ProgramGroupReadContext context = Context();
        context.UserItemsFolder = folders.UserItemsFolder;
        const std::string delayed =
            "     Execute (\"" + folders.UserItemsFolder + "Tool.lnk\", \"\", 1, \"\");";
        ProgramModel m;
        auto r = ReadProgramGroupFile(File({"char StoppedPrograms[256][2]=", "{",
                                            "     _STPCU_\x83\x7D.lnk, ", // unquoted
                                            "     \"_STPCU_B.lnk\"", "}", "void \x83\x5F_Tools()",
                                            "{", delayed.c_str(), "}"}),
                                      m, context);
        ASSERT_TRUE(r.Ok) << r.Error << " at line " << r.LineNumber;
        EXPECT_EQ(m.StoppedPrograms, (Lines{"_STPCU_\x83\x7D.lnk", "_STPCU_B.lnk"})) << codePage;
        EXPECT_EQ(GroupNames(m), Lines{"\x83\x5F Tools"}) << codePage;
        EXPECT_EQ(ProgramLines(m.ProgramGroups[0]), Lines{"Execute|Tool.lnk||1|"}) << codePage;
    }
}

TEST(ProgramGroupFile, FailuresEndTheLoadAndKeepWhatWasRead) {
    for (const char* line : {
             "     Execute \"C:\\a.exe\", \"\", 5, \"A\";", // no "("
             "     Execute (\"C:\\a.exe\", \"\", five, \"A\");",
             "     Execute (C:\\a.exe, 5);",
             "     Execute (\"C:\\a.exe\", \"-x\" 5 \"A\");",
             "   ", // a line of blanks in a group body
             "  }", // an indented brace is not the end
             "     Execute (\"C:\\a.exe\", \"see http://x\", 5, \"A\"); trailing words",
         }) {
        ProgramGroupReadResult r;
        ProgramModel m = Read(File({"const StartupType = 2;", "void G()", "{",
                                    "     Execute (\"C:\\first.exe\", \"\", 9, \"F\");", line,
                                    "     Execute (\"C:\\never.exe\", \"\", 1, \"N\");", "}",
                                    "void Startup()", "{", "}"}),
                              &r);
        EXPECT_FALSE(r.Ok) << line;
        EXPECT_EQ(r.LineNumber, 5u) << line << ": " << r.Error;
        EXPECT_EQ(m.StartupType, 2) << line; // read before the failure
        ASSERT_EQ(GroupNames(m), Lines{"G"}) << line;
        EXPECT_EQ(ProgramLines(m.ProgramGroups[0]).at(0), "Execute|C:\\first.exe||9|F") << line;
        EXPECT_EQ(m.StartupGroupIndex, 42) << line; // not looked up again
    }
    ProgramGroupReadResult r;
    EXPECT_EQ(GroupNames(Read("", &r)), Lines{""});
    EXPECT_FALSE(r.Ok);
}

} // namespace
} // namespace tolvane
