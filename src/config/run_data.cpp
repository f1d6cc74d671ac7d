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

std::vector<int> MatchStoppedRunValues(const std::vector<std::string>& saved,
                                       const std::vector<std::string>& stopped,
                                       const std::vector<std::string>& delayedNames) {
    std::vector<int> match(stopped.size(), -1);
    std::vector<bool> taken(saved.size(), false);
    std::vector<NameData> copies;
    for (size_t i = 0; i < saved.size(); ++i) {
        copies.push_back(SplitNameData(saved[i]));
        const std::string name = Plain(copies.back().Name);
        taken[i] = saved[i].empty() ||
                   std::any_of(delayedNames.begin(), delayedNames.end(), [&](const std::string& d) {
                       return !d.empty() && Plain(d) == name;
                   });
    }
    auto claim = [&](size_t entry, auto matches) {
        for (size_t i = 0; i < copies.size(); ++i)
            if (!taken[i] && matches(copies[i])) {
                taken[i] = true;
                match[entry] = static_cast<int>(i);
                return true;
            }
        return false;
    };
    // Entries that name their value first: a name is unique in its key.
    for (size_t e = 0; e < stopped.size(); ++e) {
        if (auto named = NamedStoppedValue(stopped[e])) {
            const std::string name = Plain(named->Name);
            claim(e, [&](const NameData& copy) { return Plain(copy.Name) == name; });
        }
    }
    // Then entries that hold a path alone, as older versions stored them; they are compared
    // with the copies' commands, never with their names.
    auto pathOf = [](const NameData& copy) { return SplitRunData(Trim(copy.Data)).Path; };
    for (size_t e = 0; e < stopped.size(); ++e) {
        const std::string path = Plain(stopped[e]);
        if (match[e] >= 0 || path.empty())
            continue;
        claim(e, [&](const NameData& c) { return pathOf(c) == stopped[e]; }) ||
            claim(e, [&](const NameData& c) { return Plain(pathOf(c)) == path; }) ||
            claim(e, [&](const NameData& c) { return Contains(Plain(c.Data), path); });
    }
    return match;
}

int SavedCopyOfStopped(const ProgramModel& model, int stoppedIndex,
                       const std::vector<std::string>& saved) {
    const auto& all = model.StoppedPrograms;
    if (stoppedIndex < 0 || static_cast<size_t>(stoppedIndex) >= all.size())
        return -1;
    const std::string_view prefix = std::string_view(all[stoppedIndex]).substr(0, kPrefixLength);
    const bool machine = prefix == LocationPrefix(kMachineRun);
    if (!machine && prefix != LocationPrefix(kUserRun))
        return -1;
    std::vector<std::string> stopped;
    size_t position = 0;
    for (size_t i = 0; i < all.size(); ++i) {
        if (std::string_view(all[i]).substr(0, kPrefixLength) != prefix)
            continue;
        if (static_cast<int>(i) == stoppedIndex)
            position = stopped.size();
        stopped.push_back(all[i].substr(kPrefixLength));
    }
    std::vector<std::string> delayedNames;
    if (const ProgramGroup* group = model.StartupGroup())
        for (const GroupProgram& p : group->Programs)
            if (!p.Path.empty() && p.Command == (machine ? kExecuteRegAU : kExecuteReg))
                delayedNames.push_back(p.RegistryKeyName);
    return MatchStoppedRunValues(saved, stopped, delayedNames)[position];
}

} // namespace tolvane
