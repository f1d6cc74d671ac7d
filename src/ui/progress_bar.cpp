#include "ui/progress_bar.h"

#include <commctrl.h>

#include <array>

namespace tolvane {

namespace {

constexpr const char* kClassName = "TolvaneAdvProgressBar";

// The class is registered on first use and stays for the life of the process.
bool RegisterClassOnce(WNDPROC procedure) {
    static const bool registered = [procedure] {
        WNDCLASSA wc{};
        // Any change of size repaints all of it: the scale stretches over the whole width.
        wc.style = CS_HREDRAW | CS_VREDRAW;
        wc.lpfnWndProc = procedure;
        wc.hInstance = GetModuleHandleA(nullptr);
        wc.hCursor = LoadCursorA(nullptr, MAKEINTRESOURCEA(32512)); // the arrow
        wc.lpszClassName = kClassName;
        return RegisterClassA(&wc) != 0 || GetLastError() == ERROR_CLASS_ALREADY_EXISTS;
    }();
    return registered;
}

bool IsStatusBar(HWND window) {
    std::array<char, 64> name{};
    if (!window || GetClassNameA(window, name.data(), static_cast<int>(name.size())) == 0)
        return false;
    return lstrcmpiA(name.data(), STATUSCLASSNAMEA) == 0;
}

} // namespace

AdvProgressBar::AdvProgressBar(HWND container) : parent_(container) {
    if (!RegisterClassOnce(&AdvProgressBar::WindowProc))
        return;
    // The window learns its object in WM_NCCREATE, before any message needs it.
    CreateWindowExA(0, kClassName, "", WS_CHILD | WS_VISIBLE | WS_CLIPSIBLINGS, 0, 0, 0, 0,
                    container, nullptr, GetModuleHandleA(nullptr), this);
}

Colour AdvProgressBar::DrawingColour() {
    return GetSysColor(COLOR_HIGHLIGHT);
}

Colour AdvProgressBar::BackgroundColour() {
    return GetSysColor(COLOR_BTNFACE);
}

void AdvProgressBar::SetValue(float value) {
    model_.SetValue(value);
    Redraw(true);
}

void AdvProgressBar::SetPercent(float percent) {
    model_.SetPercent(percent);
    Redraw(true);
}

void AdvProgressBar::SetMin(int32_t min) {
    model_.SetMin(min);
    Redraw(false);
}

void AdvProgressBar::SetMax(float max) {
    model_.SetMax(max);
    Redraw(false);
}

void AdvProgressBar::SetGradient(bool gradient) {
    model_.SetGradient(gradient);
    Redraw(false);
}

void AdvProgressBar::SetMyParent(HWND parent) {
    if (!window_ || !IsWindow(parent))
        return;
    if (!SetParent(window_.get(), parent))
        return;
    parent_ = parent;
    Reposition();
}

void AdvProgressBar::SetStatusBarPanelIndex(int32_t index) {
    panelIndex_ = index;
    Reposition();
}

void AdvProgressBar::Reposition() {
    // The panel's rectangle is asked only of a status bar: to any other window the same
    // message number means something else.
    if (!window_ || panelIndex_ < 1 || !IsStatusBar(parent_))
        return;
    RECT panel{};
    if (!SendMessageA(parent_, SB_GETRECT, static_cast<WPARAM>(panelIndex_ - 1),
                      reinterpret_cast<LPARAM>(&panel)))
        return;
    SetWindowPos(window_.get(), HWND_TOP, panel.left, panel.top, panel.right - panel.left,
                 panel.bottom - panel.top, SWP_NOACTIVATE);
}

void AdvProgressBar::Redraw(bool now) {
    if (!window_)
        return;
    RedrawWindow(window_.get(), nullptr, nullptr, RDW_INVALIDATE | (now ? RDW_UPDATENOW : 0));
}

void AdvProgressBar::Render(HDC dc, int width, int height) const {
    HGDIOBJ brush = GetStockObject(DC_BRUSH);
    SetDCBrushColor(dc, BackgroundColour());
    RECT all{0, 0, width, height};
    FillRect(dc, &all, static_cast<HBRUSH>(brush));
    for (const ColourSpan& span : model_.FilledSpans(width, DrawingColour())) {
        SetDCBrushColor(dc, span.colour);
        RECT part{span.left, 0, span.right, height};
        FillRect(dc, &part, static_cast<HBRUSH>(brush));
    }
}

// The bar is drawn off screen and shown in one copy: the screen never sees the cleared area
// before the fill, which would flicker while a refresh moves the bar in quick steps.
void AdvProgressBar::PaintBuffered(HDC dc) const {
    RECT client{};
    GetClientRect(window_.get(), &client);
    const int width = client.right - client.left, height = client.bottom - client.top;
    if (width <= 0 || height <= 0)
        return;
    UniqueDc memory(CreateCompatibleDC(dc));
    UniqueGdiObject bitmap(memory ? CreateCompatibleBitmap(dc, width, height) : nullptr);
    if (!bitmap) {
        Render(dc, width, height);
        return;
    }
    ScopedSelection selected(memory.get(), bitmap.get());
    Render(memory.get(), width, height);
    BitBlt(dc, 0, 0, width, height, memory.get(), 0, 0, SRCCOPY);
}

LRESULT AdvProgressBar::HandleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    HWND window = window_.get();
    switch (message) {
    case WM_ERASEBKGND:
        return 1; // the paint covers every pixel
    case WM_PAINT: {
        PaintDc paint(window);
        PaintBuffered(paint.get());
        return 0;
    }
    case WM_PRINTCLIENT:
        PaintBuffered(reinterpret_cast<HDC>(wParam));
        return 0;
    case WM_NCDESTROY:
        // The window goes with its container: the object must not destroy it a second time.
        SetWindowLongPtrA(window, GWLP_USERDATA, 0);
        window_.release();
        return DefWindowProcA(window, message, wParam, lParam);
    }
    return DefWindowProcA(window, message, wParam, lParam);
}

LRESULT CALLBACK AdvProgressBar::WindowProc(HWND window, UINT message, WPARAM wParam,
                                            LPARAM lParam) {
    try {
        if (message == WM_NCCREATE) {
            auto* create = reinterpret_cast<CREATESTRUCTA*>(lParam);
            auto* bar = static_cast<AdvProgressBar*>(create->lpCreateParams);
            bar->window_.reset(window);
            SetWindowLongPtrA(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(bar));
        }
        auto* bar = reinterpret_cast<AdvProgressBar*>(GetWindowLongPtrA(window, GWLP_USERDATA));
        if (bar && bar->window_.get() == window)
            return bar->HandleMessage(message, wParam, lParam);
    } catch (...) {
        // Nothing may unwind into the system's code. A paint that failed has ended its
        // BeginPaint scope already, so no endless stream of paint messages follows.
    }
    return DefWindowProcA(window, message, wParam, lParam);
}

} // namespace tolvane
