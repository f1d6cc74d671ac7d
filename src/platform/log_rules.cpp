#include "platform/log_rules.h"

namespace tolvane {

std::string_view LogLevelPrefix(int level) {
    switch (level) {
    case kLogError:
        return "Error: ";
    case kLogWarning:
        return "Warning: ";
    case kLogInfo:
        return "Info: ";
    default:
        return "";
    }
}

std::string PrunedLog(std::string_view content, std::string_view markerLine) {
    size_t keepFrom = std::min<size_t>(kLogPruneCut, content.size());
    // The cut ends a line when its last byte is the line feed; otherwise the rest of that
    // line goes too.
    if (keepFrom > 0 && content[keepFrom - 1] != '\n') {
        size_t lineFeed = content.find('\n', keepFrom);
        keepFrom = lineFeed == std::string_view::npos ? content.size() : lineFeed + 1;
    }
    std::string kept(content.substr(keepFrom));
    kept += "\r\n";
    kept += markerLine;
    kept += "\r\n";
    return kept;
}

std::string PruneMarker(std::string_view dateAndTime) {
    return "<---- Old Events removed on: " + std::string(dateAndTime) + " ---->";
}

} // namespace tolvane
