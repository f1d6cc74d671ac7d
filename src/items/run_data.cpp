#include "items/run_data.h"

#include <algorithm>

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

int FindSavedRunValue(const std::vector<std::string>& saved, std::string_view path) {
    if (Trim(path).empty())
        return -1;
    auto find = [&](auto matches) {
        for (size_t i = 0; i < saved.size(); ++i)
            if (!saved[i].empty() && matches(saved[i]))
                return static_cast<int>(i);
        return -1;
    };
    auto pathOf = [](const std::string& entry) {
        return SplitRunData(Trim(SplitNameData(entry).Data)).Path;
    };
    // The stopped path as split, blank and all; then trimmed, as the file stores it; then the
    // first copy that merely contains it.
    int i = find([&](const std::string& e) { return pathOf(e) == path; });
    if (i < 0)
        i = find([&](const std::string& e) { return Trim(pathOf(e)) == Trim(path); });
    if (i < 0)
        i = find([&](const std::string& e) { return Contains(e, path); });
    return i;
}

} // namespace tolvane
