#include "items/online_search.h"

#include <cstring>

#include "text/strings.h"

namespace tolvane {

std::string URLEncode(std::string_view text) {
    // The thirteen characters that an address may not hold as they are; everything else passes.
    static constexpr char kEscaped[] = "^&`{}|][\"<>\\ ";
    static constexpr char kHex[] = "0123456789ABCDEF";
    std::string out;
    out.reserve(text.size());
    for (char c : text) {
        if (c != '\0' && std::strchr(kEscaped, c)) {
            out += '%';
            out += kHex[static_cast<unsigned char>(c) >> 4];
            out += kHex[c & 15];
        } else {
            out += c;
        }
    }
    return out;
}

std::string SearchTerms(const StartupItem& item) {
    if (!item.Registry())
        return item.Name;
    const std::string& program = item.File;
    if (item.Name.empty())
        return program;
    return program.empty() ? item.Name : item.Name + ", " + program;
}

std::string SearchAddress(std::string_view searchTemplate, const StartupItem& item) {
    const std::string terms = SearchTerms(item);
    if (searchTemplate.empty() || terms.empty())
        return std::string();
    return URLEncode(ReplaceAll(searchTemplate, "{SEARCHTERMS}", terms));
}

} // namespace tolvane
