// frmAbout: the program's name, its version as the build wrote it into the exe, and the maker's
// two pages as links. A link click opens its page and closes the box.
#pragma once

#include <windows.h>

#include <functional>
#include <string>

#include "platform/handles.h"
#include "ui/about/about_ids.h"
#include "platform/event_log.h"
#include "text/text_tables.h"
#include "ui/dialog.h"

namespace tolvane {

// The version line of the language's texts ("Version %1"), with the major, minor and revision
// numbers joined by full stops.
std::string VersionText(const TextTables& text, unsigned major, unsigned minor, unsigned revision);

class AboutDialog : public Dialog<AboutDialog> {
public:
    static constexpr int kTemplateId = IDD_ABOUT;

    // open: how an address is opened; by default the shell, with no owner window.
    AboutDialog(const TextTables& text, EventLog& log,
                std::function<void(const std::string&)> open = {});

    bool OnMessage(UINT message, WPARAM wParam, LPARAM lParam, INT_PTR& result);

private:
    friend class Dialog<AboutDialog>;
    void Init();
    // The address behind a link control; nullptr for any other control.
    static const char* AddressOf(int control);

    const TextTables& text_;
    std::function<void(const std::string&)> open_;
    UniqueGdiObject linkFont_;
};

} // namespace tolvane
