// frmTip: the tip of the day over its template. Modal at an interactive start, modeless from
// Help > Tips; whichever way it closes, its check box is written back when it changed.
#pragma once

#include <windows.h>

#include <functional>
#include <string>
#include <vector>

#include "platform/handles.h"
#include "ui/tips/tip_ids.h"
#include "config/program_group_store.h"
#include "platform/event_log.h"
#include "text/text_tables.h"
#include "ui/dialog.h"
#include "ui/tips/tip_model.h"

namespace tolvane {

// Sent to the tip window's owner when its box could not be written back: the file could not be
// written, and the owner tells the user so.
UINT TipNotKeptMessage();

class TipDialog : public Dialog<TipDialog> {
public:
    static constexpr int kTemplateId = IDD_TIP;

    // random gives a uniform number in [0, 1); by default a generator seeded from the clock.
    TipDialog(ProgramGroupStore store, const TextTables& text, EventLog& log,
              std::function<double()> random = {});

    TipOfDay& Model() { return tips_; }

    bool OnMessage(UINT message, WPARAM wParam, LPARAM lParam, INT_PTR& result);

    // "lang\<code>\tipofday.<code>" in the program folder.
    static std::string TipFilePath(const AppFolders& folders, const std::string& language);

private:
    friend class Dialog<TipDialog>;
    void Init();
    void WriteBack();

    ProgramGroupStore store_;
    const TextTables& text_;
    EventLog& log_;
    TipOfDay tips_;
    std::vector<std::string> texts_;
    UniqueGdiObject headingFont_;
};

} // namespace tolvane
