#include "ui/progress_bar.h"

#include <commctrl.h>

#include <array>

namespace tolvane {

namespace {

bool IsStatusBar(HWND window) {
    std::array<char, 64> name{};
    if (!window || GetClassNameA(window, name.data(), static_cast<int>(name.size())) == 0)
        return false;
    return lstrcmpiA(name.data(), STATUSCLASSNAMEA) == 0;
}

} // namespace

AdvProgressBar::AdvProgressBar(HWND container, const EventLog* log)
    : Window(log, "Progress Bar Error: "), parent_(container) {
    // The window learns its object in WM_NCCREATE, before any message needs it.
    Create(GetModuleHandleA(nullptr), 0, "", WS_CHILD | WS_VISIBLE | WS_CLIPSIBLINGS, 0, 0, 0, 0,
           container);
}

void AdvProgressBar::ClassStyle(WNDCLASSEXA& wc) {
    // Any change of size repaints all of it: the scale stretches over the whole width.
    wc.style = CS_HREDRAW | CS_VREDRAW;
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
    if (!Hwnd() || !IsWindow(parent))
        return;
    if (!SetParent(Hwnd(), parent))
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
    if (!Hwnd() || panelIndex_ < 1 || !IsStatusBar(parent_))
        return;
    RECT panel{};
    if (!SendMessageA(parent_, SB_GETRECT, static_cast<WPARAM>(panelIndex_ - 1),
                      reinterpret_cast<LPARAM>(&panel)))
        return;
    SetWindowPos(Hwnd(), HWND_TOP, panel.left, panel.top, panel.right - panel.left,
                 panel.bottom - panel.top, SWP_NOACTIVATE);
}

void AdvProgressBar::Redraw(bool now) {
    if (!Hwnd())
        return;
    RedrawWindow(Hwnd(), nullptr, nullptr, RDW_INVALIDATE | (now ? RDW_UPDATENOW : 0));
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
    GetClientRect(Hwnd(), &client);
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

LRESULT AdvProgressBar::HandleMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
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
    }
    return DefWindowProcA(window, message, wParam, lParam);
}

} // namespace tolvane
