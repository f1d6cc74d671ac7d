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
    // A name and a command longer than any fixed buffer would take.
    const std::string wechat = "微信 " + test::LongText(300),
                      command = "\"C:\\Program Files\\微信\\WeChat.exe\" -autorun " +
                                test::LongText(5000);
    RunValue(user, wechat, command);
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
    // Every item as the program-group file, read back, lists it: its location, its state and
    // its text, sorted.
    auto listed = [&] {
        std::vector<std::string> all;
        for (const StartupItem& item : ReadBack())
            all.push_back(std::to_string(int(item.Location)) + "ADS"[int(item.State)] + " " +
                          item.Text());
        std::sort(all.begin(), all.end());
        return all;
    };
    const Lines items = {"0A Ноутбук.lnk",
                         "1A Empty=",
                         "1A a=b=\"C:\\x y\\x.exe\" /y=1",
                         "1A " + wechat + "=" + command,
                         "2A 📅 Calendar.lnk",
                         "3A Café ☕=C:\\Café\\☕.exe /tray",
                         "3A Same=C:\\64\\same.exe",
                         "4A Same=\"%ProgramFiles%\\Я\\same.exe\" /32"};
    ASSERT_EQ(listed(), items);
    // Each move of an item in a file line the program reads back.
    const std::pair<ItemState, const char*> steps[] = {
        {kDelayed, "ExecuteReg (\"C:\\x y\\x.exe\", \"/y=1\", 0, \"a=b\");"},
        {kStopped, "\"_REGCU_Empty=\""},
        {kActive, ""},
        {kStopped, "\"_REGAU_Same=%ProgramFiles%\\Я\\same.exe /32\""},
        {kDelayed, "ExecuteReg (\"\", \"\", 0, \"Empty\");"},
        {kActive, ""},
    };
    for (const auto& [to, line] : steps) {
        SCOPED_TRACE(std::string("to ") + "ADS"[int(to)] + " " + line);
        Refresh();
        for (const StartupItem& item : listing.Items)
            ASSERT_TRUE(Moves().Move(item, to)) << item.Text();
        switched = to == kActive ? 2 : switched;
        for (auto [root, key, name] : {std::tuple{user, kApprovedFolderKey, "Ноутбук.lnk"},
                                       std::tuple{machine, kApprovedRunKey, "Café ☕"}})
            EXPECT_EQ(reg.GetValue(root, key, name)->Data[0], switched) << name;
        EXPECT_EQ(Inventory(false), to == kActive ? start : none);
        EXPECT_EQ(Inventory(true), to == kActive ? none : start);
        const std::string file = test::ReadFileBytes(app.Store().File().FilePath());
        EXPECT_NE(file.find(line), std::string::npos) << file;
        Lines now = items;
        for (std::string& item : now)
            item[1] = "ADS"[int(to)];
        EXPECT_EQ(listed(), now);
    }
    EXPECT_TRUE(messages.shown.empty());

    // Every value taken out is in a backup as the registry editor writes it, the 32-bit one
    // under its own key: imported, the backups alone bring every value back exactly.
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
// A stopped value whose saved copy is gone comes back from its own entry, which names it; an
// entry of an older version that holds a path alone and has no copy has nothing to put back:
// its entry goes.
TEST_F(ItemMovesTest, NothingChangedMeanwhileIsOverwrittenAndAValueWithoutItsCopyComesBack) {
    Shortcut(places.UserFolder, "Tool.lnk");
    RunValue(user, "App", "C:\\app.exe /old");
    RunValue(user, "Late", "C:\\late.exe");
    app.model.AddStoppedProgram("Machine=C:\\m.exe", kMachineRun);
    app.model.AddStoppedProgram("C:\\gone.exe", kUserRun);
    app.Store().File().WriteItems();
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
        int message; // 0: moved
        std::string detail;
    } moves[] = {
        {"CurrentUserStartup", "Tool.lnk", kDelayed, 14,
         app.folders.UserItemsFolder + "\\Tool.lnk"},
        {"DelayedItemsStartupCurrentUser", "Tool.lnk", kActive, 14, UserStartup("Tool.lnk")},
        {"DelayedItemsRegistryCurrentUser", "App=C:\\app.exe /old", kActive, 15,
         "App=C:\\app.exe /new"},
        {"CurrentUserRegistry", "App=C:\\app.exe /new", kDelayed, 14, "App=C:\\app.exe /old"},
        {"CurrentUserRegistry", "Late=C:\\late.exe", kStopped, 15, "Late=C:\\later.exe"},
        {"StoppedItemsAllReg", "Machine=C:\\m.exe", kActive, 0, ""},
        {"StoppedItemsCurrentReg", "C:\\gone.exe", kActive, 0, ""},
    };
    for (const auto& m : moves) {
        SCOPED_TRACE(m.text);
        messages.shown.clear();
        EXPECT_EQ(Move(m.container, m.text, m.to), !m.message);
        std::vector<test::CapturedMessages::Shown> told;
        if (m.message)
            told.push_back(
                {FillIn(app.text.Message(m.message), {m.text, m.detail}), "Tolvane", 0x30});
        EXPECT_EQ(messages.shown, told);
    }
    EXPECT_EQ(test::ReadFileBytes(UserStartup("Tool.lnk")), "a newer shortcut");
    EXPECT_EQ(test::ReadFileBytes(UserItems("Tool.lnk")), held);
    EXPECT_EQ(Run(user, "App") + "|" + Saved(user, "App"), "C:\\app.exe /new|C:\\app.exe /old");
    EXPECT_EQ(Run(user, "Late") + "|" + Saved(user, "Late"), "C:\\later.exe|(none)");
    EXPECT_EQ(Run(machine, "Machine"), "C:\\m.exe");
    EXPECT_EQ(reg.EnumValues(user, kRunKey).size(), 2u); // nothing for the path alone
    EXPECT_EQ(test::ReadFileBytes(app.Store().File().FilePath()).find("gone"), std::string::npos);
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

} // namespace
} // namespace tolvane
