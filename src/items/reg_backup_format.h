// The lines of a ".reg" backup, as the registry editor and "reg import" read them back.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tolvane {

inline constexpr std::string_view kRegFileFirstLine = "Windows Registry Editor Version 5.00";
std::string RegKeyLine(bool machine);

// Every "\" becomes "\\", then every quote "\"".
std::string RegEscape(std::string_view text);

struct BackupValue {
    std::string Name;
    uint32_t Type = 1;         // REG_SZ
    std::vector<uint8_t> Data; // as stored, for the types that are not text
    std::string Text;          // the data of a text type in the code page, without its end NUL
};

// One value in an ANSI file: "name"="text" for plain text; for the other types the forms that
// bring back the type too: expandable and multi-string text as hex(2): and hex(7): of their
// code-page bytes (how an ANSI file holds them), dword:, and hex(n): of the bytes otherwise.
std::string RegValueLine(const BackupValue& value);

} // namespace tolvane
