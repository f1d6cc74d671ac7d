#include "text/language.h"

#include "text/strings.h"

namespace tolvane {

std::vector<std::string> SplitTextLines(std::string_view text) {
    std::vector<std::string> lines;
    for (std::string_view line : SplitTextLineViews(text))
        lines.emplace_back(line);
    return lines;
}

std::vector<std::string_view> SplitTextLineViews(std::string_view text) {
    std::vector<std::string_view> lines;
    size_t start = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\r' && text[i] != '\n')
            continue;
        lines.emplace_back(text.substr(start, i - start));
        if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n')
            ++i;
        start = i + 1;
    }
    if (start < text.size())
        lines.emplace_back(text.substr(start));
    return lines;
}

std::string CutComment(std::string_view line) {
    size_t at = line.find("//");
    return std::string(at == std::string_view::npos ? line : line.substr(0, at));
}

std::string ExpandLineBreaks(std::string_view entry) {
    std::string out(entry);
    for (size_t at = FindNoCase(out, "$CrLf$"); at != std::string::npos;
         at = FindNoCase(out, "$CrLf$"))
        out.replace(at, 6, "\r\n");
    return out;
}

std::vector<LanguageEntry> ParseLanguageList(std::string_view text) {
    std::vector<LanguageEntry> list;
    for (const std::string& raw : SplitTextLines(text)) {
        std::string line = CutComment(raw);
        size_t comma = line.find(',');
        if (Trim(line).empty() || comma == std::string::npos)
            continue;
        list.push_back({Trim(line.substr(0, comma)), Trim(line.substr(comma + 1))});
    }
    if (list.empty())
        list.emplace_back();
    return list;
}

void ApplyTextFile(std::vector<std::string>& table, std::string_view text) {
    size_t n = 0;
    for (const std::string& raw : SplitTextLines(text)) {
        std::string line = CutComment(raw);
        if (line.empty())
            continue; // a line of blanks is an entry: only an empty line is skipped
        if (n >= table.size())
            table.resize(n + 1);
        table[n++] = ExpandLineBreaks(line);
    }
}

} // namespace tolvane
