#include <exception>

#include "platform/file_io.h"
#include "platform/wide_text.h"
#include "startup/data_lists.h"
#include "platform/event_log.h"

namespace tolvane {

std::vector<SafeEntry> LoadSafePrograms(const std::string& programFolder, EventLog& log) {
    const std::string path = programFolder + "\\data\\safelist.dat";
    if (!IsFile(path))
        return std::vector<SafeEntry>(1);
    try {
        auto bytes = ReadTextFile(path);
        if (!bytes)
            throw FileError("cannot read \"" + path + "\"");
        return ParseSafeList(*bytes);
    } catch (const std::exception& e) {
        log.WriteLog(std::string("LoadSafePrograms:") + e.what(), kLogWarning);
    }
    return std::vector<SafeEntry>(1);
}

std::optional<std::string> LoadOnlineTemplate(const std::string& programFolder) {
    if (auto bytes = ReadTextFile(programFolder + "\\data\\online.txt"))
        return ParseOnlineTemplate(*bytes);
    return std::nullopt;
}

} // namespace tolvane
