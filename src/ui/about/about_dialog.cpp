#include "ui/about/about_dialog.h"

#include <shellapi.h>

#include <cstdlib>

#include "models/menu_model.h"
#include "platform/version_info.h"
#include "text/placeholders.h"
#include "ui/about/about_ids.h"
#include "ui/maker_links.h"

namespace tolvane {

namespace {

constexpr size_t kAboutMenuEntry = 11, kVersionLine = 40;

int Luma(COLORREF c) {
    return (GetRValue(c) * 299 + GetGValue(c) * 587 + GetBValue(c) * 114) / 1000;
}

// The scheme's link colour, unless it can hardly be read on the dialog's face (some schemes
// make it a pale grey): then the usual link blue.
COLORREF LinkColour() {
    const COLORREF link = GetSysColor(COLOR_HOTLIGHT);
    return std::abs(Luma(link) - Luma(GetSysColor(COLOR_BTNFACE))) >= 80 ? link : RGB(0, 102, 204);
}

} // namespace

std::string VersionText(const TextTables& text, unsigned major, unsigned minor, unsigned revision) {
    return FillIn(text.Message(kVersionLine), {std::to_string(major) + "." + std::to_string(minor) +
                                               "." + std::to_string(revision)});
}

AboutDialog::AboutDialog(const TextTables& text, EventLog& log,
                         std::function<void(const std::string&)> open)
    : Dialog(&log, "About Error: "), text_(text), open_(std::move(open)) {
    if (!open_)
        open_ = [](const std::string& address) {
            ShellExecuteA(nullptr, nullptr, address.c_str(), nullptr, nullptr, SW_SHOWNORMAL);
        };
}

const char* AboutDialog::AddressOf(int control) {
    switch (control) {
    case IDC_AB_FORUM:
        return kForumsAddress;
    case IDC_AB_UPDATES:
        return kMainPageAddress;
    }
    return nullptr;
}

void AboutDialog::Init() {
    // Named as the menu entry that opens it.
    SetWindowTextA(Hwnd(),
                   WithoutMnemonic(TextTables::Entry(text_.Menus, kAboutMenuEntry)).c_str());
    if (const auto version = ReadModuleVersion())
        SetText(IDC_AB_VERSION,
                VersionText(text_, version->Major, version->Minor, version->Revision));
    SetText(IDC_AB_FORUM, kForumsAddress);
    SetText(IDC_AB_UPDATES, kMainPageAddress);
    SetText(IDOK, TextTables::Entry(text_.Buttons, 0));

    // The links underlined, in the dialog's face.
    linkFont_ =
        FontFor({IDC_AB_FORUM, IDC_AB_UPDATES}, [](LOGFONTA& face) { face.lfUnderline = TRUE; });
}

bool AboutDialog::OnMessage(UINT message, WPARAM wParam, LPARAM lParam, INT_PTR& result) {
    switch (message) {
    case WM_SETCURSOR:
        // The links take the system's link pointer, which follows the user's pointer scheme.
        if (AddressOf(GetDlgCtrlID(reinterpret_cast<HWND>(wParam)))) {
            SetCursor(LoadCursorA(nullptr, IDC_HAND));
            result = TRUE;
            return true;
        }
        return false;
    case WM_CTLCOLORSTATIC:
        if (AddressOf(GetDlgCtrlID(reinterpret_cast<HWND>(lParam)))) {
            const auto dc = reinterpret_cast<HDC>(wParam);
            SetTextColor(dc, LinkColour());
            SetBkMode(dc, TRANSPARENT);
            result = reinterpret_cast<INT_PTR>(GetSysColorBrush(COLOR_BTNFACE));
            return true;
        }
        return false;
    case WM_COMMAND: {
        const int control = LOWORD(wParam);
        if (const char* address = AddressOf(control); address && HIWORD(wParam) == STN_CLICKED) {
            open_(address);
            Close(IDOK);
            return true;
        }
        if (control == IDOK || control == IDCANCEL) {
            Close(control);
            return true;
        }
        return false;
    }
    }
    return false;
}

} // namespace tolvane
