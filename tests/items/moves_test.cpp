#include "startup_fixture.h"

#include <functional>
#include <regex>

#include "items/move_steps.h"
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
    // The backup files written so far, oldest first.
    Lines Backups() { return test::FilesBelow(folder / "Delayed Registry"); }
    std::string AllBackups() {
        std::string all;
        for (const std::string& file : Backups())
            all += test::ReadUtf16File(file);
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
    std::string File() { return test::ReadFileBytes(app.Store().File().FilePath()); }
};

constexpr auto kActive = ItemState::Active;
constexpr auto kDelayed = ItemState::Delayed;
constexpr auto kStopped = ItemState::Stopped;

TEST_F(ItemMovesTest, ConflictsAreRefusedToldAndNothingIsOverwritten) {
    test::WriteFileBytes(folder / "log.txt", ""); // logging on
    Shortcut(places.UserFolder, "Tool.lnk");
    Refresh();
    ASSERT_TRUE(Move("CurrentUserStartup", "Tool.lnk", kDelayed));
    // Written at once, with the items-folder path (two backslashes before the name).
    EXPECT_NE(test::ReadFileBytes(app.Store().File().FilePath())
                  .find("     Execute (\"" + app.folders.UserItemsFolder +
                        "\\Tool.lnk\", \"\", 0, \"\");"),
              std::string::npos);
    // The program put itself back into the Startup folder, as installers do, but differently.
    test::WriteFileBytes(UserStartup("Tool.lnk"), "a newer shortcut");
    const std::string held = test::ReadFileBytes(UserItems("Tool.lnk"));
    Refresh();
    EXPECT_FALSE(Move("CurrentUserStartup", "Tool.lnk", kDelayed));
    EXPECT_FALSE(Move("DelayedItemsStartupCurrentUser", "Tool.lnk", kActive));
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
    EXPECT_FALSE(Pass(CheckedMove::Delay));
    EXPECT_EQ(messages.shown,
              (std::vector<Shown>{
                  ToldInPass(2, 14, "Folder.lnk", app.folders.UserItemsFolder + "\\Folder.lnk")}));
    EXPECT_TRUE(test::PathExists(UserStartup("Folder.lnk")));

    // The same for a Run value: the program entered itself again, differently.
    messages.shown.clear();
    RunValue(RegistryRoot::CurrentUser, "App", "C:\\app.exe /old");
    Refresh();
    ASSERT_TRUE(Move("CurrentUserRegistry", "App=C:\\app.exe /old", kDelayed));
    RunValue(RegistryRoot::CurrentUser, "App", "C:\\app.exe /new");
    Refresh();
    const std::string delayed = Items("DelayedItemsRegistryCurrentUser").at(0);
    EXPECT_FALSE(Move("DelayedItemsRegistryCurrentUser", delayed, kActive));
    EXPECT_EQ(ValueState("App", "C:\\app.exe"), "active+delayed");
    Check("CurrentUserRegistry", "App=C:\\app.exe /new");
    EXPECT_FALSE(Pass(CheckedMove::Delay)); // its copy would be lost
    EXPECT_EQ(Run(RegistryRoot::CurrentUser, "App"), "C:\\app.exe /new");
    EXPECT_EQ(Saved(RegistryRoot::CurrentUser, "App"), "C:\\app.exe /old");

    // A value that changed since the list was made is not taken out under its old command.
    RunValue(RegistryRoot::CurrentUser, "Late", "C:\\late.exe");
    Refresh();
    RunValue(RegistryRoot::CurrentUser, "Late", "C:\\later.exe");
    EXPECT_FALSE(Move("CurrentUserRegistry", "Late=C:\\late.exe", kStopped));
    EXPECT_EQ(Run(RegistryRoot::CurrentUser, "Late"), "C:\\later.exe");
    EXPECT_EQ(Saved(RegistryRoot::CurrentUser, "Late"), "(none)");
    // A command that the log-on run would never start is not delayed: it stays where Windows
    // starts it, and the user is told why. Stopping it is fine.
    RunValue(RegistryRoot::CurrentUser, "Wipe", "cmd.exe /c DEL C:\\x");
    Refresh();
    EXPECT_FALSE(Move("CurrentUserRegistry", "Wipe=cmd.exe /c DEL C:\\x", kDelayed));
    EXPECT_EQ(Run(RegistryRoot::CurrentUser, "Wipe"), "cmd.exe /c DEL C:\\x");
    EXPECT_EQ(Saved(RegistryRoot::CurrentUser, "Wipe"), "(none)");
    EXPECT_TRUE(Move("CurrentUserRegistry", "Wipe=cmd.exe /c DEL C:\\x", kStopped));
    Refresh();
    EXPECT_FALSE(Move("StoppedItemsCurrentReg", Items("StoppedItemsCurrentReg").at(0), kDelayed));
    EXPECT_EQ(Items("StoppedItemsCurrentReg").size(), 1u);
    EXPECT_EQ(messages.shown, (std::vector<Shown>{
                                  Told(15, delayed, "App=C:\\app.exe /new"),
                                  ToldInPass(1, 14, "App=C:\\app.exe /new", "App=C:\\app.exe /old"),
                                  Told(15, "Late=C:\\late.exe", "Late=C:\\later.exe"),
                                  Told(28, "Wipe=cmd.exe /c DEL C:\\x", "del"),
                                  Told(28, Items("StoppedItemsCurrentReg").at(0), "del"),
                              }));
}

TEST_F(ItemMovesTest, OlderStoppedEntriesOfAPathAloneEachFindTheirOwnCopy) {
    // Entries of an older version hold a path alone: each still finds a copy of its own, and
    // one with "=" in its path is told apart by its state, not by the "=".
    const RegistryRoot user = RegistryRoot::CurrentUser;
    ASSERT_TRUE(reg.SaveSettingString(user, kSavedUserRunKey, "P", "C:\\p.exe -1"));
    ASSERT_TRUE(reg.SaveSettingString(user, kSavedUserRunKey, "Q", "C:\\p.exe -2"));
    ASSERT_TRUE(reg.SaveSettingString(user, kSavedUserRunKey, "E", "C:\\a=b\\e.exe"));
    for (const char* entry : {"C:\\p.exe ", "C:\\p.exe ", "C:\\a=b\\e.exe"})
        app.model.AddStoppedProgram(entry, kUserRun);
    app.Store().File().WriteItems();
    Refresh();
    // Each is listed by the value its copy holds.
    EXPECT_EQ(Items("StoppedItemsCurrentReg"),
              (Lines{"E=C:\\a=b\\e.exe", "P=C:\\p.exe -1", "Q=C:\\p.exe -2"}));
    ASSERT_TRUE(Move("StoppedItemsCurrentReg", "P=C:\\p.exe -1", kDelayed));
    EXPECT_TRUE(Move("StoppedItemsCurrentReg", "Q=C:\\p.exe -2", kActive));
    EXPECT_TRUE(Move("StoppedItemsCurrentReg", "E=C:\\a=b\\e.exe", kActive));
    Refresh();
    EXPECT_EQ(Items("DelayedItemsRegistryCurrentUser"), Lines{"P=C:\\p.exe -1"});
    EXPECT_EQ(Run(user, "Q"), "C:\\p.exe -2");
    EXPECT_EQ(Run(user, "E"), "C:\\a=b\\e.exe");
    EXPECT_TRUE(Items("StoppedItemsCurrentReg").empty());
    EXPECT_TRUE(messages.shown.empty());
}

TEST_F(ItemMovesTest, RunValuesAreSavedBackedUpAndPutBackExactly) {
    RunValue(RegistryRoot::CurrentUser, "Tool", "C:\\T\\tool.exe -x");
    RunValue(RegistryRoot::CurrentUser, "Opt", "C:\\x.exe /opt=1");
    RunValue(RegistryRoot::LocalMachine, "Machine", "C:\\m.exe");
    Refresh();

    ASSERT_TRUE(Move("CurrentUserRegistry", "Tool=C:\\T\\tool.exe -x", kStopped));
    EXPECT_EQ(app.model.StoppedPrograms.back(), "_REGCU_Tool=C:\\T\\tool.exe -x");
    auto backups = Backups();
    ASSERT_EQ(backups.size(), 1u);
    EXPECT_TRUE(std::regex_search(
        backups[0], std::regex("\\\\Delayed Registry\\\\[0-9]{4}-[0-9]{2}-[0-9]{2}\\\\[0-9]{2} "
                               "[0-9]{2} [0-9]{2}\\.reg$")));
    EXPECT_EQ(test::ReadFileBytes(backups[0]),
              "\xff\xfe" + test::Utf16Bytes("Windows Registry Editor Version 5.00\r\n\r\n"
                                            "[HKEY_CURRENT_USER\\Software\\Microsoft\\Windows\\"
                                            "CurrentVersion\\Run]\r\n"
                                            "\"Tool\"=\"C:\\\\T\\\\tool.exe -x\"\r\n"));

    ASSERT_TRUE(Move("CurrentUserRegistry", "Opt=C:\\x.exe /opt=1", kDelayed));
    EXPECT_EQ(test::ProgramLines(app.model.ProgramGroups[0]).back(),
              "ExecuteReg|C:\\x.exe|/opt=1|0|Opt");

    ASSERT_TRUE(Move("AllUsersRegistry", "Machine=C:\\m.exe", kStopped));
    EXPECT_NE(AllBackups().find(
                  "[HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Windows\\CurrentVersion\\Run]\r\n"
                  "\"Machine\"=\"C:\\\\m.exe\""),
              std::string::npos);

    // A stopped value whose saved copy is gone comes back from its own entry, which names it;
    // an older entry that holds a path alone has nothing to put back: its entry goes, said in
    // the log.
    ASSERT_TRUE(reg.DeleteValue(RegistryRoot::LocalMachine, kSavedMachineRunKey, "Machine"));
    Refresh();
    EXPECT_TRUE(Move("StoppedItemsAllReg", "Machine=C:\\m.exe", kActive));
    EXPECT_EQ(Run(RegistryRoot::LocalMachine, "Machine"), "C:\\m.exe");
    app.model.AddStoppedProgram("C:\\gone.exe", kUserRun);
    app.Store().File().WriteItems();
    Refresh();
    EXPECT_TRUE(Move("StoppedItemsCurrentReg", "C:\\gone.exe", kActive));
    EXPECT_EQ(ValueState("Gone", "C:\\gone.exe"), "");
    EXPECT_TRUE(messages.shown.empty());
}

// Any name Windows can hold is an item like any other, in every location: a value whose name
// holds "=", one whose command is empty, names and folders of scripts that no legacy code page
// holds, in both Run keys, the 32-bit view and both Startup folders. Each is listed by the same
// text in every state, delayed, stopped and put back exactly: value names and data, file names
// and bytes.
TEST_F(ItemMovesTest, AnyNameMovesThroughEveryStateAndComesBackExactly) {
    const RegistryRoot user = RegistryRoot::CurrentUser, machine = RegistryRoot::LocalMachine,
                       machine32 = RegistryRoot::LocalMachine32;
    RunValue(user, "a=b", "\"C:\\x y\\x.exe\" /y=1");
    RunValue(user, "Empty", "");
    RunValue(user, "微信", "\"C:\\Program Files\\微信\\WeChat.exe\" -autorun");
    RunValue(machine, "Café ☕", "C:\\Café\\☕.exe /tray");
    ASSERT_TRUE(
        reg.SetValue(machine32, kRunKey, "Яндекс",
                     WideValue(REG_EXPAND_SZ, "\"%ProgramFiles%\\Яндекс\\browser.exe\" --silent")));
    Shortcut(places.UserFolder, "Ноутбук.lnk");
    Shortcut(places.CommonFolder, "📅 Calendar.lnk");
    const auto snapshot = [&] {
        std::vector<std::pair<std::string, RegistryValue>> all;
        for (RegistryRoot root : {user, machine, machine32})
            for (auto& value : reg.EnumValues(root, kRunKey))
                all.push_back(std::move(value));
        for (const std::string& f : {places.UserFolder, places.CommonFolder})
            for (const std::string& file : test::FilesBelow(f)) {
                const std::string bytes = test::ReadFileBytes(file);
                all.push_back({file, {0, std::vector<uint8_t>(bytes.begin(), bytes.end())}});
            }
        return all;
    };
    const auto before = snapshot();
    struct Place {
        const char *active, *delayed, *stopped;
        Lines texts;
    };
    const std::vector<Place> locations = {
        {"CurrentUserRegistry",
         "DelayedItemsRegistryCurrentUser",
         "StoppedItemsCurrentReg",
         {"Empty=", "a=b=\"C:\\x y\\x.exe\" /y=1",
          "微信=\"C:\\Program Files\\微信\\WeChat.exe\" -autorun"}},
        {"AllUsersRegistry",
         "DelayedItemsRegistryAllUsers",
         "StoppedItemsAllReg",
         {"Café ☕=C:\\Café\\☕.exe /tray",
          "Яндекс=\"%ProgramFiles%\\Яндекс\\browser.exe\" --silent"}},
        {"CurrentUserStartup",
         "DelayedItemsStartupCurrentUser",
         "StoppedItemsCurrentStartup",
         {"Ноутбук.lnk"}},
        {"AllUsersStartup",
         "DelayedItemsStartupAllUsers",
         "StoppedItemsAllStartup",
         {"📅 Calendar.lnk"}},
    };
    // Active, then delayed, then stopped, then active again: each step lists every item by its
    // own text where it went, and nothing where it was.
    for (int step = 0; step < 3; ++step) {
        Refresh();
        for (const Place& p : locations) {
            const char* from = step == 0 ? p.active : step == 1 ? p.delayed : p.stopped;
            ASSERT_EQ(Items(from), p.texts) << from;
            for (const std::string& text : p.texts)
                ASSERT_TRUE(Move(from, text,
                                 step == 0   ? kDelayed
                                 : step == 1 ? kStopped
                                             : kActive))
                    << text;
            if (step == 0) {
                EXPECT_NE(File().find("ExecuteReg (\"\", \"\", 0, \"Empty\");"), std::string::npos);
                EXPECT_NE(File().find("ExecuteReg (\"C:\\x y\\x.exe\", \"/y=1\", 0, \"a=b\");"),
                          std::string::npos);
            }
        }
        if (step == 1) { // stopped: the saved copies by the values' own names
            EXPECT_EQ(Saved(user, "微信"), "\"C:\\Program Files\\微信\\WeChat.exe\" -autorun");
        }
    }
    EXPECT_EQ(snapshot(), before);
    EXPECT_EQ(reg.EnumValues(user, kSavedUserRunKey).size(), 0u);
    Refresh();
    for (const Place& p : locations) {
        EXPECT_EQ(Items(p.active), p.texts);
        EXPECT_TRUE(Items(p.stopped).empty());
    }
    EXPECT_TRUE(messages.shown.empty());
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
    EXPECT_FALSE(moves.Move(ItemIn("CurrentUserStartup", "Tool.lnk"), kDelayed));
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
    const std::string blocked = app.Store().File().FilePath() + ".new";
    test::MakeFolder(blocked);
    EXPECT_FALSE(moves.Move(ItemIn("CurrentUserStartup", "Tool.lnk"), kDelayed));
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
