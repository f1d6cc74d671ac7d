// The administrator's policies as their keys hold them: each value counts only in its type and
// range, and the rest is said for the log; the machine's win over the user's; an item is locked
// by its location, view and own name; the settings in force follow what the policies fix.
#include <gtest/gtest.h>

#include "config/policies.h"
#include "support/test_support.h"

namespace tolvane {
namespace {

RegistryValue Dword(uint32_t n) {
    return {4, {uint8_t(n), uint8_t(n >> 8), uint8_t(n >> 16), uint8_t(n >> 24)}};
}

TEST(Policies, AValueCountsOnlyInItsTypeAndRangeAndWhatIsIgnoredIsSaid) {
    const struct {
        const char* name;
        RegistryValue value;
        PolicyValue which;
        std::optional<uint32_t> read;
        std::string said;
    } values[] = {
        {"MainDelay", Dword(3600), PolicyValue::MainDelay, 3600, ""},
        {"maindelay", Dword(3601), PolicyValue::MainDelay, {}, "MainDelay is ignored: 3601 is not"},
        {"IdleStart", {1, {'1', 0}}, PolicyValue::IdleStart, {}, "IdleStart is ignored: not a"},
        {"StartupType", Dword(3), PolicyValue::StartupType, 3, ""},
        {"StartupType", {4, {3, 0}}, PolicyValue::StartupType, {}, "StartupType is ignored: not a"},
        {"AdminMovesOnly",
         Dword(2),
         PolicyValue::AdminMovesOnly,
         {},
         "AdminMovesOnly is ignored: 2 is not 0 to 1"},
        {"Unknown", Dword(1), PolicyValue::MainDelay, {}, ""},
    };
    for (const auto& v : values) {
        std::vector<std::string> ignored;
        const Policies policies = PoliciesOfKey({{{v.name, v.value}}, {}}, ignored);
        EXPECT_EQ(policies.Get(v.which), v.read) << v.name;
        EXPECT_EQ(ignored.empty() ? "" : ignored[0].substr(0, v.said.size()), v.said) << v.name;
    }
    const struct {
        std::optional<std::string> text;
        std::vector<LockedItem> locked;
        std::string said;
    } items[] = {
        {"user-run\\OneDrive", {{kUserRun, false, "OneDrive"}}, ""},
        {" machine-run-32 \\Sync\\Tool", {{kMachineRun, true, "Sync\\Tool"}}, ""},
        {"common-folder\\", {}, "LockedItems value \"x\" is ignored: \"common-folder\\\" is not"},
        {"desktop\\Tool.lnk", {}, "LockedItems value \"x\" is ignored: \"desktop"},
        {std::nullopt, {}, "LockedItems value \"x\" is ignored: not a text"},
    };
    for (const auto& i : items) {
        std::vector<std::string> ignored;
        EXPECT_EQ(PoliciesOfKey({{}, {{"x", i.text}}}, ignored).Locked, i.locked);
        EXPECT_EQ(ignored.empty() ? "" : ignored[0].substr(0, i.said.size()), i.said);
    }
}

TEST(Policies, TheMachineWinsValueByValueEitherLocksAnItemAndTheSettingsInForceFollow) {
    Policies machine, user;
    machine.Values[size_t(PolicyValue::MainDelay)] = 60;
    machine.Values[size_t(PolicyValue::AdminMovesOnly)] = 0; // set off: the user's "on" loses
    user.Values[size_t(PolicyValue::MainDelay)] = 5;
    user.Values[size_t(PolicyValue::IdleStart)] = 1;
    user.Values[size_t(PolicyValue::AdminMovesOnly)] = 1;
    machine.Locked = {{kUserRun, false, "OneDrive"}};
    user.Locked = {{kMachineRun, true, "Sync"}};
    Policies merged = MergePolicies(machine, user);
    ProgramModel model;
    model.MainStartupDelay = 2.5f;
    model.StartupType = 2;
    const SettingsInForce settings = InForce(model, merged);
    EXPECT_EQ(settings.MainDelay, 60);
    EXPECT_TRUE(settings.IdleStart);
    EXPECT_EQ(settings.StartupType, 2);
    EXPECT_FALSE(IsFixed(merged, PolicyValue::StartupType));

    const struct {
        int location;
        bool wow32;
        const char* name;
        PolicyRefusal why;
    } moves[] = {
        {kUserRun, false, "ONEDRIVE", PolicyRefusal::Locked}, // as Windows compares names
        {kMachineRun, true, "sync", PolicyRefusal::Locked},
        {kMachineRun, false, "Sync", PolicyRefusal::None}, // the other registry view
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
