#include "config/run_data.h"

#include <algorithm>

#include "config/program_model.h"
#include "platform/path_rules.h"
#include "text/strings.h"

namespace tolvane {

namespace {

bool IsBlank(char c) {
    return c == ' ' || c == '\t';
}

std::string_view TrimBlanks(std::string_view s) {
    while (!s.empty() && IsBlank(s.front()))
        s.remove_prefix(1);
    while (!s.empty() && IsBlank(s.back()))
        s.remove_suffix(1);
    return s;
}

// The end of the word that begins at or after `from`, or npos when only blanks are left.
size_t WordEnd(std::string_view s, size_t from) {
    while (from < s.size() && IsBlank(s[from]))
        ++from;
    if (from >= s.size())
        return std::string_view::npos;
    while (from < s.size() && !IsBlank(s[from]))
        ++from;
    return from;
}

// As CreateProcess sees a file name: one whose last part has a "." has an extension (a
// trailing "." too); ".exe" is added to any other.
bool HasExtension(std::string_view path) {
    return PathLastPart(path).find('.') != std::string_view::npos;
}

std::string AsProgram(std::string_view word) {
    return HasExtension(word) ? std::string(word) : std::string(word) + ".exe";
}

RunCommandParts Parts(std::string_view program, std::string_view rest) {
    return RunCommandParts{std::string(program), std::string(TrimBlanks(rest))};
}

// The program of an unquoted command: the end of the shortest run of words that names a file
// (and whether ".exe" was added to find it), or none.
struct FoundProgram {
    size_t End = 0;
    bool Exe = false;
};
std::optional<FoundProgram> FindProgram(std::string_view text, const CommandLineSystem& system) {
    for (size_t end = WordEnd(text, 0); end != std::string_view::npos; end = WordEnd(text, end)) {
        const std::string_view words = text.substr(0, end);
        // A file name holds no quote: from here on the words are arguments.
        if (words.find('"') != std::string_view::npos)
            return std::nullopt;
        if (system.FileExists(AsProgram(words)))
            return FoundProgram{end, !HasExtension(words)};
    }
    return std::nullopt;
}

// The path part of a Run value's data as versions before this one split it, by the first
// ".exe" in it: what their stopped entries hold. Used only to find an entry's saved copy.
std::string PathAsOlderVersionsSplitIt(std::string_view data) {
    if (data.size() >= 4 && ToLower(data.substr(data.size() - 4)) == ".exe")
        return std::string(data);
    const size_t hit = FindNoCase(data, ".exe");
    if (hit == std::string_view::npos) {
        const size_t end = StartsWith(data, "\"") ? data.find('"', 1) : data.find(' ');
        return std::string(end == std::string_view::npos ? data : data.substr(0, end + 1));
    }
    const size_t tailStart = std::min(hit + 5, data.size());
    std::string_view tail = data.substr(tailStart);
    const std::string parameters = Trim(tail);
    std::string path(data.substr(0, tailStart));
    if (parameters.empty())
        return path + std::string(tail);
    const size_t inTail = tail.rfind(parameters);
    return path + std::string(tail.substr(0, inTail)) +
           std::string(tail.substr(inTail + parameters.size()));
}

// Two commands are the same command when they differ only in quotes and in the blanks between
// their words: a delayed program is its command split in two, without the program's quotes.
std::string CommandWords(std::string_view command) {
    std::string out;
    for (char c : command) {
        if (c == '"')
            continue;
        if (IsBlank(c)) {
            if (!out.empty() && out.back() != ' ')
                out += ' ';
            continue;
        }
        out += c;
    }
    while (!out.empty() && out.back() == ' ')
        out.pop_back();
    return out;
}

} // namespace

RunCommandParts SplitRunData(std::string_view data, bool expandable,
                             const CommandLineSystem& system) {
    const std::string_view raw = TrimBlanks(data);
    if (StartsWith(raw, "\"")) {
        const size_t close = raw.find('"', 1);
        // An opening quote that is never closed quotes the whole rest.
        if (close == std::string_view::npos)
            return Parts(TrimBlanks(raw.substr(1)), "");
        return Parts(raw.substr(1, close - 1), raw.substr(close + 1));
    }
    const bool expand = expandable && raw.find('%') != std::string_view::npos;
    const std::string expanded = expand ? system.Expand(std::string(raw)) : std::string(raw);
    const std::string_view text = TrimBlanks(expanded);
    const std::optional<FoundProgram> found = FindProgram(text, system);
    if (!found) {
        // Nothing names a file: Windows would try the first word, and so the program is that.
        const size_t end = WordEnd(raw, 0);
        return end == std::string_view::npos ? RunCommandParts{}
                                             : Parts(raw.substr(0, end), raw.substr(end));
    }
    const std::string_view program = text.substr(0, found->End);
    const std::string exe = found->Exe ? ".exe" : "";
    if (expand) {
        // The same words of the value as written, when they stand for that program.
        for (size_t end = WordEnd(raw, 0); end != std::string_view::npos; end = WordEnd(raw, end))
            if (system.Expand(std::string(raw.substr(0, end))) == program)
                return Parts(std::string(raw.substr(0, end)) + exe, raw.substr(end));
    }
    return Parts(std::string(program) + exe, text.substr(found->End));
}

bool ProgramFound(std::string_view program, bool expandable, const CommandLineSystem& system) {
    const std::string path =
        expandable ? system.Expand(std::string(program)) : std::string(program);
    if (path.empty())
        return false;
    return system.FileExists(path) || (!HasExtension(path) && system.FileExists(path + ".exe"));
}

RunCommandParts DelayedCommand(const GroupProgram& program, bool expandable,
                               const CommandLineSystem& system) {
    std::string path = Trim(program.Path);
    if (path.size() >= 2 && path.front() == '"' && path.find('"', 1) == path.size() - 1)
        path = Trim(std::string_view(path).substr(1, path.size() - 2));
    RunCommandParts stored{path, Trim(program.Parameters)};
    if (path.empty() || ProgramFound(path, expandable, system))
        return stored;
    const std::string whole = stored.Parameters.empty() ? path : path + " " + stored.Parameters;
    RunCommandParts again = SplitRunData(whole, expandable, system);
    return ProgramFound(again.Path, expandable, system) ? again : stored;
}

RunCommandParts StartedCommand(const GroupProgram& program, bool expandable,
                               const CommandLineSystem& system) {
    if (program.Command != kExecuteReg && program.Command != kExecuteRegAU)
        return {Trim(RemoveAll(program.Path, '"')), program.Parameters};
    return DelayedCommand(program, expandable, system);
}

std::string StartBlockingWord(const ProgramModel& model, const GroupProgram& program,
                              bool expandable, const CommandLineSystem& system) {
    const RunCommandParts command = StartedCommand(program, expandable, system);
    return model.BlockingWord(command.Path, command.Parameters);
}

NameData SplitNameData(std::string_view text) {
    size_t eq = text.find('=');
    if (eq == std::string_view::npos)
        return NameData{std::string(text), ""};
    return NameData{std::string(text.substr(0, eq)), std::string(text.substr(eq + 1))};
}

} // namespace tolvane

namespace tolvane {

namespace {

// Text as a stopped entry can hold it.
std::string Plain(std::string_view text) {
    std::string out = Trim(RemoveAll(text, '"'));
    while (EndsWith(out, ",")) // the file's list separator
        out = TrimRight(std::string_view(out).substr(0, out.size() - 1));
    return out;
}

} // namespace

std::string StoppedRunEntry(std::string_view name, std::string_view data) {
    return Plain(name) + "=" + Plain(data);
}

std::optional<NameData> NamedStoppedValue(std::string_view entry) {
    const size_t eq = entry.find('=');
    if (eq == std::string_view::npos || entry.substr(0, eq).find('\\') != std::string_view::npos)
        return std::nullopt;
    return SplitNameData(Trim(entry));
}

bool StoppedEntryNames(std::string_view entry, std::string_view name) {
    return StartsWith(Trim(entry), Plain(name) + "=");
}

SavedCopyMatch MatchSavedCopies(const ProgramModel& model, int location,
                                const std::vector<NameData>& saved) {
    SavedCopyMatch match;
    const ProgramGroup* group = model.StartupGroup();
    match.Delayed.assign(group ? group->Programs.size() : 0, -1);
    match.Stopped.assign(model.StoppedPrograms.size(), -1);
    const bool machine = location == kMachineRun;
    if (!machine && location != kUserRun)
        return match;

    const std::vector<NameData>& copies = saved;
    std::vector<bool> taken;
    for (const NameData& copy : saved)
        taken.push_back(copy.Name.empty() && copy.Data.empty());
    auto claim = [&](int& to, auto matches) {
        for (size_t i = 0; i < copies.size(); ++i)
            if (!taken[i] && matches(copies[i])) {
                taken[i] = true;
                to = static_cast<int>(i);
                return true;
            }
        return false;
    };
    // The copies by a key of each, in their order: a key is looked up instead of comparing every
    // record with every copy, which a thousand delayed values would make a million comparisons.
    using Keyed = std::vector<std::pair<std::string, size_t>>;
    auto index = [&](auto keyOf) {
        Keyed keyed;
        keyed.reserve(copies.size());
        for (size_t i = 0; i < copies.size(); ++i)
            keyed.emplace_back(keyOf(copies[i]), i);
        std::sort(keyed.begin(), keyed.end());
        return keyed;
    };
    // The first copy not yet taken among those of the key that also matches.
    auto claimKeyed = [&](int& to, const Keyed& keyed, const std::string& key, auto matches) {
        auto it = std::lower_bound(keyed.begin(), keyed.end(), std::make_pair(key, size_t{0}));
        for (; it != keyed.end() && it->first == key; ++it)
            if (!taken[it->second] && matches(copies[it->second])) {
                taken[it->second] = true;
                to = static_cast<int>(it->second);
                return true;
            }
        return false;
    };
    auto any = [](const NameData&) { return true; };
    const Keyed byName = index([](const NameData& c) { return Plain(c.Name); });

    // The delayed values first: their copies are theirs. A name is unique in one key, but the
    // machine's two views may each hold it; then the command tells the two copies apart.
    if (group) {
        const std::string_view command = machine ? kExecuteRegAU : kExecuteReg;
        auto ours = [&](const GroupProgram& p) {
            return !p.RegistryKeyName.empty() && p.Command == command;
        };
        for (size_t i = 0; i < group->Programs.size(); ++i) {
            const GroupProgram& p = group->Programs[i];
            if (!ours(p))
                continue;
            const std::string words = CommandWords(p.Path + " " + p.Parameters);
            claimKeyed(match.Delayed[i], byName, Plain(p.RegistryKeyName),
                       [&](const NameData& c) { return CommandWords(c.Data) == words; });
        }
        for (size_t i = 0; i < group->Programs.size(); ++i) {
            const GroupProgram& p = group->Programs[i];
            if (ours(p) && match.Delayed[i] < 0)
                claimKeyed(match.Delayed[i], byName, Plain(p.RegistryKeyName), any);
        }
    }

    // The location's stopped entries, each read once: its text without the prefix, trimmed, and
    // whether it names its value.
    struct Entry {
        size_t Index;
        std::string Text, Exact;
        bool Named;
    };
    std::vector<Entry> entries;
    const std::string_view prefix = LocationPrefix(location);
    for (size_t e = 0; e < model.StoppedPrograms.size(); ++e) {
        const std::string& entry = model.StoppedPrograms[e];
        if (std::string_view(entry).substr(0, kPrefixLength) != prefix)
            continue;
        std::string text = entry.substr(std::min(entry.size(), kPrefixLength));
        const bool named = NamedStoppedValue(text).has_value();
        std::string exact = Trim(text);
        entries.push_back({e, std::move(text), std::move(exact), named});
    }
    // Entries that name their value: the copy with that name and command, then that name. The
    // whole entry is compared, so a name that holds "=" is never cut at it: each "=" of the
    // entry may end the name.
    const Keyed byEntry = index([](const NameData& c) { return StoppedRunEntry(c.Name, c.Data); });
    for (const Entry& entry : entries)
        if (entry.Named)
            claimKeyed(match.Stopped[entry.Index], byEntry, entry.Exact, any);
    for (const Entry& entry : entries) {
        if (!entry.Named || match.Stopped[entry.Index] >= 0)
            continue;
        const std::string& exact = entry.Exact;
        size_t first = copies.size();
        for (size_t eq = exact.find('='); eq != std::string::npos; eq = exact.find('=', eq + 1)) {
            const std::string name = exact.substr(0, eq);
            auto it =
                std::lower_bound(byName.begin(), byName.end(), std::make_pair(name, size_t{0}));
            for (; it != byName.end() && it->first == name; ++it)
                if (!taken[it->second]) {
                    first = std::min(first, it->second);
                    break;
                }
        }
        if (first < copies.size()) {
            taken[first] = true;
            match.Stopped[entry.Index] = static_cast<int>(first);
        }
    }
    // Then entries that hold a path alone, as older versions stored them; they are compared
    // with the copies' commands, never with their names: exact path, trimmed, then contained.
    auto pathOf = [](const NameData& copy) { return PathAsOlderVersionsSplitIt(Trim(copy.Data)); };
    for (const Entry& entry : entries) {
        if (entry.Named || match.Stopped[entry.Index] >= 0)
            continue;
        const std::string path = Plain(entry.Text);
        if (path.empty())
            continue;
        int& to = match.Stopped[entry.Index];
        claim(to, [&](const NameData& c) { return pathOf(c) == entry.Text; }) ||
            claim(to, [&](const NameData& c) { return Plain(pathOf(c)) == path; }) ||
            claim(to, [&](const NameData& c) { return Contains(Plain(c.Data), path); });
    }
    return match;
}

int SavedCopyOfStopped(const ProgramModel& model, int stoppedIndex,
                       const std::vector<NameData>& saved) {
    const auto& all = model.StoppedPrograms;
    if (stoppedIndex < 0 || static_cast<size_t>(stoppedIndex) >= all.size())
        return -1;
    const std::string_view prefix = std::string_view(all[stoppedIndex]).substr(0, kPrefixLength);
    const int location = prefix == LocationPrefix(kMachineRun) ? kMachineRun : kUserRun;
    return MatchSavedCopies(model, location, saved).Stopped[static_cast<size_t>(stoppedIndex)];
}

} // namespace tolvane
