// Measures each program the log-on run and the tray start over its first half minute (or until
// it ends): how soon it waits for input, its CPU time and its disk traffic. Each measurement
// replaces the item's last one in the impact file, which is rewritten whole and atomically.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <windows.h>

#include "config/app_state.h"
#include "platform/handles.h"

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

private:
    struct Worker {
        std::thread Thread;
        std::shared_ptr<std::atomic<bool>> Done;
    };
    void Measure(ImpactKey item, UniqueHandle process, std::string launched, uint64_t startedMs,
                 uint64_t startedSystemTime, std::string measuredAt);
    // The new process that a shortcut started, once it shows; none after a few seconds.
    UniqueHandle FindStarted(const std::string& launched, uint64_t since);
    void Keep(const ImpactRecord& record);
    bool Stopping(DWORD waitMs = 0) const;

    std::string file_;
    const EventLog* log_;
    uint64_t watchMs_;
    UniqueHandle stop_; // set when the meter goes
    std::mutex mutex_;  // the file, the workers and the claimed processes
    std::vector<Worker> workers_;
    std::vector<DWORD> claimed_; // processes being watched, so no shortcut takes another's
    std::atomic<int> pending_{0};
};

} // namespace tolvane
