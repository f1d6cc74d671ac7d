// What an administrator fixes for the users of a machine, through Group Policy or Intune: the
// settings that decide the log-on run and the program's own Run value, the items that users may
// not move, and whether only the administrator moves items at all. Read from the policy keys of
// the machine and the user (policy_registry.h); plain data and rules here.
//
// The user's own settings in proggroup.c stay as the user left them: a setting fixed by policy
// is applied where it takes effect, so that the user's own choice is back once the policy goes.
#pragma once

#include <cstdint>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "config/program_model.h"
#include "platform/registry.h"
#include "text/strings.h"

namespace tolvane {

// Below HKEY_LOCAL_MACHINE (its 64-bit view) and HKEY_CURRENT_USER.
inline constexpr const char* kPolicyKey = "SOFTWARE\\Policies\\Hexmoor\\Tolvane";
// Its subkey of items users may not move: each value's data names one item as
// "<location word>\<own name>" ("user-run\OneDrive"), as a list of Group Policy writes it.
inline constexpr const char* kLockedItemsKey = "SOFTWARE\\Policies\\Hexmoor\\Tolvane\\LockedItems";

// The values of the policy key, each a REG_DWORD from 0 to its highest.
enum class PolicyValue { MainDelay, IdleStart, StartupType, AdminMovesOnly };
struct PolicyValueRule {
    const char* Name;
    PolicyValue Value;
    uint32_t Highest;
};
inline constexpr PolicyValueRule kPolicyValues[] = {
    {"MainDelay", PolicyValue::MainDelay, 3600}, // seconds
    {"IdleStart", PolicyValue::IdleStart, 1},
    {"StartupType", PolicyValue::StartupType, 3}, // as proggroup.c's StartupType
    {"AdminMovesOnly", PolicyValue::AdminMovesOnly, 1},
};

// An item users may not move: its location, the registry view of a machine value, its own name.
struct LockedItem {
    int Location = kUserStartup;
    bool Wow32 = false;
    std::string Name;
    bool operator==(const LockedItem&) const = default;
};

struct Policies {
    // Each value as set; none where the policy does not set it.
    std::optional<uint32_t> Values[std::size(kPolicyValues)];
    std::vector<LockedItem> Locked;

    std::optional<uint32_t> Get(PolicyValue value) const {
        return Values[static_cast<size_t>(value)];
    }
};

// One policy key as read: its values, and the texts of its LockedItems subkey's values (none for
// a value that is no text).
struct PolicyKeyValues {
    std::vector<std::pair<std::string, RegistryValue>> Values;
    std::vector<std::pair<std::string, std::optional<std::string>>> LockedItems;
};

// The policies of one key. A value of another type or out of its range, and a locked item
// that names no location or no item, is left out: it fixes nothing, and `ignored` gets a line
// for the log that says which and why.
Policies PoliciesOfKey(const PolicyKeyValues& key, std::vector<std::string>& ignored);

// The machine's policies win over the user's, value by value, as in Group Policy. An item is
// locked by either list: the user's list can lock more, never unlock.
Policies MergePolicies(const Policies& machine, const Policies& user);

// Why a move is refused: the administrator moves every item, or locks this one.
enum class PolicyRefusal { None, AdminMovesOnly, Locked };
// Decided from the item's key (location, view, own name), the name compared as Windows compares
// names (`order`; none: exactly as written).
PolicyRefusal RefusedMove(const Policies& policies, int location, bool wow32, std::string_view name,
                          NameOrder order);

// The policy fixes this setting (MainDelay, IdleStart, StartupType): nothing else may change it.
inline bool IsFixed(const Policies& policies, PolicyValue setting) {
    return policies.Get(setting).has_value();
}

// The settings in force: the policy's where it fixes one, the user's own from the model
// otherwise.
struct SettingsInForce {
    float MainDelay = 0;
    bool IdleStart = false;
    int StartupType = 0;
};
SettingsInForce InForce(const ProgramModel& model, const Policies& policies);

} // namespace tolvane
