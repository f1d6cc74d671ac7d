// The order in which the program's own Run value moves between the user's key and the
// machine's. Free of the platform: the registry side sits behind RunEntryValues.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tolvane {

enum class RunEntryKey { User, Machine };

// The value "Tolvane" in one of the two Run keys.
class RunEntryValues {
public:
    virtual ~RunEntryValues() = default;
    // "" when there is none.
    virtual std::string Read(RunEntryKey key) = 0;
    // True when the key holds the command afterwards.
    [[nodiscard]] virtual bool Write(RunEntryKey key, const std::string& command) = 0;
    // True when the value is gone afterwards.
    [[nodiscard]] virtual bool Delete(RunEntryKey key) = 0;
    // A file (not a folder) is at the path.
    virtual bool FileExists(const std::string& path) = 0;
};

// Something that could not be done, for the log.
struct RunEntryProblem {
    std::string Text;
    int Level; // an error when the program is left with no entry, else a warning
};

// Modes 0 to 3 of UpdateRunEntry: 0 none, 1 the machine's key while an all-users item is
// delayed, else the user's while any item is, else none; 2 the user's key; 3 the machine's.
// The value "Tolvane" is this program's when it starts this copy (its command in any letter
// case) or a copy of Tolvane.exe that is gone (the portable folder was moved), its command read
// as every Run value is read (SplitRunData): that one is rewritten to start this copy. A value that
// starts anything else, another program or another copy of Tolvane that is there, is never touched.
// The new value is written before the old one goes, and the old one goes only when the new one is
// there: a refused write (the machine's key without rights) leaves the entry where it was instead
// of nowhere.
//
// folderOfOneUser: the program folder when it lies inside a user's profile, which other users
// cannot read; "" when every user can start the program from there. Mode 3 then keeps the
// user's own value instead, with a warning that says why: a value in the machine's key would be
// one that Windows fails to start at every other user's log-on, while this user loses nothing.
[[nodiscard]] std::vector<RunEntryProblem> ApplyRunEntryMode(RunEntryValues& values, int mode,
                                                             const std::string& command,
                                                             bool allUsersDelays, bool userDelays,
                                                             std::string_view folderOfOneUser = {});

// When the program is uninstalled: each value that starts this copy (its command, in any
// letter case) goes. A value of another copy of Tolvane, elsewhere, is that copy's and stays.
[[nodiscard]] std::vector<RunEntryProblem> RemoveRunEntriesOf(RunEntryValues& values,
                                                              const std::string& command);

} // namespace tolvane
