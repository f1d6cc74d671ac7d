// The owners of the Win32 handles the program uses. No other code closes a handle by hand.
#pragma once

#include <windows.h>
#include <commctrl.h>
#include <shlobj.h>

#include "platform/runtime_libraries.h"
#include "platform/unique_any.h"

namespace tolvane {

namespace handle_traits {
struct HKey {
    using Type = HKEY;
    static Type Invalid() { return nullptr; }
    static void Close(Type h) { RegCloseKey(h); }
};
struct Find {
    using Type = HANDLE;
    static Type Invalid() { return INVALID_HANDLE_VALUE; }
    static void Close(Type h) { FindClose(h); }
};
// Process, thread, mutex and event handles: "no handle" is NULL.
struct Kernel {
    using Type = HANDLE;
    static Type Invalid() { return nullptr; }
    static void Close(Type h) { CloseHandle(h); }
};
// File handles from CreateFile: "no handle" is INVALID_HANDLE_VALUE.
struct File {
    using Type = HANDLE;
    static Type Invalid() { return INVALID_HANDLE_VALUE; }
    static void Close(Type h) { CloseHandle(h); }
};
struct Menu {
    using Type = HMENU;
    static Type Invalid() { return nullptr; }
    static void Close(Type h) { DestroyMenu(h); }
};
struct Global {
    using Type = HGLOBAL;
    static Type Invalid() { return nullptr; }
    static void Close(Type h) { GlobalFree(h); }
};
struct Accelerators {
    using Type = HACCEL;
    static Type Invalid() { return nullptr; }
    static void Close(Type h) { DestroyAcceleratorTable(h); }
};
struct Icon {
    using Type = HICON;
    static Type Invalid() { return nullptr; }
    static void Close(Type h) { DestroyIcon(h); }
};
struct GdiObject {
    using Type = HGDIOBJ;
    static Type Invalid() { return nullptr; }
    static void Close(Type h) { DeleteObject(h); }
};
struct Dc {
    using Type = HDC;
    static Type Invalid() { return nullptr; }
    static void Close(Type h) { DeleteDC(h); }
};
struct ImageList {
    using Type = HIMAGELIST;
    static Type Invalid() { return nullptr; }
    static void Close(Type h) { ImageListDestroy(h); }
};
// Item ID lists from the shell, freed by the shell (which needs no COM for it).
struct Pidl {
    using Type = PIDLIST_ABSOLUTE;
    static Type Invalid() { return nullptr; }
    static void Close(Type h) { ILFree(h); }
};
// Modules loaded with LoadLibraryEx, for instance to read another file's resources.
struct Module {
    using Type = HMODULE;
    static Type Invalid() { return nullptr; }
    static void Close(Type h) { FreeLibrary(h); }
};
struct Window {
    using Type = HWND;
    static Type Invalid() { return nullptr; }
    static void Close(Type h) { DestroyWindow(h); }
};
} // namespace handle_traits

using UniqueHKey = UniqueAny<handle_traits::HKey>;
using UniqueFind = UniqueAny<handle_traits::Find>;
using UniqueHandle = UniqueAny<handle_traits::Kernel>;
using UniqueFile = UniqueAny<handle_traits::File>;
using UniqueMenu = UniqueAny<handle_traits::Menu>;
using UniqueIcon = UniqueAny<handle_traits::Icon>;
using UniqueGlobal = UniqueAny<handle_traits::Global>;
using UniqueAccelerators = UniqueAny<handle_traits::Accelerators>;
using UniqueGdiObject = UniqueAny<handle_traits::GdiObject>;
using UniqueDc = UniqueAny<handle_traits::Dc>;
using UniqueImageList = UniqueAny<handle_traits::ImageList>;
using UniquePidl = UniqueAny<handle_traits::Pidl>;
using UniqueModule = UniqueAny<handle_traits::Module>;
using UniqueWindow = UniqueAny<handle_traits::Window>;

// A window's painting, from BeginPaint to EndPaint. The DC belongs to the paint.
class PaintDc {
public:
    explicit PaintDc(HWND window) noexcept : window_(window), dc_(BeginPaint(window, &paint_)) {}
    ~PaintDc() { EndPaint(window_, &paint_); }
    PaintDc(const PaintDc&) = delete;
    PaintDc& operator=(const PaintDc&) = delete;
    HDC get() const noexcept { return dc_; }

private:
    HWND window_;
    PAINTSTRUCT paint_{};
    HDC dc_;
};

// A window's device context from GetDC, handed back to that window with ReleaseDC.
class WindowDc {
public:
    explicit WindowDc(HWND window) noexcept : window_(window), dc_(GetDC(window)) {}
    ~WindowDc() {
        if (dc_)
            ReleaseDC(window_, dc_);
    }
    WindowDc(const WindowDc&) = delete;
    WindowDc& operator=(const WindowDc&) = delete;
    HDC get() const noexcept { return dc_; }
    explicit operator bool() const noexcept { return dc_ != nullptr; }

private:
    HWND window_;
    HDC dc_;
};

// An object selected into a DC for a scope; what it replaced is selected again at the end, so
// that the object can be deleted afterwards.
class ScopedSelection {
public:
    ScopedSelection(HDC dc, HGDIOBJ object) noexcept : dc_(dc), old_(SelectObject(dc, object)) {}
    ~ScopedSelection() {
        if (old_ && old_ != HGDI_ERROR)
            SelectObject(dc_, old_);
    }
    ScopedSelection(const ScopedSelection&) = delete;
    ScopedSelection& operator=(const ScopedSelection&) = delete;

private:
    HDC dc_;
    HGDIOBJ old_;
};

} // namespace tolvane
