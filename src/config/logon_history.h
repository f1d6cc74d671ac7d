// The log-on runs as they went: for each of the last runs, when it began, how long its main
// wait lasted and what each program it started cost, kept in "history.csv" beside the impact
// file, so that a slow log-on can be looked at again afterwards.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "config/impact_file.h"

namespace tolvane {

// A program the run started, as the meter measured it. Times count from the run's start.
struct RunProgram {
    ImpactKey Item;
    std::string Path; // the program as the delayed item names it
    uint64_t StartMs = 0;
    std::optional<uint64_t> ReadyMs; // none: never waiting for input while watched
    uint64_t CpuMs = 0;
    uint64_t ReadBytes = 0;
    uint64_t WriteBytes = 0;
    uint64_t WatchedMs = 0;
    ImpactRating Rating() const { return RateImpact(CpuMs, ReadBytes + WriteBytes); }
    // Where its bar ends: ready, or the end of its watch when it never was.
    uint64_t EndMs() const { return StartMs + (ReadyMs ? *ReadyMs : WatchedMs); }
};

struct LogonRun {
    std::string Id;      // tells the run apart from others begun in the same second
    std::string Started; // local time, "2026-11-23 08:15:02"
    // From the run's start until its main wait was over; with the idle start longer than the
    // setting. None while the run still waits, or when it quit during the wait.
    std::optional<uint64_t> MainDelayMs;
    std::vector<RunProgram> Programs; // in the order their measurements ended
};

inline constexpr size_t kKeptRuns = 20;

// The history file beside the impact file.
std::string HistoryFileBeside(std::string_view impactFile);

// A header line, then each run's line ("Run,<id>,<started>,<main delay>") followed by its
// programs' lines ("Program,<location>,<name>,<path>,<start>,<ready>,<cpu>,<read>,<write>,
// <watched>"), comma-separated as the impact file is, CR LF.
std::string FormatHistoryFile(const std::vector<LogonRun>& runs);
struct HistoryFileContent {
    std::vector<LogonRun> Runs; // oldest first
    size_t SkippedLines = 0;    // broken lines, and the program lines of a broken run line
};
HistoryFileContent ParseHistoryFile(std::string_view bytes);

// Replaces the run of the same id, or adds it as the newest; the oldest beyond kKeptRuns go.
void PutRun(std::vector<LogonRun>& runs, LogonRun run);

} // namespace tolvane
