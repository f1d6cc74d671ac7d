#include "platform/system_load.h"

#include <windows.h>
#include <pdh.h>

#include <algorithm>
#include <type_traits>

#include "platform/processes.h"
#include "platform/runtime_libraries.h"

namespace tolvane {

namespace {

// pdh.dll is loaded only by a run that waits for an idle machine: the waiting log-on process
// holds no more than waiting needs.
struct Pdh {
    decltype(&PdhOpenQueryA) Open = nullptr;
    decltype(&PdhAddEnglishCounterA) Add = nullptr;
    decltype(&PdhCollectQueryData) Collect = nullptr;
    decltype(&PdhGetFormattedCounterValue) Value = nullptr;
    decltype(&PdhCloseQuery) Close = nullptr;
};
const Pdh& PdhFunctions() {
    static const Pdh pdh = [] {
        Pdh p;
        HMODULE dll = LoadLibraryA("pdh.dll");
        if (!dll)
            return p;
        auto get = [&](auto& f, const char* name) {
            f = ModuleFunction<std::remove_reference_t<decltype(f)>>(dll, name);
        };
        get(p.Open, "PdhOpenQueryA");
        get(p.Add, "PdhAddEnglishCounterA");
        get(p.Collect, "PdhCollectQueryData");
        get(p.Value, "PdhGetFormattedCounterValue");
        get(p.Close, "PdhCloseQuery");
        if (!p.Open || !p.Add || !p.Collect || !p.Value || !p.Close)
            p = Pdh();
        return p;
    }();
    return pdh;
}

} // namespace

SystemLoad::SystemLoad() {
    // The English counter name is the same on every language of Windows. Where there is no
    // such counter, the disks count as idle and the processors decide alone.
    const Pdh& pdh = PdhFunctions();
    PDH_HQUERY query = nullptr;
    PDH_HCOUNTER counter = nullptr;
    if (!pdh.Open || pdh.Open(nullptr, 0, &query) != ERROR_SUCCESS)
        return;
    if (pdh.Add(query, "\\PhysicalDisk(_Total)\\% Idle Time", 0, &counter) != ERROR_SUCCESS) {
        pdh.Close(query);
        return;
    }
    query_ = query;
    counter_ = counter;
}

SystemLoad::~SystemLoad() {
    if (query_)
        PdhFunctions().Close(static_cast<PDH_HQUERY>(query_));
}

std::optional<LoadSample> SystemLoad::Sample() {
    FILETIME idle{}, kernel{}, user{};
    if (!GetSystemTimes(&idle, &kernel, &user))
        return std::nullopt;
    // Kernel time includes the idle time.
    const uint64_t idleNow = FileTimeTicks(idle),
                   totalNow = FileTimeTicks(kernel) + FileTimeTicks(user);
    const bool primed = primed_;
    const uint64_t idleSpan = idleNow - idle_, totalSpan = totalNow - total_;
    idle_ = idleNow;
    total_ = totalNow;
    primed_ = true;
    const Pdh& pdh = PdhFunctions();
    const bool diskRead = query_ && pdh.Collect(static_cast<PDH_HQUERY>(query_)) == ERROR_SUCCESS;
    if (!primed)
        return std::nullopt;
    LoadSample sample;
    if (totalSpan > 0)
        sample.CpuBusy = std::clamp(
            1.0 - static_cast<double>(idleSpan) / static_cast<double>(totalSpan), 0.0, 1.0);
    PDH_FMT_COUNTERVALUE value{};
    if (diskRead && pdh.Value(static_cast<PDH_HCOUNTER>(counter_), PDH_FMT_DOUBLE, nullptr,
                              &value) == ERROR_SUCCESS)
        sample.DiskBusy = std::clamp(1.0 - value.doubleValue / 100.0, 0.0, 1.0);
    return sample;
}

} // namespace tolvane
