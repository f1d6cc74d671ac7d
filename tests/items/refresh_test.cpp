#include "startup_fixture.h"

#include "config/program_group_file.h"
#include "items/run_entry.h"

namespace tolvane {
namespace {

using StartupRefresh = test::StartupFixture;

TEST_F(StartupRefresh, ListsTheRealLocationsAndTheFileAndHidesTheProgramsOwnValue) {
    for (const char* name : {"Alpha.lnk", "Beta Tool.lnk"})
        Shortcut(places.UserFolder, name);
    Shortcut(places.CommonFolder, "Gamma.lnk");
    test::WriteFileBytes(UserStartup("desktop.ini"), "");
    RunValue(RegistryRoot::CurrentUser, "A", "C:\\a.exe /x=1");
    RunValue(RegistryRoot::LocalMachine, "M", "\"C:\\m m\\m.exe\"");
    RunValue(RegistryRoot::CurrentUser, kOwnRunValue, app.folders.RunCommand);

    ProgramModel file;
    SetDefaultModel(file);
    file.ProgramGroups[0].Programs = {{"Delayed.lnk", "", "Execute"},
                                      {"C:\\d.exe", "-q", "ExecuteReg", 5, "D"}};
    file.StoppedPrograms = {"_STPCU_Stopped.lnk"};
    test::WriteFileBytes(app.Store().File().FilePath(),
                         FormatProgramGroupFile(file, app.text.Languages));
    app.SafeList = {{"Gamma", "known"}};

    app.Store().File().LoadItems(); // as the program's start does
    std::vector<double> progress;
    ASSERT_TRUE(RefreshData(app.Store(), app.text, app.SafeList, app.log, tree, listing,
                            [&](double v) { progress.push_back(v); }));
    // Neither desktop.ini nor the program's own value is an item.
    EXPECT_EQ(
        test::Outline(tree, true),
        "All Users (2)[Registry Run (1)[M=\"C:\\m m\\m.exe\"], Startup Folder (1)[Gamma.lnk]], "
        "Current User (3)[Registry Run (1)[A=C:\\a.exe /x=1], "
        "Startup Folder (2)[Alpha.lnk, Beta Tool.lnk]], "
        "Delayed Items (2)[All Users (0)[Registry Run (0), Startup Folder (0)], "
        "Current User (2)[Registry Run (1)[D=C:\\d.exe -q], Startup Folder (1)[Delayed.lnk]]], "
        "Stopped Items (1)[All Users (0)[Registry (0), Startup Folder (0)], "
        "Current User (1)[Registry (0), Startup Folder (1)[Stopped.lnk]]]");
    EXPECT_TRUE(tree.Node(Leaves("AllUsersStartup")[0]).Bold);
    EXPECT_EQ(progress.size(), 7u);

    // A Startup folder that is not there lists nothing.
    app.folders.UserStartupFolder = folder / "no such folder";
    ASSERT_TRUE(RefreshData(app.Store(), app.text, app.SafeList, app.log, tree, listing));
    EXPECT_EQ(Caption("CurrentUserStartup"), "Startup Folder (0)");
}

} // namespace
} // namespace tolvane
