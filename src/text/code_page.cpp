#include "text/code_page.h"

#include <atomic>
#include <utility>

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

namespace {

// The character at `at` of UTF-8 text and its length in bytes; a broken sequence is one byte,
// whose value stands for itself.
std::pair<char32_t, size_t> Utf8Character(std::string_view s, size_t at) {
    const auto byte = [&](size_t i) { return static_cast<unsigned char>(s[i]); };
    const unsigned char lead = byte(at);
    const size_t n = lead < 0xC2 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF5 ? 4 : 1;
    if (n == 1 || at + n > s.size())
        return {lead, 1};
    char32_t c = lead & (0x7F >> n);
    for (size_t i = 1; i < n; ++i) {
        if ((byte(at + i) & 0xC0) != 0x80)
            return {lead, 1};
        c = c << 6 | (byte(at + i) & 0x3F);
    }
    // The shortest form only, and no surrogate or value past the last plane.
    static constexpr char32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
    if (c < kLeast[n] || (c >= 0xD800 && c <= 0xDFFF) || c > 0x10FFFF)
        return {lead, 1};
    return {c, n};
}

} // namespace

bool IsUtf8(std::string_view bytes) {
    return Utf8FaultAt(bytes) == std::string_view::npos;
}

size_t Utf8FaultAt(std::string_view bytes) {
    for (size_t i = 0; i < bytes.size();) {
        if (static_cast<unsigned char>(bytes[i]) < 0x80) {
            ++i;
            continue;
        }
        const auto [c, n] = Utf8Character(bytes, i);
        if (n == 1)
            return i;
        i += n;
    }
    return std::string_view::npos;
}

std::string_view WithoutUtf8Mark(std::string_view text) {
    const bool marked =
        text.size() >= 3 && text[0] == '\xEF' && text[1] == '\xBB' && text[2] == '\xBF';
    return marked ? std::string_view(text.data() + 3, text.size() - 3) : text;
}

size_t CharacterLength(std::string_view s, size_t at, unsigned codePage) {
    if (codePage == kUtf8CodePage)
        return Utf8Character(s, at).second;
    return at + 1 < s.size() && IsLeadByte(codePage, static_cast<unsigned char>(s[at])) ? 2 : 1;
}

std::string_view CutAtCharacter(std::string_view s, size_t bytes, unsigned codePage) {
    size_t end = 0;
    while (end < s.size()) {
        const size_t n = CharacterLength(s, end, codePage);
        if (end + n > bytes)
            break;
        end += n;
    }
    return s.substr(0, end);
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
