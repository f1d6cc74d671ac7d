#include "platform/version_info.h"

#include <cstring>

namespace tolvane {

std::optional<ModuleVersion> ReadModuleVersion(HMODULE module) {
    if (!module)
        module = GetModuleHandleA(nullptr);
    // The resource itself rather than the version library: the waiting log-on process never
    // needs that library, and the module's own resource is what the build wrote.
    HRSRC found = FindResourceA(module, MAKEINTRESOURCEA(VS_VERSION_INFO), RT_VERSION);
    HGLOBAL loaded = found ? LoadResource(module, found) : nullptr;
    const auto* block = loaded ? static_cast<const unsigned char*>(LockResource(loaded)) : nullptr;
    const DWORD size = found ? SizeofResource(module, found) : 0;
    // VS_VERSIONINFO: three WORDs, the key L"VS_VERSION_INFO" with its terminator, padding to a
    // DWORD boundary, then the fixed file information.
    constexpr size_t kFixedOffset = (3 * sizeof(WORD) + 16 * sizeof(WCHAR) + 3) & ~size_t{3};
    if (!block || size < kFixedOffset + sizeof(VS_FIXEDFILEINFO))
        return std::nullopt;
    VS_FIXEDFILEINFO fixed{};
    std::memcpy(&fixed, block + kFixedOffset, sizeof fixed);
    if (fixed.dwSignature != VS_FFI_SIGNATURE)
        return std::nullopt;
    // The build writes major, minor, revision and build, in that order.
    return ModuleVersion{HIWORD(fixed.dwFileVersionMS), LOWORD(fixed.dwFileVersionMS),
                         HIWORD(fixed.dwFileVersionLS), LOWORD(fixed.dwFileVersionLS)};
}

} // namespace tolvane
