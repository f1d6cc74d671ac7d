// Typed-character filters for edit boxes: a box keeps only the characters its rule allows.
// Keys that type nothing (Delete, the arrows) are not characters and always reach the box.
#pragma once

#include <windows.h>

namespace tolvane {

using TypedKeyRule = bool (*)(char key);

// From now on the box drops every typed character the rule refuses. A character outside
// plain ASCII is never one the rules allow.
void FilterTypedKeys(HWND box, TypedKeyRule allowed);

} // namespace tolvane
