#include "text/strings.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <vector>

namespace tolvane {

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

std::string Tenths(uint64_t value, uint64_t unit, std::string_view decimal) {
    const uint64_t tenths = (value * 10 + unit / 2) / unit;
    return std::to_string(tenths / 10) + std::string(decimal) + std::to_string(tenths % 10);
}

std::string ZeroPadded(unsigned long long value, size_t width) {
    std::string digits;
    do {
        digits.insert(digits.begin(), static_cast<char>('0' + value % 10));
        value /= 10;
    } while (value != 0);
    if (digits.size() < width)
        digits.insert(0, width - digits.size(), '0');
    return digits;
}

std::string HexPadded(unsigned long long value, size_t width) {
    static const char kHex[] = "0123456789abcdef";
    std::string digits;
    do {
        digits.insert(digits.begin(), kHex[value & 15]);
        value >>= 4;
    } while (value != 0);
    if (digits.size() < width)
        digits.insert(0, width - digits.size(), '0');
    return digits;
}

namespace {

// The exact decimal digits of a single's magnitude (no leading zeros) and the power of ten of
// the last one: a single is a whole number of 24 bits times a power of two, and that is a whole
// number of decimal digits times a power of ten, which a small number in base 10^9 works out.
void ExactDecimal(float value, std::string& digits, int& lastExponent) {
    uint32_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    const uint32_t biased = (bits >> 23) & 0xFF, fraction = bits & 0x7FFFFF;
    const uint32_t whole = biased == 0 ? fraction : (fraction | 0x800000);
    const int exponent = biased == 0 ? -149 : static_cast<int>(biased) - 150;
    constexpr uint32_t kBase = 1000000000;
    std::vector<uint32_t> number{whole % kBase, whole / kBase}; // little-endian
    auto times = [&](uint32_t factor) {
        uint64_t carry = 0;
        for (uint32_t& part : number) {
            const uint64_t x = static_cast<uint64_t>(part) * factor + carry;
            part = static_cast<uint32_t>(x % kBase);
            carry = x / kBase;
        }
        if (carry != 0)
            number.push_back(static_cast<uint32_t>(carry));
    };
    // whole * 2^exponent; with a negative exponent, whole * 5^-exponent / 10^-exponent.
    for (int i = 0; i < (exponent < 0 ? -exponent : exponent); ++i)
        times(exponent < 0 ? 5 : 2);
    lastExponent = exponent < 0 ? exponent : 0;
    while (number.size() > 1 && number.back() == 0)
        number.pop_back();
    digits = std::to_string(number.back());
    for (size_t i = number.size() - 1; i-- > 0;)
        digits += ZeroPadded(number[i], 9);
}

} // namespace

std::string FormatSingle(float value) {
    if (value == 0)
        return "0"; // also for -0, which would otherwise read "-0"
    if (value != value)
        return "nan";
    const std::string sign = value < 0 ? "-" : "";
    if (value > 3.4028235e38f || value < -3.4028235e38f)
        return sign + "inf";
    // Seven significant digits, as printf's "%.7g" writes them: they always read back to the
    // same single. Worked out here rather than by printf, whose float machinery would come
    // into the exe with it, or by std::to_chars, whose tables are a fifth of the exe.
    constexpr size_t kSignificant = 7;
    std::string digits;
    int last = 0;
    ExactDecimal(value, digits, last);
    if (digits.size() > kSignificant) {
        // Rounded half to even on the exact value, as printf rounds.
        const char next = digits[kSignificant];
        const bool beyond = digits.find_first_not_of('0', kSignificant + 1) != std::string::npos;
        const bool up =
            next > '5' || (next == '5' && (beyond || (digits[kSignificant - 1] - '0') % 2));
        last += static_cast<int>(digits.size() - kSignificant);
        digits.resize(kSignificant);
        if (up) {
            size_t i = kSignificant;
            while (i > 0 && digits[i - 1] == '9')
                digits[--i] = '0';
            if (i == 0) {
                digits.insert(digits.begin(), '1');
                digits.pop_back();
                ++last;
            } else {
                ++digits[i - 1];
            }
        }
    }
    while (digits.size() > 1 && digits.back() == '0') {
        digits.pop_back();
        ++last;
    }
    const int first = last + static_cast<int>(digits.size()) - 1; // the power of the first digit
    if (first < -4 || first >= static_cast<int>(kSignificant)) {
        std::string out = sign + digits.substr(0, 1);
        if (digits.size() > 1)
            out += "." + digits.substr(1);
        out += first < 0 ? "e-" : "e+";
        return out + ZeroPadded(static_cast<unsigned>(first < 0 ? -first : first), 2);
    }
    if (last >= 0)
        return sign + digits + std::string(static_cast<size_t>(last), '0');
    const int whole = static_cast<int>(digits.size()) + last; // digits before the point
    if (whole > 0)
        return sign + digits.substr(0, static_cast<size_t>(whole)) + "." +
               digits.substr(static_cast<size_t>(whole));
    return sign + "0." + std::string(static_cast<size_t>(-whole), '0') + digits;
}

namespace {

// A number as a person types it, read digit by digit: a sign, digits with at most one full
// stop (at least one digit), then an optional exponent. Nothing else: no "0x1p3", no "inf",
// no blanks. The value is its first 19 significant digits and a power of ten.
struct DecimalText {
    bool Negative = false;
    uint64_t Digits = 0;  // the significant digits, at most 19
    long Exponent = 0;    // the value is Digits times ten to this
    bool Inexact = false; // digits beyond the 19th were dropped (not all zeros)
};

std::optional<DecimalText> ReadDecimal(std::string_view t) {
    DecimalText d;
    size_t i = 0;
    if (i < t.size() && (t[i] == '-' || t[i] == '+'))
        d.Negative = t[i++] == '-';
    size_t digits = 0, kept = 0;
    bool point = false;
    for (; i < t.size(); ++i) {
        const char c = t[i];
        if (c == '.' && !point) {
            point = true;
            continue;
        }
        if (c < '0' || c > '9')
            break;
        ++digits;
        if (kept == 0 && c == '0') {
            if (point)
                --d.Exponent; // a leading zero after the stop only moves the point
            continue;
        }
        if (kept < 19) {
            d.Digits = d.Digits * 10 + static_cast<uint64_t>(c - '0');
            ++kept;
            if (point)
                --d.Exponent;
        } else {
            d.Inexact = d.Inexact || c != '0';
            if (!point)
                ++d.Exponent;
        }
    }
    if (digits == 0)
        return std::nullopt;
    if (i < t.size() && (t[i] == 'e' || t[i] == 'E')) {
        ++i;
        bool negative = false;
        if (i < t.size() && (t[i] == '+' || t[i] == '-'))
            negative = t[i++] == '-';
        const size_t start = i;
        long e = 0;
        for (; i < t.size() && t[i] >= '0' && t[i] <= '9'; ++i)
            e = std::min(e * 10 + (t[i] - '0'), 100000L); // far beyond any double already
        if (i == start)
            return std::nullopt;
        d.Exponent += negative ? -e : e;
    }
    if (i != t.size())
        return std::nullopt;
    return d;
}

// Ten to the power, exactly up to 10^27 in the extended format, by squaring beyond.
long double PowerOfTen(long n) {
    long double result = 1, base = 10;
    for (; n > 0; n >>= 1, base *= base)
        if (n & 1)
            result *= base;
    return result;
}

double ToDouble(const DecimalText& d) {
    if (d.Digits == 0)
        return d.Negative ? -0.0 : 0.0;
    double v;
    if (!d.Inexact && d.Digits <= (uint64_t(1) << 53) && d.Exponent >= -22 && d.Exponent <= 22) {
        // Both operands exact in a double: one correctly rounded step, as strtod rounds.
        constexpr double kPowers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                      1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                      1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
        const double m = static_cast<double>(d.Digits);
        v = d.Exponent >= 0 ? m * kPowers[d.Exponent] : m / kPowers[-d.Exponent];
    } else if (d.Exponent > 400) {
        v = HUGE_VAL;
    } else if (d.Exponent < -400) {
        v = 0;
    } else {
        // Beyond that, the extended format's eleven further bits keep the error far below
        // what a double can show, but at the rarest of halfway points.
        const long double m = static_cast<long double>(d.Digits);
        const long double p = PowerOfTen(d.Exponent >= 0 ? d.Exponent : -d.Exponent);
        const long double x = d.Exponent >= 0 ? m * p : m / p;
        v = x > static_cast<long double>(DBL_MAX) ? HUGE_VAL : static_cast<double>(x);
    }
    return d.Negative ? -v : v;
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
    // Read here rather than by strtod: that brings the C library's whole reading of hex
    // and special numbers into the exe, a twentieth of its size, for a delay in seconds.
    const std::optional<DecimalText> decimal = ReadDecimal(t);
    if (!decimal)
        return std::nullopt;
    const double v = ToDouble(*decimal);
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
