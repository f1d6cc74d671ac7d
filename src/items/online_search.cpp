#include "items/online_search.h"

#include <algorithm>
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

namespace {

// Programs that only run what their command line names: their own name says nothing of the
// item.
bool IsHost(std::string_view program) {
    static constexpr std::string_view kHosts[] = {"rundll32",   "regsvr32", "cmd",
                                                  "powershell", "pwsh",     "wscript",
                                                  "cscript",    "mshta",    "conhost"};
    std::string name = ToLower(program);
    if (EndsWith(name, ".exe"))
        name.resize(name.size() - 4);
    return std::find(std::begin(kHosts), std::end(kHosts), name) != std::end(kHosts);
}

} // namespace

std::string SearchTerms(const StartupItem& item) {
    if (!item.Registry())
        return item.Name;
    // The file name alone: a folder may hold the user's name, which is nobody else's business.
    const size_t slash = item.File.find_last_of("\\/");
    const std::string program =
        slash == std::string::npos ? item.File : item.File.substr(slash + 1);
    return program.empty() || IsHost(program) ? item.Name : program;
}

std::string SearchAddress(std::string_view searchTemplate, const StartupItem& item) {
    const std::string terms = SearchTerms(item);
    if (searchTemplate.empty() || terms.empty())
        return std::string();
    return URLEncode(ReplaceAll(searchTemplate, "{SEARCHTERMS}", terms));
}

} // namespace tolvane
