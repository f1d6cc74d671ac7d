#include <gtest/gtest.h>

#include <random>

#include "text/strings.h"

namespace tolvane {
namespace {

TEST(Strings, TrimRemovesBlanksOnlyAndReplaceDoesNotOverlap) {
    EXPECT_EQ(Trim("  a b  "), "a b");
    EXPECT_EQ(Trim("\ta\t"), "\ta\t"); // tabs are data unless a rule removes them
    EXPECT_EQ(Trim("    "), "");
    EXPECT_EQ(ReplaceAll("a\\\\\\b", "\\\\", "\\"), "a\\\\b"); // three become two
    EXPECT_EQ(ReplaceAll("abc", "", "x"), "abc");
    EXPECT_TRUE(ContainsNoCase("C:\\Model\\x.exe", "DEL"));
    EXPECT_EQ(FindNoCase("xx.EXE", ".exe"), 2u);
    EXPECT_EQ(Split("a b  c", ' ').size(), 4u);
}

TEST(Strings, SinglesAreWrittenInTheirShortestFormAndReadBack) {
    const std::pair<float, const char*> cases[] = {
        {30.f, "30"},      {2.5f, "2.5"},          {0.5f, "0.5"}, {10.f, "10"}, {0.1f, "0.1"},
        {-1.25f, "-1.25"}, {1234567.f, "1234567"}, {0.f, "0"},    {-0.f, "0"},  {100.f, "100"},
    };
    for (auto [value, text] : cases)
        EXPECT_EQ(FormatSingle(value), text) << value;

    // Whatever is written reads back to a number that is written the same way again.
    std::mt19937 rng(7);
    std::uniform_real_distribution<float> dist(-1e5f, 1e5f);
    for (int i = 0; i < 2000; ++i) {
        float v = dist(rng);
        std::string once = FormatSingle(v);
        auto back = ParseSingle(once);
        ASSERT_TRUE(back) << once;
        EXPECT_EQ(FormatSingle(*back), once);
        EXPECT_EQ(once.find('e'), std::string::npos) << once;
    }
}

TEST(Strings, NumbersAcceptBothDecimalSeparatorsAndNothingElse) {
    EXPECT_EQ(ParseNumber("2.5"), 2.5);
    EXPECT_EQ(ParseNumber("2,5"), 2.5);
    EXPECT_EQ(ParseNumber(" 7 "), 7);
    EXPECT_EQ(ParseNumber("-3"), -3);
    EXPECT_EQ(ParseNumber("+4"), 4);
    EXPECT_EQ(ParseNumber("1e2"), 100);
    for (const char* bad :
         {"", " ", "1.2.3", "1,5.0", "x", "1;", "1; ", "--1", "1 2", "nan", "inf"})
        EXPECT_FALSE(ParseNumber(bad)) << '"' << bad << '"';
    EXPECT_FALSE(ParseSingle("1e39")); // no single holds it
}

TEST(Strings, WholeNumbersRoundHalfToEvenWithinSixteenBits) {
    EXPECT_EQ(ParseInteger16("2.5"), 2);
    EXPECT_EQ(ParseInteger16("3.5"), 4);
    EXPECT_EQ(ParseInteger16("-2.5"), -2);
    EXPECT_EQ(ParseInteger16("2.6"), 3);
    EXPECT_EQ(ParseInteger16("32767"), 32767);
    EXPECT_EQ(ParseInteger16("32767.4"), 32767);
    EXPECT_EQ(ParseInteger16("-32768"), -32768);
    EXPECT_FALSE(ParseInteger16("32768"));
    EXPECT_FALSE(ParseInteger16("32767.5")); // rounds to 32768
    EXPECT_FALSE(ParseInteger16("-32769"));
    EXPECT_FALSE(ParseInteger16("x"));
    EXPECT_FALSE(ParseInteger16("1; "));
}

} // namespace
} // namespace tolvane
