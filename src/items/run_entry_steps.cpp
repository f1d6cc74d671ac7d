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

// Whose the value "Tolvane" in a key is.
enum class Owner { None, This, StaleCopy, Other };

// The program a command starts: its quoted first part, or its first word.
std::string ProgramOf(std::string_view command) {
    const std::string trimmed = Trim(command);
    if (StartsWith(trimmed, "\"")) {
        const size_t close = trimmed.find('"', 1);
        return trimmed.substr(1, close == std::string::npos ? std::string::npos : close - 1);
    }
    return trimmed.substr(0, trimmed.find(' '));
}

Owner OwnerOf(RunEntryValues& values, const std::string& value, const std::string& command) {
    if (value.empty())
        return Owner::None;
    if (ToLower(value) == ToLower(command))
        return Owner::This;
    const std::string program = ProgramOf(value);
    const std::string name = ToLower(program.substr(program.find_last_of("\\/") + 1));
    if (name == "tolvane.exe" && !values.FileExists(program))
        return Owner::StaleCopy;
    return Owner::Other;
}

// The value goes to `to`; the one in `from` goes only once `to` has one.
void MoveTo(RunEntryValues& values, RunEntryKey to, RunEntryKey from, const std::string& command,
            std::vector<RunEntryProblem>& problems) {
    const std::string there = values.Read(to);
    const Owner owner = OwnerOf(values, there, command);
    const bool old = [&] {
        const Owner o = OwnerOf(values, values.Read(from), command);
        return o == Owner::This || o == Owner::StaleCopy;
    }();
    if (owner == Owner::Other) {
        problems.push_back({"Run entry: the value \"Tolvane\" in " + KeyText(to) +
                                " starts another program (" + there +
                                "); it is left as it is, and Windows will not start this copy "
                                "of Tolvane from there.",
                            old ? kLogWarning : kLogError});
        return;
    }
    if (owner != Owner::This && !values.Write(to, command)) {
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
        for (RunEntryKey key : {RunEntryKey::User, RunEntryKey::Machine}) {
            const Owner owner = OwnerOf(values, values.Read(key), command);
            if (owner == Owner::This || owner == Owner::StaleCopy)
                Delete(values, key, problems);
        }
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
