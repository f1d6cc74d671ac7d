#include <gtest/gtest.h>

#include "items/online_search.h"

namespace tolvane {
namespace {

const char* kTemplate = "https://search.example/?q={SEARCHTERMS}";

TEST(OnlineSearch, TermsComeFromTheItemAndExactlyThirteenCharactersAreEscaped) {
    auto shortcut = [](std::string name) {
        return StartupItem{ItemLocation::UserFolder, ItemState::Active, std::move(name)};
    };
    // A Run value with the program its command names, as the refresh read it.
    auto value = [](std::string name, std::string program) {
        StartupItem item{ItemLocation::MachineRun, ItemState::Stopped, std::move(name),
                         "\"" + program + "\" /min"};
        item.File = std::move(program);
        return item;
    };
    // A shortcut searches for its file name; the template's own ? = / : stay.
    EXPECT_EQ(SearchAddress(kTemplate, shortcut("Tool.lnk")), "https://search.example/?q=Tool.lnk");
    // A Run value, in any state: its program's file name alone, never a folder; the value's
    // name for a program that only hosts what its command names, or for none.
    const std::pair<StartupItem, const char*> terms[] = {
        {value("Tool", "C:\\Users\\Ann Lee\\AppData\\T\\tool.exe"), "tool.exe"},
        {value("Q=1", "%ProgramFiles%\\q.exe"), "q.exe"},
        {value("Tray", "C:\\Windows\\System32\\RunDLL32.EXE"), "Tray"},
        {value("Sync", "powershell"), "Sync"},
        {value("Wsh", "C:/Windows/wscript.exe"), "Wsh"},
        {value("Empty", ""), "Empty"},
    };
    for (const auto& [item, expected] : terms)
        EXPECT_EQ(SearchTerms(item), expected) << item.File;
    EXPECT_EQ(SearchAddress(kTemplate, value("T", "C:\\A B\\my tool.exe")),
              "https://search.example/?q=my%20tool.exe");
    // "&" joining the template's parameters is escaped too; "%" passes unescaped.
    EXPECT_EQ(SearchAddress("https://s.example/?a=1&q={SEARCHTERMS}&q2={SEARCHTERMS}",
                            shortcut("50%.lnk")),
              "https://s.example/?a=1%26q=50%.lnk%26q2=50%.lnk");
    // Without the placeholder the template itself opens; without a template, nothing.
    EXPECT_EQ(SearchAddress("https://s.example/a b", shortcut("Tool.lnk")),
              "https://s.example/a%20b");
    EXPECT_EQ(SearchAddress("", shortcut("Tool.lnk")), "");
    EXPECT_EQ(SearchAddress(kTemplate, shortcut("")), "");
    // Exactly thirteen characters are escaped.
    EXPECT_EQ(URLEncode("^&`{}|][\"<>\\ "), "%5E%26%60%7B%7D%7C%5D%5B%22%3C%3E%5C%20");
    const std::string unchanged = "%#?/:=+~!$'()*,;@\t\xe4\xdf";
    EXPECT_EQ(URLEncode(unchanged), unchanged);
}

} // namespace
} // namespace tolvane
