#include <gtest/gtest.h>

#include <algorithm>

#include "config/delay_load.h"
#include "config/program_group_file.h"
#include "items/refresh.h"
#include "platform/registry.h"
#include "startup/run_entry.h"
#include "support/test_support.h"
#include "support/win_test_support.h"

namespace tolvane {
namespace {

class Refresh : public ::testing::Test {
protected:
    void SetUp() override {
        places.Clear();
        app.folders.UserStartupFolder = places.UserFolder;
        app.folders.CommonStartupFolder = places.CommonFolder;
    }
    void TearDown() override { places.Clear(); }

    std::vector<std::string> Items(const char* container) {
        std::vector<std::string> texts;
        for (int child : tree.Node(tree.Find(container)).Children)
            texts.push_back(tree.Node(child).Text);
        std::sort(texts.begin(), texts.end());
        return texts;
    }
    std::string Caption(const char* container) { return tree.Node(tree.Find(container)).Text; }

    test::StartupLocations places;
    test::TempFolder folder{"program"};
    test::CapturedMessages messages;
    AppState app{folder.Path(), messages};
    TreeModel tree;
    StartupListing listing;
    CRegistry reg;
};

TEST_F(Refresh, ListsTheRealLocationsAndTheFileAndHidesTheProgramsOwnValue) {
    const std::string target = "C:\\windows\\notepad.exe";
    ASSERT_TRUE(test::CreateShortcut(places.UserFolder + "\\Alpha.lnk", target));
    ASSERT_TRUE(test::CreateShortcut(places.UserFolder + "\\Beta Tool.lnk", target));
    ASSERT_TRUE(test::CreateShortcut(places.CommonFolder + "\\Gamma.lnk", target));
    test::WriteFileBytes(places.UserFolder + "\\desktop.ini", ""); // never an item
    reg.SaveSettingString(RegistryRoot::CurrentUser, kRunKey, "A", "C:\\a.exe /x=1");
    reg.SaveSettingString(RegistryRoot::LocalMachine, kRunKey, "M", "\"C:\\m m\\m.exe\"");

    ProgramModel file;
    SetDefaultModel(file);
    file.StartupType = 2; // the program enters itself for this user, and hides that value
    file.ProgramGroups[0].Programs = {{"Delayed.lnk", "", "Execute"},
                                      {"C:\\d.exe", "-q", "ExecuteReg", 5, "D"}};
    file.StoppedPrograms = {"_STPCU_Stopped.lnk"};
    test::WriteFileBytes(CDelayLoad(app).FilePath(),
                         FormatProgramGroupFile(file, app.text.Languages));
    app.SafeList = {{"Gamma", "known"}};

    CDelayLoad(app).LoadItems(); // as the program's start does
    std::vector<double> progress;
    ASSERT_TRUE(RefreshData(app, tree, listing, [&](double v) { progress.push_back(v); }));
    EXPECT_EQ(reg.GetSettingString(RegistryRoot::CurrentUser, kRunKey, kOwnRunValue),
              app.folders.RunCommand);
    EXPECT_EQ(Caption("CurrentUserRoot"), "Current User (3)");
    EXPECT_EQ(Items("CurrentUserStartup"),
              (std::vector<std::string>{"Alpha.lnk", "Beta Tool.lnk"}));
    EXPECT_EQ(Items("CurrentUserRegistry"), std::vector<std::string>{"A=C:\\a.exe /x=1"});
    EXPECT_EQ(Items("AllUsersStartup"), std::vector<std::string>{"Gamma.lnk"});
    EXPECT_EQ(Items("AllUsersRegistry"), std::vector<std::string>{"M=\"C:\\m m\\m.exe\""});
    EXPECT_EQ(Items("DelayedItemsStartupCurrentUser"), std::vector<std::string>{"Delayed.lnk"});
    EXPECT_EQ(Items("DelayedItemsRegistryCurrentUser"), std::vector<std::string>{"D=C:\\d.exe -q"});
    EXPECT_EQ(Items("StoppedItemsCurrentStartup"), std::vector<std::string>{"Stopped.lnk"});
    EXPECT_TRUE(tree.Node(tree.Node(tree.Find("AllUsersStartup")).Children[0]).Bold);
    EXPECT_EQ(progress.size(), 7u);

    // A Startup folder that is not there lists nothing.
    app.folders.UserStartupFolder = folder / "no such folder";
    ASSERT_TRUE(RefreshData(app, tree, listing));
    EXPECT_EQ(Caption("CurrentUserStartup"), "Startup Folder (0)");
}

} // namespace
} // namespace tolvane
