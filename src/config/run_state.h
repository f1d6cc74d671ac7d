// What the log-on run and the tray's starts share within the process: the wait under way, the
// programs started so far, and who watches what each start costs.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "config/impact_file.h"
#include "config/program_model.h"

namespace tolvane {

struct WaitFlags {
    bool WaitActive = false;    // a timed wait is running
    bool QuitRequested = false; // the program is ending: stop waiting, start nothing more
};

// The delayed programs started by this process, by the log-on run or by hand from the tray, and
// when the last start was: each program starts once, and no start comes sooner after the one
// before than its own delay, however the run was held up.
struct StartLog {
    std::vector<std::string> Started; // DelayedProgramId of each start
    std::optional<uint64_t> LastMs;   // the run's clock at the last start
    unsigned Changes = 0;             // counts the starts, so a wait sees one happen
    // The record of that id with `alike` records of the same id before it in its group has
    // started: the log holds more starts of the id than that. Two records alike in everything
    // are two programs to start, and the count, not a place in a list that a reload may
    // change, tells whether the second has started too.
    [[nodiscard]] bool Has(const std::string& id, size_t alike = 0) const;
    void Add(std::string id, uint64_t ms);
};

// What tells two delayed programs apart for the start log: where each came from and its command.
std::string DelayedProgramId(const GroupProgram& program);
// How many records before the one at the index have its DelayedProgramId.
size_t AlikeBefore(const std::vector<GroupProgram>& programs, size_t index);

// Watches the programs that the log-on run and the tray start, and keeps what each cost the
// machine in its first half minute.
class StartWatcher {
public:
    virtual ~StartWatcher() = default;
    // process: the started program's handle, owned from here on; null when the shell handed
    // none over (a shortcut), and then `launched`, the path started, tells what to look for.
    // startedMs: the steady clock when the start began.
    virtual void Watch(const ImpactKey& item, void* process, const std::string& launched,
                       uint64_t startedMs) = 0;
    // A program is about to start: whatever the watch needs is made now, before the start,
    // so that nothing competes with the program's own start afterwards.
    virtual void Prepare() {}
    // A measurement is still being taken.
    virtual bool Busy() const = 0;

    // A log-on run begins: what it starts is measured as one run of the history. The run is
    // written as each measurement joins it and when it ends, even with nothing measured, never
    // in the way of a start. Starts outside a run (the tray's) join none.
    virtual void BeginRun() {}
    // The run's main wait was over this long after its start.
    virtual void MainWaitOver(uint64_t ms) {}
    // The run is about to start the item's program (path: as the item names it), this long
    // after its start: the item's next watch joins the run, whenever its measurement ends.
    virtual void StartsInRun(const ImpactKey& item, const std::string& path, uint64_t atMs) {}
    // The run starts nothing more; the measurements under way still join it.
    virtual void EndRun() {}
};

} // namespace tolvane
