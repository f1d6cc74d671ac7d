// Task Manager's switch for startup items. Switching an item off in Task Manager (or in
// Settings' "Startup apps") leaves the item where it is and writes a flag beside it instead, a
// 12-byte binary value named like the Run value or the shortcut's file name: the first byte's
// lowest bit set (03, 07) means switched off, cleared (02, 06) means on; bytes 4 to 11 hold the
// time of the change as a FILETIME. Windows does not start an item whose flag is off.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/registry.h"
#include "text/strings.h"

namespace tolvane {

// Where the flags live, under the current user's root for the current user's items and under the
// machine's for all users' ones: Run for the Run keys (the machine's 64-bit one), Run32 for the
// machine's 32-bit Run key, StartupFolder for the shortcuts of the Startup folders.
inline constexpr const char* kApprovedRunKey =
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\StartupApproved\\Run";
inline constexpr const char* kApprovedRun32Key =
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\StartupApproved\\Run32";
inline constexpr const char* kApprovedFolderKey =
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\StartupApproved\\StartupFolder";

inline constexpr uint32_t kBinaryType = 3; // REG_BINARY
inline constexpr size_t kApprovedFlagSize = 12;

// The flag keeps the item from starting: a binary value whose first byte has its lowest bit
// set. A value of another type or without bytes is none that Task Manager writes: it switches
// nothing off. A value shorter than 12 bytes still holds the switch in its first byte.
bool SwitchedOff(uint32_t type, const std::vector<uint8_t>& data);

// The flag switched on at the given time (a FILETIME, 100 ns since 1601): the first byte 02,
// bytes 4 to 11 the time; bytes 1 to 3 and any after the twelfth stay. A shorter value is made
// 12 bytes long.
std::vector<uint8_t> SwitchedOnFlag(std::vector<uint8_t> data, uint64_t fileTime);

// The names whose flag in one key is off, compared as the registry and the file system compare
// names: in the order the platform gives (CDirStruct::CompareNames), which folds letter case as
// Windows does. An empty set without an order knows no name.
class SwitchedOffNames {
public:
    SwitchedOffNames() = default;
    SwitchedOffNames(const std::vector<std::pair<std::string, RegistryValue>>& values,
                     NameOrder order);
    bool Contains(std::string_view name) const;
    bool Empty() const { return names_.empty(); }

private:
    struct Less {
        NameOrder Order = nullptr;
        using is_transparent = void;
        bool operator()(std::string_view a, std::string_view b) const { return Order(a, b) < 0; }
    };
    std::set<std::string, Less> names_;
};

} // namespace tolvane
