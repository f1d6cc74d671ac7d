#include "ui/group_editor/group_editor_dialog.h"

#include <windowsx.h>

#include "config/program_group_store.h"
#include "config/language_files.h"
#include "platform/dir_struct.h"
#include "ui/group_editor/group_editor_ids.h"
#include "ui/key_filter.h"

namespace tolvane {

GroupEditorDialog::GroupEditorDialog(ProgramGroupStore store, const TextTables& text,
                                     UserMessages& messages, EventLog& log)
    : Dialog(&log, "Program Groups Error: "), store_(store), text_(text),
      editor_(store.Model(), *this, messages,
              GroupEditorTexts{text.Messages, store.Folders().UserItemsFolder,
                               store.Folders().AllUsersItemsFolder}) {}

GroupEditorDialog::~GroupEditorDialog() = default;

void GroupEditorDialog::Change(const std::function<void(ProgramModel&)>& change) {
    store_.Change(change);
}

void GroupEditorDialog::LoadItems() {
    store_.Load();
}

bool GroupEditorDialog::FileExists(const std::string& path) {
    return CDirStruct::OrdinaryFileExists(path);
}

void GroupEditorDialog::Init() {
    // The tree takes the place the template keeps for it.
    RECT place{};
    GetWindowRect(GetDlgItem(Hwnd(), IDC_GE_TREE_PLACE), &place);
    MapWindowPoints(nullptr, Hwnd(), reinterpret_cast<POINT*>(&place), 2);
    tree_ = std::make_unique<TreeViewControl>(Hwnd(), IDC_GE_TREE, nullptr, false);
    tree_->SetLazy(true); // a file of many programs opens with its groups closed
    SetWindowPos(tree_->Hwnd(), HWND_TOP, place.left, place.top, place.right - place.left,
                 place.bottom - place.top, 0);
    SendMessageA(tree_->Hwnd(), WM_SETFONT, SendMessageA(Hwnd(), WM_GETFONT, 0, 0), FALSE);

    FilterTypedKeys(GetDlgItem(Hwnd(), IDC_GE_DELAY), &GroupEditor::DelayKeyAllowed);

    ApplyCaptions();
    // A file that cannot be read is told by the editor; the window shows what the model holds.
    (void)editor_.RefreshGroups();
    int shown = TreeModel::kNone;
    if (record_) {
        shown = editor_.FindProgramNode(*record_);
        if (shown != TreeModel::kNone)
            editor_.ClickTV(shown);
    }
    Render(true);
    if (HTREEITEM item = tree_->Reveal(editor_.Tree, shown)) {
        rendering_ = true; // the fields already show the program
        SendMessageA(tree_->Hwnd(), TVM_SELECTITEM, TVGN_CARET, reinterpret_cast<LPARAM>(item));
        rendering_ = false;
    }
}

void GroupEditorDialog::ApplyCaptions() {
    std::vector<std::string> own = BuiltInGroupEditorTexts();
    LoadLanguageTextFile(store_.Folders().ProgramFolder, store_.Model().Language, own,
                         "properties");
    // The tree's rows are labelled like the fields; the message line is the model's.
    editor_.SetCaptions(std::move(own));
    const int ownControls[] = {
        IDC_GE_ADD_NEW,          IDC_GE_EDIT,        IDC_GE_GROUP_LABEL, IDC_GE_PATH_LABEL,
        IDC_GE_PARAMETERS_LABEL, IDC_GE_DELAY_LABEL, IDC_GE_SECONDS};
    for (size_t i = 0; i < std::size(ownControls); ++i)
        SetText(ownControls[i], editor_.Text(GroupEditorText(i)));
    SetWindowTextA(Hwnd(), editor_.Text(kEditorTitle).c_str());
    const auto& buttons = text_.Buttons;
    SetText(IDOK, TextTables::Entry(buttons, 0));
    SetText(IDCANCEL, TextTables::Entry(buttons, 1));
    SetText(IDC_GE_BROWSE, TextTables::Entry(buttons, 4));
    SetText(IDC_GE_REMOVE, TextTables::Entry(buttons, 5));
    SetText(IDC_GE_ADD_GROUP, TextTables::Entry(buttons, 6));
    SetText(IDC_GE_EDIT_GROUP, TextTables::Entry(buttons, 8));
}

void GroupEditorDialog::ReadFields() {
    editor_.GroupName = Text(IDC_GE_GROUP);
    editor_.Path = Text(IDC_GE_PATH);
    editor_.Parameters = Text(IDC_GE_PARAMETERS);
    editor_.Delay = Text(IDC_GE_DELAY);
}

void GroupEditorDialog::RenderButtons() {
    auto enable = [&](int control, bool on) { EnableWindow(GetDlgItem(Hwnd(), control), on); };
    enable(IDC_GE_ADD, editor_.AddEnabled);
    enable(IDC_GE_ADD_GROUP, editor_.AddGroupEnabled);
    enable(IDC_GE_EDIT_GROUP, editor_.EditGroupEnabled);
    enable(IDC_GE_REMOVE, editor_.RemoveEnabled);
    enable(IDC_GE_ADD_NEW, editor_.AddModeEnabled);
    SetChecked(IDC_GE_ADD_NEW, editor_.AddMode);
    SetChecked(IDC_GE_EDIT, !editor_.AddMode);
    SetText(IDC_GE_ADD, TextTables::Entry(text_.Buttons, editor_.AddMode ? 3 : 7));
    if (Text(IDC_GE_MESSAGE) != editor_.Message)
        SetText(IDC_GE_MESSAGE, editor_.Message);
}

void GroupEditorDialog::Render(bool tree) {
    rendering_ = true; // the texts set here are no typing of the user's
    if (tree) {
        tree_->Render(editor_.Tree);
        HWND combo = GetDlgItem(Hwnd(), IDC_GE_GROUP);
        SendMessageA(combo, CB_RESETCONTENT, 0, 0);
        for (const std::string& name : editor_.GroupNames)
            SendMessageA(combo, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(name.c_str()));
    }
    auto set = [&](int control, const std::string& text) {
        if (Text(control) != text)
            SetText(control, text);
    };
    set(IDC_GE_GROUP, editor_.GroupName);
    set(IDC_GE_PATH, editor_.Path);
    set(IDC_GE_PARAMETERS, editor_.Parameters);
    set(IDC_GE_DELAY, editor_.Delay);
    RenderButtons();
    rendering_ = false;
}

void GroupEditorDialog::Command(int control, int code) {
    switch (control) {
    case IDC_GE_GROUP:
        if (code == CBN_EDITCHANGE) {
            ReadFields();
            editor_.GroupNameChanged();
            RenderButtons();
        } else if (code == CBN_SELCHANGE) {
            ReadFields();
            HWND combo = GetDlgItem(Hwnd(), IDC_GE_GROUP);
            const LRESULT chosen = SendMessageA(combo, CB_GETCURSEL, 0, 0);
            if (chosen >= 0 && static_cast<size_t>(chosen) < editor_.GroupNames.size())
                editor_.GroupName = editor_.GroupNames[static_cast<size_t>(chosen)];
            editor_.GroupNameChanged(true);
            RenderButtons();
        }
        return;
    case IDC_GE_PATH:
        if (code == EN_CHANGE) {
            ReadFields();
            editor_.PathChanged();
            RenderButtons();
        }
        return;
    case IDC_GE_ADD_NEW:
    case IDC_GE_EDIT:
        if (code == BN_CLICKED) {
            editor_.ChooseAddMode(control == IDC_GE_ADD_NEW);
            RenderButtons();
        }
        return;
    }
    if (code != BN_CLICKED)
        return;
    ReadFields();
    switch (control) {
    case IDC_GE_ADD:
        editor_.Add();
        break;
    case IDC_GE_ADD_GROUP:
        editor_.AddGroup();
        break;
    case IDC_GE_EDIT_GROUP:
        editor_.EditGroup();
        break;
    case IDC_GE_REMOVE:
        editor_.Remove();
        break;
    case IDC_GE_BROWSE:
        editor_.Browse();
        break;
    case IDOK:
        // A file that cannot be written is told by the editor; the window stays open, so that
        // OK can try again (every change was written, or told, when it was made).
        if (!editor_.SaveGroups())
            break;
        Close(IDOK);
        return;
    case IDCANCEL:
        Close(IDCANCEL);
        return;
    default:
        return;
    }
    Render(true);
}

bool GroupEditorDialog::OnMessage(UINT message, WPARAM wParam, LPARAM lParam, INT_PTR& result) {
    switch (message) {
    case WM_COMMAND:
        if (!rendering_)
            Command(LOWORD(wParam), HIWORD(wParam));
        return true;
    case WM_NOTIFY: {
        const auto* header = reinterpret_cast<const NMHDR*>(lParam);
        LRESULT handled = 0;
        if (!tree_ || !tree_->OnNotify(header, editor_.Tree, handled))
            return false;
        // A click or the keyboard selected a node: its fields show.
        if (!rendering_ && (header->code == TVN_SELCHANGEDA || header->code == TVN_SELCHANGEDW)) {
            editor_.ClickTV(editor_.Tree.Selected());
            Render(false);
        }
        result = handled;
        return true;
    }
    case WM_CLOSE:
        Close(IDCANCEL);
        return true;
    }
    return false;
}

} // namespace tolvane
