#include "items/run_entry_steps.h"

#include "config/run_data.h"
#include "platform/log_rules.h"
#include "platform/path_rules.h"
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

bool IsTolvaneExe(std::string_view path) {
    const std::string_view name = PathLastPart(path);
    return name.size() == 11 && FindNoCase(name, "tolvane.exe") == 0;
}

// The files as the value's reading sees them: those that are there, and any Tolvane.exe. A copy
// of the program that is gone is still known by its name, wherever blanks stand in its path.
class AsIfEveryCopyWereThere : public CommandLineSystem {
public:
    explicit AsIfEveryCopyWereThere(RunEntryValues& values) : values_(values) {}
    bool FileExists(const std::string& path) const override {
        return IsTolvaneExe(path) || values_.FileExists(path);
    }
    std::string Expand(const std::string& text) const override { return text; }

private:
    RunEntryValues& values_;
};

Owner OwnerOf(RunEntryValues& values, const std::string& value, const std::string& command) {
    if (value.empty())
        return Owner::None;
    if (ToLower(value) == ToLower(command))
        return Owner::This;
    // The program the value starts, read as every Run value is read (an unquoted path with
    // blanks too), were each copy of Tolvane.exe it may name still there.
    const std::string program = SplitRunData(value, false, AsIfEveryCopyWereThere(values)).Path;
    if (IsTolvaneExe(program) && !values.FileExists(program))
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
                                               bool userDelays, std::string_view folderOfOneUser) {
    std::vector<RunEntryProblem> problems;
    if (mode == 1)
        mode = allUsersDelays ? 3 : userDelays ? 2 : 0;
    else if (mode == 3 && !folderOfOneUser.empty()) {
        // Start-up for all users from a folder that only one user can read (set in proggroup.c
        // by hand, kept by an installer, or the folder moved): the other users' log-on would
        // fail to start the program, so it starts at this user's log-on only, as type 2 does.
        problems.push_back({"Run entry: \"Tolvane\" stays the current user's, not all users': "
                            "the program folder " +
                                std::string(folderOfOneUser) +
                                " is inside a user profile, which other users cannot read.",
                            kLogWarning});
        mode = 2;
    }
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
