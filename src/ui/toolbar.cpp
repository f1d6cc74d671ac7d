#include "ui/toolbar.h"

#include <cstring>

#include "platform/runtime_libraries.h"
#include "platform/wide_text.h"
#include "ui/window.h"

namespace tolvane {

ToolbarControl::ToolbarControl(HWND parent, HMODULE iconModule,
                               const std::vector<ToolbarButton>& buttons,
                               const std::map<int, int>& iconOfCommand)
    : parent_(parent), iconModule_(iconModule), buttons_(buttons), iconOfCommand_(iconOfCommand) {
    EnsureCommonControls();
    bar_ = CreateWindowExA(0, TOOLBARCLASSNAMEA, "",
                           WS_CHILD | WS_VISIBLE | TBSTYLE_FLAT | TBSTYLE_LIST | TBSTYLE_TOOLTIPS |
                               CCS_TOP,
                           0, 0, 0, 0, parent, nullptr, GetModuleHandleA(nullptr), nullptr);
    SendMessageA(bar_, TB_BUTTONSTRUCTSIZE, sizeof(TBBUTTON), 0);
    // Text beside the pictures of the buttons that have one; Refresh shows its picture alone.
    SendMessageA(bar_, TB_SETEXTENDEDSTYLE, 0, TBSTYLE_EX_MIXEDBUTTONS);
    LoadPictures();

    std::vector<TBBUTTON> items;
    int picture = 0;
    for (const ToolbarButton& b : buttons_) {
        TBBUTTON item{};
        if (b.Command == 0) {
            item.fsStyle = BTNS_SEP;
        } else {
            item.iBitmap = picture++;
            item.idCommand = b.Command;
            item.fsState = TBSTATE_ENABLED;
            item.fsStyle = BTNS_BUTTON | BTNS_AUTOSIZE | (b.Caption.empty() ? 0 : BTNS_SHOWTEXT);
            item.iString = reinterpret_cast<INT_PTR>(b.Caption.c_str());
        }
        items.push_back(item);
    }
    SendMessageA(bar_, TB_ADDBUTTONSA, items.size(), reinterpret_cast<LPARAM>(items.data()));
    SendMessageA(bar_, TB_AUTOSIZE, 0, 0);
}

void ToolbarControl::LoadPictures() {
    const int size = SmallIconSize(parent_);
    UniqueImageList images(ImageListCreate(size, size, ILC_COLOR32 | ILC_MASK, 6, 0));
    for (const ToolbarButton& b : buttons_) {
        if (b.Command == 0)
            continue;
        auto id = iconOfCommand_.find(b.Command);
        UniqueIcon icon(id == iconOfCommand_.end() ? nullptr
                                                   : static_cast<HICON>(LoadImageA(
                                                         iconModule_, MAKEINTRESOURCEA(id->second),
                                                         IMAGE_ICON, size, size, 0)));
        if (images && icon)
            ImageListAddIcon(images.get(), icon.get());
    }
    SendMessageA(bar_, TB_SETIMAGELIST, 0, reinterpret_cast<LPARAM>(images.get()));
    images_ = std::move(images); // the bar never owns its list: the old one goes after the swap
    SendMessageA(bar_, TB_AUTOSIZE, 0, 0);
}

void ToolbarControl::ShowEnabled(const CommandTable& commands) const {
    for (const ToolbarButton& b : buttons_)
        if (b.Command != 0)
            SendMessageA(bar_, TB_ENABLEBUTTON, b.Command,
                         MAKELPARAM(commands.Enabled(b.Command), 0));
}

int ToolbarControl::Fit() const {
    SendMessageA(bar_, TB_AUTOSIZE, 0, 0);
    RECT r{};
    GetWindowRect(bar_, &r);
    return r.bottom - r.top;
}

bool ToolbarControl::OnNotify(const NMHDR* header) {
    if (header->code != TTN_GETDISPINFOA && header->code != TTN_GETDISPINFOW)
        return false;
    const ToolbarButton* button = nullptr;
    for (const ToolbarButton& b : buttons_)
        if (b.Command != 0 && static_cast<UINT_PTR>(b.Command) == header->idFrom)
            button = &b;
    if (!button)
        return false;
    if (header->code == TTN_GETDISPINFOA) {
        auto* info = reinterpret_cast<NMTTDISPINFOA*>(const_cast<NMHDR*>(header));
        info->lpszText = const_cast<char*>(button->ToolTip.c_str());
    } else {
        auto* info = reinterpret_cast<NMTTDISPINFOW*>(const_cast<NMHDR*>(header));
        wideTip_ = Wide(button->ToolTip);
        info->lpszText = wideTip_.data();
    }
    return true;
}

} // namespace tolvane
