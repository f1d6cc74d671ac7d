#include "config/policies.h"

namespace tolvane {

namespace {

constexpr uint32_t kRegDword = 4;

std::optional<uint32_t> DwordOf(const RegistryValue& value) {
    if (value.Type != kRegDword || value.Data.size() != 4)
        return std::nullopt;
    return uint32_t(value.Data[0]) | uint32_t(value.Data[1]) << 8 | uint32_t(value.Data[2]) << 16 |
           uint32_t(value.Data[3]) << 24;
}

} // namespace

Policies PoliciesOfKey(const PolicyKeyValues& key, std::vector<std::string>& ignored) {
    Policies policies;
    for (const auto& [name, value] : key.Values) {
        for (size_t i = 0; i < std::size(kPolicyValues); ++i) {
            const PolicyValueRule& rule = kPolicyValues[i];
            if (ToLower(name) != ToLower(rule.Name)) // value names in any letter case
                continue;
            const std::optional<uint32_t> number = DwordOf(value);
            const std::string range = "0 to " + std::to_string(rule.Highest);
            if (!number)
                ignored.push_back(std::string(rule.Name) + " is ignored: not a REG_DWORD of " +
                                  range);
            else if (*number > rule.Highest)
                ignored.push_back(std::string(rule.Name) +
                                  " is ignored: " + std::to_string(*number) + " is not " + range);
            else
                policies.Values[i] = number;
        }
    }
    for (const auto& [name, text] : key.LockedItems) {
        const size_t slash = text ? text->find('\\') : std::string::npos;
        const std::optional<LocationWord> word =
            slash == std::string::npos ? std::nullopt
                                       : ParseLocationWord(Trim(text->substr(0, slash)));
        if (!text)
            ignored.push_back("LockedItems value \"" + name + "\" is ignored: not a text");
        else if (!word || slash + 1 == text->size())
            ignored.push_back("LockedItems value \"" + name + "\" is ignored: \"" + *text +
                              "\" is not <location>\\<name>, the location one of user-folder, "
                              "user-run, common-folder, machine-run, machine-run-32");
        else
            policies.Locked.push_back({word->Code, word->Wow32, text->substr(slash + 1)});
    }
    return policies;
}

Policies MergePolicies(const Policies& machine, const Policies& user) {
    Policies merged = machine;
    for (size_t i = 0; i < std::size(merged.Values); ++i)
        if (!merged.Values[i])
            merged.Values[i] = user.Values[i];
    merged.Locked.insert(merged.Locked.end(), user.Locked.begin(), user.Locked.end());
    return merged;
}

PolicyRefusal RefusedMove(const Policies& policies, int location, bool wow32, std::string_view name,
                          NameOrder order) {
    if (policies.Get(PolicyValue::AdminMovesOnly).value_or(0) == 1)
        return PolicyRefusal::AdminMovesOnly;
    wow32 = wow32 && location == kMachineRun;
    for (const LockedItem& locked : policies.Locked)
        if (locked.Location == location && locked.Wow32 == wow32 &&
            SameName(locked.Name, name, order))
            return PolicyRefusal::Locked;
    return PolicyRefusal::None;
}

SettingsInForce InForce(const ProgramModel& model, const Policies& policies) {
    SettingsInForce settings{model.MainStartupDelay, model.WaitForIdle != 0, model.StartupType};
    if (const auto delay = policies.Get(PolicyValue::MainDelay))
        settings.MainDelay = static_cast<float>(*delay);
    if (const auto idle = policies.Get(PolicyValue::IdleStart))
        settings.IdleStart = *idle != 0;
    if (const auto type = policies.Get(PolicyValue::StartupType))
        settings.StartupType = static_cast<int>(*type);
    return settings;
}

} // namespace tolvane
