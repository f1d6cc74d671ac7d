#include "platform/event_log.h"

#include <windows.h>

#include "platform/file_io.h"
#include "platform/handles.h"

namespace tolvane {

std::string TimeOfDayText() {
    char buffer[128] = {};
    if (!GetTimeFormatA(LOCALE_USER_DEFAULT, 0, nullptr, nullptr, buffer, sizeof buffer))
        return std::string();
    return buffer;
}

std::string GeneralDateText() {
    char buffer[128] = {};
    if (!GetDateFormatA(LOCALE_USER_DEFAULT, DATE_SHORTDATE, nullptr, nullptr, buffer,
                        sizeof buffer))
        return TimeOfDayText();
    return std::string(buffer) + " " + TimeOfDayText();
}

void EventLog::WriteLog(std::string_view text, int level) const {
    try {
        auto size = FileSize(path_);
        if (!size)
            return; // no log.txt: logging is off, and the file is never created here
        std::string line(LogLevelPrefix(level));
        line += text;
        line += "\r\n";
        if (*size >= kLogPruneSize) {
            auto content = ReadFileBytes(path_);
            if (!content)
                return;
            // The pruned log replaces the old one whole: a failure leaves the old file.
            AtomicFileWriter pruned(path_);
            pruned.Write(PrunedLog(*content, PruneMarker(GeneralDateText())));
            pruned.Write(line);
            pruned.Commit();
            return;
        }
        UniqueFile file(CreateFileA(path_.c_str(), FILE_APPEND_DATA,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL, nullptr));
        if (!file)
            return;
        DWORD wrote = 0;
        WriteFile(file.get(), line.data(), static_cast<DWORD>(line.size()), &wrote, nullptr);
    } catch (...) {
        // The log is the last resort for reporting; nothing is left to tell.
    }
}

} // namespace tolvane
