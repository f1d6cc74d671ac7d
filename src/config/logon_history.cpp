#include "config/logon_history.h"

#include <algorithm>

namespace tolvane {

namespace {

constexpr std::string_view kHeader = "Run,Id,Started,MainDelayMs / Program,Location,Name,Path,"
                                     "StartMs,ReadyMs,CpuMs,ReadBytes,WriteBytes,WatchedMs";

std::string OptionalNumber(const std::optional<uint64_t>& value) {
    return value ? std::to_string(*value) : std::string();
}

// An empty field is none; anything else must be a number.
bool ReadOptional(const std::string& field, std::optional<uint64_t>& value) {
    value = field.empty() ? std::nullopt : CsvNumber(field);
    return field.empty() || value;
}

std::optional<LogonRun> RunOf(const std::vector<std::string>& f) {
    if (f.size() != 4 || f[1].empty())
        return std::nullopt;
    LogonRun run{f[1], f[2]};
    if (!ReadOptional(f[3], run.MainDelayMs))
        return std::nullopt;
    return run;
}

std::optional<RunProgram> ProgramOf(const std::vector<std::string>& f) {
    if (f.size() != 10 || f[2].empty())
        return std::nullopt;
    const std::optional<int> location = CsvLocationOfWord(f[1]);
    const auto start = CsvNumber(f[4]), cpu = CsvNumber(f[6]), read = CsvNumber(f[7]),
               write = CsvNumber(f[8]), watched = CsvNumber(f[9]);
    RunProgram p;
    if (!location || !start || !cpu || !read || !write || !watched ||
        !ReadOptional(f[5], p.ReadyMs))
        return std::nullopt;
    p.Item = {*location, f[2]};
    p.Path = f[3];
    p.StartMs = *start;
    p.CpuMs = *cpu;
    p.ReadBytes = *read;
    p.WriteBytes = *write;
    p.WatchedMs = *watched;
    return p;
}

} // namespace

std::string HistoryFileBeside(std::string_view impactFile) {
    const size_t slash = impactFile.find_last_of("\\/");
    return std::string(impactFile.substr(0, slash == std::string_view::npos ? 0 : slash + 1)) +
           "history.csv";
}

std::string FormatHistoryFile(const std::vector<LogonRun>& runs) {
    std::string out = std::string(kHeader) + "\r\n";
    for (const LogonRun& run : runs) {
        out += "Run," + Quoted(run.Id) + "," + Quoted(run.Started) + "," +
               OptionalNumber(run.MainDelayMs) + "\r\n";
        for (const RunProgram& p : run.Programs)
            out += "Program," + Quoted(CsvLocationWord(p.Item.Location)) + "," +
                   Quoted(p.Item.Name) + "," + Quoted(p.Path) + "," + std::to_string(p.StartMs) +
                   "," + OptionalNumber(p.ReadyMs) + "," + std::to_string(p.CpuMs) + "," +
                   std::to_string(p.ReadBytes) + "," + std::to_string(p.WriteBytes) + "," +
                   std::to_string(p.WatchedMs) + "\r\n";
    }
    return out;
}

HistoryFileContent ParseHistoryFile(std::string_view bytes) {
    HistoryFileContent content;
    // Program lines join the run line before them; after a broken run line they belong to no
    // run that is known, and are passed over rather than given to the run before.
    bool inRun = false;
    for (std::string_view line : CsvLines(bytes, kHeader)) {
        const auto fields = SplitFields(line);
        const std::string kind = fields ? fields->front() : std::string();
        if (kind == "Run") {
            const std::optional<LogonRun> run = RunOf(*fields);
            inRun = run.has_value();
            if (run)
                content.Runs.push_back(*run);
            else
                ++content.SkippedLines;
            continue;
        }
        const std::optional<RunProgram> program =
            kind == "Program" && inRun ? ProgramOf(*fields) : std::nullopt;
        if (program)
            content.Runs.back().Programs.push_back(*program);
        else
            ++content.SkippedLines;
    }
    return content;
}

void PutRun(std::vector<LogonRun>& runs, LogonRun run) {
    const auto same =
        std::find_if(runs.begin(), runs.end(), [&](const LogonRun& r) { return r.Id == run.Id; });
    if (same != runs.end()) {
        *same = std::move(run);
        return;
    }
    runs.push_back(std::move(run));
    if (runs.size() > kKeptRuns)
        runs.erase(runs.begin(), runs.end() - kKeptRuns);
}

} // namespace tolvane
