// What Windows really starts: Task Manager's switches beside the items, and the machine's Run
// values of 32-bit programs in the registry's other view.
#include "startup_fixture.h"

#include "items/move_steps.h"
#include "items/startup_approved.h"
#include "text/strings.h"

namespace tolvane {
namespace {

using Values = std::vector<std::pair<std::string, RegistryValue>>;
using Lines = std::vector<std::string>;

class ViewsAndSwitches : public test::StartupFixture {
protected:
    // A switch as Task Manager writes it: the state, three more bytes, and a FILETIME.
    static ByteArray Flag(uint8_t state) { return {state, 0, 0, 0, 1, 2, 3, 4, 5, 6, 7, 8}; }
    void SetFlag(RegistryRoot root, const char* key, const std::string& name, ByteArray bytes) {
        ASSERT_TRUE(reg.SetValue(root, key, name, {REG_BINARY, std::move(bytes)}));
    }
    ByteArray FlagOf(RegistryRoot root, const char* key, const std::string& name) {
        auto value = reg.GetValue(root, key, name);
        return value ? value->Data : ByteArray{};
    }
    static uint64_t Now() {
        FILETIME now{};
        GetSystemTimeAsFileTime(&now);
        return (uint64_t{now.dwHighDateTime} << 32) | now.dwLowDateTime;
    }
    // The time a switch was last changed.
    static uint64_t TimeOf(const ByteArray& flag) {
        uint64_t time = 0;
        for (size_t i = 0; i < 8 && 4 + i < flag.size(); ++i)
            time |= uint64_t{flag[4 + i]} << (8 * i);
        return time;
    }
    int Leaf(const std::string& container, const std::string& text) {
        return Node(container, text);
    }
    std::optional<ItemPlace> PlaceOfLeaf(const std::string& container, const std::string& text) {
        return PlaceOf(tree, Node(container, text));
    }
};

// Switches are found by the item's name as Windows compares names: in any letter case, accented
// letters too.
TEST_F(ViewsAndSwitches, SwitchedOffItemsAreGhostedAndRunSwitchesThemOnAgain) {
    const RegistryRoot user = RegistryRoot::CurrentUser;
    const std::string off = "Résumé.lnk", offFlag = "rÉSUMÉ.LNK";
    const std::string sync = "Über Sync";
    Shortcut(places.UserFolder, off);
    Shortcut(places.UserFolder, "On.lnk");
    RunValue(user, "Tool", "C:\\T\\tool.exe");
    RunValue(user, sync, "C:\\sync.exe");
    RunValue(user, "Plain", "C:\\plain.exe");
    SetFlag(user, kApprovedFolderKey, offFlag, Flag(0x03));
    SetFlag(user, kApprovedFolderKey, "On.lnk", Flag(0x02));
    ByteArray toolOff = Flag(0x07);
    toolOff[1] = 0x5A;
    SetFlag(user, kApprovedRunKey, "Tool", toolOff);
    SetFlag(user, kApprovedRunKey, "über sync", Flag(0x03));
    SetFlag(user, kApprovedRunKey, "Other", Flag(0x03)); // no item's: never touched
    Refresh();
    EXPECT_TRUE(tree.Node(Leaf("CurrentUserStartup", off)).Cut);
    EXPECT_TRUE(tree.Node(Leaf("CurrentUserRegistry", sync + "=C:\\sync.exe")).Cut);
    EXPECT_FALSE(tree.Node(Leaf("CurrentUserStartup", "On.lnk")).Cut);
    EXPECT_TRUE(tree.Node(Leaf("CurrentUserRegistry", "Tool=C:\\T\\tool.exe")).Cut);
    EXPECT_FALSE(tree.Node(Leaf("CurrentUserRegistry", "Plain=C:\\plain.exe")).Cut);
    EXPECT_EQ(Caption("CurrentUserStartup"), "Startup Folder (2)"); // still active items

    // Delay leaves the switch as it is; Run puts the value back and switches it on now.
    ASSERT_TRUE(Move("CurrentUserRegistry", "Tool=C:\\T\\tool.exe", ItemState::Delayed));
    ASSERT_TRUE(Move("CurrentUserRegistry", "Plain=C:\\plain.exe", ItemState::Stopped));
    EXPECT_EQ(FlagOf(user, kApprovedRunKey, "Tool"), toolOff);
    Refresh();
    const uint64_t before = Now();
    EXPECT_TRUE(Move("DelayedItemsRegistryCurrentUser", "Tool=C:\\T\\tool.exe", ItemState::Active));
    EXPECT_TRUE(Move("StoppedItemsCurrentReg", "Plain=C:\\plain.exe", ItemState::Active));
    const uint64_t after = Now();
    EXPECT_EQ(Run(user, "Tool"), "C:\\T\\tool.exe");
    EXPECT_EQ(Run(user, "Plain"), "C:\\plain.exe");
    const ByteArray toolOn = FlagOf(user, kApprovedRunKey, "Tool");
    ASSERT_EQ(toolOn.size(), 12u);
    EXPECT_EQ(ByteArray(toolOn.begin(), toolOn.begin() + 4), (ByteArray{0x02, 0x5A, 0, 0}));
    EXPECT_GE(TimeOf(toolOn), before);
    EXPECT_LE(TimeOf(toolOn), after);
    EXPECT_EQ(FlagOf(user, kApprovedRunKey, "Other"), Flag(0x03));
    EXPECT_FALSE(reg.GetValue(user, kApprovedRunKey, "Plain")); // no switch: none is made

    // The ticked pass of Run does the same for a shortcut; a shortcut that is on stays as it is.
    ASSERT_TRUE(Move("CurrentUserStartup", off, ItemState::Delayed));
    ASSERT_TRUE(Move("CurrentUserStartup", "On.lnk", ItemState::Delayed));
    EXPECT_EQ(FlagOf(user, kApprovedFolderKey, offFlag), Flag(0x03));
    Refresh();
    Check("DelayedItemsStartupCurrentUser", off);
    Check("DelayedItemsStartupCurrentUser", "On.lnk");
    EXPECT_TRUE(Pass(CheckedMove::Run));
    EXPECT_TRUE(test::PathExists(UserStartup(off)));
    EXPECT_EQ(FlagOf(user, kApprovedFolderKey, offFlag)[0], 0x02);
    EXPECT_EQ(FlagOf(user, kApprovedFolderKey, "On.lnk"), Flag(0x02));

    // An active item that is switched off: Run switches it on where it is.
    SetFlag(user, kApprovedFolderKey, "On.lnk", Flag(0x07));
    Refresh();
    const int on = Leaf("CurrentUserStartup", "On.lnk");
    ASSERT_TRUE(tree.Node(on).Cut);
    EXPECT_TRUE(Move("CurrentUserStartup", "On.lnk", ItemState::Active));
    Refresh();
    EXPECT_FALSE(tree.Node(Leaf("CurrentUserStartup", "On.lnk")).Cut);
    EXPECT_TRUE(messages.shown.empty());
}

TEST_F(ViewsAndSwitches, ThirtyTwoBitValuesAreListedMovedAndPutBackInTheirOwnView) {
    const RegistryRoot machine = RegistryRoot::LocalMachine;
    const RegistryRoot machine32 = RegistryRoot::LocalMachine32;
    // The same name in both views, the 32-bit one expandable, and one of the 32-bit view only.
    RunValue(machine, "Same", "C:\\64\\same.exe");
    ASSERT_TRUE(reg.SetValue(machine32, kRunKey, "Same",
                             WideValue(REG_EXPAND_SZ, "\"%ProgramFiles%\\same.exe\" /32")));
    RunValue(machine32, "Only32", "C:\\o.exe");
    SetFlag(machine, kApprovedRun32Key, "Same", Flag(0x03));
    SetFlag(machine, kApprovedRunKey, "Same", Flag(0x03));
    const Values run64 = reg.EnumValues(machine, kRunKey);
    const Values run32 = reg.EnumValues(machine32, kRunKey);
    ASSERT_EQ(run32.size(), 2u);
    // Seen from 64 bits, the 32-bit view is a key of its own below WOW6432Node.
    EXPECT_EQ(
        reg.EnumValues(machine, "Software\\WOW6432Node\\Microsoft\\Windows\\CurrentVersion\\Run")
            .size(),
        2u);

    Refresh();
    const std::string same32 = "Same=\"%ProgramFiles%\\same.exe\" /32";
    EXPECT_EQ(Items("AllUsersRegistry"),
              (Lines{"Only32=C:\\o.exe", same32, "Same=C:\\64\\same.exe"}));
    EXPECT_EQ(Caption("AllUsersRegistry"), "Registry Run (3)");
    EXPECT_TRUE(PlaceOfLeaf("AllUsersRegistry", same32)->Wow32);
    EXPECT_FALSE(PlaceOfLeaf("AllUsersRegistry", "Same=C:\\64\\same.exe")->Wow32);

    // Both delayed: two items, each with its copy in its own view, and the 32-bit backup names
    // the key as the registry editor does.
    ASSERT_TRUE(Move("AllUsersRegistry", same32, ItemState::Delayed));
    EXPECT_EQ(reg.EnumValues(machine, kRunKey), run64);
    ASSERT_TRUE(Move("AllUsersRegistry", "Same=C:\\64\\same.exe", ItemState::Delayed));
    EXPECT_EQ(reg.GetValue(machine, "Software\\WOW6432Node\\Hexmoor\\Tolvane\\HKLM", "Same")->Type,
              REG_EXPAND_SZ);
    EXPECT_EQ(Saved(machine, "Same"), "C:\\64\\same.exe");
    std::string backup;
    for (const std::string& file : test::FilesBelow(folder / "Delayed Registry"))
        backup += test::ReadUtf16File(file);
    EXPECT_NE(backup.find("[HKEY_LOCAL_MACHINE\\SOFTWARE\\WOW6432Node\\Microsoft\\Windows\\"
                          "CurrentVersion\\Run]\r\n\"Same\"=hex(2):"),
              std::string::npos)
        << backup;
    Refresh();
    // Listed as it was listed while active: the value's own command, quotes and variables kept.
    const std::string& delayed32 = same32;
    EXPECT_EQ(Items("DelayedItemsRegistryAllUsers"), (Lines{delayed32, "Same=C:\\64\\same.exe"}));
    EXPECT_TRUE(PlaceOfLeaf("DelayedItemsRegistryAllUsers", delayed32)->Wow32);

    // The 32-bit one stopped and put back: byte for byte where it was, its switch on, and the
    // other view's value, copy and switch untouched.
    ASSERT_TRUE(Move("DelayedItemsRegistryAllUsers", delayed32, ItemState::Stopped));
    Refresh();
    const int stopped = Leaves("StoppedItemsAllReg").at(0);
    ASSERT_TRUE(PlaceOf(tree, stopped)->Wow32);
    EXPECT_EQ(tree.Node(stopped).Text, same32);
    EXPECT_TRUE(Move("StoppedItemsAllReg", same32, ItemState::Active));
    EXPECT_EQ(reg.EnumValues(machine32, kRunKey), run32);
    EXPECT_TRUE(reg.EnumValues(machine32, kSavedMachineRunKey).empty());
    EXPECT_EQ(FlagOf(machine, kApprovedRun32Key, "Same")[0], 0x02);
    EXPECT_EQ(FlagOf(machine, kApprovedRunKey, "Same"), Flag(0x03));
    EXPECT_EQ(Saved(machine, "Same"), "C:\\64\\same.exe");
    Refresh();
    EXPECT_EQ(Items("DelayedItemsRegistryAllUsers"), Lines{"Same=C:\\64\\same.exe"});
    EXPECT_TRUE(Items("StoppedItemsAllReg").empty());

    EXPECT_TRUE(Move("DelayedItemsRegistryAllUsers", "Same=C:\\64\\same.exe", ItemState::Active));
    EXPECT_EQ(reg.EnumValues(machine, kRunKey), run64);
    EXPECT_EQ(reg.EnumValues(machine32, kRunKey), run32);
    EXPECT_TRUE(reg.EnumValues(machine, kSavedMachineRunKey).empty());
    EXPECT_TRUE(messages.shown.empty());
}

} // namespace
} // namespace tolvane
