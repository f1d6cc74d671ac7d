// The one gate to the registry. Stateless: each operation opens its key, does one thing and
// closes it again. Absence reads as the caller's default; reads never fail loudly.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tolvane {

enum class RegistryRoot : uint32_t {
    ClassesRoot = 0x80000000u,
    CurrentUser = 0x80000001u,
    LocalMachine = 0x80000002u,
    // The machine's keys as 32-bit programs see them (KEY_WOW64_32KEY): on 64-bit Windows
    // their machine-wide Run values and the program's saved copies of them live there
    // (Software\WOW6432Node\...). Not a handle of its own: the same root, another view.
    LocalMachine32 = 0x80000002u | 0x0200u,
    // The machine's keys in their 64-bit view (KEY_WOW64_64KEY), whatever the process is: where
    // Group Policy writes the machine's policies.
    LocalMachine64 = 0x80000002u | 0x0100u,
};

inline constexpr const char* kRunKey = "Software\\Microsoft\\Windows\\CurrentVersion\\Run";

using ByteArray = std::vector<uint8_t>;

// A value exactly as stored: its type and its bytes (text types in UTF-16, as the registry
// keeps them).
struct RegistryValue {
    uint32_t Type = 0;
    ByteArray Data;
    bool operator==(const RegistryValue&) const = default;
};

// The text of a text value (REG_SZ, REG_EXPAND_SZ) in the code page, without the NULs at its
// end, as a listing shows it; "" for other types.
std::string ValueText(const RegistryValue& value);

// Key paths are given with "\" separators and no leading one; a trailing "\" names the same
// key. The write operations return whether the registry now holds what was asked: a write
// that did not happen must reach the user or the log, never pass unseen.
class CRegistry {
public:
    // True when the value is not there afterwards (a missing key or value counts as done).
    [[nodiscard]] bool DeleteValue(RegistryRoot root, std::string_view path, std::string_view name);

    // REG_SZ only, cut at its first NUL; anything else (REG_EXPAND_SZ included) is the default.
    std::string GetSettingString(RegistryRoot root, std::string_view path, std::string_view name,
                                 std::string_view defaultValue = "");
    // Stored as REG_SZ without a terminating NUL; "" is a zero-length value.
    [[nodiscard]] bool SaveSettingString(RegistryRoot root, std::string_view path,
                                         std::string_view name, std::string_view value);

    // The value with its type, for moves that must put back exactly what they took.
    std::optional<RegistryValue> GetValue(RegistryRoot root, std::string_view path,
                                          std::string_view name);
    // Every value of the key with its name, type and bytes (text types in UTF-16, as GetValue
    // reads them); empty when there are none or the key is missing.
    std::vector<std::pair<std::string, RegistryValue>> EnumValues(RegistryRoot root,
                                                                  std::string_view path);
    [[nodiscard]] bool SetValue(RegistryRoot root, std::string_view path, std::string_view name,
                                const RegistryValue& value);
    // When the key was last written (a value set or removed), as a FILETIME; nothing when the
    // key is missing.
    std::optional<uint64_t> LastWriteTime(RegistryRoot root, std::string_view path);
};

} // namespace tolvane
