#include "config/policy_registry.h"

#include <windows.h>

#include <mutex>
#include <set>

#include "platform/event_log.h"
#include "platform/registry.h"

namespace tolvane {

namespace {

Policies ReadKey(RegistryRoot root, const char* rootName, const EventLog& log) {
    CRegistry registry;
    PolicyKeyValues key;
    key.Values = registry.EnumValues(root, kPolicyKey);
    for (auto& [name, value] : registry.EnumValues(root, kLockedItemsKey))
        key.LockedItems.emplace_back(name, value.Type == REG_SZ || value.Type == REG_EXPAND_SZ
                                               ? std::optional(ValueText(value))
                                               : std::nullopt);
    std::vector<std::string> ignored;
    Policies policies = PoliciesOfKey(key, ignored);
    // Every refresh and every move reads the policies again: a value ignored is said once.
    static std::mutex mutex;
    static std::set<std::string> said;
    for (const std::string& line : ignored) {
        const std::string text =
            std::string("Policy in ") + rootName + "\\" + kPolicyKey + ": " + line;
        const std::lock_guard<std::mutex> lock(mutex);
        if (said.insert(text).second)
            log.WriteLog(text, kLogWarning);
    }
    return policies;
}

} // namespace

Policies ReadPolicies(const EventLog& log) {
    return MergePolicies(ReadKey(RegistryRoot::LocalMachine64, "HKEY_LOCAL_MACHINE", log),
                         ReadKey(RegistryRoot::CurrentUser, "HKEY_CURRENT_USER", log));
}

} // namespace tolvane
