// frmOptions: the options dialog over its template, modeless. It renders the options model and
// hands the user's typing and choices back to it.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "ui/options/options_ids.h"
#include "ui/dialog.h"
#include "ui/options/options_model.h"

namespace tolvane {

class AppState;

class OptionsDialog : public Dialog<OptionsDialog>, private OptionsHost {
public:
    static constexpr int kTemplateId = IDD_OPTIONS;

    explicit OptionsDialog(AppState& app);

    OptionsModel& Model() { return model_; }

    bool OnMessage(UINT message, WPARAM wParam, LPARAM lParam, INT_PTR& result);

private:
    friend class Dialog<OptionsDialog>;
    void UpdateRunEntry(int startupType) override;
    void Change(const std::function<void(ProgramModel&)>& change) override;
    void Log(std::string_view text, int level) override;
    std::string ProgramFolderOfOneUser() override;

    void Init();
    void ReadFields();

    AppState& app_;
    OptionsModel model_;
};

// The user's decimal separator, as the locale writes numbers.
std::string LocaleDecimalSeparator();

} // namespace tolvane
