#include "text/code_page.h"

#include <atomic>

namespace tolvane {

namespace {

std::atomic<unsigned> activeCodePage{kDefaultCodePage};

} // namespace

bool IsLeadByte(unsigned codePage, unsigned char byte) {
    switch (codePage) {
    case 932: // Shift-JIS
        return (byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xFC);
    case 936: // GBK
    case 949: // Unified Hangul
    case 950: // Big5
        return byte >= 0x81 && byte <= 0xFE;
    default:
        return false;
    }
}

void SetActiveCodePage(unsigned codePage) {
    activeCodePage.store(codePage, std::memory_order_relaxed);
}

unsigned ActiveCodePage() {
    return activeCodePage.load(std::memory_order_relaxed);
}

size_t CharacterLength(std::string_view s, size_t at, unsigned codePage) {
    return at + 1 < s.size() && IsLeadByte(codePage, static_cast<unsigned char>(s[at])) ? 2 : 1;
}

size_t FindLastCharacterOf(std::string_view s, std::string_view characters, unsigned codePage) {
    size_t found = std::string_view::npos;
    for (size_t i = 0; i < s.size();) {
        const size_t n = CharacterLength(s, i, codePage);
        if (n == 1 && characters.find(s[i]) != std::string_view::npos)
            found = i;
        i += n;
    }
    return found;
}

bool EndsWithCharacter(std::string_view s, char c, unsigned codePage) {
    const size_t last = FindLastCharacterOf(s, std::string_view(&c, 1), codePage);
    return last != std::string_view::npos && last + 1 == s.size();
}

std::string ReplaceAllCharacters(std::string_view s, std::string_view from, std::string_view to,
                                 unsigned codePage) {
    if (from.empty())
        return std::string(s);
    std::string out;
    out.reserve(s.size());
    for (size_t i = 0; i < s.size();) {
        if (s.compare(i, from.size(), from) == 0) {
            out.append(to);
            i += from.size();
            continue;
        }
        const size_t n = CharacterLength(s, i, codePage);
        out.append(s.substr(i, n));
        i += n;
    }
    return out;
}

} // namespace tolvane
