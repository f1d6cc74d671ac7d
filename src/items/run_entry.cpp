#include "items/run_entry.h"

#include <windows.h>

#include "config/policy_registry.h"
#include "platform/environment.h"
#include "platform/registry.h"
#include "config/program_model.h"
#include "platform/event_log.h"
#include "items/run_entry_steps.h"

namespace tolvane {

namespace {

class RegistryRunValues : public RunEntryValues {
public:
    std::string Read(RunEntryKey key) override {
        return reg_.GetSettingString(Root(key), kRunKey, kOwnRunValue);
    }
    bool Write(RunEntryKey key, const std::string& command) override {
        return reg_.SaveSettingString(Root(key), kRunKey, kOwnRunValue, command) &&
               Read(key) == command;
    }
    bool Delete(RunEntryKey key) override {
        return reg_.DeleteValue(Root(key), kRunKey, kOwnRunValue);
    }
    bool FileExists(const std::string& path) override {
        const DWORD attributes = GetFileAttributesA(path.c_str());
        return attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_DIRECTORY);
    }

private:
    static RegistryRoot Root(RunEntryKey key) {
        return key == RunEntryKey::Machine ? RegistryRoot::LocalMachine : RegistryRoot::CurrentUser;
    }
    CRegistry reg_;
};

} // namespace

bool UpdateRunEntry(int mode, const std::string& runCommand, const ProgramModel& model,
                    EventLog& log) {
    if (const std::optional<uint32_t> fixed = ReadPolicies(log).Get(PolicyValue::StartupType))
        mode = static_cast<int>(*fixed);
    if (mode < 0 || mode > 3)
        return true; // no start-up type chosen: nothing to bring in step
    RegistryRunValues values;
    bool asSet = true;
    // The folder of this copy, as its command names it ("\"<folder>\Tolvane.exe\" -nogui"):
    // whether all users can start it from there.
    const size_t file = runCommand.rfind('\\');
    const std::string_view folder =
        file == std::string::npos ? "" : std::string_view(runCommand).substr(1, file - 1);
    for (const RunEntryProblem& problem : ApplyRunEntryMode(
             values, mode, runCommand, model.AreAllUserDelays(), model.AreUserDelays(),
             FolderInUserProfile(folder) ? folder : std::string_view())) {
        log.WriteLog(problem.Text, problem.Level);
        asSet = asSet && problem.Level != kLogError;
    }
    return asSet;
}

void RemoveOwnRunEntries(const std::string& runCommand, EventLog& log) {
    RegistryRunValues values;
    for (const RunEntryProblem& problem : RemoveRunEntriesOf(values, runCommand))
        log.WriteLog(problem.Text, problem.Level);
}

} // namespace tolvane
