// Keeps a window from being dragged smaller than its minimum: the sizing rectangle of WM_SIZING
// is corrected by the edge the user holds, so the outline never shows less. Maximising and
// moves by program code never send WM_SIZING and are not affected.
#pragma once

namespace tolvane {

struct SizingRect {
    long left = 0, top = 0, right = 0, bottom = 0;
};

// WMSZ_LEFT 1 ... WMSZ_BOTTOMRIGHT 8: the held edge moves, the opposite one stays.
void CorrectSizing(SizingRect& rect, unsigned edge, long minWidth, long minHeight);

// Twips (1/1440 inch) in pixels at a density in dots per inch, rounded.
long TwipsToPixels(long twips, unsigned dpi);

} // namespace tolvane
