// Measures each program the log-on run and the tray start over its first half minute (or until
// it ends): how soon it waits for input, its CPU time and its disk traffic. Each measurement
// replaces the item's last one in the impact file, which is rewritten whole and atomically.
#pragma once

#include <atomic>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include <windows.h>

#include "config/logon_history.h"
#include "config/run_state.h"
#include "platform/event_log.h"
#include "platform/handles.h"
#include "platform/threads.h"

namespace tolvane {

class ImpactMeter : public StartWatcher {
public:
    // file: where the measurements are kept; log: where a failure to keep one is written.
    ImpactMeter(std::string file, const EventLog* log, uint64_t watchMs = kImpactWatchMs);
    // Stops at once: measurements not yet over are dropped, the item keeps its last one.
    ~ImpactMeter() override;
    ImpactMeter(const ImpactMeter&) = delete;
    ImpactMeter& operator=(const ImpactMeter&) = delete;

    void Watch(const ImpactKey& item, void* process, const std::string& launched,
               uint64_t startedMs) override;
    bool Busy() const override { return pending_ > 0; }
    void Prepare() override;
    void BeginRun() override;
    void MainWaitOver(uint64_t ms) override;
    void StartsInRun(const ImpactKey& item, const std::string& path, uint64_t atMs) override;
    void EndRun() override;

private:
    // Where a measurement joins the log-on run that started its program.
    struct RunPlace {
        std::shared_ptr<LogonRun> Run;
        std::string Path;
        uint64_t AtMs = 0;
    };
    struct RunStart {
        ImpactKey Item;
        RunPlace Place;
    };
    struct Job {
        ImpactKey Item;
        UniqueHandle Process;
        std::string Launched;
        uint64_t StartedMs = 0;
        uint64_t StartedSystemTime = 0;
        std::string MeasuredAt;
        std::optional<RunPlace> InRun;
    };
    struct Worker {
        WorkerThread Thread;
        std::shared_ptr<std::atomic<bool>> Done;
    };
    // Measures the jobs handed to it; ends after one when another worker is waiting already.
    void Work(std::shared_ptr<std::atomic<bool>> done);
    // A new worker, and the ended ones joined. Under jobsMutex_.
    void AddWorker();
    void Measure(Job job);
    // The new process that a shortcut started, once it shows; none after a few seconds.
    UniqueHandle FindStarted(const std::string& launched, uint64_t since);
    void Keep(const ImpactRecord& record, const std::optional<RunPlace>& inRun);
    // The run as it stands now replaces its earlier self in the history file. Under mutex_.
    void KeepRun(const LogonRun& run);
    bool Stopping(DWORD waitMs = 0) const;

    std::string file_;
    const EventLog* log_;
    uint64_t watchMs_;
    UniqueHandle stop_;          // set when the meter goes
    SrwMutex mutex_;             // the file and the claimed processes
    std::vector<DWORD> claimed_; // processes being watched, so no shortcut takes another's
    std::string history_;
    std::shared_ptr<LogonRun> run_;   // the log-on run under way; its programs change under mutex_
    std::vector<RunStart> runStarts_; // started by the run, not yet watched
    std::atomic<int> pending_{0};

    // The workers. One is made before a start, so that the start of a program, the moment that
    // counts, makes no thread; one stays waiting for the next start, the others end.
    SrwMutex jobsMutex_;
    ConditionVariable wake_;
    std::deque<Job> jobs_;
    std::vector<Worker> workers_;
    int idle_ = 0;
    bool ending_ = false;
};

} // namespace tolvane
