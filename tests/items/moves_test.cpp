#include "startup_fixture.h"

#include <functional>
#include <regex>

#include "items/move_steps.h"
#include "platform/dir_struct.h"
#include "text/placeholders.h"
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
    // A refusal as the user reads it.
    Shown Told(int message, std::string_view item, std::string_view detail = "") {
        return {FillIn(app.text.Message(message), {item, detail}), "Tolvane", 0x30};
    }
    Shown ToldInPass(int pass, int message, std::string_view item, std::string_view detail) {
        return {app.text.Message(pass) + "\r\n\r\n" +
                    FillIn(app.text.Message(message), {item, detail}),
                "Tolvane", 0x30};
    }
    std::string Log() { return test::ReadFileBytes(folder / "log.txt"); }
};

constexpr auto kActive = ItemState::Active;
constexpr auto kDelayed = ItemState::Delayed;
constexpr auto kStopped = ItemState::Stopped;

TEST_F(ItemMovesTest, AShortcutIsDelayedStoppedAndPutBackWithItsFile) {
    Shortcut(places.UserFolder, "Tool.lnk");
    const std::string bytes = test::ReadFileBytes(UserStartup("Tool.lnk"));
    Refresh();
    EXPECT_FALSE(Moves().DelayStartupItem("", 3, false, kActive));

    ASSERT_TRUE(Moves().DelayStartupItem("Tool.lnk", 3, false, kActive));
    EXPECT_EQ(test::ReadFileBytes(UserItems("Tool.lnk")), bytes);
    // Written at once, with the items-folder path (two backslashes before the name).
    EXPECT_NE(test::ReadFileBytes(CDelayLoad(app).FilePath())
                  .find("     Execute (\"" + app.folders.UserItemsFolder +
                        "\\Tool.lnk\", \"\", 0, \"\");"),
              std::string::npos);
    EXPECT_EQ(ShortcutState("Tool.lnk"), "delayed");
    // Delayed again: it stays delayed once, not twice.
    ASSERT_TRUE(Moves().DelayStartupItem("Tool.lnk", 3, false, kDelayed));
    EXPECT_EQ(ShortcutState("Tool.lnk"), "delayed");

    ASSERT_TRUE(Moves().DelayStartupItem("Tool.lnk", 3, true, kDelayed)); // the file stays
    EXPECT_EQ(ShortcutState("Tool.lnk"), "stopped");
    EXPECT_EQ(test::ReadFileBytes(UserItems("Tool.lnk")), bytes);

    Moves().RestoreStartupItem("Tool.lnk", 3, true);
    EXPECT_EQ(ShortcutState("Tool.lnk"), "active");
    EXPECT_EQ(test::ReadFileBytes(UserStartup("Tool.lnk")), bytes);

    // An all-users shortcut goes to its own items folder; stopped, it still shows and offers
    // the popup, so that it can be put back.
    Shortcut(places.CommonFolder, "Word.lnk");
    ASSERT_TRUE(Moves().DelayStartupItem("Word.lnk", 2, false, kActive));
    EXPECT_TRUE(test::PathExists(app.folders.AllUsersItemsFolder + "Word.lnk"));
    Refresh();
    EXPECT_EQ(Items("DelayedItemsStartupAllUsers"), Lines{"Word.lnk"});
    ASSERT_TRUE(Moves().DelayStartupItem("Word.lnk", 2, true, kDelayed));
    Refresh();
    EXPECT_EQ(Items("StoppedItemsAllStartup"), Lines{"Word.lnk"});
    EXPECT_EQ(tree.Node(Node("StoppedItemsAllStartup", "Word.lnk")).Tag, kPopupTag);
    Moves().RestoreStartupItem("Word.lnk", 2, true);
    EXPECT_TRUE(test::PathExists(places.CommonFolder + "\\Word.lnk"));
    EXPECT_TRUE(messages.shown.empty());
}

TEST_F(ItemMovesTest, ConflictsAreRefusedToldAndNothingIsOverwritten) {
    test::WriteFileBytes(folder / "log.txt", ""); // logging on
    Shortcut(places.UserFolder, "Tool.lnk");
    Refresh();
    ASSERT_TRUE(Moves().DelayStartupItem("Tool.lnk", 3, false, kActive));
    // The program put itself back into the Startup folder, as installers do, but differently.
    test::WriteFileBytes(UserStartup("Tool.lnk"), "a newer shortcut");
    const std::string held = test::ReadFileBytes(UserItems("Tool.lnk"));
    Refresh();
    EXPECT_FALSE(Moves().DelayStartupItem("Tool.lnk", 3, false, kActive));
    Moves().RestoreStartupItem("Tool.lnk", 3, false);
    EXPECT_EQ(test::ReadFileBytes(UserStartup("Tool.lnk")), "a newer shortcut");
    EXPECT_EQ(test::ReadFileBytes(UserItems("Tool.lnk")), held);
    EXPECT_EQ(ShortcutState("Tool.lnk"), "active+delayed"); // both still there, both shown
    EXPECT_EQ(messages.shown, (std::vector<Shown>{
                                  Told(14, "Tool.lnk", app.folders.UserItemsFolder + "\\Tool.lnk"),
                                  Told(14, "Tool.lnk", UserStartup("Tool.lnk")),
                              }));
    EXPECT_NE(Log().find("Error: DelayStartupItem: \"Tool.lnk\": something else named"),
              std::string::npos);

    // A folder where the shortcut would go: nothing moves into it.
    messages.shown.clear();
    test::MakeFolder(UserItems("Folder.lnk"));
    Shortcut(places.UserFolder, "Folder.lnk");
    Refresh();
    Check("CurrentUserStartup", "Folder.lnk");
    EXPECT_FALSE(Moves().DelayCheckedStartupItems(false, false));
    EXPECT_EQ(messages.shown,
              (std::vector<Shown>{
                  ToldInPass(2, 14, "Folder.lnk", app.folders.UserItemsFolder + "\\Folder.lnk")}));
    EXPECT_TRUE(test::PathExists(UserStartup("Folder.lnk")));

    // The same for a Run value: the program entered itself again, differently.
    messages.shown.clear();
    RunValue(RegistryRoot::CurrentUser, "App", "C:\\app.exe /old");
    Refresh();
    ASSERT_TRUE(Moves().DelayRegistryItem("App=C:\\app.exe /old", 1, false, kActive));
    RunValue(RegistryRoot::CurrentUser, "App", "C:\\app.exe /new");
    Refresh();
    const std::string delayed = Items("DelayedItemsRegistryCurrentUser").at(0);
    Moves().RestoreRegistryItem(delayed, 1, false);
    EXPECT_EQ(ValueState("App", "C:\\app.exe"), "active+delayed");
    Check("CurrentUserRegistry", "App=C:\\app.exe /new");
    EXPECT_FALSE(Moves().DelayCheckedRegistryItems(false, false)); // its copy would be lost
    EXPECT_EQ(Run(RegistryRoot::CurrentUser, "App"), "C:\\app.exe /new");
    EXPECT_EQ(Saved(RegistryRoot::CurrentUser, "App"), "C:\\app.exe /old");

    // A value that changed since the list was made is not taken out under its old command.
    RunValue(RegistryRoot::CurrentUser, "Late", "C:\\late.exe");
    Refresh();
    RunValue(RegistryRoot::CurrentUser, "Late", "C:\\later.exe");
    EXPECT_FALSE(Moves().DelayRegistryItem("Late=C:\\late.exe", 1, true, kActive));
    EXPECT_EQ(Run(RegistryRoot::CurrentUser, "Late"), "C:\\later.exe");
    EXPECT_EQ(Saved(RegistryRoot::CurrentUser, "Late"), "(none)");
    EXPECT_EQ(messages.shown, (std::vector<Shown>{
                                  Told(15, delayed, "App=C:\\app.exe /new"),
                                  ToldInPass(1, 14, "App=C:\\app.exe /new", "App=C:\\app.exe /old"),
                                  Told(15, "Late=C:\\late.exe", "Late=C:\\later.exe"),
                              }));
}

TEST_F(ItemMovesTest, AnItemIsItsLocationAndItsOwnName) {
    const RegistryRoot user = RegistryRoot::CurrentUser;
    const std::string control = "rundll32 shell32.dll,Control_RunDLL";
    RunValue(user, "A", "C:\\x.exe /a");
    RunValue(user, "B", "C:\\x.exe /b");
    RunValue(user, "R1", control);
    RunValue(user, "R2", control);
    Refresh();
    // Two values that start the same program: stopping B leaves A's delayed program alone.
    ASSERT_TRUE(Moves().DelayRegistryItem("A=C:\\x.exe /a", 1, false, kActive));
    ASSERT_TRUE(Moves().DelayRegistryItem("B=C:\\x.exe /b", 1, true, kActive));
    Refresh();
    EXPECT_EQ(Items("DelayedItemsRegistryCurrentUser"), Lines{"A=C:\\x.exe /a"});
    EXPECT_EQ(Items("StoppedItemsCurrentReg"), Lines{"B=C:\\x.exe /b"});
    // Delayed from stopped, B takes exactly its own entry; putting A back leaves B delayed.
    ASSERT_TRUE(Moves().DelayRegistryItem("B=C:\\x.exe /b", 1, false, kStopped));
    Moves().RestoreRegistryItem("A=C:\\x.exe /a", 1, false);
    Refresh();
    EXPECT_EQ(Run(user, "A"), "C:\\x.exe /a");
    EXPECT_EQ(Items("DelayedItemsRegistryCurrentUser"), Lines{"B=C:\\x.exe /b"});
    EXPECT_TRUE(Items("StoppedItemsCurrentReg").empty());
    // The same command twice: each stopped value comes back as itself.
    ASSERT_TRUE(Moves().DelayRegistryItem("R1=" + control, 1, true, kActive));
    ASSERT_TRUE(Moves().DelayRegistryItem("R2=" + control, 1, true, kActive));
    Moves().RestoreRegistryItem("R2=" + control, 1, true);
    Refresh();
    EXPECT_EQ(Run(user, "R2"), control);
    EXPECT_EQ(Run(user, "R1"), "(none)");
    EXPECT_EQ(Saved(user, "R1"), control);
    EXPECT_EQ(Items("StoppedItemsCurrentReg"), Lines{"R1=" + control});

    // Entries of an older version hold a path alone: each still finds a copy of its own, and
    // one with "=" in its path is told apart by its state, not by the "=".
    reg.SaveSettingString(user, kSavedUserRunKey, "P", "C:\\p.exe -1");
    reg.SaveSettingString(user, kSavedUserRunKey, "Q", "C:\\p.exe -2");
    reg.SaveSettingString(user, kSavedUserRunKey, "E", "C:\\a=b\\e.exe");
    for (const char* entry : {"_REGCU_C:\\p.exe ", "_REGCU_C:\\p.exe ", "_REGCU_C:\\a=b\\e.exe"})
        app.model.AddStoppedProgram(entry + kPrefixLength, kUserRun);
    CDelayLoad(app).WriteItems();
    Refresh();
    ASSERT_TRUE(Moves().DelayRegistryItem("C:\\p.exe", 1, false, kStopped));
    Moves().RestoreRegistryItem("C:\\p.exe", 1, true);
    Moves().RestoreRegistryItem("C:\\a=b\\e.exe", 1, true);
    Refresh();
    EXPECT_EQ(Items("DelayedItemsRegistryCurrentUser"),
              (Lines{"B=C:\\x.exe /b", "P=C:\\p.exe -1"}));
    EXPECT_EQ(Run(user, "Q"), "C:\\p.exe -2");
    EXPECT_EQ(Run(user, "E"), "C:\\a=b\\e.exe");
    EXPECT_EQ(Items("StoppedItemsCurrentReg"), Lines{"R1=" + control});

    // The same name in both Startup folders and both Run keys: four items. The all-users ones
    // go first, so that a lookup by name alone would find them first.
    Shortcut(places.UserFolder, "Same.lnk");
    Shortcut(places.CommonFolder, "Same.lnk");
    RunValue(RegistryRoot::LocalMachine, "B", "C:\\x.exe /b");
    Refresh();
    ASSERT_TRUE(Moves().DelayStartupItem("Same.lnk", 2, false, kActive));
    ASSERT_TRUE(Moves().DelayStartupItem("Same.lnk", 3, false, kActive));
    ASSERT_TRUE(Moves().DelayRegistryItem("B=C:\\x.exe /b", 0, false, kActive));
    Refresh();
    Moves().RestoreStartupItem("Same.lnk", 3, false);
    Moves().RestoreRegistryItem("B=C:\\x.exe /b", 1, false);
    Refresh();
    EXPECT_TRUE(test::PathExists(UserStartup("Same.lnk")));
    EXPECT_TRUE(Items("DelayedItemsStartupCurrentUser").empty());
    EXPECT_EQ(Items("DelayedItemsStartupAllUsers"), Lines{"Same.lnk"});
    EXPECT_EQ(Run(user, "B"), "C:\\x.exe /b");
    EXPECT_EQ(Items("DelayedItemsRegistryAllUsers"), Lines{"B=C:\\x.exe /b"});
    EXPECT_EQ(Saved(RegistryRoot::LocalMachine, "B"), "C:\\x.exe /b");
    EXPECT_TRUE(messages.shown.empty());
}

TEST_F(ItemMovesTest, StartupFolderPassesFollowTheirFlagTable) {
    ExpectFlagTable(
        {{"1010", "delayed", "delayed", "delayed"},
         {"1100", "stopped", "stopped", "stopped"}, // stop leaves a stopped item stopped
         {"1001", "delayed", "active", "active"},
         {"0001", "active", "active", "active"}},
        false,
        [&] {
            for (const char* name : {"A.lnk", "D.lnk", "S.lnk"})
                Shortcut(places.UserFolder, name);
            Refresh();
            ASSERT_TRUE(Moves().DelayStartupItem("D.lnk", 3, false, kActive));
            ASSERT_TRUE(Moves().DelayStartupItem("S.lnk", 3, true, kActive));
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
         {"1110", "stopped", "stopped", "stopped"},
         {"1001", "delayed", "active", "active"},
         {"0001", "active", "active", "active"}},
        true,
        [&] {
            for (const auto& item : items)
                RunValue(RegistryRoot::CurrentUser, item[0], item[1]);
            Refresh();
            ASSERT_TRUE(Moves().DelayRegistryItem("D=C:\\d.exe", 1, false, kActive));
            ASSERT_TRUE(Moves().DelayRegistryItem("S=" + items[2][1], 1, true, kActive));
            Refresh();
            Check("CurrentUserRegistry", "A=C:\\a.exe /a");
            Check("DelayedItemsRegistryCurrentUser", "D=C:\\d.exe ");
            Check("StoppedItemsCurrentReg", "S=C:\\s s\\s.exe -s");
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

    ASSERT_TRUE(Moves().DelayRegistryItem("Tool=C:\\T\\tool.exe -x", 1, true, kActive));
    EXPECT_EQ(Saved(RegistryRoot::CurrentUser, "Tool"), "C:\\T\\tool.exe -x");
    EXPECT_EQ(Run(RegistryRoot::CurrentUser, "Tool"), "(none)");
    EXPECT_EQ(app.model.StoppedPrograms.back(), "_REGCU_Tool=C:\\T\\tool.exe -x");
    auto backups = Backups();
    ASSERT_EQ(backups.size(), 1u);
    EXPECT_TRUE(std::regex_search(
        backups[0], std::regex("\\\\Delayed Registry\\\\[0-9]{4}-[0-9]{2}-[0-9]{2}\\\\[0-9]{2} "
                               "[0-9]{2} [0-9]{2}\\.reg$")));
    EXPECT_EQ(test::ReadFileBytes(backups[0]),
              "Windows Registry Editor Version 5.00\r\n\r\n"
              "[HKEY_CURRENT_USER\\Software\\Microsoft\\Windows\\CurrentVersion\\Run]\r\n"
              "\"Tool\"=\"C:\\\\T\\\\tool.exe -x\"\r\n");

    ASSERT_TRUE(Moves().DelayRegistryItem("Opt=C:\\x.exe /opt=1", 1, false, kActive));
    EXPECT_EQ(test::ProgramLines(app.model.ProgramGroups[0]).back(),
              "ExecuteReg|C:\\x.exe |/opt=1|0|Opt");

    ASSERT_TRUE(Moves().DelayRegistryItem("Quoted=" + quoted, 1, false, kActive));
    ASSERT_TRUE(Moves().DelayRegistryItem("Machine=C:\\m.exe", 0, true, kActive));
    EXPECT_EQ(Saved(RegistryRoot::LocalMachine, "Machine"), "C:\\m.exe");
    EXPECT_EQ(app.model.StoppedPrograms.back(), "_REGAU_Machine=C:\\m.exe");
    EXPECT_NE(AllBackups().find(
                  "[HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Windows\\CurrentVersion\\Run]\r\n"
                  "\"Machine\"=\"C:\\\\m.exe\""),
              std::string::npos);

    // Back from delayed: the saved copy, so the command returns with its quotes and blanks,
    // though the tree shows it as path and parameters.
    Refresh();
    EXPECT_EQ(Items("DelayedItemsRegistryCurrentUser"),
              (Lines{"Opt=C:\\x.exe /opt=1", "Quoted=\"C:\\Program Files\\T\\tool.exe\" /min"}));
    Moves().RestoreRegistryItem("Quoted=\"C:\\Program Files\\T\\tool.exe\" /min", 1, false);
    EXPECT_EQ(Run(RegistryRoot::CurrentUser, "Quoted"), quoted);
    EXPECT_EQ(Saved(RegistryRoot::CurrentUser, "Quoted"), "(none)");

    // Back from stopped, through the pass.
    Refresh();
    Check("StoppedItemsCurrentReg", "Tool=C:\\T\\tool.exe -x");
    EXPECT_TRUE(Moves().RestoreCheckedRegistryItems());
    EXPECT_EQ(Run(RegistryRoot::CurrentUser, "Tool"), "C:\\T\\tool.exe -x");
    EXPECT_EQ(ValueState("Tool", "C:\\T\\tool.exe"), "active");
    EXPECT_TRUE(messages.shown.empty());

    // A stopped value whose saved copy is gone comes back from its own entry, which names it;
    // an older entry that holds a path alone has nothing to put back: the single restore says
    // so, the pass drops the entry.
    reg.DeleteValue(RegistryRoot::LocalMachine, kSavedMachineRunKey, "Machine");
    Refresh();
    Moves().RestoreRegistryItem("Machine=C:\\m.exe", 0, true);
    EXPECT_EQ(Run(RegistryRoot::LocalMachine, "Machine"), "C:\\m.exe");
    app.model.AddStoppedProgram("C:\\gone.exe", kUserRun);
    CDelayLoad(app).WriteItems();
    Refresh();
    Moves().RestoreRegistryItem("C:\\gone.exe", 1, true);
    EXPECT_EQ(ValueState("Gone", "C:\\gone.exe"), "stopped");
    EXPECT_EQ(messages.shown, std::vector<Shown>{Told(16, "C:\\gone.exe")});
    Check("StoppedItemsCurrentReg", "C:\\gone.exe");
    EXPECT_TRUE(Moves().RestoreCheckedRegistryItems());
    EXPECT_EQ(ValueState("Gone", "C:\\gone.exe"), "");
}

TEST_F(ItemMovesTest, AFailedMoveIsTakenBackAndWhatCannotBeIsReported) {
    test::WriteFileBytes(folder / "log.txt", "");
    Shortcut(places.UserFolder, "Tool.lnk");
    const std::string bytes = test::ReadFileBytes(UserStartup("Tool.lnk"));
    Refresh();
    // Between volumes the shell copies, then deletes: a source it cannot delete leaves the
    // shortcut in two places, where it would start twice. The copy goes again.
    test::MakeFolder(app.folders.UserItemsFolder);
    ItemMoves moves = Moves();
    moves.SetFileMover([](const std::string& from, const std::string& to) {
        return CopyFileA(from.c_str(), to.c_str(), TRUE) ? 0 : 1;
    });
    EXPECT_FALSE(moves.DelayStartupItem("Tool.lnk", 3, false, kActive));
    EXPECT_EQ(test::ReadFileBytes(UserStartup("Tool.lnk")), bytes);
    EXPECT_FALSE(test::PathExists(UserItems("Tool.lnk")));
    EXPECT_EQ(ShortcutState("Tool.lnk"), "active");
    ASSERT_EQ(messages.shown.size(), 1u);
    EXPECT_EQ(messages.shown[0].Text.rfind(FillIn(app.text.Message(17), {"Tool.lnk", ""}), 0), 0u);

    // The file cannot be written, and the shortcut cannot be moved back: the error is logged
    // and the user told where the shortcut is.
    messages.shown.clear();
    int calls = 0;
    moves.SetFileMover([&](const std::string& from, const std::string& to) {
        return ++calls == 1 && MoveFileA(from.c_str(), to.c_str()) ? 0 : 5;
    });
    const std::string blocked = CDelayLoad(app).FilePath() + ".new";
    test::MakeFolder(blocked);
    EXPECT_FALSE(moves.DelayStartupItem("Tool.lnk", 3, false, kActive));
    test::RemoveTree(blocked);
    EXPECT_EQ(test::ReadFileBytes(UserItems("Tool.lnk")), bytes); // moved, and kept
    ASSERT_EQ(messages.shown.size(), 2u);
    const std::string held = app.folders.UserItemsFolder + "\\Tool.lnk";
    EXPECT_EQ(messages.shown[1].Text,
              FillIn(app.text.Message(18),
                     {"Tool.lnk", "\"" + held + "\" could not be moved back to \"" +
                                      UserStartup("Tool.lnk") + "\"; the shortcut is still at \"" +
                                      held + "\""}));
    EXPECT_NE(Log().find("Error: DelayStartupItem: not taken back: "), std::string::npos) << Log();
}

} // namespace
} // namespace tolvane
