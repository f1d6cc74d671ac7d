#include "ui/tips/tip_dialog.h"

#include <memory>
#include <exception>

#include "config/program_group_store.h"
#include "config/language_files.h"
#include "platform/file_io.h"
#include "platform/wide_text.h"
#include "ui/tips/tip_ids.h"

namespace tolvane {

namespace {

// Picking one tip of a few dozen needs no more than the clock, stirred (xorshift64): a
// library engine would cost the program more than the whole tip box.
std::function<double()> ClockSeededRandom() {
    return [state = GetTickCount64() | 1]() mutable {
        state ^= state << 13;
        state ^= state >> 7;
        state ^= state << 17;
        return static_cast<double>(state >> 11) * 0x1.0p-53; // [0, 1)
    };
}

} // namespace

UINT TipNotKeptMessage() {
    static const UINT message = RegisterWindowMessageA("Tolvane.TipNotKept");
    return message;
}

TipDialog::TipDialog(ProgramGroupStore store, const TextTables& text, EventLog& log,
                     std::function<double()> random)
    : Dialog(&log, "Tip of the Day Error: "), store_(store), text_(text), log_(log),
      tips_(random ? std::move(random) : ClockSeededRandom()) {}

std::string TipDialog::TipFilePath(const AppFolders& folders, const std::string& language) {
    return folders.ProgramFolder + "\\lang\\" + LanguageFile(language, "tipofday");
}

void TipDialog::Init() {
    SetChecked(IDC_TIP_SHOW, store_.Model().ShowTipsAtStartup != 0);
    texts_ = BuiltInTipTexts();
    LoadLanguageTextFile(store_.Folders().ProgramFolder, store_.Model().Language, texts_, "tips");
    SetWindowTextA(Hwnd(), TextTables::Entry(texts_, kTipCaption).c_str());
    SetText(IDC_TIP_NEXT, TextTables::Entry(texts_, kTipNextTip));
    SetText(IDC_TIP_HEADING, TextTables::Entry(texts_, kTipDidYouKnow));
    SetText(IDC_TIP_SHOW, TextTables::Entry(texts_, kTipShowAtStartup));
    SetText(IDOK, TextTables::Entry(text_.Buttons, 0));

    // The heading in the bold face of the dialog's font, a little larger.
    headingFont_ = FontFor({IDC_TIP_HEADING}, [](LOGFONTA& face) {
        face.lfWeight = FW_BOLD;
        face.lfHeight = face.lfHeight * 5 / 4;
    });

    tips_.LoadTips(ReadTextFile(TipFilePath(
        store_.Folders(), store_.Model().Language))); // nothing when there is no such file
    SetText(IDC_TIP_TEXT, tips_.Shown(texts_));
}

void TipDialog::WriteBack() {
    const auto value =
        TipOfDay::ShowTipsOnClose(Checked(IDC_TIP_SHOW), store_.Model().ShowTipsAtStartup);
    if (!value)
        return;
    try {
        store_.Change([&](ProgramModel& file) { file.ShowTipsAtStartup = *value; });
    } catch (const std::exception& e) {
        // The setting stays as the file has it: the next start shows what the file says.
        log_.WriteLog(std::string("Tip of the Day: ") + e.what(), kLogError);
        if (HWND owner = GetWindow(Hwnd(), GW_OWNER))
            SendMessageA(owner, TipNotKeptMessage(), 0, 0);
    }
}

bool TipDialog::OnMessage(UINT message, WPARAM wParam, LPARAM, INT_PTR&) {
    switch (message) {
    case WM_COMMAND:
        if (HIWORD(wParam) != BN_CLICKED)
            return false;
        switch (LOWORD(wParam)) {
        case IDC_TIP_NEXT:
            tips_.ShowRandomTip();
            SetText(IDC_TIP_TEXT, tips_.Shown(texts_));
            return true;
        case IDOK:
        case IDCANCEL:
            Close(LOWORD(wParam));
            return true;
        }
        return false;
    case WM_DESTROY:
        // Every way of closing ends here, also the owner's closing.
        WriteBack();
        return false;
    }
    return false;
}

} // namespace tolvane
