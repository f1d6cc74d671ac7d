#include "platform/runtime_libraries.h"

#include <objbase.h>

#include <utility>

namespace tolvane {

namespace {

HMODULE CommonControlsModule() {
    // The manifest asks for version 6; loading by name gets that version.
    static HMODULE module = LoadLibraryA("comctl32.dll");
    return module;
}

template <class F> F CommonControlsFunction(const char* name) {
    return ModuleFunction<F>(CommonControlsModule(), name);
}

// EnsureCom joined this thread to COM, and LeaveCom is to let go.
thread_local bool comJoined = false;

} // namespace

bool EnsureCommonControls() {
    static const bool ready = [] {
        using Init = BOOL(WINAPI*)(const INITCOMMONCONTROLSEX*);
        auto init = CommonControlsFunction<Init>("InitCommonControlsEx");
        INITCOMMONCONTROLSEX controls{sizeof controls, ICC_WIN95_CLASSES | ICC_BAR_CLASSES};
        return init && init(&controls);
    }();
    return ready;
}

bool EnsureCom() {
    thread_local const bool ready = [] {
        HMODULE ole = LoadLibraryA("ole32.dll");
        using Init = HRESULT(WINAPI*)(void*, DWORD);
        auto init = ModuleFunction<Init>(ole, "CoInitializeEx");
        if (!init)
            return false;
        const HRESULT hr = init(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE);
        comJoined = SUCCEEDED(hr);
        return SUCCEEDED(hr) || hr == RPC_E_CHANGED_MODE;
    }();
    return ready;
}

void LeaveCom() {
    if (!std::exchange(comJoined, false))
        return;
    using Leave = void(WINAPI*)();
    if (auto leave = ModuleFunction<Leave>(GetModuleHandleA("ole32.dll"), "CoUninitialize"))
        leave();
}

HIMAGELIST ImageListCreate(int cx, int cy, UINT flags, int initial, int grow) {
    using Create = HIMAGELIST(WINAPI*)(int, int, UINT, int, int);
    auto create = CommonControlsFunction<Create>("ImageList_Create");
    return create ? create(cx, cy, flags, initial, grow) : nullptr;
}

int ImageListAddIcon(HIMAGELIST list, HICON icon) {
    using Replace = int(WINAPI*)(HIMAGELIST, int, HICON);
    auto replace = CommonControlsFunction<Replace>("ImageList_ReplaceIcon");
    return replace ? replace(list, -1, icon) : -1;
}

bool ImageListDestroy(HIMAGELIST list) {
    using Destroy = BOOL(WINAPI*)(HIMAGELIST);
    auto destroy = CommonControlsFunction<Destroy>("ImageList_Destroy");
    return destroy && destroy(list);
}

bool ImageListSetOverlay(HIMAGELIST list, int image, int overlay) {
    using Set = BOOL(WINAPI*)(HIMAGELIST, int, int);
    auto set = CommonControlsFunction<Set>("ImageList_SetOverlayImage");
    return set && set(list, image, overlay);
}

bool OpenFileDialog(OPENFILENAMEA* dialog) {
    using Open = BOOL(WINAPI*)(OPENFILENAMEA*);
    static HMODULE module = LoadLibraryA("comdlg32.dll");
    const auto open = module ? reinterpret_cast<Open>(reinterpret_cast<void*>(
                                   GetProcAddress(module, "GetOpenFileNameA")))
                             : nullptr;
    return open && open(dialog);
}

} // namespace tolvane
