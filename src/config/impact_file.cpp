#include "config/impact_file.h"

#include <charconv>

#include "config/run_data.h"
#include "platform/path_rules.h"
#include "text/strings.h"

namespace tolvane {

namespace {

constexpr std::string_view kHeader =
    "Location,Name,Measured,Rating,ReadyMs,CpuMs,ReadBytes,WriteBytes,WatchedMs";
constexpr size_t kFields = 9;

struct CsvWord {
    int Code;
    std::string_view Word;
};
constexpr CsvWord kLocationWords[] = {{kMachineRun, "HKLM Run"},
                                      {kUserRun, "HKCU Run"},
                                      {kCommonStartup, "All Users Startup"},
                                      {kUserStartup, "User Startup"}};
constexpr std::string_view kRatingWords[] = {"Low", "Medium", "High"};

std::string FileNameOf(std::string_view path) {
    return Trim(PathLastPart(path));
}

} // namespace

std::string_view CsvLocationWord(int code) {
    for (const CsvWord& w : kLocationWords)
        if (w.Code == code)
            return w.Word;
    return {};
}

std::optional<int> CsvLocationOfWord(std::string_view word) {
    for (const CsvWord& w : kLocationWords)
        if (word == w.Word)
            return w.Code;
    return std::nullopt;
}

std::string Quoted(std::string_view field) {
    const bool plain = field.find_first_of(",\"\r\n") == std::string_view::npos &&
                       (field.empty() || (field.front() != ' ' && field.back() != ' '));
    if (plain)
        return std::string(field);
    std::string out = "\"";
    for (char c : field)
        out += c == '"' ? std::string("\"\"") : std::string(1, c);
    return out + "\"";
}

// One line's fields; nothing when a quote is left open.
std::vector<std::string_view> CsvLines(std::string_view bytes, std::string_view header) {
    std::vector<std::string_view> lines;
    size_t start = 0;
    while (start < bytes.size()) {
        size_t end = bytes.find('\n', start);
        if (end == std::string_view::npos)
            end = bytes.size();
        std::string_view line = bytes.substr(start, end - start);
        start = end + 1;
        if (!line.empty() && line.back() == '\r')
            line.remove_suffix(1);
        if (!line.empty() && line != header)
            lines.push_back(line);
    }
    return lines;
}

std::optional<std::vector<std::string>> SplitFields(std::string_view line) {
    std::vector<std::string> fields(1);
    bool quoted = false;
    for (size_t i = 0; i < line.size(); ++i) {
        const char c = line[i];
        if (quoted) {
            if (c != '"')
                fields.back() += c;
            else if (i + 1 < line.size() && line[i + 1] == '"')
                fields.back() += line[++i];
            else
                quoted = false;
        } else if (c == '"') {
            quoted = true;
        } else if (c == ',') {
            fields.emplace_back();
        } else {
            fields.back() += c;
        }
    }
    if (quoted)
        return std::nullopt;
    return fields;
}

std::optional<uint64_t> CsvNumber(std::string_view text) {
    uint64_t value = 0;
    const char* end = text.data() + text.size();
    auto [at, error] = std::from_chars(text.data(), end, value);
    if (text.empty() || error != std::errc() || at != end)
        return std::nullopt;
    return value;
}

namespace {

std::optional<ImpactRecord> RecordOf(const std::vector<std::string>& f) {
    if (f.size() != kFields || f[1].empty())
        return std::nullopt;
    ImpactRecord r;
    const std::optional<int> location = CsvLocationOfWord(f[0]);
    const auto cpu = CsvNumber(f[5]), read = CsvNumber(f[6]), write = CsvNumber(f[7]),
               watched = CsvNumber(f[8]);
    if (!location || !cpu || !read || !write || !watched)
        return std::nullopt;
    r.Key = {*location, f[1]};
    r.Measured = f[2];
    // The rating column is for people who read the file; the figures decide.
    if (!f[4].empty()) {
        r.ReadyMs = CsvNumber(f[4]);
        if (!r.ReadyMs)
            return std::nullopt;
    }
    r.CpuMs = *cpu;
    r.ReadBytes = *read;
    r.WriteBytes = *write;
    r.WatchedMs = *watched;
    return r;
}

} // namespace

ImpactRating RateImpact(uint64_t cpuMs, uint64_t ioBytes) {
    if (cpuMs > kHighCpuMs || ioBytes > kHighIoBytes)
        return ImpactRating::High;
    if (cpuMs > kMediumCpuMs || ioBytes > kMediumIoBytes)
        return ImpactRating::Medium;
    return ImpactRating::Low;
}

bool SameItem(const ImpactKey& a, const ImpactKey& b, NameOrder order) {
    return a.Location == b.Location && SameName(a.Name, b.Name, order);
}

std::optional<ImpactKey> ImpactKeyOf(const GroupProgram& program) {
    const int location = LocationOfCommand(program.Command);
    if (Trim(program.Path).empty() || location < 0)
        return std::nullopt;
    // A program line added by hand may lack the value's name: its file stands for it.
    if ((location == kUserRun || location == kMachineRun) && !program.RegistryKeyName.empty())
        return ImpactKey{location, program.RegistryKeyName};
    return ImpactKey{location, FileNameOf(program.Path)};
}

std::optional<ImpactKey> ImpactKeyOfStopped(std::string_view entry,
                                            std::optional<std::string_view> copyName) {
    if (entry.size() <= kPrefixLength)
        return std::nullopt;
    const std::string_view prefix = entry.substr(0, kPrefixLength);
    const std::string_view name = entry.substr(kPrefixLength);
    for (int code : {kMachineRun, kUserRun, kCommonStartup, kUserStartup}) {
        if (prefix != LocationPrefix(code))
            continue;
        if (code == kMachineRun || code == kUserRun) {
            if (copyName)
                return ImpactKey{code, std::string(*copyName)};
            // Without its copy an entry's name and command cannot be told apart for certain
            // ("a=b=C:\x.exe"). The name before the first "=" is the one the list shows the
            // item by, and the one a move puts the value back and delays it under: the
            // measurement stays with that item. An older entry holds a path alone and names no
            // value; the whole of it stands for the item, never a part cut at an "=" inside it.
            if (const std::optional<NameData> named = NamedStoppedValue(name))
                return ImpactKey{code, named->Name};
            return ImpactKey{code, std::string(name)};
        }
        return ImpactKey{code, FileNameOf(name)};
    }
    return std::nullopt;
}

std::string FormatImpactFile(const std::vector<ImpactRecord>& records) {
    std::string out = std::string(kHeader) + "\r\n";
    for (const ImpactRecord& r : records) {
        out += Quoted(CsvLocationWord(r.Key.Location)) + "," + Quoted(r.Key.Name) + "," +
               Quoted(r.Measured) + "," + std::string(kRatingWords[static_cast<int>(r.Rating())]) +
               "," + (r.ReadyMs ? std::to_string(*r.ReadyMs) : std::string()) + "," +
               std::to_string(r.CpuMs) + "," + std::to_string(r.ReadBytes) + "," +
               std::to_string(r.WriteBytes) + "," + std::to_string(r.WatchedMs) + "\r\n";
    }
    return out;
}

ImpactFileContent ParseImpactFile(std::string_view bytes, NameOrder order) {
    ImpactFileContent content;
    for (std::string_view line : CsvLines(bytes, kHeader)) {
        const auto fields = SplitFields(line);
        const auto record = fields ? RecordOf(*fields) : std::nullopt;
        if (record)
            PutImpact(content.Records, *record, order);
        else
            ++content.SkippedLines;
    }
    return content;
}

void PutImpact(std::vector<ImpactRecord>& records, ImpactRecord record, NameOrder order) {
    for (ImpactRecord& r : records)
        if (SameItem(r.Key, record.Key, order)) {
            r = std::move(record);
            return;
        }
    records.push_back(std::move(record));
}

const ImpactRecord* FindImpact(const std::vector<ImpactRecord>& records, const ImpactKey& key,
                               NameOrder order) {
    for (const ImpactRecord& r : records)
        if (SameItem(r.Key, key, order))
            return &r;
    return nullptr;
}

} // namespace tolvane
