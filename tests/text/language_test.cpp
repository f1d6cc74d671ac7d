#include <gtest/gtest.h>

#include "support/test_support.h"
#include "text/language.h"

namespace tolvane {
namespace {

TEST(Language, TextFileEntriesFollowTheCommentAndLineBreakRules) {
    std::vector<std::string> table = {"d0", "d1", "d2", "d3", "d4", "d5"};
    ApplyTextFile(table, "// header comment\r\n"
                         "See A//B\r\n"
                         "\r\n"
                         "   // three blanks stay an entry\r\n"
                         "one$crlf$two$CRLF$three\r\n"
                         "lone\nLF stays\r"
                         "last without line end");
    EXPECT_EQ(table, (std::vector<std::string>{"See A", "   ", "one\r\ntwo\r\nthree",
                                               "lone\nLF stays", "last without line end", "d5"}));

    // A shorter file of another language leaves the rest of the table as it was.
    std::vector<std::string> messages(14, "english");
    std::string ten;
    for (int i = 0; i < 10; ++i)
        ten += "deutsch " + std::to_string(i) + "\r\n";
    ApplyTextFile(messages, ten);
    EXPECT_EQ(messages[9], "deutsch 9");
    EXPECT_EQ(messages[10], "english");
    EXPECT_EQ(messages[13], "english");

    std::vector<std::string> grows;
    ApplyTextFile(grows, "a\r\nb\r\n");
    EXPECT_EQ(grows, (std::vector<std::string>{"a", "b"}));
}

TEST(Language, ListLinesNeedACommaAndAreTrimmed) {
    auto list = ParseLanguageList("// languages\r\n"
                                  "English, en\r\n"
                                  "no comma here\r\n"
                                  "  Deutsch  ,  de  \r\n"
                                  "Fran\xE7"
                                  "ais,fr // comment\r\n"
                                  "   \r\n");
    ASSERT_EQ(list.size(), 3u);
    EXPECT_EQ(list[0].Name, "English");
    EXPECT_EQ(list[0].Code, "en");
    EXPECT_EQ(list[1].Name, "Deutsch");
    EXPECT_EQ(list[1].Code, "de");
    EXPECT_EQ(list[2].Name, "Fran\xE7"
                            "ais");
    EXPECT_EQ(list[2].Code, "fr");

    auto none = ParseLanguageList("nothing usable\r\n");
    ASSERT_EQ(none.size(), 1u);
    EXPECT_EQ(none[0].Code, "");
}

TEST(Language, LinesEndAtCrOrCrLfOnly) {
    EXPECT_EQ(SplitTextLines(""), std::vector<std::string>{});
    EXPECT_EQ(SplitTextLines("\r\n"), std::vector<std::string>{""});
    EXPECT_EQ(SplitTextLines("a\rb\r\nc\nd"), (std::vector<std::string>{"a", "b", "c\nd"}));
    EXPECT_EQ(SplitTextLines("a\r\n\r\n"), (std::vector<std::string>{"a", ""}));
    EXPECT_EQ(CutComment("//x"), "");
    EXPECT_EQ(CutComment("no comment"), "no comment");
    EXPECT_EQ(ExpandLineBreaks("a$CrLf$$crlf$b"), "a\r\n\r\nb");
}

} // namespace
} // namespace tolvane

namespace tolvane {
namespace {

std::vector<std::string> Entries(const std::string& relative) {
    std::vector<std::string> table;
    ApplyTextFile(table, test::ReadFileBytes(test::TestDataPath("../lang/" + relative)));
    return table;
}

TEST(ShippedLanguages, EnglishFilesAreTheBuiltInTextsAndGermanHasEveryEntry) {
    const TextTables builtIn;
    EXPECT_EQ(Entries("en/buttons.en"), builtIn.Buttons);
    EXPECT_EQ(Entries("en/menus.en"), builtIn.Menus);
    EXPECT_EQ(Entries("en/messages.en"), builtIn.Messages);
    EXPECT_EQ(Entries("en/toolbar.en"), builtIn.Toolbar);
    EXPECT_EQ(builtIn.Messages.size(), 14u);
    EXPECT_EQ(builtIn.Menus.size(), 22u);
    for (const char* table :
         {"buttons", "menus", "messages", "toolbar", "options", "properties", "tips"}) {
        const std::string name(table);
        EXPECT_EQ(Entries("de/" + name + ".de").size(), Entries("en/" + name + ".en").size())
            << name;
    }
    auto languages =
        ParseLanguageList(test::ReadFileBytes(test::TestDataPath("../lang/languagefile.dat")));
    ASSERT_EQ(languages.size(), 2u);
    EXPECT_EQ(languages[0].Code, "en");
    EXPECT_EQ(languages[1].Code, "de");
}

} // namespace
} // namespace tolvane
