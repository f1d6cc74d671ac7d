#include "startup/idle_detector.h"

namespace tolvane {

bool IdleDetector::Add(const LoadSample& window) {
    const bool quiet = window.CpuBusy < kIdleBusyLimit && window.DiskBusy < kIdleBusyLimit;
    quiet_ = quiet ? quiet_ + 1 : 0;
    return Idle();
}

} // namespace tolvane
