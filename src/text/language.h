// Rules of the language files: the language list and the text files whose lines are the
// entries of a text table. Free of the platform; the file reading lives beside it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "text/text_tables.h"

namespace tolvane {

// A line ends at CR LF, at LF (as some editors save) or at a lone CR. Text after the last line
// end is one more line; an empty text has no lines.
std::vector<std::string> SplitTextLines(std::string_view text);
// The same lines as views into the text.
std::vector<std::string_view> SplitTextLineViews(std::string_view text);

// The line up to its first "//". A "//" inside a web address starts a comment too: the text
// files have no escapes.
std::string CutComment(std::string_view line);

// Every "$CrLf$", in any letter case, becomes a line break (CR LF).
std::string ExpandLineBreaks(std::string_view entry);

// "Display name, code" per line; lines without a comma are skipped; both parts trimmed.
// One empty entry when the text holds none.
std::vector<LanguageEntry> ParseLanguageList(std::string_view text);

// Stores the entries of a text file at 0, 1, 2, ... in the table, growing it when needed;
// entries past the last one read keep what they held.
void ApplyTextFile(std::vector<std::string>& table, std::string_view text);

} // namespace tolvane
