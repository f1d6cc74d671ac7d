// When the machine counts as idle: processors and disks each below a fifth busy in every
// half-second window of five seconds in a row.
#pragma once

#include <cstdint>

#include "platform/system_load.h"

namespace tolvane {

inline constexpr uint64_t kIdleWindowMs = 500;
inline constexpr int kIdleWindowsNeeded = 10; // 5 s
inline constexpr double kIdleBusyLimit = 0.20;
// However busy the machine stays, a program waits no longer than its delay and this.
inline constexpr uint64_t kIdleLongestExtraMs = 120000;

class IdleDetector {
public:
    // Takes the load of one window; true once enough quiet windows came in a row. A busy
    // window starts the count again.
    bool Add(const LoadSample& window);
    bool Idle() const { return quiet_ >= kIdleWindowsNeeded; }

private:
    int quiet_ = 0;
};

} // namespace tolvane
