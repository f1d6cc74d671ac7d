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

std::string SearchTerms(std::string_view itemText, const CommandLineSystem& system) {
    const size_t equals = itemText.find('=');
    if (equals == std::string_view::npos)
        return std::string(itemText);
    return std::string(itemText.substr(0, equals)) + ", " +
           SplitRunData(itemText.substr(equals + 1), false, system).Path;
}

std::string SearchAddress(std::string_view searchTemplate, std::string_view itemText,
                          const CommandLineSystem& system) {
    if (searchTemplate.empty() || itemText.empty())
        return std::string();
    return URLEncode(ReplaceAll(searchTemplate, "{SEARCHTERMS}", SearchTerms(itemText, system)));
}

} // namespace tolvane
