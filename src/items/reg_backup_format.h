// The lines of a ".reg" backup, as the registry editor and "reg import" read them back.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/registry.h"

namespace tolvane {

inline constexpr std::string_view kRegFileFirstLine = "Windows Registry Editor Version 5.00";
// The Run key's line, named as the registry editor names it: the machine's 32-bit view by its
// own path below WOW6432Node, where importing the file puts the value back for 32-bit programs.
std::string RegKeyLine(RegistryRoot root);

// Every "\" becomes "\\", then every quote "\"" (whole characters of the code page).
std::string RegEscape(std::string_view text);

struct BackupValue {
    std::string Name;
    uint32_t Type = 1;         // REG_SZ
    std::vector<uint8_t> Data; // as stored, for the types that are not text
    std::string Text;          // plain text (REG_SZ) in the code page, without its end NUL
    // Expandable text, or a multi-string's strings with a NUL between each two, in UTF-16 and
    // without the NULs that end them.
    std::u16string Wide;
};

// One value in an ANSI file: "name"="text" for plain text; for the other types the forms that
// bring back the type too: expandable and multi-string text as hex(2): and hex(7): of their
// UTF-16LE bytes with the ending NULs (the registry editor reads them so, whatever the file's
// code page), dword:, and hex(n): of the bytes otherwise.
std::string RegValueLine(const BackupValue& value);

} // namespace tolvane
