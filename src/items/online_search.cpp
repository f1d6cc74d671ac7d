#include "items/online_search.h"

#include "text/strings.h"

namespace tolvane {

std::string URLEncode(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (char c : text) {
        switch (c) {
        case '^':
            out += "%5E";
            break;
        case '&':
            out += "%26";
            break;
        case '`':
            out += "%60";
            break;
        case '{':
            out += "%7B";
            break;
        case '}':
            out += "%7D";
            break;
        case '|':
            out += "%7C";
            break;
        case ']':
            out += "%5D";
            break;
        case '[':
            out += "%5B";
            break;
        case '"':
            out += "%22";
            break;
        case '<':
            out += "%3C";
            break;
        case '>':
            out += "%3E";
            break;
        case '\\':
            out += "%5C";
            break;
        case ' ':
            out += "%20";
            break;
        default:
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
