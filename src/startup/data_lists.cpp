#include "startup/data_lists.h"

#include "text/language.h"
#include "text/strings.h"

namespace tolvane {

std::vector<SafeEntry> ParseSafeList(std::string_view text) {
    std::vector<SafeEntry> list(1);
    for (std::string_view raw : SplitTextLineViews(text)) {
        if (StartsWith(raw, "//"))
            continue;
        std::string line = Trim(RemoveAll(raw, '\t'));
        if (line.empty())
            continue;
        if (!list.back().Name.empty())
            list.emplace_back();
        SafeEntry& entry = list.back();
        size_t first = line.find("//");
        if (first == std::string::npos) {
            entry.Name = line;
            continue;
        }
        // Blanks before the "//" stay part of the name; the one character after the last
        // "//" (the blank of "name // text") is not part of the description.
        entry.Name = line.substr(0, first);
        size_t last = line.rfind("//");
        entry.Description = last + 3 <= line.size() ? line.substr(last + 3) : std::string();
    }
    return list;
}

std::string ParseOnlineTemplate(std::string_view text) {
    auto lines = SplitTextLineViews(text);
    return lines.empty() ? std::string() : Trim(lines[0]);
}

} // namespace tolvane
