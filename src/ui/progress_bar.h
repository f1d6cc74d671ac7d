// AdvProgressBar: a small progress bar that draws itself and can lodge over a panel of a
// status bar. The main window keeps one over the first panel of its status bar and moves it
// while the startup tree is rebuilt. What it shows comes from ProgressBarModel; this is the
// window around it.
#pragma once

#include <windows.h>

#include <cstdint>

#include "platform/handles.h"
#include "ui/progress_bar_model.h"
#include "ui/window.h"

namespace tolvane {

class AdvProgressBar : public Window<AdvProgressBar> {
public:
    static constexpr const char* kClassName = "TolvaneAdvProgressBar";

    // Creates the control's window as a child of the container, empty and not yet placed.
    explicit AdvProgressBar(HWND container, const EventLog* log = nullptr);

    // Setting the value or the share shows the new bar at once, before the caller goes on:
    // the bar moves during work that does not return to the message loop in between.
    void SetValue(float value);
    float Value() const { return model_.Value(); }
    void SetPercent(float percent);
    float Percent() const { return model_.Percent(); }

    void SetMin(int32_t min);
    int32_t Min() const { return model_.Min(); }
    void SetMax(float max);
    float Max() const { return model_.Max(); }
    void SetGradient(bool gradient);
    bool Gradient() const { return model_.Gradient(); }

    // Hwnd(): the control's window; nullptr once the window is gone (with its container, say).

    // Moves the control's window into another window. A panel already chosen is covered
    // again in the new one.
    void SetMyParent(HWND parent);
    HWND MyParent() const { return parent_; }

    // The 1-based panel of the parent status bar that the control covers; the control moves
    // over it and in front of the status bar's other children.
    void SetStatusBarPanelIndex(int32_t index);
    int32_t StatusBarPanelIndex() const { return panelIndex_; }

    // Covers the chosen panel again. The owner calls it after the status bar has changed its
    // size or its panels, which the control itself does not hear of.
    void Reposition();

    // The colour of a solid bar: the system's highlight colour, as selected items use.
    static Colour DrawingColour();
    // The colour of the rest of the drawing area: the face of buttons and status bars.
    static Colour BackgroundColour();

    static void ClassStyle(WNDCLASSEXA& wc);
    LRESULT HandleMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

private:
    void Render(HDC dc, int width, int height) const;
    void PaintBuffered(HDC dc) const;
    void Redraw(bool now);

    ProgressBarModel model_;
    HWND parent_ = nullptr;
    int32_t panelIndex_ = 0;
};

} // namespace tolvane
