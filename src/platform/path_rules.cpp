#include "platform/path_rules.h"

#include "text/strings.h"

namespace tolvane {

std::string WithTrailingBackslash(std::string_view folder) {
    std::string out(folder);
    if (!EndsWith(out, "\\"))
        out += '\\';
    return out;
}

std::string JoinSearchPath(std::string_view folder, std::string_view name) {
    std::string joined = WithTrailingBackslash(folder) + std::string(name);
    if (StartsWith(joined, "\\\\") && !StartsWith(joined, "\\\\\\")) {
        std::string network = "\\";
        network += ReplaceAll(std::string_view(joined).substr(1), "\\\\", "\\");
        return network;
    }
    return ReplaceAll(joined, "\\\\", "\\");
}

} // namespace tolvane
