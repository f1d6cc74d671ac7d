#include <gtest/gtest.h>

#include "items/online_search.h"

namespace tolvane {
namespace {

const char* kTemplate = "https://search.example/?q={SEARCHTERMS}";

TEST(OnlineSearch, TermsComeFromTheItemAndTheWholeAddressIsEscaped) {
    // A shortcut searches for its file name; the template's own ? = / : stay.
    EXPECT_EQ(SearchAddress(kTemplate, "Tool.lnk"), "https://search.example/?q=Tool.lnk");
    // A Run value: its name and its program, the quoted part alone when it starts quoted.
    EXPECT_EQ(SearchTerms("Tool=\"C:\\Program Files\\T\\tool.exe\" /min"),
              "Tool, C:\\Program Files\\T\\tool.exe");
    EXPECT_EQ(SearchAddress(kTemplate, "Tool=\"C:\\Program Files\\T\\tool.exe\" /min"),
              "https://search.example/?q=Tool,%20C:%5CProgram%20Files%5CT%5Ctool.exe");
    EXPECT_EQ(SearchTerms("Tool=  C:\\T\\tool.exe /min "), "Tool, C:\\T\\tool.exe /min");
    // An opening quote without its closing one leaves the program as it is.
    EXPECT_EQ(SearchTerms("Q=\"C:\\q.exe"), "Q, \"C:\\q.exe");
    // "&" joining the template's parameters is escaped too; "%" passes unescaped.
    EXPECT_EQ(SearchAddress("https://s.example/?a=1&q={SEARCHTERMS}&q2={SEARCHTERMS}", "50%.lnk"),
              "https://s.example/?a=1%26q=50%.lnk%26q2=50%.lnk");
    // Without the placeholder the template itself opens; without a template, nothing.
    EXPECT_EQ(SearchAddress("https://s.example/a b", "Tool.lnk"), "https://s.example/a%20b");
    EXPECT_EQ(SearchAddress("", "Tool.lnk"), "");
    EXPECT_EQ(SearchAddress(kTemplate, ""), "");
}

TEST(OnlineSearch, EscapesExactlyTheThirteenCharacters) {
    EXPECT_EQ(URLEncode("^&`{}|][\"<>\\ "), "%5E%26%60%7B%7D%7C%5D%5B%22%3C%3E%5C%20");
    const std::string unchanged = "%#?/:=+~!$'()*,;@\t\xe4\xdf";
    EXPECT_EQ(URLEncode(unchanged), unchanged);
}

} // namespace
} // namespace tolvane
