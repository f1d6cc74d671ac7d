// The one way the program-group file changes. Every change takes a lock that all Tolvane
// processes of the user share, reads the file as it is now, makes the change on what it read,
// writes the file whole and lets go: what another process wrote meanwhile (tolvanec from a
// script, a second window) is kept, never overwritten with a model read before it.
#pragma once

#include <functional>
#include <stdexcept>
#include <string>

#include "config/delay_load.h"

namespace tolvane {

// Another Tolvane process held the file for longer than a change waits; nothing was changed.
class StoreBusy : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class ProgramGroupStore {
public:
    // The model that every change is made on and that holds the file as last read or written;
    // the folders the file lies in; the texts a language named in the file loads; where a
    // file that cannot be read is told.
    ProgramGroupStore(ProgramModel& model, const AppFolders& folders, TextTables& text,
                      UserMessages& messages)
        : model_(model), folders_(folders), text_(text), messages_(messages) {}

    ProgramModel& Model() const { return model_; }
    const AppFolders& Folders() const { return folders_; }
    // The file itself, for a look that needs no lock (its path, a stopped item's command).
    CDelayLoad File() const { return CDelayLoad(model_, folders_, text_, messages_); }

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

    // How long a change waits for another process to let go of the file.
    void WaitAtMost(unsigned long milliseconds) { lockWaitMs_ = milliseconds; }

private:
    // Long enough for another process's move of a few hundred items; short enough that a
    // process that hangs holding the lock is told, not waited for forever.
    unsigned long lockWaitMs_ = 15000;
    ProgramModel& model_;
    const AppFolders& folders_;
    TextTables& text_;
    UserMessages& messages_;
};

} // namespace tolvane
