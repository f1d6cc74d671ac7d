#include "ui/key_filter.h"

namespace tolvane {

namespace {

constexpr const char* kRuleProperty = "Tolvane.TypedKeyRule";
constexpr const char* kPreviousProperty = "Tolvane.TypedKeyPrevious";

LRESULT CALLBACK FilterProc(HWND box, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    const auto previous = reinterpret_cast<WNDPROC>(GetPropA(box, kPreviousProperty));
    if (message == WM_CHAR) {
        const auto rule =
            reinterpret_cast<TypedKeyRule>(reinterpret_cast<INT_PTR>(GetPropA(box, kRuleProperty)));
        const char key = wParam < 0x80 ? static_cast<char>(wParam) : '\0';
        if (key == '\0' || (rule && !rule(key)))
            return 0;
    } else if (message == WM_NCDESTROY) {
        SetWindowLongPtrA(box, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(previous));
        RemovePropA(box, kRuleProperty);
        RemovePropA(box, kPreviousProperty);
    }
    return CallWindowProcA(previous, box, message, wParam, lParam);
}

} // namespace

void FilterTypedKeys(HWND box, TypedKeyRule allowed) {
    if (!box || GetPropA(box, kPreviousProperty))
        return;
    SetPropA(box, kRuleProperty, reinterpret_cast<HANDLE>(reinterpret_cast<INT_PTR>(allowed)));
    SetPropA(box, kPreviousProperty,
             reinterpret_cast<HANDLE>(GetWindowLongPtrA(box, GWLP_WNDPROC)));
    SetWindowLongPtrA(box, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&FilterProc));
}

} // namespace tolvane
