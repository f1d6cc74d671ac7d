#include "ui/main_window.h"

#include <exception>

#include "items/item_moves.h"
#include "items/refresh.h"
#include "text/strings.h"
#include "platform/runtime_libraries.h"
#include "resource_ids.h"
#include "config/app_state.h"
#include "items/startup_folders.h"
#include "items/run_entry.h"

namespace tolvane {

namespace {

constexpr const char* kClassName = "TolvaneStartupItems";
constexpr int kTreeId = 100;
enum : UINT { kMenuOpen = 1, kMenuQuit = 2 };

} // namespace

UINT OpenWindowMessage() {
    static const UINT message = RegisterWindowMessageA("Tolvane.OpenWindow");
    return message;
}

MainWindow::MainWindow(AppState& app, HINSTANCE instance) : app_(app), instance_(instance) {}

MainWindow::~MainWindow() {
    tray_.Remove();
    if (window_) {
        SetWindowLongPtrA(window_, GWLP_USERDATA, 0);
        DestroyWindow(window_);
    }
}

bool MainWindow::Load() {
    WNDCLASSEXA wc{sizeof wc};
    if (!GetClassInfoExA(instance_, kClassName, &wc)) {
        wc.cbSize = sizeof wc;
        wc.lpfnWndProc = WindowProc;
        wc.hInstance = instance_;
        wc.hIcon = LoadIconA(instance_, MAKEINTRESOURCEA(IDI_TOLVANE));
        wc.hCursor = LoadCursorA(nullptr, MAKEINTRESOURCEA(32512));
        wc.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1);
        wc.lpszClassName = kClassName;
        if (!RegisterClassExA(&wc))
            return false;
    }
    window_ = CreateWindowExA(0, kClassName, kMainWindowTitle, WS_OVERLAPPEDWINDOW, CW_USEDEFAULT,
                              CW_USEDEFAULT, 760, 520, nullptr, nullptr, instance_, this);
    if (!window_)
        return false;
    icon_.reset(
        static_cast<HICON>(LoadImageA(instance_, "clock", IMAGE_ICON, GetSystemMetrics(SM_CXSMICON),
                                      GetSystemMetrics(SM_CYSMICON), 0)));
    tray_.Add(window_, icon_.get(), "Tolvane");
    if (app_.ShowGui) {
        ShowWindowNow(SW_SHOWNORMAL);
        UpdateWindow(window_);
    }
    return true;
}

void MainWindow::EnsureContent() {
    if (treeView_)
        return;
    EnsureCommonControls();
    EnsureStartupFolders(app_);
    statusBar_ = CreateWindowExA(0, STATUSCLASSNAMEA, "", WS_CHILD | WS_VISIBLE | SBARS_SIZEGRIP, 0,
                                 0, 0, 0, window_, nullptr, instance_, nullptr);
    int parts[] = {200, -1};
    SendMessageA(statusBar_, SB_SETPARTS, 2, reinterpret_cast<LPARAM>(parts));
    SendMessageA(statusBar_, SB_SETTEXTA, 1,
                 reinterpret_cast<LPARAM>(TextTables::Entry(app_.text.Toolbar, 6).c_str()));
    progress_ = std::make_unique<AdvProgressBar>(window_);
    progress_->SetMin(0);
    progress_->SetMax(100);
    progress_->SetValue(0);
    progress_->SetGradient(false);
    progress_->SetMyParent(statusBar_);
    progress_->SetStatusBarPanelIndex(1);
    treeView_ = std::make_unique<TreeViewControl>(window_, kTreeId, instance_);
    treeView_->ToolTip = [this](int node) {
        return node == TreeModel::kNone ? std::string()
                                        : SafeListDescription(tree_.Node(node).Text, app_.SafeList);
    };
    Layout();
}

void MainWindow::Layout() {
    if (!treeView_)
        return;
    RECT client{};
    GetClientRect(window_, &client);
    SendMessageA(statusBar_, WM_SIZE, 0, 0);
    RECT bar{};
    GetWindowRect(statusBar_, &bar);
    // A margin of 75 twips around the tree.
    const int margin = MulDiv(75, GetDeviceCaps(WindowDc(window_).get(), LOGPIXELSX), 1440);
    const int height = client.bottom - (bar.bottom - bar.top) - 2 * margin;
    MoveWindow(treeView_->Hwnd(), margin, margin, client.right - 2 * margin,
               height > 0 ? height : 0, TRUE);
    progress_->Reposition();
}

void MainWindow::Refresh() {
    EnsureContent();
    HCURSOR previous = SetCursor(LoadCursorA(nullptr, MAKEINTRESOURCEA(32514)));
    RefreshData(app_, tree_, listing_,
                [this](double value) { progress_->SetValue(static_cast<float>(value)); });
    treeView_->Render(tree_);
    progress_->SetValue(0);
    SetCursor(previous);
}

void MainWindow::ChecksMayHaveChanged() {
    if (!treeView_)
        return;
    // A container passes its new state on to its items.
    bool passedOn = false;
    for (int node : treeView_->ReadChecks(tree_)) {
        if (tree_.Node(node).Tag != kPopupTag) {
            CheckWithItems(tree_, node, tree_.Node(node).Checked);
            passedOn = true;
        }
    }
    if (passedOn)
        treeView_->ShowChecks(tree_);
}

void MainWindow::ItemMenu() {
    // A right click selects the item under the pointer first.
    POINT at{};
    GetCursorPos(&at);
    TVHITTESTINFO hit{};
    hit.pt = at;
    ScreenToClient(treeView_->Hwnd(), &hit.pt);
    if (HTREEITEM item = reinterpret_cast<HTREEITEM>(
            SendMessageA(treeView_->Hwnd(), TVM_HITTEST, 0, reinterpret_cast<LPARAM>(&hit))))
        SendMessageA(treeView_->Hwnd(), TVM_SELECTITEM, TVGN_CARET, reinterpret_cast<LPARAM>(item));
    const int node = tree_.Selected();
    const std::optional<ItemPlace> place = PlaceOf(tree_, node);
    if (!place || tree_.Node(node).Tag != kPopupTag)
        return;
    const bool delayed = place->State == ItemState::Delayed;
    const bool stopped = place->State == ItemState::Stopped;
    enum : UINT { kDelay = 1, kStop, kRun };
    UniqueMenu menu(CreatePopupMenu());
    auto add = [&](UINT id, size_t caption, bool enabled) {
        AppendMenuA(menu.get(), MF_STRING | (enabled ? 0 : MF_GRAYED), id,
                    TextTables::Entry(app_.text.Menus, caption).c_str());
    };
    add(kDelay, 17, !delayed);
    AppendMenuA(menu.get(), MF_SEPARATOR, 0, nullptr);
    add(kStop, 18, !stopped);
    AppendMenuA(menu.get(), MF_SEPARATOR, 0, nullptr);
    add(kRun, 19, delayed || stopped);
    const UINT chosen =
        TrackPopupMenuEx(menu.get(), TPM_RETURNCMD | TPM_RIGHTBUTTON, at.x, at.y, window_, nullptr);
    if (!chosen)
        return;
    const std::string text = tree_.Node(node).Text;
    ItemMoves moves(app_, tree_, window_);
    if (chosen == kRun) {
        if (place->Registry())
            moves.RestoreRegistryItem(text, place->Location, stopped);
        else
            moves.RestoreStartupItem(text, place->Location, stopped);
    } else if (place->Registry()) {
        moves.DelayRegistryItem(text, place->Location, chosen == kStop, place->State);
    } else {
        moves.DelayStartupItem(text, place->Location, chosen == kStop, place->State);
    }
    Refresh();
}

void MainWindow::ShowWindowNow(int command) {
    const bool first = !treeView_;
    EnsureContent();
    ShowWindow(window_, command);
    if (first) {
        UpdateWindow(window_);
        Refresh();
    }
}

void MainWindow::Open() {
    if (!app_.ShowGui)
        isVisible_ = true;
    ShowWindowNow(IsIconic(window_) ? SW_RESTORE : SW_SHOW);
    SetForegroundWindow(window_);
}

void MainWindow::Unload() {
    EndForGood();
}

void MainWindow::EndForGood() {
    if (ending_ || !window_)
        return;
    ending_ = true;
    // A running wait sees this as soon as this handler returns, and starts nothing more.
    app_.wait.QuitRequested = true;
    tray_.Remove();
    DestroyWindow(window_);
    if (app_.model.StartupType == 1)
        UpdateRunEntry(app_, 1);
}

void MainWindow::TrayMessage(UINT mouse) {
    if (mouse == WM_LBUTTONDBLCLK) {
        ShowWindowNow(IsIconic(window_) ? SW_RESTORE : SW_SHOW);
        SetForegroundWindow(window_);
        return;
    }
    if (mouse != WM_RBUTTONUP)
        return;
    UniqueMenu menu(CreatePopupMenu());
    AppendMenuA(menu.get(), MF_STRING, kMenuOpen, "&Open");
    AppendMenuA(menu.get(), MF_STRING, kMenuQuit, "&Quit Program");
    POINT at{};
    GetCursorPos(&at);
    SetForegroundWindow(window_); // or the menu would not close when clicked elsewhere
    const UINT chosen =
        TrackPopupMenuEx(menu.get(), TPM_RETURNCMD | TPM_RIGHTBUTTON, at.x, at.y, window_, nullptr);
    if (chosen == kMenuOpen)
        Open();
    else if (chosen == kMenuQuit)
        EndForGood();
}

LRESULT MainWindow::Handle(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) {
    if (msg == OpenWindowMessage()) {
        Open();
        return 0;
    }
    switch (msg) {
    case TrayIcon::kCallbackMessage:
        TrayMessage(static_cast<UINT>(lp));
        return 0;
    case WM_SIZE:
        if (wp != SIZE_MINIMIZED)
            Layout();
        return 0;
    case WM_NOTIFY: {
        const auto* header = reinterpret_cast<const NMHDR*>(lp);
        if (header->code == TVN_KEYDOWN &&
            reinterpret_cast<const NMTVKEYDOWN*>(lp)->wVKey == VK_F5) {
            Refresh();
            return 0;
        }
        if (treeView_ && header->hwndFrom == treeView_->Hwnd() && header->code == NM_RCLICK) {
            ItemMenu();
            return TRUE;
        }
        LRESULT result = 0;
        if (treeView_ && treeView_->OnNotify(header, tree_, result))
            return result;
        break;
    }
    case TreeViewControl::kChecksMayHaveChanged:
        ChecksMayHaveChanged();
        return 0;
    case WM_CLOSE:
        // The close button keeps the program in the tray when the settings ask for it.
        if (app_.model.CloseType == 1) {
            ShowWindow(hwnd, SW_HIDE);
            return 0;
        }
        EndForGood();
        return 0;
    case WM_QUERYENDSESSION:
        return TRUE;
    case WM_ENDSESSION:
        if (wp)
            EndForGood();
        return 0;
    case WM_DESTROY:
        tray_.Remove();
        window_ = nullptr;
        PostQuitMessage(0);
        return 0;
    case WM_NCDESTROY:
        SetWindowLongPtrA(hwnd, GWLP_USERDATA, 0);
        break;
    }
    return DefWindowProcA(hwnd, msg, wp, lp);
}

LRESULT CALLBACK MainWindow::WindowProc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) {
    if (msg == WM_NCCREATE) {
        auto* self = static_cast<MainWindow*>(reinterpret_cast<CREATESTRUCTA*>(lp)->lpCreateParams);
        self->window_ = hwnd;
        SetWindowLongPtrA(hwnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(self));
    }
    auto* self = reinterpret_cast<MainWindow*>(GetWindowLongPtrA(hwnd, GWLP_USERDATA));
    if (!self)
        return DefWindowProcA(hwnd, msg, wp, lp);
    try {
        return self->Handle(hwnd, msg, wp, lp);
    } catch (const std::exception& e) {
        // No failure leaves the window procedure: the program goes on with its next message.
        self->app_.log.WriteLog(std::string("Startup Items Error! Reported: ") + e.what(),
                                kLogError);
        return DefWindowProcA(hwnd, msg, wp, lp);
    }
}

} // namespace tolvane
