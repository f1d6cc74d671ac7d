#include "config/run_data.h"

#include <algorithm>

#include "config/program_model.h"
#include "text/strings.h"

namespace tolvane {

namespace {

// A command without ".exe" (a batch file, "rundll32 shell32.dll,Control"): a quoted path runs to
// its closing quote, an unquoted one to the first blank. Cutting such a command four characters
// in, as the ".exe" rule would, leaves a path like "rund" that can never start: the delayed
// item would quietly never run again.
RunCommandParts SplitWithoutExe(std::string_view data) {
    size_t end = std::string_view::npos;
    if (StartsWith(data, "\"")) {
        size_t close = data.find('"', 1);
        if (close != std::string_view::npos)
            end = close + 1;
    } else {
        end = data.find(' ');
    }
    if (end == std::string_view::npos || Trim(data.substr(end)).empty())
        return RunCommandParts{std::string(data), ""};
    std::string_view tail = data.substr(end);
    std::string parameters = Trim(tail);
    size_t at = tail.find(parameters);
    // The path keeps the blanks before the parameters, as with the ".exe" rule, so that path,
    // blanks and parameters put together give the command back.
    std::string path = std::string(data.substr(0, end)) + std::string(tail.substr(0, at));
    path += tail.substr(at + parameters.size());
    return RunCommandParts{path, parameters};
}

} // namespace

RunCommandParts SplitRunData(std::string_view data) {
    if (data.size() >= 4 && ToLower(data.substr(data.size() - 4)) == ".exe")
        return RunCommandParts{std::string(data), ""};
    size_t hit = FindNoCase(data, ".exe");
    if (hit == std::string_view::npos)
        return SplitWithoutExe(data);
    // Everything after the character that follows ".exe" (the closing quote or the blank) is
    // the parameters, trimmed.
    size_t tailStart = std::min(hit + 5, data.size());
    std::string_view tail = data.substr(tailStart);
    RunCommandParts parts;
    parts.Parameters = Trim(tail);
    // The parameters are taken out of the tail only. Removing every occurrence of them would
    // also cut into the path wherever the same letters stand there ("C:\x\x.exe x"), and the
    // program could then neither start nor be written back as it was.
    size_t inTail = tail.rfind(parts.Parameters);
    parts.Path = std::string(data.substr(0, tailStart));
    if (parts.Parameters.empty()) {
        parts.Path += tail;
    } else {
        parts.Path += tail.substr(0, inTail);
        parts.Path += tail.substr(inTail + parts.Parameters.size());
    }
    return parts;
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

SavedCopyMatch MatchSavedCopies(const ProgramModel& model, int location,
                                const std::vector<std::string>& saved) {
    SavedCopyMatch match;
    const ProgramGroup* group = model.StartupGroup();
    match.Delayed.assign(group ? group->Programs.size() : 0, -1);
    match.Stopped.assign(model.StoppedPrograms.size(), -1);
    const bool machine = location == kMachineRun;
    if (!machine && location != kUserRun)
        return match;

    std::vector<NameData> copies;
    std::vector<bool> taken;
    for (const std::string& copy : saved) {
        copies.push_back(SplitNameData(copy));
        taken.push_back(copy.empty());
    }
    auto claim = [&](int& to, auto matches) {
        for (size_t i = 0; i < copies.size(); ++i)
            if (!taken[i] && matches(copies[i])) {
                taken[i] = true;
                to = static_cast<int>(i);
                return true;
            }
        return false;
    };
    auto named = [](std::string_view name) {
        return [name = Plain(name)](const NameData& c) { return Plain(c.Name) == name; };
    };

    // The delayed values first: their copies are theirs. A name is unique in one key, but the
    // machine's two views may each hold it; then the command tells the two copies apart.
    if (group) {
        const std::string_view command = machine ? kExecuteRegAU : kExecuteReg;
        auto ours = [&](const GroupProgram& p) {
            return !p.Path.empty() && !p.RegistryKeyName.empty() && p.Command == command;
        };
        for (size_t i = 0; i < group->Programs.size(); ++i) {
            const GroupProgram& p = group->Programs[i];
            if (ours(p))
                claim(match.Delayed[i], [&](const NameData& c) {
                    const RunCommandParts parts = SplitRunData(Trim(c.Data));
                    return named(p.RegistryKeyName)(c) && Trim(parts.Path) == Trim(p.Path) &&
                           parts.Parameters == p.Parameters;
                });
        }
        for (size_t i = 0; i < group->Programs.size(); ++i) {
            const GroupProgram& p = group->Programs[i];
            if (ours(p) && match.Delayed[i] < 0)
                claim(match.Delayed[i], named(p.RegistryKeyName));
        }
    }

    const std::string_view prefix = LocationPrefix(location);
    auto entryOf = [&](size_t e) -> std::optional<std::string> {
        const std::string& entry = model.StoppedPrograms[e];
        if (std::string_view(entry).substr(0, kPrefixLength) != prefix)
            return std::nullopt;
        return entry.substr(std::min(entry.size(), kPrefixLength));
    };
    // Entries that name their value: the copy with that name and command, then that name.
    for (int pass = 0; pass < 2; ++pass) {
        for (size_t e = 0; e < match.Stopped.size(); ++e) {
            const auto entry = entryOf(e);
            const auto value = entry ? NamedStoppedValue(*entry) : std::nullopt;
            if (!value || match.Stopped[e] >= 0)
                continue;
            const std::string exact = StoppedRunEntry(value->Name, value->Data);
            claim(match.Stopped[e], [&](const NameData& c) {
                return named(value->Name)(c) &&
                       (pass == 1 || StoppedRunEntry(c.Name, c.Data) == exact);
            });
        }
    }
    // Then entries that hold a path alone, as older versions stored them; they are compared
    // with the copies' commands, never with their names: exact path, trimmed, then contained.
    auto pathOf = [](const NameData& copy) { return SplitRunData(Trim(copy.Data)).Path; };
    for (size_t e = 0; e < match.Stopped.size(); ++e) {
        const auto entry = entryOf(e);
        if (!entry || NamedStoppedValue(*entry) || match.Stopped[e] >= 0)
            continue;
        const std::string path = Plain(*entry);
        if (path.empty())
            continue;
        int& to = match.Stopped[e];
        claim(to, [&](const NameData& c) { return pathOf(c) == *entry; }) ||
            claim(to, [&](const NameData& c) { return Plain(pathOf(c)) == path; }) ||
            claim(to, [&](const NameData& c) { return Contains(Plain(c.Data), path); });
    }
    return match;
}

int SavedCopyOfStopped(const ProgramModel& model, int stoppedIndex,
                       const std::vector<std::string>& saved) {
    const auto& all = model.StoppedPrograms;
    if (stoppedIndex < 0 || static_cast<size_t>(stoppedIndex) >= all.size())
        return -1;
    const std::string_view prefix = std::string_view(all[stoppedIndex]).substr(0, kPrefixLength);
    const int location = prefix == LocationPrefix(kMachineRun) ? kMachineRun : kUserRun;
    return MatchSavedCopies(model, location, saved).Stopped[static_cast<size_t>(stoppedIndex)];
}

} // namespace tolvane
