#include <gtest/gtest.h>

#include "items/online_search.h"

namespace tolvane {
namespace {

const char* kTemplate = "https://search.example/?q={SEARCHTERMS}";

// A machine with one program with blanks in its path.
struct OneProgram : CommandLineSystem {
    bool FileExists(const std::string& path) const override {
        return path == "C:\\Program Files\\T\\tool.exe";
    }
    std::string Expand(const std::string& text) const override { return text; }
};

TEST(OnlineSearch, TermsComeFromTheItemAndTheWholeAddressIsEscaped) {
    const OneProgram machine;
    auto address = [&](std::string_view t, std::string_view text) {
        return SearchAddress(t, text, machine);
    };
    // A shortcut searches for its file name; the template's own ? = / : stay.
    EXPECT_EQ(address(kTemplate, "Tool.lnk"), "https://search.example/?q=Tool.lnk");
    // A Run value: its name and its program, read as Windows reads the command.
    EXPECT_EQ(address(kTemplate, "Tool=\"C:\\Program Files\\T\\tool.exe\" /min"),
              "https://search.example/?q=Tool,%20C:%5CProgram%20Files%5CT%5Ctool.exe");
    EXPECT_EQ(SearchTerms("Tool=C:\\Program Files\\T\\tool.exe /min", machine),
              "Tool, C:\\Program Files\\T\\tool.exe");
    EXPECT_EQ(SearchTerms("Q=  C:\\q.exe /min ", machine), "Q, C:\\q.exe");
    // "&" joining the template's parameters is escaped too; "%" passes unescaped.
    EXPECT_EQ(address("https://s.example/?a=1&q={SEARCHTERMS}&q2={SEARCHTERMS}", "50%.lnk"),
              "https://s.example/?a=1%26q=50%.lnk%26q2=50%.lnk");
    // Without the placeholder the template itself opens; without a template, nothing.
    EXPECT_EQ(address("https://s.example/a b", "Tool.lnk"), "https://s.example/a%20b");
    EXPECT_EQ(address("", "Tool.lnk"), "");
    EXPECT_EQ(address(kTemplate, ""), "");
}

TEST(OnlineSearch, EscapesExactlyTheThirteenCharacters) {
    EXPECT_EQ(URLEncode("^&`{}|][\"<>\\ "), "%5E%26%60%7B%7D%7C%5D%5B%22%3C%3E%5C%20");
    const std::string unchanged = "%#?/:=+~!$'()*,;@\t\xe4\xdf";
    EXPECT_EQ(URLEncode(unchanged), unchanged);
}

} // namespace
} // namespace tolvane
