#include "text/strings.h"

#include <charconv>
#include <cmath>

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
    char buf[64];
    auto res = std::to_chars(buf, buf + sizeof buf, value, std::chars_format::general, 7);
    return std::string(buf, res.ptr);
}

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
    const char* first = t.data();
    const char* last = t.data() + t.size();
    if (*first == '+')
        ++first;
    // from_chars takes no leading '+' and no bare "." or exponent without digits.
    double v = 0;
    auto res = std::from_chars(first, last, v, std::chars_format::general);
    if (res.ec != std::errc() || res.ptr != last)
        return std::nullopt;
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
