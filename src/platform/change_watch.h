// Tells a window when folders or registry keys change. A thread of its own waits for the
// system's change notifications and posts one message to the window for each change it is
// told of; the window decides what to do, on its own thread. A key that is not there yet
// (Task Manager makes its keys with its first switch) is waited for in the nearest key above
// it that is, and watched itself once made. What cannot be watched (a folder that is not there,
// no key of the path at all) is left out, and said by Watching().
#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "platform/handles.h"
#include "platform/registry.h"
#include "platform/threads.h"

namespace tolvane {

class ChangeWatch {
public:
    ChangeWatch(HWND window, UINT message);
    // Stops the thread before anything it uses goes.
    ~ChangeWatch();
    ChangeWatch(const ChangeWatch&) = delete;
    ChangeWatch& operator=(const ChangeWatch&) = delete;

    // Added before Start: a folder (its own entries, not its subfolders) for files made,
    // removed, renamed or written; a key for values set or removed and subkeys made or removed.
    void Folder(const std::string& path);
    void Key(RegistryRoot root, const std::string& path);
    // Starts waiting; false when the thread cannot be made (nothing is watched then).
    [[nodiscard]] bool Start();
    // How many of the folders and keys are watched.
    size_t Watching() const { return watched_.size(); }

private:
    struct Watched {
        UniqueHandle Event;                   // a key's event; unused for a folder
        UniqueHKey Key;                       // the key; none for a folder
        HANDLE Folder = INVALID_HANDLE_VALUE; // a folder's notification handle
        // A key watched through the key above it until it is made.
        RegistryRoot Root = RegistryRoot::CurrentUser;
        std::string Awaited;
    };
    // Asks to be told of the key's next change.
    static bool Arm(const Watched& key);
    // Opens the awaited key, or else the deepest key above it that there is; true once the
    // key itself is open.
    static bool Reach(Watched& w);
    void Run();

    HWND window_;
    UINT message_;
    std::vector<Watched> watched_;
    std::vector<HANDLE> waits_; // the stop event first, then one per watched folder or key
    UniqueHandle stop_;
    WorkerThread thread_;
};

} // namespace tolvane
