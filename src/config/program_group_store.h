// The one way the program-group file changes. Every change takes a lock that all Tolvane
// processes of the user share, reads the file as it is now, makes the change on what it read,
// writes the file whole and lets go: what another process wrote meanwhile (tolvanec from a
// script, a second window) is kept, never overwritten with a model read before it.
#pragma once

#include <functional>
#include <stdexcept>
#include <string>

#include "config/app_state.h"

namespace tolvane {

// Another Tolvane process held the file for longer than a change waits; nothing was changed.
class StoreBusy : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class ProgramGroupStore {
public:
    explicit ProgramGroupStore(AppState& app);

    // Reads the file into the model. A missing file is the model of a first start, written
    // under the lock unless this is only a look.
    void Load(bool look = false);

    // Makes the change on the file as it is now. The model afterwards holds what was written.
    // A change that throws writes nothing, the model holds the file as read, and the exception
    // goes on to the caller; so do StoreBusy and a FileError of the write.
    void Change(const std::function<void(ProgramModel&)>& change);

    // A change of this process is under way: a refresh that the message loop runs meanwhile
    // (from a window inside a shell operation, say) must not read the model half made.
    static bool Changing();

    // The name of the lock of a program-group file, the same in every process.
    static std::string LockName(const std::string& filePath);
    // The file of the Windows user, in the folder named after the user.
    static std::string FilePath(AppState& app);

private:
    AppState& app_;
};

} // namespace tolvane
