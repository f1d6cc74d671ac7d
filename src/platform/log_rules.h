// Rules of the event log "log.txt", free of the platform.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tolvane {

enum LogLevel : int { kLogError = 1, kLogWarning = 2, kLogInfo = 4 };

// "Error: ", "Warning: ", "Info: ", or nothing for any other level.
std::string_view LogLevelPrefix(int level);

// A log this big or bigger loses its older half before the next line is written.
inline constexpr uint64_t kLogPruneSize = 5'120'000;
inline constexpr uint64_t kLogPruneCut = 2'560'000;

// What a pruned log keeps: everything after the first kLogPruneCut bytes and the rest of the
// line they end in, then CR LF, then the marker line and CR LF.
std::string PrunedLog(std::string_view content, std::string_view markerLine);

// "<---- Old Events removed on: <date and time> ---->"
std::string PruneMarker(std::string_view dateAndTime);

} // namespace tolvane
