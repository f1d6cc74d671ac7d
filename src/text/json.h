// JSON (RFC 8259) in UTF-8: the quoted strings of the program's JSON output, and a strict reader
// for the files people write by hand, which tells where a fault is.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tolvane {

// The text as a JSON string: in quotes, with '"', '\' and the control characters escaped. The
// other bytes are passed through: the caller gives UTF-8.
std::string JsonText(std::string_view utf8);

struct JsonMember;

// A value read from a JSON text, and where it begins (a byte offset into the text), for
// messages that point at it.
struct JsonValue {
    enum class Type { Null, Boolean, Number, String, Array, Object };
    Type Kind = Type::Null;
    bool Boolean = false;
    double Number = 0;
    std::string Text;                // a string, in UTF-8
    std::vector<JsonValue> Items;    // an array's values
    std::vector<JsonMember> Members; // an object's, in the order written; no key twice
    size_t Offset = 0;
};
struct JsonMember {
    std::string Key;
    size_t KeyOffset = 0;
    JsonValue Value;
};

// "a string", "a number", "an object", ... for messages.
const char* JsonTypeName(JsonValue::Type type);

struct JsonRead {
    std::optional<JsonValue> Value;
    std::string Error; // a sentence saying what is wrong
    size_t Offset = 0; // the byte where it is
};
// One value with nothing but blanks after it. Faults, each at its place: bytes that are not
// UTF-8, a control character or an unknown escape in a string, a surrogate of UTF-16 without
// its pair, a number past the range of a double, a key twice in one object, and values nested
// deeper than maxDepth (so a hostile text cannot exhaust the stack).
JsonRead ReadJson(std::string_view text, size_t maxDepth = 32);

// The line and the column (both from 1) of a byte offset, the column counted in characters, a
// UTF-8 sequence once. A line ends at LF, CR LF or CR.
struct TextPlace {
    size_t Line = 1;
    size_t Column = 1;
};
TextPlace PlaceOf(std::string_view text, size_t offset);

} // namespace tolvane
