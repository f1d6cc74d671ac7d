#include <gtest/gtest.h>

#include "config/program_group_file.h"
#include "support/test_support.h"
#include "text/language.h"
#include "text/strings.h"
#include "ui/tree_model.h"

namespace tolvane {
namespace {

const std::vector<LanguageEntry> kLanguages = {{"English", "en"}, {"Deutsch", "de"}};
const std::string kUserItems = "C:\\Tolvane\\Tolvane Items\\Current User\\";
const std::string kAllItems = "C:\\Tolvane\\Tolvane Items\\All Users\\";

ProgramGroupReadContext Context(TreeModel* tree = nullptr) {
    ProgramGroupReadContext c;
    c.UserItemsFolder = kUserItems;
    c.AllUsersItemsFolder = kAllItems;
    c.Languages = &kLanguages;
    c.Tree = tree;
    return c;
}

// The lines after the 43-line header, without their CR LF.
std::vector<std::string> Body(const std::string& file) {
    auto lines = SplitTextLines(file);
    return std::vector<std::string>(lines.begin() + 43, lines.end());
}

// A file of just these lines after an empty header.
std::string File(std::initializer_list<const char*> lines) {
    std::string s;
    for (const char* l : lines)
        s += std::string(l) + "\r\n";
    return s;
}

ProgramModel Read(const std::string& bytes, ProgramGroupReadResult* result = nullptr,
                  TreeModel* tree = nullptr) {
    ProgramModel m;
    m.DisallowedPrograms = {"kept"};
    m.StoppedPrograms = {"_STPCU_kept.lnk"};
    m.StartupType = 3;
    m.StartupGroupIndex = 42;
    auto r = ReadProgramGroupFile(bytes, m, Context(tree));
    if (result)
        *result = r;
    return m;
}

TEST(ProgramGroupFile, FirstStartModelIsWrittenByteForByte) {
    ProgramModel m;
    SetDefaultModel(m);
    const std::string golden =
        test::ReadFileBytes(test::TestDataPath("config/golden/default_proggroup.c"));
    ASSERT_FALSE(golden.empty());
    EXPECT_EQ(FormatProgramGroupFile(m, kLanguages), golden);
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
    auto body = Body(FormatProgramGroupFile(m, kLanguages));

    const std::vector<std::string> expected = {
        "char DisallowedPrograms[256][6]=",
        "{",
        "     \"format\", ",
        "     \"fdisk\", ",
        "     \"del\", ",
        "     \"rmdir\", ",
        "     \"mkdir\", ",
        "     \"delete\"",
        "};",
        "",
        "// DO NOT EDIT THIS ",
        "// It's only used to show items that the program removed",
        "// from the startup",
        "char StoppedPrograms[256][2]=",
        "{",
        "     \"_STPCU_A.lnk\", ",
        "}"};
    ASSERT_GE(body.size(), expected.size());
    EXPECT_EQ(std::vector<std::string>(body.begin(), body.begin() + expected.size()), expected);

    auto has = [&](const std::string& line) {
        return std::find(body.begin(), body.end(), line) != body.end();
    };
    EXPECT_TRUE(has("const MainStartupDelay = 2.5;"));
    EXPECT_TRUE(has("const StartupType = 3;"));
    EXPECT_TRUE(has("const CloseType = 0;"));
    EXPECT_TRUE(has("const Language = Deutsch;"));
    EXPECT_TRUE(has("const ShowTipsAtStartup = -1;"));
    const std::vector<std::string> groups = {
        "void Startup()",
        "{",
        "     Execute (\"C:\\Tools\\Clock.exe\", \"-min\", 5, \"Clock\");",
        "     ExecuteReg (\"C:\\half.exe\", \"\", 0.5, \"Half\");",
        "}",
        "",
        "void My_Group()",
        "{",
        "     Execute (\"C:\\x.exe\", \"\", 10, \"\");",
        "}",
        ""};
    EXPECT_EQ(std::vector<std::string>(body.end() - groups.size(), body.end()), groups);

    // Element 0 free: the count reads 0, the later entry is written without a comma.
    m.StoppedPrograms = {"", "_REGCU_X"};
    m.Language = "xx"; // not in the list: no Language line
    m.ProgramGroups.assign(1, ProgramGroup{"", {}});
    body = Body(FormatProgramGroupFile(m, kLanguages));
    EXPECT_EQ(body[13], "char StoppedPrograms[256][0]=");
    EXPECT_EQ(body[15], "     \"_REGCU_X\"");
    EXPECT_EQ(body[16], "}");
    EXPECT_EQ(std::count_if(body.begin(), body.end(),
                            [](auto& l) { return StartsWith(l, "const Language"); }),
              0);
    EXPECT_EQ(body.back(), ""); // no named group: a lone "}" closes the file
    EXPECT_EQ(body[body.size() - 2], "}");
}

TEST(ProgramGroupFile, WhatIsWrittenReadsBackAndWritesTheSameBytes) {
    ProgramModel m;
    SetDefaultModel(m);
    m.DisallowedPrograms.insert(m.DisallowedPrograms.begin(), "badtool");
    // As a load leaves a model: no free slots (the writer drops them).
    m.StoppedPrograms = {"_STPCU_Tool {2}.lnk", "_REGCU_C:\\stopped.exe", "_REGAU_C:\\q.exe"};
    m.MainStartupDelay = 12.25f;
    m.Language = "de";
    auto& startup = m.ProgramGroups[0].Programs;
    startup.clear();
    startup.push_back({"Tool.lnk", "", "Execute", 0, ""}); // as a load leaves them
    startup.push_back({"Word.lnk", "", "ExecuteAU", 1.5f, ""});
    // Fields copied from Run values: quotes, a web address, braces, brackets and commas.
    startup.push_back({"\"C:\\Users\\a\\AppData\\Local\\Microsoft\\Teams\\Update.exe\"",
                       "--processStart \"Teams.exe\" --process-start-args \"--system-initiated\"",
                       "ExecuteReg", 3, "com.squirrel.Teams.Teams"});
    startup.push_back({"C:\\ProgramData\\{4F1A}\\setup.exe", "--url=https://example.com/a?b=1",
                       "ExecuteRegAU", 4, "Vendor (x86), Updater"});
    startup.push_back({"C:\\last.exe", "", "ExecuteReg", 20, "Last"});
    m.ProgramGroups.push_back({"My_Tools", {{"C:\\Tools\\Clock.exe", "-min", "Execute", 5, ""}}});

    const std::string first = FormatProgramGroupFile(m, kLanguages);
    ProgramGroupReadResult result;
    std::string chosen;
    ProgramModel back;
    auto context = Context();
    context.LanguageChosen = [&](const std::string& code) { chosen = code; };
    result = ReadProgramGroupFile(first, back, context);
    ASSERT_TRUE(result.Ok) << result.Error << " at line " << result.LineNumber;
    EXPECT_EQ(FormatProgramGroupFile(back, kLanguages), first);

    EXPECT_EQ(chosen, "de");
    EXPECT_EQ(back.Language, "de");
    EXPECT_EQ(back.MainStartupDelay, 12.25f);
    EXPECT_EQ(back.DisallowedPrograms,
              (std::vector<std::string>{"badtool", "format", "fdisk", "del", "rmdir", "mkdir",
                                        "delete"}));
    EXPECT_EQ(back.StoppedPrograms,
              (std::vector<std::string>{"_STPCU_Tool {2}.lnk", "_REGCU_C:\\stopped.exe",
                                        "_REGAU_C:\\q.exe"}));
    ASSERT_EQ(back.ProgramGroups.size(), 2u);
    EXPECT_EQ(back.StartupGroupIndex, 0);
    EXPECT_EQ(back.ProgramGroups[1].Name, "My Tools"); // "_" reads back as a blank
    const auto& p = back.ProgramGroups[0].Programs;
    ASSERT_EQ(p.size(), 5u);
    EXPECT_EQ(p[0].Path, "Tool.lnk");
    EXPECT_EQ(p[1].Path, "Word.lnk");
    EXPECT_EQ(p[2].Parameters,
              "--processStart \"Teams.exe\" --process-start-args \"--system-initiated\"");
    EXPECT_EQ(p[2].RegistryKeyName, "com.squirrel.Teams.Teams");
    EXPECT_EQ(p[3].Path, "C:\\ProgramData\\{4F1A}\\setup.exe");
    EXPECT_EQ(p[3].Parameters, "--url=https://example.com/a?b=1");
    EXPECT_EQ(p[3].RegistryKeyName, "Vendor (x86), Updater");
    EXPECT_EQ(p[4].Path, "C:\\last.exe"); // after the braces: still in its group
    EXPECT_EQ(p[4].Command, "ExecuteReg");

    // A delayed shortcut is written with its items-folder path and comes back by its name;
    // a quoted stopped path comes back without its quotes.
    m.ProgramGroups[0].Programs[0].Path = kUserItems + "\\Tool.lnk";
    m.ProgramGroups[0].Programs[1].Path = kAllItems + "Word.lnk";
    m.StoppedPrograms[2] = "_REGAU_\"C:\\q.exe\"";
    ASSERT_TRUE(ReadProgramGroupFile(FormatProgramGroupFile(m, kLanguages), back, Context()).Ok);
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
                 "}",
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
    ASSERT_EQ(m.ProgramGroups.size(), 4u);
    EXPECT_EQ(m.ProgramGroups[0].Name, "NotHidden");
    EXPECT_EQ(m.ProgramGroups[1].Name, "My Group");
    EXPECT_EQ(m.ProgramGroups[2].Name, "Startup");
    EXPECT_EQ(m.ProgramGroups[3].Name, " Startup"); // two blanks: not the "Startup" group
    EXPECT_EQ(m.StartupGroupIndex, 2);
    const auto& g = m.ProgramGroups[1].Programs;
    ASSERT_EQ(g.size(), 3u);
    // Sorted by delay: c (1), a (2), b (5).
    EXPECT_EQ(g[0].Path, "C:\\c.exe");
    EXPECT_EQ(g[1].Path, "C:\\a.exe");
    EXPECT_EQ(g[1].Parameters, "-x");
    EXPECT_EQ(g[1].Delay, 2);
    EXPECT_EQ(g[1].RegistryKeyName, "A");
    // A blank after "(" is read like the written form: the path has no stray quote.
    EXPECT_EQ(g[2].Path, "C:\\b.exe");
    EXPECT_EQ(g[2].Delay, 5);
    const auto& s = m.ProgramGroups[2].Programs;
    ASSERT_EQ(s.size(), 1u);
    EXPECT_EQ(s[0].Path, "");
    EXPECT_EQ(s[0].Command, "ExecuteAU");
    // No list blocks in the file: the lists stay as they were.
    EXPECT_EQ(m.DisallowedPrograms, std::vector<std::string>{"kept"});
    EXPECT_EQ(m.StoppedPrograms, std::vector<std::string>{"_STPCU_kept.lnk"});
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
        {"const StartupType = 1; // note", 1, 0, 7, 99, "de"}, // "1; " does not convert
        {"const StartupType", 1, 0, 7, 99, "de"},              // no "=": the default
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
        m.CloseType = 0;
        m.ShowTipsAtStartup = 7;
        m.MainStartupDelay = 99;
        m.Language = "de";
        auto r = ReadProgramGroupFile(File({c.line}), m, Context());
        EXPECT_TRUE(r.Ok) << c.line;
        EXPECT_EQ(m.StartupType, c.startup) << c.line;
        EXPECT_EQ(m.CloseType, c.close) << c.line;
        EXPECT_EQ(m.ShowTipsAtStartup, c.tips) << c.line;
        EXPECT_EQ(m.MainStartupDelay, c.delay) << c.line;
        EXPECT_EQ(m.Language, c.language) << c.line;
    }
}

TEST(ProgramGroupFile, ListBlocksAndTheBuiltInWords) {
    ProgramModel m =
        Read(File({"char DisallowedPrograms[256][2]=", "{", "     \"FORMAT\", ", "     \"d e l\"",
                   "};", "char StoppedPrograms[256][3]=", "{", "     \"_STPCU_A.lnk\", ", "",
                   "     \"_REGCU_C:\\b.exe\",,", "}"}));
    EXPECT_EQ(m.DisallowedPrograms,
              (std::vector<std::string>{"FORMAT", "del", "fdisk", "rmdir", "mkdir", "delete"}));
    // The empty line left a free slot that the next item filled.
    EXPECT_EQ(m.StoppedPrograms, (std::vector<std::string>{"_STPCU_A.lnk", "_REGCU_C:\\b.exe"}));

    m = Read(File({"char DisallowedPrograms[256][1]=", "{", "     \"\"", "};"}));
    EXPECT_EQ(m.DisallowedPrograms,
              (std::vector<std::string>{"", "format", "fdisk", "del", "rmdir", "mkdir", "delete"}));
    m = Read(File({"char StoppedPrograms[256][0]=", "{", "}"}));
    EXPECT_EQ(m.StoppedPrograms, std::vector<std::string>{""});
}

TEST(ProgramGroupFile, FailuresEndTheLoadAndKeepWhatWasRead) {
    const std::vector<const char*> bad = {
        "     Execute \"C:\\a.exe\", \"\", 5, \"A\";", // no "("
        "     Execute (\"C:\\a.exe\", \"\", five, \"A\");",
        "     Execute (C:\\a.exe, 5);",
        "     Execute (\"C:\\a.exe\", \"-x\" 5 \"A\");",
        "   ", // a line of blanks in a group body
        "  }", // an indented brace is not the end
        "     Execute (\"C:\\a.exe\", \"see http://x\", 5, \"A\"); trailing words",
    };
    for (const char* line : bad) {
        ProgramGroupReadResult r;
        ProgramModel m = Read(File({"const StartupType = 2;", "void G()", "{",
                                    "     Execute (\"C:\\first.exe\", \"\", 9, \"F\");", line,
                                    "     Execute (\"C:\\never.exe\", \"\", 1, \"N\");", "}",
                                    "void Startup()", "{", "}"}),
                              &r);
        EXPECT_FALSE(r.Ok) << line;
        EXPECT_EQ(r.LineNumber, 5u) << line << ": " << r.Error;
        EXPECT_EQ(m.StartupType, 2) << line; // read before the failure
        ASSERT_EQ(m.ProgramGroups.size(), 1u) << line;
        EXPECT_EQ(m.ProgramGroups[0].Name, "G") << line;
        EXPECT_EQ(m.ProgramGroups[0].Programs[0].Path, "C:\\first.exe") << line;
        EXPECT_EQ(m.StartupGroupIndex, 42) << line; // not looked up again
    }

    ProgramGroupReadResult r;
    ProgramModel m = Read("", &r);
    EXPECT_FALSE(r.Ok);
    ASSERT_EQ(m.ProgramGroups.size(), 1u);
    EXPECT_EQ(m.ProgramGroups[0].Name, "");
}

TEST(ProgramGroupFile, BoundTreeShowsGroupsAndProgramsWithUniqueKeys) {
    TreeModel tree;
    tree.Add("", "Old", "left over from before");
    ProgramGroupReadResult r;
    Read(File({"void Startup()", "{", "     Execute (\"C:\\a.exe\", \"-x\", 2.5, \"\");", "}",
               "void My_Tools()", "{", "}"}),
         &r, &tree);
    ASSERT_TRUE(r.Ok) << r.Error << " at line " << r.LineNumber;
    EXPECT_EQ(tree.Find("Old"), TreeModel::kNone);
    ASSERT_EQ(tree.Roots().size(), 1u);
    const TreeNode& root = tree.Node(tree.Roots()[0]);
    EXPECT_EQ(root.Key, "Root");
    EXPECT_EQ(root.Text, "Program Groups");
    ASSERT_EQ(root.Children.size(), 2u);
    EXPECT_EQ(tree.Node(root.Children[1]).Text, "My Tools");
    int path = tree.Find("StartupProgramPath0");
    ASSERT_NE(path, TreeModel::kNone);
    EXPECT_EQ(tree.Node(path).Text, "C:\\a.exe");
    EXPECT_EQ(tree.Node(tree.Find("StartupProgramParameters0")).Text, "-x");
    EXPECT_EQ(tree.Node(tree.Find("StartupProgramDelay0")).Text, "2.5");
    EXPECT_EQ(tree.Node(path).Children.size(), 2u);
    EXPECT_EQ(tree.FullPath(tree.Find("StartupProgramDelay0")),
              "Program Groups\\Startup\\C:\\a.exe\\2.5");

    // Two groups of one name cannot both stand in the tree: the load ends.
    Read(File({"void Twice()", "{", "}", "void Twice()", "{", "}"}), &r, &tree);
    EXPECT_FALSE(r.Ok);
    EXPECT_EQ(r.LineNumber, 4u);
}

} // namespace
} // namespace tolvane
