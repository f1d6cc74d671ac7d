// Registry keys as handles, for what needs a key held open: being told of its changes.
#pragma once

#include <string_view>

#include "platform/handles.h"
#include "platform/registry.h"

namespace tolvane {

// The key opened to be told of its changes (KEY_NOTIFY), in the root's view; none when it
// cannot be opened.
UniqueHKey OpenKeyToWatch(RegistryRoot root, std::string_view path);

} // namespace tolvane
