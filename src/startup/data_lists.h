// The two data files read at start: the safe list (programs known to be harmless, with a
// description each) and the online-search template.
#pragma once

#include <optional>

#include <string>
#include <string_view>
#include <vector>

#include "config/safe_list.h"

namespace tolvane {

class EventLog;

// One entry per usable line: "name// description", or a bare name. At least one entry, empty
// when the text has none.
std::vector<SafeEntry> ParseSafeList(std::string_view text);
// The first line, trimmed.
std::string ParseOnlineTemplate(std::string_view text);

// "data\safelist.dat" and "data\online.txt" beside the exe; a missing file keeps the default.
std::vector<SafeEntry> LoadSafePrograms(const std::string& programFolder, EventLog& log);
std::optional<std::string> LoadOnlineTemplate(const std::string& programFolder);

} // namespace tolvane
