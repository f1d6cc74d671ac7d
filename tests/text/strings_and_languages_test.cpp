#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <cstdlib>
#include <map>
#include <random>

#include "models/menu_model.h"
#include "support/test_support.h"
#include "text/code_page.h"
#include "text/language.h"
#include "text/placeholders.h"
#include "text/strings.h"
#include "ui/group_editor/group_editor_model.h"
#include "ui/options/options_model.h"
#include "ui/timeline/timeline_model.h"
#include "ui/tips/tip_model.h"

namespace tolvane {
namespace {

using Lines = std::vector<std::string>;

TEST(Strings, TrimRemovesBlanksOnlyAndReplaceDoesNotOverlap) {
    EXPECT_EQ(Trim("\ta\t"), "\ta\t"); // tabs are data unless a rule removes them
    EXPECT_EQ(Trim("    ") + "|" + Trim("  a b  "), "|a b");
    EXPECT_EQ(ReplaceAll("a\\\\\\b", "\\\\", "\\"), "a\\\\b"); // three become two
    EXPECT_EQ(ReplaceAll("abc", "", "x"), "abc");
    EXPECT_EQ(Split("a b  c", ' ').size(), 4u);
    // As std::string_view::find, in any letter case.
    EXPECT_EQ(FindNoCase("a.EXE.exe", ".exe", 2), 5u);
    EXPECT_EQ(FindNoCase("abc", "", 3), 3u);
    EXPECT_EQ(FindNoCase("abc", "", 4), std::string_view::npos);
}

// The seven digits are printf's "%.7g" exactly, whatever the single: from the smallest
// denormal to the largest, on the halfway points too, and a negative zero is a plain "0"; the
// integers are padded as asked.
TEST(Strings, SinglesAreWrittenAsPrintfWritesThem) {
    auto printf7 = [](float v) {
        char buf[64];
        std::snprintf(buf, sizeof buf, "%.7g", static_cast<double>(v));
        return std::string(buf);
    };
    std::mt19937 rng(5);
    std::vector<float> values = {-0.f,          30.f,    -1.25f,     1e-45f,    1.17549435e-38f,
                                 3.4028235e38f, 0.1f,    9999999.5f, 9999999.f, 1e7f,
                                 123456.75f,    0.0001f, 0.00001f,   2.5f,      1234567.5f,
                                 0.125f,        1e-5f,   65536.f};
    for (int i = 0; i < 50000; ++i) {
        uint32_t bits = rng() & 0x7FFFFFFF;
        if ((bits >> 23) == 0xFF)
            continue; // no infinities and no NaN
        float v;
        std::memcpy(&v, &bits, sizeof v);
        values.push_back(i % 2 ? v : -v);
    }
    for (float v : values)
        ASSERT_EQ(FormatSingle(v), v == 0 ? "0" : printf7(v)) << std::hexfloat << v;
    EXPECT_EQ(ZeroPadded(7, 2) + " " + ZeroPadded(2026, 4) + " " + ZeroPadded(0), "07 2026 0");
    EXPECT_EQ(HexPadded(0xAB, 4) + " " + HexPadded(0xFFFFFFFFull, 8), "00ab ffffffff");
}

// More of these through the settings of the program-group file.
TEST(Strings, NumbersAcceptBothDecimalSeparatorsAndNothingElse) {
    EXPECT_EQ(ParseNumber(" -7 "), -7);
    EXPECT_EQ(ParseNumber("+4"), 4);
    EXPECT_EQ(ParseNumber("1e2"), 100);
    EXPECT_EQ(ParseNumber("-.5"), -0.5);
    EXPECT_EQ(ParseNumber("2,"), 2);
    for (const char* bad : {"", " ", "1,5.0", "1;", "--1", "1 2", "nan", "inf", ".", "1e", "0x10",
                            "+-1", "1e+", "e5", "1e400"})
        EXPECT_FALSE(ParseNumber(bad)) << '"' << bad << '"';
    EXPECT_FALSE(ParseSingle("1e39")); // no single holds it

    // The reading agrees with the C library's: bit for bit for numbers as people and files
    // write them (up to 19 digits, powers of ten up to 22), within the last bit of a double
    // for longer and extreme ones; and the single that the program keeps always the same.
    std::mt19937 rng(11);
    auto digits = [&](int n) {
        std::string s;
        for (int i = 0; i < n; ++i)
            s += static_cast<char>('0' + rng() % 10);
        return s;
    };
    for (int i = 0; i < 40000; ++i) {
        const bool plain = i % 2;
        std::string text = (rng() % 4 == 0 ? "-" : "") + digits(1 + rng() % (plain ? 15 : 24));
        if (rng() % 2)
            text.insert(rng() % text.size() + (text[0] == '-'), ".");
        if (rng() % 3 == 0)
            text += "e" + std::to_string(plain ? static_cast<int>(rng() % 14) - 7
                                               : static_cast<int>(rng() % 640) - 330);
        const double expected = std::strtod(text.c_str(), nullptr);
        const std::optional<double> read = ParseNumber(text);
        if (!std::isfinite(expected)) {
            EXPECT_FALSE(read) << text;
            continue;
        }
        ASSERT_TRUE(read) << text;
        if (plain) {
            EXPECT_EQ(*read, expected) << text;
        } else {
            EXPECT_LE(std::fabs(*read - expected),
                      std::fabs(std::nextafter(expected, 0.0) - expected))
                << text;
        }
        EXPECT_EQ(std::signbit(*read), std::signbit(expected)) << text;
        if (std::fabs(expected) <= 3.4028234663852886e38) {
            EXPECT_EQ(ParseSingle(text), static_cast<float>(expected)) << text;
        }
    }

    // Whole numbers round half to even and must fit in sixteen bits.
    const std::pair<const char*, int> whole[] = {
        {"3.5", 4}, {"-2.5", -2}, {"2.6", 3}, {"32767.4", 32767}, {"-32768", -32768}};
    for (auto [text, value] : whole)
        EXPECT_EQ(ParseInteger16(text), value) << text;
    for (const char* bad : {"32768", "32767.5", "-32769"})
        EXPECT_FALSE(ParseInteger16(bad)) << bad;
}

// A placeholder takes its value and one with no value given is dropped; a "%" that starts none
// stays.
TEST(Placeholders, FillInTakesEachValueAndDropsTheOnesNotGiven) {
    EXPECT_EQ(FillIn("%2 before %1, %3 gone%", {"a", "b"}), "b before a,  gone%");
}

// B0 5C is one character in GBK, but a half-width sign and a real "\" in Shift-JIS. The path
// rules and the program-group file check the rest of these rules on real paths and names.
TEST(CodePage, TrailBytesAreNeverSeparators) {
    for (unsigned char b : {0x81, 0x9F, 0xE0, 0xFC})
        EXPECT_TRUE(IsLeadByte(932, b)) << int(b);
    for (unsigned char b : {0x40, 0x80, 0xA0, 0xDF, 0xFD, 0x5C})
        EXPECT_FALSE(IsLeadByte(932, b)) << int(b);
    for (unsigned codePage : {936u, 949u, 950u})
        EXPECT_TRUE(IsLeadByte(codePage, 0x81) && IsLeadByte(codePage, 0xFE) &&
                    !IsLeadByte(codePage, 0x80) && !IsLeadByte(codePage, 0xFF))
            << codePage;
    EXPECT_FALSE(IsLeadByte(1252, 0x83) || IsLeadByte(65001, 0x83));

    EXPECT_EQ(FindLastCharacterOf("C:\\\xB0\x5C", "\\", 936), 2u);
    EXPECT_EQ(FindLastCharacterOf("C:\\\xB0\x5C", "\\", 932), 4u);
    EXPECT_EQ(CharacterLength("a\x83", 1, 932), 1u); // a lead byte at the end stands alone
    EXPECT_EQ(ReplaceAllCharacters("\x83\x5C\\\\\\", "\\\\", "\\", 936), "\x83\x5C\\\\");
}

// UTF-8, the program's own code page: whole sequences or none.
TEST(CodePage, Utf8IsCheckedAndCutByWholeCharacters) {
    for (const char* good : {"", "plain", "Café ☕", "微信", "📅 Calendar", "\xF4\x8F\xBF\xBF"})
        EXPECT_TRUE(IsUtf8(good)) << good;
    // Latin-1, overlong, a surrogate, cut short, past U+10FFFF, a lone continuation byte.
    for (const char* bad :
         {"Caf\xe9", "\xC0\xAF", "\xED\xA0\x80", "\xE5\xBE", "\xF4\x90\x80\x80", "a\x80"})
        EXPECT_FALSE(IsUtf8(bad)) << bad;
    EXPECT_EQ(CharacterLength("📅", 0, kUtf8CodePage), 4u);
    EXPECT_EQ(CharacterLength("\xC2\x80", 0, kUtf8CodePage), 2u); // the lowest two-byte character
    EXPECT_EQ(CharacterLength("\xE5\xBE", 0, kUtf8CodePage), 1u);
    EXPECT_EQ(CutAtCharacter("微信", 5, kUtf8CodePage), "微");
    EXPECT_EQ(CutAtCharacter("ab微", 4, kUtf8CodePage), "ab");
    EXPECT_EQ(CutAtCharacter("\x83\x5C\x83\x5C", 3, 932), "\x83\x5C");
    EXPECT_EQ(WithoutUtf8Mark("\xEF\xBB\xBFx"), "x");
    EXPECT_EQ(WithoutUtf8Mark("\xEF\xBBx"), "\xEF\xBBx");
}

TEST(Language, TextFileEntriesFollowTheCommentAndLineBreakRules) {
    Lines table = {"d0", "d1", "d2", "d3", "d4", "d5"};
    ApplyTextFile(table, "// header comment\r\n"
                         "See A//B\r\n"
                         "\r\n"
                         "   // three blanks stay an entry\r\n"
                         "one$crlf$two$CRLF$three\r\n"
                         "LF\nends\r"
                         "last without line end");
    EXPECT_EQ(table, (Lines{"See A", "   ", "one\r\ntwo\r\nthree", "LF", "ends",
                            "last without line end"}));
    Lines grows;
    ApplyTextFile(grows, "a\r\nb\r\n");
    EXPECT_EQ(grows, (Lines{"a", "b"}));

    EXPECT_EQ(SplitTextLines(""), Lines{});
    EXPECT_EQ(SplitTextLines("\r\n"), Lines{""});
    EXPECT_EQ(SplitTextLines("a\r\n\r\n"), (Lines{"a", ""}));
    EXPECT_EQ(SplitTextLines("a\n\nb\n\r"), (Lines{"a", "", "b", ""})); // LF, then a lone CR
}

TEST(Language, ListLinesNeedACommaAndAreTrimmed) {
    // Saved with LF line ends in part, as some editors do.
    auto list = ParseLanguageList("// languages\n"
                                  "English, en\r\n"
                                  "no comma here\n"
                                  "  Deutsch  ,  de  \r\n"
                                  "Fran\xE7"
                                  "ais,fr // comment\r\n"
                                  "   \r\n");
    Lines read;
    for (const LanguageEntry& e : list)
        read.push_back(e.Name + "|" + e.Code);
    EXPECT_EQ(read, (Lines{"English|en", "Deutsch|de",
                           "Fran\xE7"
                           "ais|fr"}));
    auto none = ParseLanguageList("nothing usable\r\n");
    ASSERT_EQ(none.size(), 1u);
    EXPECT_EQ(none[0].Code, "");
}

std::string ShippedFile(const std::string& relative) {
    return test::ReadFileBytes(test::TestDataPath("../lang/" + relative));
}

Lines Entries(const std::string& relative) {
    Lines table;
    ApplyTextFile(table, ShippedFile(relative));
    return table;
}

// Well-formed UTF-8 without a byte-order mark, every line ended by CR LF.
bool InShippedForm(std::string_view bytes) {
    return IsUtf8(bytes) && !bytes.starts_with("\xEF\xBB\xBF") &&
           ReplaceAll(std::string(bytes), "\r\n", "").find_first_of("\r\n") == std::string::npos;
}

// The fill-ins of a text ("%1" to "%9"), in the order of their numbers.
std::string FillIns(std::string_view text) {
    std::string numbers;
    for (size_t i = 0; i + 1 < text.size(); ++i)
        if (text[i] == '%' && text[i + 1] >= '1' && text[i + 1] <= '9')
            numbers += text[i + 1];
    std::sort(numbers.begin(), numbers.end());
    return numbers;
}

// Each access key names one entry of a menu level.
void ExpectOwnAccessKeys(const std::vector<MenuItem>& level, const std::string& where) {
    std::map<std::string, std::string> named;
    for (const MenuItem& item : level) {
        const std::string key = test::AccessKey(item.Caption);
        if (!key.empty() && !named.emplace(key, item.Caption).second)
            ADD_FAILURE() << where << ": \"" << named[key] << "\" and \"" << item.Caption
                          << "\" share one access key";
        ExpectOwnAccessKeys(item.Entries, where + " > " + item.Caption);
    }
}

// Every language of the list has each entry of every table that the program reads (the tips of
// the day are free text), with a text wherever English has one and the fill-ins of the built-in
// English text, which the English files of the shared tables hold word for word. Each menu level
// names every access key once.
TEST(ShippedLanguages, EveryLanguageHasEveryTextAndEachMenuLevelItsOwnAccessKeys) {
    const TextTables builtIn;
    const std::pair<std::string, Lines> tables[] = {
        {"buttons", builtIn.Buttons},        {"menus", builtIn.Menus},
        {"messages", builtIn.Messages},      {"toolbar", builtIn.Toolbar},
        {"options", BuiltInOptionsTexts()},  {"properties", BuiltInGroupEditorTexts()},
        {"tips", BuiltInTipTexts()},         {"tipofday", {}},
        {"timeline", BuiltInTimelineTexts()}};
    const auto languages = ParseLanguageList(ShippedFile("languagefile.dat"));
    ASSERT_EQ(languages.size(), 2u);
    for (size_t t = 0; t < std::size(tables); ++t) {
        const auto& [name, english] = tables[t];
        const Lines en = Entries("en/" + name + ".en");
        if (t < 4) {
            EXPECT_EQ(en, english) << name;
        }
        for (const LanguageEntry& language : languages) {
            const std::string file = language.Code + "/" + name + "." + language.Code;
            EXPECT_TRUE(InShippedForm(ShippedFile(file))) << file;
            if (english.empty())
                continue;
            const Lines texts = Entries(file);
            EXPECT_EQ(texts.size(), english.size()) << file;
            for (size_t i = 0; i < english.size(); ++i) {
                const std::string& text = TextTables::Entry(texts, i);
                EXPECT_FALSE(Trim(text).empty() && !Trim(TextTables::Entry(en, i)).empty())
                    << file << " entry " << i;
                EXPECT_EQ(FillIns(text), FillIns(english[i]))
                    << file << " entry " << i << ": " << text;
            }
            if (name == "menus") {
                ExpectOwnAccessKeys(BuildMainMenu(texts, languages, language.Code), file);
                ExpectOwnAccessKeys(BuildItemPopup(texts), file);
            }
        }
    }
}

} // namespace
} // namespace tolvane
