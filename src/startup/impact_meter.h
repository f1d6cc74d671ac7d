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

private:
    struct Job {
        ImpactKey Item;
        UniqueHandle Process;
        std::string Launched;
        uint64_t StartedMs = 0;
        uint64_t StartedSystemTime = 0;
        std::string MeasuredAt;
    };
    struct Worker {
        WorkerThread Thread;
        std::shared_ptr<std::atomic<bool>> Done;
    };
    // Measures the jobs handed to it; ends after one when another worker is waiting already.
    void Work(std::shared_ptr<std::atomic<bool>> done);
    // A new worker, and the ended ones joined. Under jobsMutex_.
    void AddWorker();
    void Measure(ImpactKey item, UniqueHandle process, std::string launched, uint64_t startedMs,
                 uint64_t startedSystemTime, std::string measuredAt);
    // The new process that a shortcut started, once it shows; none after a few seconds.
    UniqueHandle FindStarted(const std::string& launched, uint64_t since);
    void Keep(const ImpactRecord& record);
    bool Stopping(DWORD waitMs = 0) const;

    std::string file_;
    const EventLog* log_;
    uint64_t watchMs_;
    UniqueHandle stop_;          // set when the meter goes
    SrwMutex mutex_;             // the file and the claimed processes
    std::vector<DWORD> claimed_; // processes being watched, so no shortcut takes another's
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
