// Reads what each item's program says of itself on a thread of its own, so that the tree shows
// at once and fills in as the files are read: a signature check reads the whole file.
#pragma once

#include <windows.h>

#include <functional>
#include <vector>

#include "items/item_program.h"
#include "platform/threads.h"

namespace tolvane {

class FactsReader {
public:
    struct Job {
        int Node = -1;
        StartupItem Item;
    };
    struct Found {
        int Node = -1;
        ProgramFacts Facts;
    };

    // Facts found are told to the window by posting `message` (wParam: the round), once for all
    // that are found until they are taken. `failed` hears of an item that could not be read.
    FactsReader(HWND window, UINT message, std::function<void(const char*)> failed);
    // Stops after the file being read, and waits for that.
    ~FactsReader();
    FactsReader(const FactsReader&) = delete;
    FactsReader& operator=(const FactsReader&) = delete;

    // Reads these items' facts, in their order, in place of any not read yet; the new round.
    // Throws std::runtime_error when no thread can be made.
    WPARAM Read(std::vector<Job> jobs);
    // The facts found in the latest round since they were last taken.
    std::vector<Found> Take();

private:
    void Work();

    HWND window_;
    UINT message_;
    std::function<void(const char*)> failed_;
    SrwMutex lock_;
    ConditionVariable wake_;
    // Under the lock:
    std::vector<Job> jobs_;
    size_t next_ = 0;
    WPARAM round_ = 0;
    bool stop_ = false;
    bool told_ = false;    // a message is on its way
    bool started_ = false; // the UI thread's alone
    std::vector<Found> found_;
    // The worker's alone: a file unchanged since it was read is never read again.
    ProgramFactsCache cache_;
    WorkerThread thread_;
};

} // namespace tolvane
