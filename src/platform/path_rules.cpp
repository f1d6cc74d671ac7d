#include "platform/path_rules.h"

#include "text/strings.h"

namespace tolvane {

std::string WithTrailingBackslash(std::string_view folder, unsigned codePage) {
    std::string out(folder);
    if (!EndsWithCharacter(out, '\\', codePage))
        out += '\\';
    return out;
}

std::string JoinSearchPath(std::string_view folder, std::string_view name, unsigned codePage) {
    std::string joined = WithTrailingBackslash(folder, codePage) + std::string(name);
    if (StartsWith(joined, "\\\\") && !StartsWith(joined, "\\\\\\")) {
        std::string network = "\\";
        network += ReplaceAllCharacters(std::string_view(joined).substr(1), "\\\\", "\\", codePage);
        return network;
    }
    return ReplaceAllCharacters(joined, "\\\\", "\\", codePage);
}

std::string_view PathLastPart(std::string_view path, unsigned codePage) {
    return path.substr(FindLastCharacterOf(path, "\\/:", codePage) + 1);
}

} // namespace tolvane
