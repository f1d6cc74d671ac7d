#include "startup_fixture.h"

#include "config/program_group_file.h"
#include "startup/run_entry.h"

namespace tolvane {
namespace {

using StartupRefresh = test::StartupFixture;

TEST_F(StartupRefresh, ListsTheRealLocationsAndTheFileAndHidesTheProgramsOwnValue) {
    for (const char* name : {"Alpha.lnk", "Beta Tool.lnk"})
        Shortcut(places.UserFolder, name);
    Shortcut(places.CommonFolder, "Gamma.lnk");
    test::WriteFileBytes(UserStartup("desktop.ini"), ""); // never an item
    RunValue(RegistryRoot::CurrentUser, "A", "C:\\a.exe /x=1");
    RunValue(RegistryRoot::LocalMachine, "M", "\"C:\\m m\\m.exe\"");

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
    EXPECT_TRUE(tree.Node(Leaves("AllUsersStartup")[0]).Bold);
    EXPECT_EQ(progress.size(), 7u);

    // A Startup folder that is not there lists nothing.
    app.folders.UserStartupFolder = folder / "no such folder";
    ASSERT_TRUE(RefreshData(app, tree, listing));
    EXPECT_EQ(Caption("CurrentUserStartup"), "Startup Folder (0)");
}

} // namespace
} // namespace tolvane
