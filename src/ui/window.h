// The one base of the program's windows. It registers the window class once, ties the window to
// its object at WM_NCCREATE and unties it at WM_NCDESTROY, and hands every message to the
// object's HandleMessage(hwnd, message, wParam, lParam) through one thunk that lets no failure
// out of the window procedure: a failure is logged, and the message gets the default handling.
//
// A window belongs to its parent: a child is destroyed with it, and its object only learns of
// that (Hwnd() is nullptr afterwards). An object that outlives its window is harmless; a
// window whose object goes first is destroyed by the object.
#pragma once

#include <windows.h>

#include <exception>
#include <string>

#include "platform/event_log.h"

namespace tolvane {

// Where a window or dialog procedure reports what it caught: a log line after the window's own
// prefix ("Startup Items Error! Reported: "), or nothing without a log.
class FailureLog {
public:
    FailureLog(const EventLog* log, std::string prefix) : log_(log), prefix_(std::move(prefix)) {}
    void operator()(const char* what) const noexcept {
        try {
            if (log_)
                log_->WriteLog(prefix_ + what, kLogError);
        } catch (...) {
        }
    }

private:
    const EventLog* log_;
    std::string prefix_;
};

// Pictures that stay crisp: the small-icon size for the window's screen density.
inline int SmallIconSize(HWND window) {
    const UINT dpi = window ? GetDpiForWindow(window) : 0;
    return dpi ? GetSystemMetricsForDpi(SM_CXSMICON, dpi) : GetSystemMetrics(SM_CXSMICON);
}

template <class T> class Window {
public:
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    HWND Hwnd() const { return hwnd_; }

protected:
    // Failures are logged to the log, if any, after the prefix ("Startup Items Error! Reported: ").
    Window(const EventLog* log, std::string failurePrefix)
        : failed_(log, std::move(failurePrefix)) {}
    ~Window() {
        if (hwnd_) {
            SetWindowLongPtrA(hwnd_, GWLP_USERDATA, 0);
            DestroyWindow(hwnd_);
        }
    }

    // Makes the window of class T::kClassName, registered on first use with T::ClassStyle (a
    // function that may set the icon, the cursor, the background). Null when it cannot be made.
    HWND Create(HINSTANCE instance, DWORD exStyle, const char* title, DWORD style, int x, int y,
                int width, int height, HWND parent, HMENU menuOrId = nullptr) {
        if (!Register(instance))
            return nullptr;
        return CreateWindowExA(exStyle, T::kClassName, title, style, x, y, width, height, parent,
                               menuOrId, instance, static_cast<T*>(this));
    }

private:
    static bool Register(HINSTANCE instance) {
        WNDCLASSEXA wc{sizeof wc};
        if (GetClassInfoExA(instance, T::kClassName, &wc))
            return true;
        wc = WNDCLASSEXA{sizeof wc};
        wc.lpfnWndProc = &Window::Thunk;
        wc.hInstance = instance;
        wc.hCursor = LoadCursorA(nullptr, MAKEINTRESOURCEA(32512)); // the arrow
        wc.lpszClassName = T::kClassName;
        T::ClassStyle(wc);
        return RegisterClassExA(&wc) != 0 || GetLastError() == ERROR_CLASS_ALREADY_EXISTS;
    }

    static LRESULT CALLBACK Thunk(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
        if (message == WM_NCCREATE) {
            auto* self = static_cast<T*>(reinterpret_cast<CREATESTRUCTA*>(lParam)->lpCreateParams);
            static_cast<Window*>(self)->hwnd_ = hwnd;
            SetWindowLongPtrA(hwnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(self));
        }
        auto* self = reinterpret_cast<T*>(GetWindowLongPtrA(hwnd, GWLP_USERDATA));
        if (!self)
            return DefWindowProcA(hwnd, message, wParam, lParam);
        Window& base = *self;
        if (message == WM_NCDESTROY) {
            SetWindowLongPtrA(hwnd, GWLP_USERDATA, 0);
            base.hwnd_ = nullptr;
        }
        try {
            if (message == WM_DPICHANGED && !(GetWindowLongA(hwnd, GWL_STYLE) & WS_CHILD)) {
                // A window moved to a screen of another density takes the size Windows
                // suggests for it there.
                const RECT* r = reinterpret_cast<const RECT*>(lParam);
                SetWindowPos(hwnd, nullptr, r->left, r->top, r->right - r->left, r->bottom - r->top,
                             SWP_NOZORDER | SWP_NOACTIVATE);
            }
            return self->HandleMessage(hwnd, message, wParam, lParam);
        } catch (const std::exception& e) {
            base.failed_(e.what());
        } catch (...) {
            base.failed_("unknown failure");
        }
        return DefWindowProcA(hwnd, message, wParam, lParam);
    }

    HWND hwnd_ = nullptr;
    FailureLog failed_;
};

} // namespace tolvane
