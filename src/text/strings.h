// String rules shared by the whole program. Text is ANSI code-page bytes in std::string,
// exactly what crosses the Win32 "A" entry points and what the files hold.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tolvane {

// Blanks (code 32) only: tabs and line ends are data unless a rule removes them.
std::string Trim(std::string_view s);
std::string TrimRight(std::string_view s);

// Every occurrence, scanned left to right without overlap; an empty pattern changes nothing.
std::string ReplaceAll(std::string_view s, std::string_view from, std::string_view to);
std::string RemoveAll(std::string_view s, char c);

// Letter case of A-Z only: the words compared this way (".exe", "-nogui", disallowed words)
// are ASCII, and a code-page-dependent rule would make the same file behave differently on
// two machines.
std::string ToLower(std::string_view s);
size_t FindNoCase(std::string_view haystack, std::string_view needle, size_t from = 0);

// How Windows orders the names of files and registry values: below, equal to or above 0, every
// letter of the code page folded as the system folds it (an ordinal comparison without regard to
// letter case, accented letters included). Only the platform knows the system's folding
// (CDirStruct::CompareNames): code without the platform is handed this function and never
// folds names by itself.
using NameOrder = int (*)(std::string_view a, std::string_view b);
// The same name in that order; without one, byte for byte.
inline bool SameName(std::string_view a, std::string_view b, NameOrder order) {
    return order ? order(a, b) == 0 : a == b;
}

inline bool Contains(std::string_view s, std::string_view part) {
    return s.find(part) != std::string_view::npos;
}
inline bool StartsWith(std::string_view s, std::string_view prefix) {
    return s.substr(0, prefix.size()) == prefix;
}
inline bool EndsWith(std::string_view s, std::string_view suffix) {
    return s.size() >= suffix.size() && s.substr(s.size() - suffix.size()) == suffix;
}

// Splits at every occurrence of the separator; n separators give n + 1 pieces.
std::vector<std::string> Split(std::string_view s, char separator);

// Shortest text of a single-precision number with up to 7 significant digits and "." as the
// decimal separator: 30 -> "30", 2.5 -> "2.5", 0.5 -> "0.5".
std::string FormatSingle(float value);
// A whole number in decimal or lower-case hex digits, with zeros in front up to the width.
std::string ZeroPadded(unsigned long long value, size_t width = 0);
std::string HexPadded(unsigned long long value, size_t width = 0);
// The value in units, rounded half up to tenths and written with one decimal after the given
// separator: (1250, 1000, ".") -> "1.3".
std::string Tenths(uint64_t value, uint64_t unit, std::string_view decimal);

// A decimal number with "." or "," as the separator (files written under either locale read
// back), optional sign and exponent, blanks around it allowed. Anything else is no number.
std::optional<double> ParseNumber(std::string_view text);
std::optional<float> ParseSingle(std::string_view text);

// Whole number of a 16-bit setting: rounds to the nearest integer, a half to the even
// neighbour (2.5 -> 2, 3.5 -> 4); no value outside -32768..32767 and no non-number converts.
std::optional<int> ParseInteger16(std::string_view text);

// Round half to even, as the program's other conversions to whole numbers do.
long long RoundHalfEven(double value);

} // namespace tolvane
