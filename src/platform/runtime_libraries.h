// Libraries that the program loads when it first needs them rather than at its start: the
// waiting log-on process then holds only what waiting needs (user32 and shell32), and the
// common controls and COM arrive with the window or the first launch.
#pragma once

#include <windows.h>
#include <commctrl.h>
#include <commdlg.h>

namespace tolvane {

// The module's function `name` as the type F; nullptr when the module or the function is not
// there.
template <class F> F ModuleFunction(HMODULE module, const char* name) {
    return module ? reinterpret_cast<F>(reinterpret_cast<void*>(GetProcAddress(module, name)))
                  : nullptr;
}

// The common controls (tree view, status bar, toolbar classes) registered for this process.
bool EnsureCommonControls();

// COM for this thread, as the shell needs it to open shortcuts. Stays until the process ends,
// or until a worker thread that is about to end lets go of it.
bool EnsureCom();
void LeaveCom();

// The image-list functions, from the common controls.
HIMAGELIST ImageListCreate(int cx, int cy, UINT flags, int initial, int grow);
int ImageListAddIcon(HIMAGELIST list, HICON icon);
bool ImageListDestroy(HIMAGELIST list);
// Makes a picture of the list its overlay number `overlay` (1 to 4).
bool ImageListSetOverlay(HIMAGELIST list, int image, int overlay);

// The common file dialog (comdlg32, which brings the common controls along); false when the
// user cancels or the dialog cannot be shown.
bool OpenFileDialog(OPENFILENAMEA* dialog);

} // namespace tolvane
