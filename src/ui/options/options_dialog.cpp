#include "ui/options/options_dialog.h"

#include "config/policy_registry.h"
#include "config/program_group_store.h"
#include "platform/environment.h"
#include "platform/runtime_libraries.h"
#include "config/language_files.h"
#include "items/run_entry.h"
#include "models/menu_model.h"
#include "ui/key_filter.h"
#include "ui/options/options_ids.h"

namespace tolvane {

namespace {

// The options are opened by this entry of the menu table, and named by it.
constexpr size_t kOptionsMenuEntry = 7;

} // namespace

std::string LocaleDecimalSeparator() {
    char separator[8] = {};
    return GetLocaleInfoA(LOCALE_USER_DEFAULT, LOCALE_SDECIMAL, separator, sizeof separator) > 0
               ? separator
               : ".";
}

OptionsDialog::OptionsDialog(ProgramGroupStore store, const TextTables& text,
                             UserMessages& messages, EventLog& log)
    : Dialog(&log, "Options Error: "), store_(store), text_(text), messages_(messages), log_(log),
      model_(store.Model(), *this, messages, text.Messages, LocaleDecimalSeparator(),
             ReadPolicies(log)) {}

void OptionsDialog::UpdateRunEntry(int startupType) {
    // The settings are kept all the same; the user learns that Windows will not follow them.
    constexpr size_t kOwnRunEntryMessage = 37;
    if (!::tolvane::UpdateRunEntry(startupType, store_.Folders().RunCommand, store_.Model(), log_))
        messages_.ShowMessage(text_.Message(kOwnRunEntryMessage), "Tolvane",
                              kMbOk | kMbIconExclamation);
}

void OptionsDialog::Change(const std::function<void(ProgramModel&)>& change) {
    store_.Change(change);
}

void OptionsDialog::Log(std::string_view text, int level) {
    log_.WriteLog(text, level);
}

std::string OptionsDialog::ProgramFolderOfOneUser() {
    return FolderInUserProfile(store_.Folders().ProgramFolder) ? store_.Folders().ProgramFolder
                                                               : std::string();
}

void OptionsDialog::Init() {
    std::vector<std::string> texts = BuiltInOptionsTexts();
    LoadLanguageTextFile(store_.Folders().ProgramFolder, store_.Model().Language, texts, "options");
    auto text = [&](size_t entry) { return TextTables::Entry(texts, entry); };

    const std::string caption = WithoutMnemonic(TextTables::Entry(text_.Menus, kOptionsMenuEntry));
    if (!caption.empty())
        SetWindowTextA(Hwnd(), caption.c_str());
    HWND pages = GetDlgItem(Hwnd(), IDC_OPT_PAGES);
    SendMessageA(pages, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text(kOptionsPageName).c_str()));
    SendMessageA(pages, LB_SETCURSEL, 0, 0);

    auto fill = [&](int control, size_t first, int count, int selected) {
        HWND combo = GetDlgItem(Hwnd(), control);
        for (int i = 0; i < count; ++i)
            SendMessageA(combo, CB_ADDSTRING, 0,
                         reinterpret_cast<LPARAM>(text(first + size_t(i)).c_str()));
        SendMessageA(combo, CB_SETCURSEL, static_cast<WPARAM>(selected), 0);
    };
    fill(IDC_OPT_RUN, kOptionsRunAtLoginFirst, kStartupTypeCount, model_.RunAtLogin);
    fill(IDC_OPT_CLOSE, kOptionsCloseMethodFirst, kCloseTypeCount, model_.CloseMethod);
    SetChecked(IDC_OPT_SHOW_TIPS, model_.ShowTips);
    SetChecked(IDC_OPT_WAIT_IDLE, model_.WaitForIdle);

    const std::pair<int, size_t> captions[] = {{IDC_OPT_FRAME, kOptionsPageName},
                                               {IDC_OPT_TITLE, kOptionsTitle},
                                               {IDC_OPT_EXAMPLE, kOptionsExample},
                                               {IDC_OPT_DELAY_LABEL, kOptionsStartupDelay},
                                               {IDC_OPT_SECONDS, kOptionsSeconds},
                                               {IDC_OPT_RUN_LABEL, kOptionsRunAtStartup},
                                               {IDC_OPT_CLOSE_LABEL, kOptionsProgramClosing},
                                               {IDC_OPT_SHOW_TIPS, kOptionsShowTips},
                                               {IDC_OPT_WAIT_IDLE, kOptionsWaitForIdle}};
    for (const auto& [control, entry] : captions)
        SetText(control, text(entry));
    SetText(IDOK, TextTables::Entry(text_.Buttons, 0));
    SetText(IDCANCEL, TextTables::Entry(text_.Buttons, 1));

    HWND delay = GetDlgItem(Hwnd(), IDC_OPT_DELAY);
    SetText(IDC_OPT_DELAY, model_.DelayText);
    FilterTypedKeys(delay, &OptionsModel::DelayKeyAllowed);

    const std::pair<int, bool> fixed[] = {{IDC_OPT_DELAY, model_.FixedByPolicy.Delay},
                                          {IDC_OPT_RUN, model_.FixedByPolicy.RunAtLogin},
                                          {IDC_OPT_WAIT_IDLE, model_.FixedByPolicy.WaitForIdle}};
    for (const auto& [control, isFixed] : fixed) {
        if (!isFixed)
            continue;
        EnableWindow(GetDlgItem(Hwnd(), control), FALSE);
        AddFixedTip(control, text(kOptionsSetByAdministrator));
    }
}

void OptionsDialog::AddFixedTip(int control, const std::string& text) {
    if (!tips_) {
        EnsureCommonControls();
        tips_ = CreateWindowExA(WS_EX_TOPMOST, TOOLTIPS_CLASSA, nullptr,
                                WS_POPUP | TTS_NOPREFIX | TTS_ALWAYSTIP, 0, 0, 0, 0, Hwnd(),
                                nullptr, GetModuleHandleA(nullptr), nullptr);
    }
    // A disabled control gets no mouse messages, its dialog does: the tip is the dialog's, over
    // the control's place.
    TOOLINFOA tool{sizeof tool, TTF_SUBCLASS, Hwnd(), static_cast<UINT_PTR>(control)};
    GetWindowRect(GetDlgItem(Hwnd(), control), &tool.rect);
    MapWindowPoints(nullptr, Hwnd(), reinterpret_cast<POINT*>(&tool.rect), 2);
    tool.lpszText = const_cast<char*>(text.c_str()); // copied by the control
    SendMessageA(tips_, TTM_ADDTOOLA, 0, reinterpret_cast<LPARAM>(&tool));
}

void OptionsDialog::ReadFields() {
    model_.DelayText = Text(IDC_OPT_DELAY);
    model_.RunAtLogin =
        static_cast<int>(SendDlgItemMessageA(Hwnd(), IDC_OPT_RUN, CB_GETCURSEL, 0, 0));
    model_.CloseMethod =
        static_cast<int>(SendDlgItemMessageA(Hwnd(), IDC_OPT_CLOSE, CB_GETCURSEL, 0, 0));
    model_.ShowTips = Checked(IDC_OPT_SHOW_TIPS);
    model_.WaitForIdle = Checked(IDC_OPT_WAIT_IDLE);
}

bool OptionsDialog::OnMessage(UINT message, WPARAM wParam, LPARAM, INT_PTR&) {
    switch (message) {
    case WM_COMMAND:
        if (HIWORD(wParam) != BN_CLICKED)
            return false;
        if (LOWORD(wParam) == IDOK) {
            ReadFields();
            if (model_.Ok())
                Close(IDOK);
            return true;
        }
        if (LOWORD(wParam) == IDCANCEL) {
            Close(IDCANCEL);
            return true;
        }
        return false;
    }
    return false;
}

} // namespace tolvane
