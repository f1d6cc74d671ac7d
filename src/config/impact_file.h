// What each program the log-on run or the tray started cost the machine in its first half
// minute, rated as Task Manager rates start-up impact, and the file that keeps the last
// measurement of every item ("impact.csv" beside the program-group file).
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "config/program_model.h"
#include "text/strings.h"

namespace tolvane {

enum class ImpactRating { Low, Medium, High };

// High above 1 s of CPU or 3 MB of disk I/O, Medium above 300 ms or 300 KB, Low below both.
inline constexpr uint64_t kHighCpuMs = 1000, kMediumCpuMs = 300;
inline constexpr uint64_t kHighIoBytes = 3 * 1024 * 1024, kMediumIoBytes = 300 * 1024;
ImpactRating RateImpact(uint64_t cpuMs, uint64_t ioBytes);

// How long a started program is watched, at most.
inline constexpr uint64_t kImpactWatchMs = 30000;

// An item is its location and its own name (the Run value's name, the shortcut's file name):
// a program moved between delayed and stopped keeps its measurement, and two items that start
// the same program keep their own. Names compare as Windows compares them, in the order the
// platform gives (CDirStruct::CompareNames); without one, exactly as written, which never takes
// one item's measurement for another's.
struct ImpactKey {
    int Location = kUserStartup;
    std::string Name;
};
bool SameItem(const ImpactKey& a, const ImpactKey& b, NameOrder order);
// A delayed program's item; nothing for a free slot or an unknown command.
std::optional<ImpactKey> ImpactKeyOf(const GroupProgram& program);
// A stopped entry's item ("_REGCU_name=command", "_STPAU_file.lnk"). A Run value is named by
// its saved copy where the caller knows it (copyName): a name may hold "=", and only the copy
// tells where it ends.
std::optional<ImpactKey> ImpactKeyOfStopped(std::string_view entry,
                                            std::optional<std::string_view> copyName = {});

struct ImpactRecord {
    ImpactKey Key;
    std::string Measured;            // local time of the start, "2026-11-23 08:15:02"
    std::optional<uint64_t> ReadyMs; // none: never waiting for input while watched
    uint64_t CpuMs = 0;
    uint64_t ReadBytes = 0;
    uint64_t WriteBytes = 0;
    uint64_t WatchedMs = 0; // the whole watch, or less when the program ended sooner
    ImpactRating Rating() const { return RateImpact(CpuMs, ReadBytes + WriteBytes); }
};

// The file: a header line, then one line per item, comma-separated, CR LF. A name with a comma,
// a quote or blanks at its ends stands in quotes, its quotes doubled.
std::string FormatImpactFile(const std::vector<ImpactRecord>& records);
struct ImpactFileContent {
    std::vector<ImpactRecord> Records;
    size_t SkippedLines = 0; // lines that are no measurement (edited, cut short)
};
// A later line of the same item replaces an earlier one.
ImpactFileContent ParseImpactFile(std::string_view bytes, NameOrder order = nullptr);

// The comma-separated fields that the impact and history files share: a location by its word
// ("HKCU Run"), a field quoted where it must be, the lines of a file (each ended by LF, a CR
// before it left off; empty lines and the header line left out), one line split back into its
// fields (nothing when a quote is left open), a number of digits alone.
std::string_view CsvLocationWord(int code);
std::optional<int> CsvLocationOfWord(std::string_view word);
std::string Quoted(std::string_view field);
std::vector<std::string_view> CsvLines(std::string_view bytes, std::string_view header);
std::optional<std::vector<std::string>> SplitFields(std::string_view line);
std::optional<uint64_t> CsvNumber(std::string_view text);

// Replaces the item's measurement, or adds it.
void PutImpact(std::vector<ImpactRecord>& records, ImpactRecord record, NameOrder order = nullptr);
const ImpactRecord* FindImpact(const std::vector<ImpactRecord>& records, const ImpactKey& key,
                               NameOrder order);

} // namespace tolvane
