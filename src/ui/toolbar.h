// The main window's toolbar: a common-controls toolbar, a child of its parent, made from the
// plain button list. Buttons are told apart by their command ids, pictures by the same ids.
#pragma once

#include <windows.h>
#include <commctrl.h>

#include <map>
#include <string>
#include <vector>

#include "models/command_table.h"
#include "models/menu_model.h"
#include "platform/handles.h"

namespace tolvane {

class ToolbarControl {
public:
    // The pictures are the module's icons of each command (resource ids by command); they are
    // loaded at the size that suits the parent's screen density.
    ToolbarControl(HWND parent, HMODULE iconModule, const std::vector<ToolbarButton>& buttons,
                   const std::map<int, int>& iconOfCommand);
    ToolbarControl(const ToolbarControl&) = delete;
    ToolbarControl& operator=(const ToolbarControl&) = delete;

    HWND Hwnd() const { return bar_; }
    // Enables or grays each button as the table says.
    void ShowEnabled(const CommandTable& commands) const;
    // Follows the parent's width; the height it takes.
    int Fit() const;
    // The pictures again, for the parent's new screen density.
    void LoadPictures();
    // The tooltip requests of the bar's buttons, handed over by the parent; true when it was one.
    bool OnNotify(const NMHDR* header);

private:
    HWND bar_ = nullptr; // the parent's child: destroyed with it
    HWND parent_;
    HMODULE iconModule_;
    std::vector<ToolbarButton> buttons_;
    std::map<int, int> iconOfCommand_;
    UniqueImageList images_;
    std::wstring wideTip_;
};

} // namespace tolvane
