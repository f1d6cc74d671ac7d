// The event log: "log.txt" beside the exe, written only when that file exists, so a user turns
// logging on by creating it. Bounded: at about 5 MB its older half goes.
#pragma once

#include <string>
#include <string_view>

#include "platform/log_rules.h"

namespace tolvane {

class EventLog {
public:
    explicit EventLog(std::string path = std::string()) : path_(std::move(path)) {}
    const std::string& Path() const { return path_; }

    // Appends the level's prefix, the text and CR LF. Never fails loudly: a log that cannot be
    // written loses the line, and the caller goes on.
    void WriteLog(std::string_view text, int level) const;

private:
    std::string path_;
};

// The current time in the user's long time format, and the date in the short date format
// followed by the time (the system's general date format).
std::string TimeOfDayText();
std::string GeneralDateText();

} // namespace tolvane
