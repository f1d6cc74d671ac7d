#include "items/reg_backup_format.h"

#include <cstdio>

#include "text/code_page.h"
#include "text/strings.h"

namespace tolvane {

namespace {

constexpr uint32_t kRegSz = 1, kRegExpandSz = 2, kRegBinary = 3, kRegDword = 4, kRegMultiSz = 7;

std::string QuotedName(std::string_view name) {
    if (name.empty())
        return "@"; // the key's default value
    std::string quoted(1, '"');
    quoted += RegEscape(name);
    quoted += '"';
    return quoted;
}

// Bytes as "hex(n):aa,bb,..." with the editor's line continuation.
std::string HexData(uint32_t type, const std::vector<uint8_t>& data, size_t firstLineUsed) {
    std::string out = type == kRegBinary ? "hex:" : "hex(" + std::to_string(type) + "):";
    size_t column = firstLineUsed + out.size();
    for (size_t i = 0; i < data.size(); ++i) {
        out += HexPadded(data[i], 2);
        column += 2;
        if (i + 1 < data.size()) {
            out += ',';
            ++column;
            if (column > 76) {
                out += "\\\r\n  ";
                column = 2;
            }
        }
    }
    return out;
}

} // namespace

std::string RegKeyLine(RegistryRoot root) {
    switch (root) {
    case RegistryRoot::LocalMachine:
        return "[HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Windows\\CurrentVersion\\Run]";
    case RegistryRoot::LocalMachine32:
        return "[HKEY_LOCAL_"
               "MACHINE\\SOFTWARE\\WOW6432Node\\Microsoft\\Windows\\CurrentVersion\\Run]";
    default:
        return "[HKEY_CURRENT_USER\\Software\\Microsoft\\Windows\\CurrentVersion\\Run]";
    }
}

std::string RegEscape(std::string_view text) {
    // By whole characters: the registry editor reads the file as text of the code page, and a
    // "\" that is the second byte of a character there is no separator to double.
    return ReplaceAll(ReplaceAllCharacters(text, "\\", "\\\\"), "\"", "\\\"");
}

std::string RegValueLine(const BackupValue& value) {
    const std::string name = QuotedName(value.Name) + "=";
    if (value.Type == kRegSz)
        return name + "\"" + RegEscape(value.Text) + "\"";
    if (value.Type == kRegDword && value.Data.size() == 4) {
        const uint32_t v = value.Data[0] | value.Data[1] << 8 | value.Data[2] << 16 |
                           static_cast<uint32_t>(value.Data[3]) << 24;
        return name + "dword:" + HexPadded(v, 8);
    }
    if (value.Type == kRegExpandSz || value.Type == kRegMultiSz) {
        std::u16string text = value.Wide;
        text.push_back(u'\0');
        if (value.Type == kRegMultiSz)
            text.push_back(u'\0'); // the empty string that ends the list
        std::vector<uint8_t> bytes;
        bytes.reserve(text.size() * 2);
        for (char16_t unit : text) {
            bytes.push_back(static_cast<uint8_t>(unit & 0xff));
            bytes.push_back(static_cast<uint8_t>(unit >> 8));
        }
        return name + HexData(value.Type, bytes, name.size());
    }
    return name + HexData(value.Type, value.Data, name.size());
}

} // namespace tolvane
