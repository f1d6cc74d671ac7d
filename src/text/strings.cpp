#include "text/strings.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace tolvane {

std::string TrimLeft(std::string_view s) {
    size_t b = 0;
    while (b < s.size() && s[b] == ' ')
        ++b;
    return std::string(s.substr(b));
}

std::string TrimRight(std::string_view s) {
    size_t e = s.size();
    while (e > 0 && s[e - 1] == ' ')
        --e;
    return std::string(s.substr(0, e));
}

std::string Trim(std::string_view s) {
    size_t b = 0, e = s.size();
    while (b < e && s[b] == ' ')
        ++b;
    while (e > b && s[e - 1] == ' ')
        --e;
    return std::string(s.substr(b, e - b));
}

std::string ReplaceAll(std::string_view s, std::string_view from, std::string_view to) {
    if (from.empty())
        return std::string(s);
    std::string out;
    out.reserve(s.size());
    size_t pos = 0;
    while (true) {
        size_t hit = s.find(from, pos);
        if (hit == std::string_view::npos)
            break;
        out.append(s.substr(pos, hit - pos));
        out.append(to);
        pos = hit + from.size();
    }
    out.append(s.substr(pos));
    return out;
}

std::string RemoveAll(std::string_view s, char c) {
    std::string out;
    out.reserve(s.size());
    for (char ch : s)
        if (ch != c)
            out.push_back(ch);
    return out;
}

static char LowerAscii(char c) {
    return (c >= 'A' && c <= 'Z') ? char(c - 'A' + 'a') : c;
}

std::string ToLower(std::string_view s) {
    std::string out(s);
    for (char& c : out)
        c = LowerAscii(c);
    return out;
}

size_t FindNoCase(std::string_view haystack, std::string_view needle, size_t from) {
    if (needle.empty())
        return from <= haystack.size() ? from : std::string_view::npos;
    if (needle.size() > haystack.size())
        return std::string_view::npos;
    for (size_t i = from; i + needle.size() <= haystack.size(); ++i) {
        size_t k = 0;
        while (k < needle.size() && LowerAscii(haystack[i + k]) == LowerAscii(needle[k]))
            ++k;
        if (k == needle.size())
            return i;
    }
    return std::string_view::npos;
}

bool ContainsNoCase(std::string_view haystack, std::string_view needle) {
    return FindNoCase(haystack, needle) != std::string_view::npos;
}

std::vector<std::string> Split(std::string_view s, char separator) {
    std::vector<std::string> parts;
    size_t pos = 0;
    while (true) {
        size_t hit = s.find(separator, pos);
        if (hit == std::string_view::npos) {
            parts.emplace_back(s.substr(pos));
            return parts;
        }
        parts.emplace_back(s.substr(pos, hit - pos));
        pos = hit + 1;
    }
}

std::string FormatSingle(float value) {
    if (value == 0)
        return "0"; // also for -0, which would otherwise read "-0"
    // Seven significant digits always read back to the same single. printf rather than
    // std::to_chars: the latter's tables for the shortest form are a fifth of the exe.
    char buf[32];
    const int n = std::snprintf(buf, sizeof buf, "%.7g", static_cast<double>(value));
    return std::string(buf, n > 0 ? static_cast<size_t>(n) : 0);
}

namespace {

// Digits with at most one full stop, at least one digit, then an optional exponent: what
// a person types as a number. strtod alone would take "0x1p3", "inf" and leading blanks.
bool IsPlainDecimal(std::string_view t) {
    size_t i = 0;
    if (i < t.size() && (t[i] == '-' || t[i] == '+'))
        ++i;
    size_t digits = 0;
    bool point = false;
    for (; i < t.size(); ++i) {
        if (t[i] >= '0' && t[i] <= '9')
            ++digits;
        else if (t[i] == '.' && !point)
            point = true;
        else
            break;
    }
    if (digits == 0)
        return false;
    if (i < t.size() && (t[i] == 'e' || t[i] == 'E')) {
        ++i;
        if (i < t.size() && (t[i] == '+' || t[i] == '-'))
            ++i;
        const size_t start = i;
        while (i < t.size() && t[i] >= '0' && t[i] <= '9')
            ++i;
        if (i == start)
            return false;
    }
    return i == t.size();
}

} // namespace

std::optional<double> ParseNumber(std::string_view text) {
    std::string t = Trim(text);
    if (t.empty())
        return std::nullopt;
    // One decimal separator, "." or ",": a file written where "," is the separator reads back.
    bool separatorSeen = false;
    for (char& c : t) {
        if (c == ',' || c == '.') {
            if (separatorSeen)
                return std::nullopt;
            separatorSeen = true;
            c = '.';
        }
    }
    if (!IsPlainDecimal(t))
        return std::nullopt;
    // The program never changes the C locale, so strtod reads "." as the separator.
    const double v = std::strtod(t.c_str(), nullptr);
    if (!std::isfinite(v))
        return std::nullopt;
    return v;
}

std::optional<float> ParseSingle(std::string_view text) {
    auto v = ParseNumber(text);
    if (!v)
        return std::nullopt;
    if (std::fabs(*v) > 3.4028234663852886e38)
        return std::nullopt; // beyond a single: an overflow, not a value
    return static_cast<float>(*v);
}

long long RoundHalfEven(double value) {
    return static_cast<long long>(std::nearbyint(value));
}

std::optional<int> ParseInteger16(std::string_view text) {
    auto v = ParseNumber(text);
    if (!v || *v < -32768.5 || *v > 32767.5)
        return std::nullopt;
    long long r = RoundHalfEven(*v);
    if (r < -32768 || r > 32767)
        return std::nullopt;
    return static_cast<int>(r);
}

} // namespace tolvane
