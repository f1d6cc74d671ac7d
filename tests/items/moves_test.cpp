#include "startup_fixture.h"

#include <functional>
#include <regex>

#include "items/move_steps.h"
#include "platform/dir_struct.h"
#include "text/strings.h"

namespace tolvane {
namespace {

using Shown = test::CapturedMessages::Shown;
using Lines = std::vector<std::string>;

class ItemMovesTest : public test::StartupFixture {
protected:
    // Where an item of the current user is now, as a refresh shows it: "active", then
    // "delayed" and "stopped" once for every item of those containers that is it.
    std::string State(bool active, const char* delayedIn, const char* stoppedIn,
                      const std::function<bool(const std::string&)>& isIt) {
        std::string out = active ? "active" : "";
        for (const char* container : {delayedIn, stoppedIn})
            for (const std::string& text : Items(container))
                if (isIt(text))
                    out += (out.empty() ? "" : "+") +
                           std::string(container == delayedIn ? "delayed" : "stopped");
        return out;
    }
    std::string ShortcutState(const std::string& name) {
        Refresh();
        return State(test::PathExists(UserStartup(name)), "DelayedItemsStartupCurrentUser",
                     "StoppedItemsCurrentStartup", [&](auto& text) { return text == name; });
    }
    // A delayed value shows as "name=...", a stopped one by its path alone.
    std::string ValueState(const std::string& name, const std::string& path) {
        Refresh();
        return State(Run(RegistryRoot::CurrentUser, name) != "(none)",
                     "DelayedItemsRegistryCurrentUser", "StoppedItemsCurrentReg", [&](auto& text) {
                         return StartsWith(text, name + "=") || Trim(text) == Trim(path);
                     });
    }
    // Each row: the flags of a pass ("1" or "0" for delay pass, stop, stopped to delayed,
    // restore pass) and the states of an active, a delayed and a stopped item afterwards, all
    // three checked. Every row starts from a fresh file and fresh locations.
    void ExpectFlagTable(const std::vector<Lines>& rows, bool registry,
                         const std::function<void()>& makeCheckedItems,
                         const std::function<Lines()>& states) {
        for (const Lines& row : rows) {
            places.Clear();
            app.model.StoppedPrograms = {""};
            app.model.ProgramGroups = {{"Startup", {{}}}};
            app.model.StartupGroupIndex = 0;
            CDelayLoad(app).WriteItems();
            makeCheckedItems();
            const std::string& flags = row[0];
            const bool stop = flags[1] == '1', toDelayed = flags[2] == '1';
            if (flags[0] == '1') {
                EXPECT_TRUE(registry ? Moves().DelayCheckedRegistryItems(stop, toDelayed)
                                     : Moves().DelayCheckedStartupItems(stop, toDelayed))
                    << flags;
            }
            if (flags[3] == '1') {
                EXPECT_TRUE(registry ? Moves().RestoreCheckedRegistryItems()
                                     : Moves().RestoreCheckedStartupItems())
                    << flags;
            }
            EXPECT_EQ(states(), Lines(row.begin() + 1, row.end())) << flags;
            EXPECT_TRUE(messages.shown.empty()) << flags;
        }
    }
    // The backup files written so far, oldest first.
    Lines Backups() { return test::FilesBelow(folder / "Delayed Registry"); }
    std::string AllBackups() {
        std::string all;
        for (const std::string& file : Backups())
            all += test::ReadFileBytes(file);
        return all;
    }
};

TEST_F(ItemMovesTest, AShortcutIsDelayedStoppedAndPutBackWithItsFile) {
    Shortcut(places.UserFolder, "Tool.lnk");
    const std::string bytes = test::ReadFileBytes(UserStartup("Tool.lnk"));
    Refresh();
    EXPECT_FALSE(Moves().DelayStartupItem("", 3, false));

    ASSERT_TRUE(Moves().DelayStartupItem("Tool.lnk", 3, false));
    EXPECT_EQ(test::ReadFileBytes(UserItems("Tool.lnk")), bytes);
    // Written at once, with the items-folder path (two backslashes before the name).
    EXPECT_NE(test::ReadFileBytes(CDelayLoad(app).FilePath())
                  .find("     Execute (\"" + app.folders.UserItemsFolder +
                        "\\Tool.lnk\", \"\", 0, \"\");"),
              std::string::npos);
    EXPECT_EQ(ShortcutState("Tool.lnk"), "delayed");
    // Delayed again: it ends delayed once, not twice.
    ASSERT_TRUE(Moves().DelayStartupItem("Tool.lnk", 3, false));
    EXPECT_EQ(ShortcutState("Tool.lnk"), "delayed");

    ASSERT_TRUE(Moves().DelayStartupItem("Tool.lnk", 3, true)); // stop: the file stays
    EXPECT_EQ(ShortcutState("Tool.lnk"), "stopped");
    EXPECT_EQ(test::ReadFileBytes(UserItems("Tool.lnk")), bytes);

    Moves().RestoreStartupItem("Tool.lnk", 3, true);
    EXPECT_EQ(ShortcutState("Tool.lnk"), "active");
    EXPECT_EQ(test::ReadFileBytes(UserStartup("Tool.lnk")), bytes);

    // An all-users shortcut goes to its own items folder.
    Shortcut(places.CommonFolder, "Word.lnk");
    ASSERT_TRUE(Moves().DelayStartupItem("Word.lnk", 2, false));
    EXPECT_TRUE(test::PathExists(app.folders.AllUsersItemsFolder + "Word.lnk"));
    Refresh();
    EXPECT_EQ(Items("DelayedItemsStartupAllUsers"), std::vector<std::string>{"Word.lnk"});
}

TEST_F(ItemMovesTest, AnItemOfTheSameNameIsNeverOverwritten) {
    test::WriteFileBytes(folder / "log.txt", ""); // logging on
    Shortcut(places.UserFolder, "Tool.lnk");
    Refresh();
    ASSERT_TRUE(Moves().DelayStartupItem("Tool.lnk", 3, false));
    // The program put itself back into the Startup folder, as installers do, but differently.
    test::WriteFileBytes(UserStartup("Tool.lnk"), "a newer shortcut");
    const std::string held = test::ReadFileBytes(UserItems("Tool.lnk"));
    Refresh();
    EXPECT_FALSE(Moves().DelayStartupItem("Tool.lnk", 3, false));
    Moves().RestoreStartupItem("Tool.lnk", 3, false);
    EXPECT_EQ(test::ReadFileBytes(UserStartup("Tool.lnk")), "a newer shortcut");
    EXPECT_EQ(test::ReadFileBytes(UserItems("Tool.lnk")), held);
    EXPECT_EQ(ShortcutState("Tool.lnk"), "active+delayed"); // both still there, both shown
    const std::string log = test::ReadFileBytes(folder / "log.txt");
    EXPECT_NE(log.find("Error: DelayStartupItem: something else named \"" +
                       app.folders.UserItemsFolder + "\\Tool.lnk\" is already there"),
              std::string::npos)
        << log;
    EXPECT_NE(log.find("Error: RestoreStartupItem: something else named"), std::string::npos);

    // A folder where the shortcut would go: nothing moves into it.
    test::MakeFolder(UserItems("Folder.lnk"));
    Shortcut(places.UserFolder, "Folder.lnk");
    Refresh();
    Check("CurrentUserStartup", "Folder.lnk");
    EXPECT_FALSE(Moves().DelayCheckedStartupItems(false, false));
    EXPECT_EQ(messages.shown, (std::vector<Shown>{{app.text.Message(2), "Tolvane", 0x30}}));
    EXPECT_TRUE(test::PathExists(UserStartup("Folder.lnk")));

    // The same for a Run value: the program entered itself again, differently.
    messages.shown.clear();
    RunValue(RegistryRoot::CurrentUser, "App", "C:\\app.exe /old");
    Refresh();
    ASSERT_TRUE(Moves().DelayRegistryItem("App=C:\\app.exe /old", 1, false));
    RunValue(RegistryRoot::CurrentUser, "App", "C:\\app.exe /new");
    Refresh();
    Moves().RestoreRegistryItem("App=C:\\app.exe /old", 1, false);
    EXPECT_EQ(ValueState("App", "C:\\app.exe"), "active+delayed");

    Check("CurrentUserRegistry", "App=C:\\app.exe /new");
    EXPECT_FALSE(Moves().DelayCheckedRegistryItems(false, false)); // its copy would be lost
    EXPECT_EQ(messages.shown, (std::vector<Shown>{{app.text.Message(1), "Tolvane", 0x30}}));
    EXPECT_EQ(Run(RegistryRoot::CurrentUser, "App"), "C:\\app.exe /new");
    EXPECT_EQ(Saved(RegistryRoot::CurrentUser, "App"), "C:\\app.exe /old");
}

TEST_F(ItemMovesTest, TheSameNameInTwoLocationsStaysTwoItems) {
    Shortcut(places.UserFolder, "Same.lnk");
    Shortcut(places.CommonFolder, "Same.lnk");
    RunValue(RegistryRoot::CurrentUser, "Dup", "C:\\dup.exe");
    RunValue(RegistryRoot::LocalMachine, "Dup", "C:\\dup.exe");
    Refresh();
    // The all-users items first, so that a lookup by name alone would find them first.
    ASSERT_TRUE(Moves().DelayStartupItem("Same.lnk", 2, false));
    ASSERT_TRUE(Moves().DelayStartupItem("Same.lnk", 3, false));
    ASSERT_TRUE(Moves().DelayRegistryItem("Dup=C:\\dup.exe", 0, false));
    ASSERT_TRUE(Moves().DelayRegistryItem("Dup=C:\\dup.exe", 1, false));
    Refresh();
    Moves().RestoreStartupItem("Same.lnk", 3, false);
    Moves().RestoreRegistryItem("Dup=C:\\dup.exe ", 1, false);
    Refresh();
    EXPECT_TRUE(test::PathExists(UserStartup("Same.lnk")));
    EXPECT_TRUE(Items("DelayedItemsStartupCurrentUser").empty());
    EXPECT_EQ(Items("DelayedItemsStartupAllUsers"), std::vector<std::string>{"Same.lnk"});
    EXPECT_EQ(Run(RegistryRoot::CurrentUser, "Dup"), "C:\\dup.exe");
    EXPECT_TRUE(Items("DelayedItemsRegistryCurrentUser").empty());
    EXPECT_EQ(Items("DelayedItemsRegistryAllUsers"), std::vector<std::string>{"Dup=C:\\dup.exe "});
    EXPECT_EQ(Saved(RegistryRoot::LocalMachine, "Dup"), "C:\\dup.exe");
}

TEST_F(ItemMovesTest, StartupFolderPassesFollowTheirFlagTable) {
    ExpectFlagTable(
        {{"1010", "delayed", "delayed", "delayed"},
         {"1100", "stopped", "stopped", "active+stopped"},
         {"1001", "delayed", "active", "active"},
         {"0001", "active", "active", "active"}},
        false,
        [&] {
            for (const char* name : {"A.lnk", "D.lnk", "S.lnk"})
                Shortcut(places.UserFolder, name);
            Refresh();
            ASSERT_TRUE(Moves().DelayStartupItem("D.lnk", 3, false));
            ASSERT_TRUE(Moves().DelayStartupItem("S.lnk", 3, true));
            Refresh();
            Check("CurrentUserStartup", "A.lnk");
            Check("DelayedItemsStartupCurrentUser", "D.lnk");
            Check("StoppedItemsCurrentStartup", "S.lnk");
        },
        [&] {
            return Lines{ShortcutState("A.lnk"), ShortcutState("D.lnk"), ShortcutState("S.lnk")};
        });
}

TEST_F(ItemMovesTest, RunValuePassesFollowTheirFlagTable) {
    // Name, command, and the path the stopped list keeps (no quotes).
    const std::string items[3][3] = {{"A", "C:\\a.exe /a", "C:\\a.exe"},
                                     {"D", "C:\\d.exe", "C:\\d.exe"},
                                     {"S", "\"C:\\s s\\s.exe\" -s", "C:\\s s\\s.exe"}};
    ExpectFlagTable(
        {{"1010", "delayed", "delayed", "delayed"},
         {"1110", "stopped", "stopped", "delayed"},
         {"1001", "delayed", "active", "active"},
         {"0001", "active", "active", "active"}},
        true,
        [&] {
            for (const auto& item : items)
                RunValue(RegistryRoot::CurrentUser, item[0], item[1]);
            Refresh();
            ASSERT_TRUE(Moves().DelayRegistryItem("D=C:\\d.exe", 1, false));
            ASSERT_TRUE(Moves().DelayRegistryItem("S=" + items[2][1], 1, true));
            Refresh();
            Check("CurrentUserRegistry", "A=C:\\a.exe /a");
            Check("DelayedItemsRegistryCurrentUser", "D=C:\\d.exe ");
            Check("StoppedItemsCurrentReg", items[2][2]);
        },
        [&] {
            // An active value holds its command as it was, quotes and all.
            Lines states;
            for (const auto& item : items) {
                const std::string now = Run(RegistryRoot::CurrentUser, item[0]);
                states.push_back(ValueState(item[0], item[2]) +
                                 (now == "(none)" || now == item[1] ? "" : " as " + now));
            }
            return states;
        });
}

TEST_F(ItemMovesTest, RunValuesAreSavedBackedUpAndPutBackExactly) {
    const std::string quoted = "\"C:\\Program Files\\T\\tool.exe\"   /min";
    RunValue(RegistryRoot::CurrentUser, "Tool", "C:\\T\\tool.exe -x");
    RunValue(RegistryRoot::CurrentUser, "Opt", "C:\\x.exe /opt=1");
    RunValue(RegistryRoot::CurrentUser, "Quoted", quoted);
    RunValue(RegistryRoot::LocalMachine, "Machine", "C:\\m.exe");
    Refresh();

    ASSERT_TRUE(Moves().DelayRegistryItem("Tool=C:\\T\\tool.exe -x", 1, true));
    EXPECT_EQ(Saved(RegistryRoot::CurrentUser, "Tool"), "C:\\T\\tool.exe -x");
    EXPECT_EQ(Run(RegistryRoot::CurrentUser, "Tool"), "(none)");
    EXPECT_EQ(app.model.StoppedPrograms.back(), "_REGCU_C:\\T\\tool.exe ");
    auto backups = Backups();
    ASSERT_EQ(backups.size(), 1u);
    EXPECT_TRUE(std::regex_search(
        backups[0], std::regex("\\\\Delayed Registry\\\\[0-9]{4}-[0-9]{2}-[0-9]{2}\\\\[0-9]{2} "
                               "[0-9]{2} [0-9]{2}\\.reg$")));
    EXPECT_EQ(test::ReadFileBytes(backups[0]),
              "Windows Registry Editor Version 5.00\r\n\r\n"
              "[HKEY_CURRENT_USER\\Software\\Microsoft\\Windows\\CurrentVersion\\Run]\r\n"
              "\"Tool\"=\"C:\\\\T\\\\tool.exe -x\"\r\n");

    ASSERT_TRUE(Moves().DelayRegistryItem("Opt=C:\\x.exe /opt=1", 1, false));
    EXPECT_EQ(test::ProgramLines(app.model.ProgramGroups[0]).back(),
              "ExecuteReg|C:\\x.exe |/opt=1|0|Opt");

    ASSERT_TRUE(Moves().DelayRegistryItem("Quoted=" + quoted, 1, false));
    ASSERT_TRUE(Moves().DelayRegistryItem("Machine=C:\\m.exe", 0, true));
    EXPECT_EQ(Saved(RegistryRoot::LocalMachine, "Machine"), "C:\\m.exe");
    EXPECT_EQ(app.model.StoppedPrograms.back(), "_REGAU_C:\\m.exe");
    EXPECT_NE(AllBackups().find(
                  "[HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Windows\\CurrentVersion\\Run]\r\n"
                  "\"Machine\"=\"C:\\\\m.exe\""),
              std::string::npos);

    // Back from delayed: the saved copy, so the command returns with its quotes and blanks,
    // though the tree shows it as path and parameters.
    Refresh();
    EXPECT_EQ(Items("DelayedItemsRegistryCurrentUser"),
              (std::vector<std::string>{"Opt=C:\\x.exe /opt=1",
                                        "Quoted=\"C:\\Program Files\\T\\tool.exe\" /min"}));
    Moves().RestoreRegistryItem("Quoted=\"C:\\Program Files\\T\\tool.exe\" /min", 1, false);
    EXPECT_EQ(Run(RegistryRoot::CurrentUser, "Quoted"), quoted);
    EXPECT_EQ(Saved(RegistryRoot::CurrentUser, "Quoted"), "(none)");

    // Back from stopped, through the pass.
    Refresh();
    Check("StoppedItemsCurrentReg", "C:\\T\\tool.exe");
    EXPECT_TRUE(Moves().RestoreCheckedRegistryItems());
    EXPECT_EQ(Run(RegistryRoot::CurrentUser, "Tool"), "C:\\T\\tool.exe -x");
    EXPECT_EQ(ValueState("Tool", "C:\\T\\tool.exe"), "active");

    // A stopped value whose saved copy is gone: the single restore changes nothing, the pass
    // drops the entry and writes nothing.
    reg.DeleteValue(RegistryRoot::LocalMachine, kSavedMachineRunKey, "Machine");
    Refresh();
    app.model.StoppedPrograms.push_back("_REGCU_C:\\gone.exe");
    CDelayLoad(app).WriteItems();
    Refresh();
    Select("StoppedItemsCurrentReg", "C:\\gone.exe");
    Moves().RestoreRegistryItem("C:\\gone.exe", 1, true);
    EXPECT_EQ(ValueState("Gone", "C:\\gone.exe"), "stopped");
    Check("StoppedItemsCurrentReg", "C:\\gone.exe");
    EXPECT_TRUE(Moves().RestoreCheckedRegistryItems());
    EXPECT_EQ(ValueState("Gone", "C:\\gone.exe"), "");
    EXPECT_TRUE(messages.shown.empty());
}

TEST_F(ItemMovesTest, APassLeavesABackupThatImportsBackWhatItTookOut) {
    // Nothing checked: the file is written, the backup made and deleted again, the date
    // folder stays.
    Refresh();
    DeleteFileA(CDelayLoad(app).FilePath().c_str());
    EXPECT_TRUE(Moves().DelayCheckedRegistryItems(false, true));
    EXPECT_TRUE(test::PathExists(CDelayLoad(app).FilePath()));
    EXPECT_TRUE(Backups().empty());
    Lines days;
    CDirStruct().ReturnFiles(folder / "Delayed Registry", days);
    EXPECT_EQ(days.size(), 1u);

    const std::string data = "\"C:\\Program Files\\Vendor \\\"Q\\\"\\app.exe\" /x=\"1\"";
    RunValue(RegistryRoot::CurrentUser, "Quoted \"Name\"", data);
    // An expandable value must come back expandable.
    const RegistryValue expand = WideValue(REG_EXPAND_SZ, "%ProgramFiles%\\e.exe");
    ASSERT_TRUE(reg.SetValue(RegistryRoot::CurrentUser, kRunKey, "Expand", expand));
    const auto before = reg.GetValue(RegistryRoot::CurrentUser, kRunKey, "Quoted \"Name\"");
    Refresh();
    Check("CurrentUserRegistry", "Quoted \"Name\"=" + data);
    Check("CurrentUserRegistry", "Expand=%ProgramFiles%\\e.exe");
    ASSERT_TRUE(Moves().DelayCheckedRegistryItems(false, false));
    ASSERT_FALSE(reg.GetValue(RegistryRoot::CurrentUser, kRunKey, "Expand"));
    ASSERT_EQ(Backups().size(), 1u);

    test::ChildProcess import("reg.exe import \"" + Backups()[0] + "\"");
    unsigned long code = 1;
    ASSERT_TRUE(import.WaitForExit(30000, &code));
    EXPECT_EQ(code, 0u);
    EXPECT_EQ(reg.GetSettingString(RegistryRoot::CurrentUser, kRunKey, "Quoted \"Name\""), data);
    auto quotedBack = reg.GetValue(RegistryRoot::CurrentUser, kRunKey, "Quoted \"Name\"");
    auto expandBack = reg.GetValue(RegistryRoot::CurrentUser, kRunKey, "Expand");
    ASSERT_TRUE(quotedBack && expandBack);
    EXPECT_TRUE(SameValue(*quotedBack, *before));
    EXPECT_EQ(std::tie(expandBack->Type, expandBack->Data), std::tie(expand.Type, expand.Data));
}

} // namespace
} // namespace tolvane
