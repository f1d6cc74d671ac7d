// frmOptions: the options dialog over its template, modeless. It renders the options model and
// hands the user's typing and choices back to it. The administrator's policies are read as it
// opens: a setting they fix is shown greyed, with the policy's value and a tip that says so.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "ui/options/options_ids.h"
#include "config/program_group_store.h"
#include "platform/event_log.h"
#include "text/text_tables.h"
#include "ui/dialog.h"
#include "ui/options/options_model.h"

namespace tolvane {

class OptionsDialog : public Dialog<OptionsDialog>, private OptionsHost {
public:
    static constexpr int kTemplateId = IDD_OPTIONS;

    OptionsDialog(ProgramGroupStore store, const TextTables& text, UserMessages& messages,
                  EventLog& log);

    OptionsModel& Model() { return model_; }
    // The tips of the settings that a policy fixes; none when no setting is fixed.
    HWND Tips() const { return tips_; }

    bool OnMessage(UINT message, WPARAM wParam, LPARAM lParam, INT_PTR& result);

private:
    friend class Dialog<OptionsDialog>;
    void UpdateRunEntry(int startupType) override;
    void Change(const std::function<void(ProgramModel&)>& change) override;
    void Log(std::string_view text, int level) override;
    std::string ProgramFolderOfOneUser() override;

    void Init();
    void ReadFields();
    // The tip over a control whose setting a policy fixes.
    void AddFixedTip(int control, const std::string& text);

    ProgramGroupStore store_;
    const TextTables& text_;
    UserMessages& messages_;
    EventLog& log_;
    OptionsModel model_;
    HWND tips_ = nullptr; // owned by the dialog: destroyed with it
};

// The user's decimal separator, as the locale writes numbers.
std::string LocaleDecimalSeparator();

} // namespace tolvane
