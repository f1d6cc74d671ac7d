// The version that a module's version resource states, as the build wrote it there.
#pragma once

#include <windows.h>

#include <optional>

namespace tolvane {

struct ModuleVersion {
    unsigned Major = 0, Minor = 0, Revision = 0, Build = 0;
};

// The fixed file version of the module (nullptr: the running exe); nullopt when it has none.
std::optional<ModuleVersion> ReadModuleVersion(HMODULE module = nullptr);

} // namespace tolvane
