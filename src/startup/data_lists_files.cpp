#include <exception>

#include "platform/file_io.h"
#include "startup/data_lists.h"
#include "platform/event_log.h"

namespace tolvane {

void LoadSafePrograms(AppState& app) {
    app.SafeList.assign(1, SafeEntry{});
    const std::string path = app.folders.ProgramFolder + "\\data\\safelist.dat";
    if (!IsFile(path))
        return;
    try {
        auto bytes = ReadFileBytes(path);
        if (!bytes)
            throw FileError("cannot read \"" + path + "\"");
        app.SafeList = ParseSafeList(*bytes);
    } catch (const std::exception& e) {
        app.log.WriteLog(std::string("LoadSafePrograms:") + e.what(), kLogWarning);
    }
}

void LoadOnlineList(AppState& app) {
    if (auto bytes = ReadFileBytes(app.folders.ProgramFolder + "\\data\\online.txt"))
        app.OnlineSearchTemplate = ParseOnlineTemplate(*bytes);
}

} // namespace tolvane
