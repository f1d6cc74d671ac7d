#include "platform/path_rules.h"

#include <cstdint>

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

std::string PathHashText(std::string_view path) {
    // FNV-1a of the lower-case path, from a start value of this program's own. The text names
    // locks that every copy of Tolvane shares, so it stays as earlier versions made it.
    uint64_t hash = 1469598103934665603ull;
    for (char c : ToLower(path)) {
        hash ^= static_cast<unsigned char>(c);
        hash *= 1099511628211ull;
    }
    static const char kDigits[] = "0123456789abcdef";
    std::string text(16, '0');
    for (int i = 15; i >= 0; --i, hash >>= 4)
        text[static_cast<size_t>(i)] = kDigits[hash & 15];
    return text;
}

} // namespace tolvane
