#include "platform/min_size.h"

namespace tolvane {

namespace {

// The WMSZ_* values.
enum Edge : unsigned {
    kLeft = 1,
    kRight,
    kTop,
    kTopLeft,
    kTopRight,
    kBottom,
    kBottomLeft,
    kBottomRight
};

} // namespace

void CorrectSizing(SizingRect& r, unsigned edge, long minWidth, long minHeight) {
    if (r.right - r.left < minWidth) {
        if (edge == kLeft || edge == kTopLeft || edge == kBottomLeft)
            r.left = r.right - minWidth;
        else if (edge == kRight || edge == kTopRight || edge == kBottomRight)
            r.right = r.left + minWidth;
    }
    if (r.bottom - r.top < minHeight) {
        if (edge == kTop || edge == kTopLeft || edge == kTopRight)
            r.top = r.bottom - minHeight;
        else if (edge == kBottom || edge == kBottomLeft || edge == kBottomRight)
            r.bottom = r.top + minHeight;
    }
}

long TwipsToPixels(long twips, unsigned dpi) {
    return (twips * static_cast<long>(dpi) + 720) / 1440;
}

} // namespace tolvane
