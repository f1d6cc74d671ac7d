// Items moved between active, delayed and stopped in the prefix's real Startup folders and Run
// keys: each move changes the real files and values and the program-group file, and nothing of
// the user's is lost on the way.
#include "startup_fixture.h"

#include "items/move_steps.h"
#include "items/startup_approved.h"
#include "text/placeholders.h"

namespace tolvane {
namespace {

using Lines = std::vector<std::string>;

constexpr auto kActive = ItemState::Active;
constexpr auto kDelayed = ItemState::Delayed;
constexpr auto kStopped = ItemState::Stopped;
constexpr auto user = RegistryRoot::CurrentUser, machine = RegistryRoot::LocalMachine,
               machine32 = RegistryRoot::LocalMachine32;

using ItemMovesTest = test::StartupFixture;

// Any name Windows can hold, in every location, through every move there is: each step lists
// every item by the same text where it went (as the program-group file, read back, has it) and
// leaves the Run values and shortcuts, byte for byte, either where Windows starts them or in the
// program's keeping. One name lives in both of the machine's registry views, each kept apart.
TEST_F(ItemMovesTest, EveryMoveOfEveryLocationKeepsTheItemsExactly) {
    RunValue(user, "a=b", "\"C:\\x y\\x.exe\" /y=1");
    ASSERT_TRUE(reg.SetValue(user, kRunKey, "Empty", test::WideValue(REG_SZ, "")));
    RunValue(user, "微信", "\"C:\\Program Files\\微信\\WeChat.exe\" -autorun");
    RunValue(machine, "Café ☕", "C:\\Café\\☕.exe /tray");
    RunValue(machine, "Same", "C:\\64\\same.exe");
    ASSERT_TRUE(
        reg.SetValue(machine32, kRunKey, "Same",
                     test::WideValue(REG_EXPAND_SZ, "\"%ProgramFiles%\\Я\\same.exe\" /32")));
    Shortcut(places.UserFolder, "Ноутбук.lnk");
    Shortcut(places.CommonFolder, "📅 Calendar.lnk");
    const std::vector<Item> start = Inventory(false), none;
    // Switched off in Task Manager, named in another letter case: a delay leaves the switch, and
    // putting the item back switches it on (the first byte; its other bytes stay).
    const ByteArray off = {3, 0x5A, 0, 0, 1, 2, 3, 4, 5, 6, 7, 8};
    ASSERT_TRUE(reg.SetValue(user, kApprovedFolderKey, "НОУТБУК.LNK", {REG_BINARY, off}));
    ASSERT_TRUE(reg.SetValue(machine, kApprovedRunKey, "café ☕", {REG_BINARY, off}));
    uint8_t switched = 3;
    struct Place {
        const char* in[3]; // the containers of the active, delayed and stopped items
        Lines texts;
    };
    const Place locations[] = {
        {{"CurrentUserRegistry", "DelayedItemsRegistryCurrentUser", "StoppedItemsCurrentReg"},
         {"Empty=", "a=b=\"C:\\x y\\x.exe\" /y=1",
          "微信=\"C:\\Program Files\\微信\\WeChat.exe\" -autorun"}},
        {{"AllUsersRegistry", "DelayedItemsRegistryAllUsers", "StoppedItemsAllReg"},
         {"Café ☕=C:\\Café\\☕.exe /tray", "Same=\"%ProgramFiles%\\Я\\same.exe\" /32",
          "Same=C:\\64\\same.exe"}},
        {{"CurrentUserStartup", "DelayedItemsStartupCurrentUser", "StoppedItemsCurrentStartup"},
         {"Ноутбук.lnk"}},
        {{"AllUsersStartup", "DelayedItemsStartupAllUsers", "StoppedItemsAllStartup"},
         {"📅 Calendar.lnk"}},
    };
    // Each move of an item in a file line the program reads back.
    const struct {
        ItemState to;
        const char* line;
    } steps[] = {
        {kDelayed, "ExecuteReg (\"C:\\x y\\x.exe\", \"/y=1\", 0, \"a=b\");"},
        {kStopped, "\"_REGCU_Empty=\""},
        {kActive, ""},
        {kStopped, "\"_REGAU_Same=%ProgramFiles%\\Я\\same.exe /32\""},
        {kDelayed, "ExecuteReg (\"\", \"\", 0, \"Empty\");"},
        {kActive, ""},
    };
    ItemState now = kActive;
    for (const auto& step : steps) {
        SCOPED_TRACE("from " + std::to_string(static_cast<int>(now)) + " to " +
                     std::to_string(static_cast<int>(step.to)));
        Refresh();
        for (const Place& p : locations)
            for (const std::string& text : p.texts)
                ASSERT_TRUE(Move(p.in[static_cast<int>(now)], text, step.to)) << text;
        now = step.to;
        switched = now == kActive ? 2 : switched;
        for (auto [root, key, name] : {std::tuple{user, kApprovedFolderKey, "Ноутбук.lnk"},
                                       std::tuple{machine, kApprovedRunKey, "Café ☕"}})
            EXPECT_EQ(reg.GetValue(root, key, name)->Data[0], switched) << name;
        EXPECT_EQ(Inventory(false), now == kActive ? start : none);
        EXPECT_EQ(Inventory(true), now == kActive ? none : start);
        const std::string file = test::ReadFileBytes(app.Store().File().FilePath());
        EXPECT_NE(file.find(step.line), std::string::npos) << file;
        app.Store().File().LoadItems();
        Refresh();
        for (const Place& p : locations)
            for (int state = 0; state < 3; ++state)
                EXPECT_EQ(Items(p.in[state]), state == static_cast<int>(now) ? p.texts : Lines{});
    }
    EXPECT_TRUE(messages.shown.empty());

    // Every value taken out is in a backup as the registry editor writes it, the 32-bit one
    // under its own key: imported, the backups alone bring every value back exactly.
    std::string backups;
    for (const std::string& file : test::FilesBelow(folder / "Delayed Registry"))
        backups += test::ReadUtf16File(file);
    EXPECT_NE(backups.find("[HKEY_LOCAL_MACHINE\\SOFTWARE\\WOW6432Node\\Microsoft\\Windows\\"
                           "CurrentVersion\\Run]\r\n\"Same\"=hex(2):"),
              std::string::npos)
        << backups;
    std::vector<Item> values = start;
    std::erase_if(values, [](const Item& i) { return i.name.ends_with(".lnk"); });
    places.Clear();
    ASSERT_EQ(Inventory(false), none);
    for (const std::string& backup : test::FilesBelow(folder / "Delayed Registry")) {
        test::ChildProcess import("reg.exe import \"" + backup + "\"");
        unsigned long code = 1;
        ASSERT_TRUE(import.WaitForExit(30000, &code));
        EXPECT_EQ(code, 0u) << backup;
    }
    EXPECT_EQ(Inventory(false), values);
}

// A move that would overwrite something of the user's, or take out a value under a command it
// no longer has, is refused and said; everything stays. (A command that deletes: see tolvanec.)
TEST_F(ItemMovesTest, ConflictsAreRefusedToldAndNothingIsOverwritten) {
    Shortcut(places.UserFolder, "Tool.lnk");
    RunValue(user, "App", "C:\\app.exe /old");
    RunValue(user, "Late", "C:\\late.exe");
    Refresh();
    ASSERT_TRUE(Move("CurrentUserStartup", "Tool.lnk", kDelayed));
    ASSERT_TRUE(Move("CurrentUserRegistry", "App=C:\\app.exe /old", kDelayed));
    const std::string held = test::ReadFileBytes(UserItems("Tool.lnk"));
    // The programs put themselves back, as installers do, but differently.
    test::WriteFileBytes(UserStartup("Tool.lnk"), "a newer shortcut");
    RunValue(user, "App", "C:\\app.exe /new");
    Refresh();
    RunValue(user, "Late", "C:\\later.exe"); // changed since the list was made
    const struct {
        const char *container, *text;
        ItemState to;
        int message;
        std::string detail;
    } refused[] = {
        {"CurrentUserStartup", "Tool.lnk", kDelayed, 14,
         app.folders.UserItemsFolder + "\\Tool.lnk"},
        {"DelayedItemsStartupCurrentUser", "Tool.lnk", kActive, 14, UserStartup("Tool.lnk")},
        {"DelayedItemsRegistryCurrentUser", "App=C:\\app.exe /old", kActive, 15,
         "App=C:\\app.exe /new"},
        {"CurrentUserRegistry", "App=C:\\app.exe /new", kDelayed, 14, "App=C:\\app.exe /old"},
        {"CurrentUserRegistry", "Late=C:\\late.exe", kStopped, 15, "Late=C:\\later.exe"},
    };
    for (const auto& r : refused) {
        SCOPED_TRACE(r.text);
        messages.shown.clear();
        EXPECT_FALSE(Move(r.container, r.text, r.to));
        const std::string told = FillIn(app.text.Message(r.message), {r.text, r.detail});
        EXPECT_EQ(messages.shown,
                  (std::vector<test::CapturedMessages::Shown>{{told, "Tolvane", 0x30}}));
    }
    EXPECT_EQ(test::ReadFileBytes(UserStartup("Tool.lnk")), "a newer shortcut");
    EXPECT_EQ(test::ReadFileBytes(UserItems("Tool.lnk")), held);
    EXPECT_EQ(Run(user, "App") + "|" + Saved(user, "App"), "C:\\app.exe /new|C:\\app.exe /old");
    EXPECT_EQ(Run(user, "Late") + "|" + Saved(user, "Late"), "C:\\later.exe|(none)");
}

// The program-group file cannot be written, and the shortcut that went to the items folder
// cannot be moved back: nothing is lost, the error is logged and the user told where it is.
TEST_F(ItemMovesTest, AMoveThatCannotBeTakenBackSaysWhereTheShortcutIs) {
    test::WriteFileBytes(folder / "log.txt", ""); // logging on
    Shortcut(places.UserFolder, "Tool.lnk");
    const std::string bytes = test::ReadFileBytes(UserStartup("Tool.lnk"));
    Refresh();
    test::MakeFolder(app.folders.UserItemsFolder);
    test::MakeFolder(app.Store().File().FilePath() + ".new");
    ItemMoves moves = Moves();
    int calls = 0;
    moves.SetFileMover([&](const std::string& from, const std::string& to) {
        return ++calls == 1 && MoveFileA(from.c_str(), to.c_str()) ? 0 : 5;
    });
    EXPECT_FALSE(
        moves.Move(*ItemOfNode(tree, listing, Node("CurrentUserStartup", "Tool.lnk")), kDelayed));
    test::RemoveTree(app.Store().File().FilePath() + ".new");
    EXPECT_EQ(test::ReadFileBytes(UserItems("Tool.lnk")), bytes);
    ASSERT_EQ(messages.shown.size(), 2u);
    const std::string at =
        "the shortcut is still at \"" + app.folders.UserItemsFolder + "\\Tool.lnk";
    EXPECT_NE(messages.shown[1].Text.find(at), std::string::npos) << messages.shown[1].Text;
    EXPECT_NE(test::ReadFileBytes(folder / "log.txt").find("not taken back: "), std::string::npos);
}

// A stopped value whose saved copy is gone comes back from its own entry, which names it; an
// entry of an older version that holds a path alone and has no copy has nothing to put back:
// its entry goes.
TEST_F(ItemMovesTest, AStoppedValueWithoutItsSavedCopyComesBackFromItsEntry) {
    app.model.AddStoppedProgram("Machine=C:\\m.exe", kMachineRun);
    app.model.AddStoppedProgram("C:\\gone.exe", kUserRun);
    app.Store().File().WriteItems();
    Refresh();
    EXPECT_TRUE(Move("StoppedItemsAllReg", "Machine=C:\\m.exe", kActive));
    EXPECT_TRUE(Move("StoppedItemsCurrentReg", "C:\\gone.exe", kActive));
    EXPECT_EQ(Run(machine, "Machine"), "C:\\m.exe");
    EXPECT_EQ(Inventory(false).size(), 1u); // nothing for the path alone
    EXPECT_EQ(test::ReadFileBytes(app.Store().File().FilePath()).find("gone"), std::string::npos);
    EXPECT_TRUE(messages.shown.empty());
}

} // namespace
} // namespace tolvane
