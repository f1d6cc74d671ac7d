// The characters of the system's ANSI code page. On Japanese, Chinese and Korean Windows a
// character may take two bytes, and the second byte of many of them is a "\" or a "_" (the
// Shift-JIS katakana "so" is 83 5C): a plain byte scan for a separator cuts such a character
// in half and takes a wrong folder. The rules here step over whole characters instead.
// Free of the platform: the entry tells them the code page once.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tolvane {

// UTF-8, the program's own code page wherever Windows honours its manifest: every name of every
// language fits, and no byte of a character of two to four bytes is below 0x80, so the rules for
// separators need no care there.
inline constexpr unsigned kUtf8CodePage = 65001;
// The code page of the texts until the entry sets the process's own.
inline constexpr unsigned kDefaultCodePage = kUtf8CodePage;

// Whether the byte begins a two-byte character: in 932 the bytes 0x81-0x9F and 0xE0-0xFC, in
// 936, 949 and 950 the bytes 0x81-0xFE; in every other code page none.
bool IsLeadByte(unsigned codePage, unsigned char byte);

// The system's ANSI code page, in which every path, name and file of the program is written.
void SetActiveCodePage(unsigned codePage);
unsigned ActiveCodePage();

// Whether the bytes are well-formed UTF-8 (no overlong form, no surrogate, nothing past
// U+10FFFF). Plain ASCII is.
bool IsUtf8(std::string_view bytes);
// Where the first byte is that no well-formed UTF-8 character begins with; npos when none.
size_t Utf8FaultAt(std::string_view bytes);
// The text without a UTF-8 byte-order mark in front.
std::string_view WithoutUtf8Mark(std::string_view text);

// The bytes of the character that begins at `at`: in UTF-8 its whole sequence; otherwise two
// after a lead byte, one otherwise (also for a lead byte that ends the text). A broken sequence
// counts one byte a character.
size_t CharacterLength(std::string_view s, size_t at, unsigned codePage = ActiveCodePage());

// The longest start of the text of at most `bytes` bytes that ends where a character ends.
std::string_view CutAtCharacter(std::string_view s, size_t bytes,
                                unsigned codePage = ActiveCodePage());

// The position of the last character that is one of `characters` (single-byte characters),
// or npos. A trail byte of the same value is not that character.
size_t FindLastCharacterOf(std::string_view s, std::string_view characters,
                           unsigned codePage = ActiveCodePage());

// Whether the last character of the text is `c`.
bool EndsWithCharacter(std::string_view s, char c, unsigned codePage = ActiveCodePage());

// Every occurrence of `from` (whole characters) that begins where a character begins, left to
// right without overlap; an empty pattern changes nothing.
std::string ReplaceAllCharacters(std::string_view s, std::string_view from, std::string_view to,
                                 unsigned codePage = ActiveCodePage());

} // namespace tolvane
