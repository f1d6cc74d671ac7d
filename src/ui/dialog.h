// The one base of the program's dialogs, each laid out by a DIALOGEX template of the resource
// script. It ties the dialog to its object at WM_INITDIALOG and hands it to the
// object: Init() once its controls exist (WM_INITDIALOG), then every message to its
// OnMessage(message, wParam, lParam, result), through one thunk that lets no failure
// out of the dialog procedure: a failure is logged, and the message counts as not handled.
// Modal dialogs run their own loop; a modeless one is handed its keys by the program's message
// loops (Tab, Enter, Escape), for as long as it is open. The close button and Escape reach a
// dialog as the command IDCANCEL, by the dialog manager's own rule.
#pragma once

#include <windows.h>

#include <exception>
#include <initializer_list>
#include <string>

#include "platform/event_log.h"
#include "platform/handles.h"
#include "platform/message_pump.h"
#include "ui/window.h"

namespace tolvane {

template <class T> class Dialog {
public:
    Dialog(const Dialog&) = delete;
    Dialog& operator=(const Dialog&) = delete;

    HWND Hwnd() const { return hwnd_; }

    // Shows the dialog of template T::kTemplateId and returns when it ends, with the value
    // that ended it (-1 when it could not be shown).
    INT_PTR ShowModal(HINSTANCE instance, HWND owner) {
        modal_ = true;
        return DialogBoxParamA(instance, MAKEINTRESOURCEA(T::kTemplateId), owner, &Dialog::Thunk,
                               reinterpret_cast<LPARAM>(static_cast<T*>(this)));
    }
    // Shows the dialog and returns at once; false when it could not be made.
    bool ShowModeless(HINSTANCE instance, HWND owner) {
        modal_ = false;
        if (!CreateDialogParamA(instance, MAKEINTRESOURCEA(T::kTemplateId), owner, &Dialog::Thunk,
                                reinterpret_cast<LPARAM>(static_cast<T*>(this))))
            return false;
        ShowWindow(hwnd_, SW_SHOW);
        return true;
    }
    // Ends the dialog with the value.
    void Close(INT_PTR result) {
        if (!hwnd_)
            return;
        if (modal_)
            EndDialog(hwnd_, result);
        else
            DestroyWindow(hwnd_);
    }

protected:
    Dialog(const EventLog* log, std::string failurePrefix)
        : failed_(log, std::move(failurePrefix)) {}
    ~Dialog() {
        if (hwnd_ && !modal_) {
            // The object is going: the window is let go first, so that its last messages never
            // reach a half-destroyed object.
            SetWindowLongPtrA(hwnd_, DWLP_USER, 0);
            RemoveDialogWindow(hwnd_);
            DestroyWindow(hwnd_);
        }
    }

    std::string Text(int control) const {
        HWND item = GetDlgItem(hwnd_, control);
        std::string text(static_cast<size_t>(GetWindowTextLengthA(item)) + 1, '\0');
        text.resize(static_cast<size_t>(GetWindowTextA(item, text.data(), int(text.size()))));
        return text;
    }
    void SetText(int control, const std::string& text) const {
        SetDlgItemTextA(hwnd_, control, text.c_str());
    }
    bool Checked(int control) const { return IsDlgButtonChecked(hwnd_, control) == BST_CHECKED; }
    void SetChecked(int control, bool checked) const {
        CheckDlgButton(hwnd_, control, checked ? BST_CHECKED : BST_UNCHECKED);
    }
    // The dialog's font as changed, given to the controls; the font is the caller's to keep
    // for as long as they show it.
    template <class Change>
    UniqueGdiObject FontFor(std::initializer_list<int> controls, Change change) const {
        LOGFONTA face{};
        if (!GetObjectA(reinterpret_cast<HFONT>(SendMessageA(hwnd_, WM_GETFONT, 0, 0)), sizeof face,
                        &face))
            return UniqueGdiObject();
        change(face);
        UniqueGdiObject font(CreateFontIndirectA(&face));
        for (int control : controls)
            SendDlgItemMessageA(hwnd_, control, WM_SETFONT, reinterpret_cast<WPARAM>(font.get()),
                                FALSE);
        return font;
    }

private:
    static INT_PTR CALLBACK Thunk(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
        if (message == WM_INITDIALOG) {
            auto* self = reinterpret_cast<T*>(lParam);
            static_cast<Dialog*>(self)->hwnd_ = hwnd;
            SetWindowLongPtrA(hwnd, DWLP_USER, lParam);
            if (!static_cast<Dialog*>(self)->modal_)
                AddDialogWindow(hwnd);
        }
        auto* self = reinterpret_cast<T*>(GetWindowLongPtrA(hwnd, DWLP_USER));
        if (!self)
            return FALSE;
        Dialog& base = *self;
        if (message == WM_NCDESTROY) {
            SetWindowLongPtrA(hwnd, DWLP_USER, 0);
            RemoveDialogWindow(hwnd);
            base.hwnd_ = nullptr;
        }
        try {
            if (message == WM_INITDIALOG) {
                self->Init();
                return TRUE; // the first control takes the focus
            }
            INT_PTR result = FALSE;
            if (self->OnMessage(message, wParam, lParam, result)) {
                SetWindowLongPtrA(hwnd, DWLP_MSGRESULT, result);
                // These answer in the procedure's own result, not in DWLP_MSGRESULT.
                return message == WM_INITDIALOG || message == WM_CTLCOLORDLG ||
                               message == WM_CTLCOLORSTATIC || message == WM_CTLCOLOREDIT ||
                               message == WM_CTLCOLORBTN
                           ? result
                           : TRUE;
            }
        } catch (const std::exception& e) {
            base.failed_(e.what());
        } catch (...) {
            base.failed_("unknown failure");
        }
        return message == WM_INITDIALOG ? TRUE : FALSE;
    }

    HWND hwnd_ = nullptr;
    bool modal_ = true;
    FailureLog failed_;
};

} // namespace tolvane
