// The administrator's policies as their keys hold them: each value counts only in its type and
// range, and the rest is said for the log; the machine's win over the user's; an item is locked
// by its location, view and own name.
#include <gtest/gtest.h>

#include "config/policies.h"
#include "support/test_support.h"

namespace tolvane {
namespace {

RegistryValue Dword(uint32_t n) {
    return {4, {uint8_t(n), uint8_t(n >> 8), uint8_t(n >> 16), uint8_t(n >> 24)}};
}

TEST(Policies, OnlyValuesOfTheirTypeAndRangeCountTheMachinesWinAndEitherLocksAnItem) {
    std::vector<std::string> ignored;
    const Policies machine = PoliciesOfKey(
        {{{"maindelay", Dword(3600)}, // value names in any letter case
          {"IdleStart", {3, {1, 0, 0, 0}}},
          {"StartupType", {4, {3, 0}}},
          {"AdminMovesOnly", Dword(0)}, // set off: the user's "on" loses
          {"Unknown", Dword(1)}},
         {{"a", "user-run\\OneDrive"}, {"b", "common-folder\\"}, {"c", "desktop\\Tool.lnk"}}},
        ignored);
    const Policies user = PoliciesOfKey({{{"MainDelay", Dword(5)},
                                          {"IdleStart", Dword(1)},
                                          {"StartupType", Dword(4)},
                                          {"AdminMovesOnly", Dword(1)}},
                                         {{"d", " machine-run-32 \\Sync\\Tool"}, {"e", {}}}},
                                        ignored);
    const std::string notItem = "\" is not <location>\\<name>, the location one of user-folder, "
                                "user-run, common-folder, machine-run, machine-run-32";
    EXPECT_EQ(ignored, (std::vector<std::string>{
                           "IdleStart is ignored: not a REG_DWORD of 0 to 1",
                           "StartupType is ignored: not a REG_DWORD of 0 to 3",
                           "LockedItems value \"b\" is ignored: \"common-folder\\" + notItem,
                           "LockedItems value \"c\" is ignored: \"desktop\\Tool.lnk" + notItem,
                           "StartupType is ignored: 4 is not 0 to 3",
                           "LockedItems value \"e\" is ignored: not a text"}));
    Policies merged = MergePolicies(machine, user);
    EXPECT_EQ(std::vector(std::begin(merged.Values), std::end(merged.Values)),
              (std::vector<std::optional<uint32_t>>{3600, 1, {}, 0}));
    EXPECT_EQ(merged.Locked, (std::vector<LockedItem>{{kUserRun, false, "OneDrive"},
                                                      {kMachineRun, true, "Sync\\Tool"}}));

    const struct {
        int location;
        bool wow32;
        const char* name;
        PolicyRefusal why;
    } moves[] = {
        {kUserRun, false, "ONEDRIVE", PolicyRefusal::Locked}, // as Windows compares names
        {kMachineRun, true, "sync\\tool", PolicyRefusal::Locked},
        {kMachineRun, false, "Sync\\Tool", PolicyRefusal::None}, // the other registry view
        {kUserStartup, false, "OneDrive", PolicyRefusal::None},
    };
    for (const auto& m : moves)
        EXPECT_EQ(RefusedMove(merged, m.location, m.wow32, m.name, test::AsciiNameOrder), m.why)
            << m.name;
    merged.Values[size_t(PolicyValue::AdminMovesOnly)] = 1;
    EXPECT_EQ(RefusedMove(merged, kUserStartup, false, "Any.lnk", test::AsciiNameOrder),
              PolicyRefusal::AdminMovesOnly);
}

} // namespace
} // namespace tolvane
