#include "items/run_entry_steps.h"

#include "platform/log_rules.h"
#include "text/strings.h"

namespace tolvane {

namespace {

std::string KeyText(RunEntryKey key) {
    return std::string(key == RunEntryKey::Machine ? "HKEY_LOCAL_MACHINE" : "HKEY_CURRENT_USER") +
           "\\Software\\Microsoft\\Windows\\CurrentVersion\\Run";
}

void Delete(RunEntryValues& values, RunEntryKey key, std::vector<RunEntryProblem>& problems) {
    if (!values.Delete(key))
        problems.push_back(
            {"Run entry: \"Tolvane\" could not be removed from " + KeyText(key) + ".",
             kLogWarning});
}

// The value goes to `to`; the one in `from` goes only once `to` has one.
void MoveTo(RunEntryValues& values, RunEntryKey to, RunEntryKey from, const std::string& command,
            std::vector<RunEntryProblem>& problems) {
    const bool old = !values.Read(from).empty();
    if (values.Read(to).empty() && !values.Write(to, command)) {
        problems.push_back({"Run entry: \"Tolvane\" could not be written to " + KeyText(to) +
                                (old ? "; the one in " + KeyText(from) + " stays."
                                     : "; Windows will not start Tolvane at log-on."),
                            old ? kLogWarning : kLogError});
        return;
    }
    if (old)
        Delete(values, from, problems);
}

} // namespace

std::vector<RunEntryProblem> ApplyRunEntryMode(RunEntryValues& values, int mode,
                                               const std::string& command, bool allUsersDelays,
                                               bool userDelays) {
    std::vector<RunEntryProblem> problems;
    if (mode == 1)
        mode = allUsersDelays ? 3 : userDelays ? 2 : 0;
    switch (mode) {
    case 0:
        for (RunEntryKey key : {RunEntryKey::User, RunEntryKey::Machine})
            if (!values.Read(key).empty())
                Delete(values, key, problems);
        break;
    case 2:
        MoveTo(values, RunEntryKey::User, RunEntryKey::Machine, command, problems);
        break;
    case 3:
        MoveTo(values, RunEntryKey::Machine, RunEntryKey::User, command, problems);
        break;
    }
    return problems;
}

std::vector<RunEntryProblem> RemoveRunEntriesOf(RunEntryValues& values,
                                                const std::string& command) {
    std::vector<RunEntryProblem> problems;
    for (RunEntryKey key : {RunEntryKey::User, RunEntryKey::Machine}) {
        const std::string value = values.Read(key);
        if (!value.empty() && ToLower(value) == ToLower(command))
            Delete(values, key, problems);
    }
    return problems;
}

} // namespace tolvane
