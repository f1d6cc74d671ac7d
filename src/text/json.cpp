#include "text/json.h"

#include <set>

#include "text/code_page.h"
#include "text/strings.h"

namespace tolvane {

std::string JsonText(std::string_view utf8) {
    std::string out = "\"";
    for (unsigned char c : utf8) {
        if (c == '"' || c == '\\') {
            out += '\\';
            out += static_cast<char>(c);
        } else if (c < 0x20) {
            out += "\\u" + HexPadded(c, 4);
        } else {
            out += static_cast<char>(c);
        }
    }
    return out + "\"";
}

const char* JsonTypeName(JsonValue::Type type) {
    switch (type) {
    case JsonValue::Type::Null:
        return "null";
    case JsonValue::Type::Boolean:
        return "true or false";
    case JsonValue::Type::Number:
        return "a number";
    case JsonValue::Type::String:
        return "a string";
    case JsonValue::Type::Array:
        return "a list in [ ]";
    case JsonValue::Type::Object:
        return "an object in { }";
    }
    return "";
}

namespace {

// Thrown inside the reader only, caught by ReadJson.
struct Fault {
    std::string Error;
    size_t Offset;
};

bool IsBlank(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

// "U+000A", "0xE9": upper-case hex digits, as people write them.
std::string UpperHex(unsigned value, size_t width) {
    std::string hex = HexPadded(value, width);
    for (char& h : hex)
        if (h >= 'a' && h <= 'f')
            h = static_cast<char>(h - 'a' + 'A');
    return hex;
}

void AppendUtf8(std::string& out, char32_t c) {
    if (c < 0x80) {
        out += static_cast<char>(c);
    } else if (c < 0x800) {
        out += static_cast<char>(0xC0 | c >> 6);
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        out += static_cast<char>(0xE0 | c >> 12);
        out += static_cast<char>(0x80 | (c >> 6 & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | c >> 18);
        out += static_cast<char>(0x80 | (c >> 12 & 0x3F));
        out += static_cast<char>(0x80 | (c >> 6 & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
}

class Reader {
public:
    Reader(std::string_view text, size_t maxDepth) : s_(text), maxDepth_(maxDepth) {}

    JsonValue Document() {
        SkipBlanks();
        if (at_ == s_.size())
            throw Fault{"the text holds no value", at_};
        JsonValue v = Value(0);
        SkipBlanks();
        if (at_ != s_.size())
            throw Fault{"unexpected " + Shown() + " after the end of the value", at_};
        return v;
    }

private:
    void SkipBlanks() {
        while (at_ < s_.size() && IsBlank(s_[at_]))
            ++at_;
    }

    // The character at the reading place, for messages.
    std::string Shown() const {
        if (at_ == s_.size())
            return "end of the text";
        const unsigned char c = static_cast<unsigned char>(s_[at_]);
        if (c < 0x20 || c == 0x7F)
            return "control character U+" + UpperHex(c, 4);
        return "\"" + std::string(s_.substr(at_, CharacterLength(s_, at_, kUtf8CodePage))) + "\"";
    }

    // The character next after blanks, taken when it is that one.
    bool Take(char c) {
        SkipBlanks();
        if (at_ == s_.size() || s_[at_] != c)
            return false;
        ++at_;
        return true;
    }

    void Expect(char c, const char* what) {
        if (!Take(c))
            throw Fault{std::string("expected ") + what + ", found " + Shown(), at_};
    }

    JsonValue Value(size_t depth) {
        SkipBlanks();
        JsonValue v;
        v.Offset = at_;
        const char c = at_ < s_.size() ? s_[at_] : '\0';
        if (c == '{' || c == '[') {
            if (depth == maxDepth_)
                throw Fault{"the values nest deeper than " + std::to_string(maxDepth_) + " levels",
                            at_};
            if (c == '{')
                Object(v, depth + 1);
            else
                Array(v, depth + 1);
        } else if (c == '"') {
            v.Kind = JsonValue::Type::String;
            v.Text = String();
        } else if (c == '-' || IsDigit(c)) {
            v.Kind = JsonValue::Type::Number;
            v.Number = Number();
        } else if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z')) {
            size_t end = at_;
            while (end < s_.size() && ((s_[end] >= 'a' && s_[end] <= 'z') ||
                                       (s_[end] >= 'A' && s_[end] <= 'Z') || IsDigit(s_[end])))
                ++end;
            const std::string_view word = s_.substr(at_, end - at_);
            if (word == "true" || word == "false") {
                v.Kind = JsonValue::Type::Boolean;
                v.Boolean = word == "true";
            } else if (word != "null") {
                throw Fault{"\"" + std::string(word) +
                                "\" is no value: a text needs quotes, and only true, false and "
                                "null are written without",
                            at_};
            }
            at_ = end;
        } else {
            throw Fault{"expected a value, found " + Shown(), at_};
        }
        return v;
    }

    void Object(JsonValue& v, size_t depth) {
        v.Kind = JsonValue::Type::Object;
        ++at_;
        if (Take('}'))
            return;
        std::set<std::string> keys;
        for (;;) {
            SkipBlanks();
            if (at_ == s_.size() || s_[at_] != '"')
                throw Fault{"expected a key in quotes, found " + Shown(), at_};
            JsonMember m;
            m.KeyOffset = at_;
            m.Key = String();
            if (!keys.insert(m.Key).second)
                throw Fault{"the key \"" + m.Key + "\" is given twice in this object", m.KeyOffset};
            Expect(':', "\":\" after the key");
            m.Value = Value(depth);
            v.Members.push_back(std::move(m));
            if (Take(','))
                continue;
            Expect('}', "\",\" or \"}\"");
            return;
        }
    }

    void Array(JsonValue& v, size_t depth) {
        v.Kind = JsonValue::Type::Array;
        ++at_;
        if (Take(']'))
            return;
        for (;;) {
            v.Items.push_back(Value(depth));
            if (Take(','))
                continue;
            Expect(']', "\",\" or \"]\"");
            return;
        }
    }

    // Four hex digits after "\u", at the backslash.
    char32_t Unit(size_t backslash) {
        if (s_.size() - at_ < 4)
            throw Fault{"\\u needs four hex digits", backslash};
        char32_t unit = 0;
        for (size_t i = 0; i < 4; ++i) {
            const char h = s_[at_ + i];
            const int d = IsDigit(h)             ? h - '0'
                          : h >= 'a' && h <= 'f' ? h - 'a' + 10
                          : h >= 'A' && h <= 'F' ? h - 'A' + 10
                                                 : -1;
            if (d < 0)
                throw Fault{"\\u needs four hex digits", backslash};
            unit = unit << 4 | static_cast<char32_t>(d);
        }
        at_ += 4;
        return unit;
    }

    // The character of "\uXXXX", or of a pair of them for a character past U+FFFF.
    std::string Escaped(size_t backslash) {
        char32_t unit = Unit(backslash);
        if (unit >= 0xD800 && unit <= 0xDFFF) {
            char32_t low = 0;
            if (unit < 0xDC00 && s_.substr(at_, 2) == "\\u") {
                at_ += 2;
                low = Unit(at_ - 2);
            }
            if (low < 0xDC00 || low > 0xDFFF)
                throw Fault{"\\u" + std::string(s_.substr(backslash + 2, 4)) +
                                " is half of a UTF-16 pair without its other half",
                            backslash};
            unit = 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
        }
        std::string out;
        AppendUtf8(out, unit);
        return out;
    }

    std::string String() {
        const size_t open = at_++;
        std::string out;
        for (;;) {
            if (at_ == s_.size())
                throw Fault{"this text has no closing quote", open};
            const unsigned char c = static_cast<unsigned char>(s_[at_]);
            if (c == '"') {
                ++at_;
                return out;
            }
            if (c < 0x20)
                throw Fault{Shown() + " must be written as an escape such as \\n or \\t", at_};
            if (c != '\\') {
                out += static_cast<char>(c);
                ++at_;
                continue;
            }
            const size_t backslash = at_++;
            if (at_ == s_.size())
                throw Fault{"this text has no closing quote", open};
            static constexpr std::string_view kFrom = "\"\\/bfnrt", kTo = "\"\\/\b\f\n\r\t";
            const char e = s_[at_];
            if (const size_t k = kFrom.find(e); k != std::string_view::npos) {
                out += kTo[k];
                ++at_;
            } else if (e == 'u') {
                ++at_;
                out += Escaped(backslash);
            } else {
                throw Fault{"\"\\\" followed by " + Shown() +
                                " is no escape; a backslash itself is written \"\\\\\"",
                            backslash};
            }
        }
    }

    double Number() {
        const size_t start = at_;
        auto digits = [&](const char* after) {
            if (at_ == s_.size() || !IsDigit(s_[at_]))
                throw Fault{std::string("a number needs a digit after ") + after, at_};
            while (at_ < s_.size() && IsDigit(s_[at_]))
                ++at_;
        };
        if (s_[at_] == '-')
            ++at_;
        if (at_ < s_.size() && s_[at_] == '0' && at_ + 1 < s_.size() && IsDigit(s_[at_ + 1]))
            throw Fault{"a number cannot begin with 0 and more digits", start};
        digits(at_ > start ? "\"-\"" : "its start");
        if (at_ < s_.size() && s_[at_] == '.') {
            ++at_;
            digits("\".\"");
        }
        if (at_ < s_.size() && (s_[at_] == 'e' || s_[at_] == 'E')) {
            ++at_;
            if (at_ < s_.size() && (s_[at_] == '+' || s_[at_] == '-'))
                ++at_;
            digits("its exponent");
        }
        const std::optional<double> n = ParseNumber(s_.substr(start, at_ - start));
        if (!n)
            throw Fault{"the number is too large", start};
        return *n;
    }

    std::string_view s_;
    size_t maxDepth_;
    size_t at_ = 0;
};

} // namespace

JsonRead ReadJson(std::string_view text, size_t maxDepth) {
    if (const size_t bad = Utf8FaultAt(text); bad != std::string_view::npos)
        return {std::nullopt,
                "the byte 0x" + UpperHex(static_cast<unsigned char>(text[bad]), 2) +
                    " begins no UTF-8 character: the file must be saved as UTF-8",
                bad};
    try {
        return {Reader(text, maxDepth).Document(), "", 0};
    } catch (const Fault& f) {
        return {std::nullopt, f.Error, f.Offset};
    }
}

TextPlace PlaceOf(std::string_view text, size_t offset) {
    TextPlace p;
    for (size_t i = 0; i < offset && i < text.size(); ++i) {
        const char c = text[i];
        if (c == '\n' || (c == '\r' && (i + 1 == text.size() || text[i + 1] != '\n'))) {
            ++p.Line;
            p.Column = 1;
        } else if (c != '\r' && (static_cast<unsigned char>(c) & 0xC0) != 0x80) {
            ++p.Column;
        }
    }
    return p;
}

} // namespace tolvane
