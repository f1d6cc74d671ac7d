// How busy the machine is: its processors and its disks, each as the share of the time since
// the last sample that they were at work.
#pragma once

#include <cstdint>
#include <optional>

namespace tolvane {

struct LoadSample {
    double CpuBusy = 0;  // 0 to 1, all processors together
    double DiskBusy = 0; // 0 to 1; 0 where the system cannot say
};

#ifdef _WIN32
// Samples the machine's load. The first sample primes the counters and says nothing.
class SystemLoad {
public:
    SystemLoad();
    ~SystemLoad();
    SystemLoad(const SystemLoad&) = delete;
    SystemLoad& operator=(const SystemLoad&) = delete;

    // The load since the sample before; nothing for the first, or when the processors' times
    // cannot be read.
    std::optional<LoadSample> Sample();

private:
    uint64_t idle_ = 0, total_ = 0;
    bool primed_ = false;
    void* query_ = nullptr; // the disks' "% Idle Time" performance counter, when there is one
    void* counter_ = nullptr;
};
#endif

} // namespace tolvane
