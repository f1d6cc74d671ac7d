#include "ui/main_window.h"

#include <exception>

#include "config/app_state.h"
#include "items/item_moves.h"
#include "items/refresh.h"
#include "items/run_entry.h"
#include "items/startup_folders.h"
#include "platform/message_pump.h"
#include "platform/runtime_libraries.h"
#include "resource_ids.h"
#include "startup/tray_commands.h"
#include "text/strings.h"
#include "ui/tray_menu_view.h"

namespace tolvane {

namespace {

constexpr int kTreeId = 100;
// The first showing builds the tree once the window is on screen.
constexpr UINT kFirstShown = WM_APP + 2;

// The Menus entries of the item popup's moves.
constexpr size_t kDelayText = 17, kStopText = 18, kRunText = 19;

} // namespace

UINT OpenWindowMessage() {
    static const UINT message = RegisterWindowMessageA("Tolvane.OpenWindow");
    return message;
}

MainWindow::MainWindow(AppState& app, HINSTANCE instance)
    : Window(&app.log, "Startup Items Error! Reported: "), app_(app), instance_(instance),
      tray_(&app.log) {
    AddCommands();
}

MainWindow::~MainWindow() {
    tray_.RemoveTrayIcon();
    SetAccelerators(nullptr, nullptr);
}

void MainWindow::ClassStyle(WNDCLASSEXA& wc) {
    wc.hIcon = LoadIconA(wc.hInstance, MAKEINTRESOURCEA(IDI_TOLVANE));
    wc.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1);
}

void MainWindow::AddCommands() {
    commands_.Add(ID_CMD_OPEN, [this] { Open(); });
    commands_.Add(ID_CMD_QUIT, [this] { EndForGood(); });
    commands_.Add(
        ID_CMD_REFRESH, [this] { Refresh(); }, [this] { return treeView_ != nullptr; });
    // The moves of the selected item, as its place in the tree allows them.
    auto selected = [this] {
        const int node = tree_.Selected();
        auto place = PlaceOf(tree_, node);
        return place && tree_.Node(node).Tag == kPopupTag ? place : std::nullopt;
    };
    commands_.Add(
        ID_CMD_DELAY, [this] { MoveSelected(ID_CMD_DELAY); },
        [selected] {
            auto p = selected();
            return p && p->State != ItemState::Delayed;
        });
    commands_.Add(
        ID_CMD_STOP, [this] { MoveSelected(ID_CMD_STOP); },
        [selected] {
            auto p = selected();
            return p && p->State != ItemState::Stopped;
        });
    commands_.Add(
        ID_CMD_RUN, [this] { MoveSelected(ID_CMD_RUN); },
        [selected] {
            auto p = selected();
            return p && p->State != ItemState::Active;
        });
}

bool MainWindow::Load() {
    if (!Create(instance_, 0, kMainWindowTitle, WS_OVERLAPPEDWINDOW, CW_USEDEFAULT, CW_USEDEFAULT,
                760, 520, nullptr))
        return false;
    SetAccelerators(Hwnd(), LoadAcceleratorsA(instance_, MAKEINTRESOURCEA(IDA_MAIN)));
    icon_.reset(
        static_cast<HICON>(LoadImageA(instance_, "clock", IMAGE_ICON, GetSystemMetrics(SM_CXSMICON),
                                      GetSystemMetrics(SM_CYSMICON), 0)));
    if (tray_.Create(instance_)) {
        tray_.SetPicture(icon_.get());
        tray_.FormToPopup = Hwnd();
        tray_.BuildMenu = [this] { return TrayMenuChoice(); };
        tray_.ItemClicked = [this](int number) { TrayMenuCommand(app_, *this, trayMenu_, number); };
        tray_.LoadTrayIcon("Tolvane");
    }
    if (app_.ShowGui) {
        ShowWindowNow(SW_SHOWNORMAL);
        UpdateWindow(Hwnd());
    }
    return true;
}

int MainWindow::TrayMenuChoice() {
    trayMenu_ = BuildTrayMenuModel(app_);
    return ShowTrayMenu(Hwnd(), trayMenu_);
}

void MainWindow::EnsureContent() {
    if (treeView_)
        return;
    EnsureCommonControls();
    EnsureStartupFolders(app_);
    statusBar_ = CreateWindowExA(0, STATUSCLASSNAMEA, "", WS_CHILD | WS_VISIBLE | SBARS_SIZEGRIP, 0,
                                 0, 0, 0, Hwnd(), nullptr, instance_, nullptr);
    int parts[] = {200, -1};
    SendMessageA(statusBar_, SB_SETPARTS, 2, reinterpret_cast<LPARAM>(parts));
    SendMessageA(statusBar_, SB_SETTEXTA, 1,
                 reinterpret_cast<LPARAM>(TextTables::Entry(app_.text.Toolbar, 6).c_str()));
    progress_ = std::make_unique<AdvProgressBar>(Hwnd(), &app_.log);
    progress_->SetMin(0);
    progress_->SetMax(100);
    progress_->SetValue(0);
    progress_->SetGradient(false);
    progress_->SetMyParent(statusBar_);
    progress_->SetStatusBarPanelIndex(1);
    treeView_ = std::make_unique<TreeViewControl>(Hwnd(), kTreeId, instance_);
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
    GetClientRect(Hwnd(), &client);
    SendMessageA(statusBar_, WM_SIZE, 0, 0);
    RECT bar{};
    GetWindowRect(statusBar_, &bar);
    // A margin of 75 twips around the tree.
    const int margin = MulDiv(75, GetDeviceCaps(WindowDc(Hwnd()).get(), LOGPIXELSX), 1440);
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
    if (!commands_.Enabled(ID_CMD_DELAY) && !commands_.Enabled(ID_CMD_STOP) &&
        !commands_.Enabled(ID_CMD_RUN))
        return; // no item that moves
    UniqueMenu menu(CreatePopupMenu());
    auto add = [&](UINT id, size_t caption) {
        AppendMenuA(menu.get(),
                    MF_STRING | (commands_.Enabled(static_cast<int>(id)) ? 0 : MF_GRAYED), id,
                    TextTables::Entry(app_.text.Menus, caption).c_str());
    };
    add(ID_CMD_DELAY, kDelayText);
    AppendMenuA(menu.get(), MF_SEPARATOR, 0, nullptr);
    add(ID_CMD_STOP, kStopText);
    AppendMenuA(menu.get(), MF_SEPARATOR, 0, nullptr);
    add(ID_CMD_RUN, kRunText);
    const UINT chosen =
        TrackPopupMenuEx(menu.get(), TPM_RETURNCMD | TPM_RIGHTBUTTON, at.x, at.y, Hwnd(), nullptr);
    if (chosen)
        commands_.Execute(static_cast<int>(chosen));
}

void MainWindow::MoveSelected(UINT command) {
    const int node = tree_.Selected();
    const std::optional<ItemPlace> place = PlaceOf(tree_, node);
    if (!place)
        return;
    const std::string text = tree_.Node(node).Text;
    const bool stopped = place->State == ItemState::Stopped;
    ItemMoves moves(app_, tree_, Hwnd());
    if (command == ID_CMD_RUN) {
        if (place->Registry())
            moves.RestoreRegistryItem(text, place->Location, stopped);
        else
            moves.RestoreStartupItem(text, place->Location, stopped);
    } else if (place->Registry()) {
        moves.DelayRegistryItem(text, place->Location, command == ID_CMD_STOP, place->State);
    } else {
        moves.DelayStartupItem(text, place->Location, command == ID_CMD_STOP, place->State);
    }
    Refresh();
}

void MainWindow::ShowWindowNow(int command) {
    const bool first = !treeView_;
    EnsureContent();
    ShowWindow(Hwnd(), command);
    if (first) {
        UpdateWindow(Hwnd());
        Refresh();
    }
}

void MainWindow::Open() {
    if (!app_.ShowGui)
        isVisible_ = true;
    ShowWindowNow(IsIconic(Hwnd()) ? SW_RESTORE : SW_SHOW);
    SetForegroundWindow(Hwnd());
}

void MainWindow::Unload() {
    EndForGood();
}

void MainWindow::EndForGood() {
    if (ending_ || !Hwnd())
        return;
    ending_ = true;
    // A running wait sees this as soon as this handler returns, and starts nothing more.
    app_.wait.QuitRequested = true;
    tray_.RemoveTrayIcon();
    DestroyWindow(Hwnd());
    if (app_.model.StartupType == 1)
        UpdateRunEntry(app_, 1);
}

LRESULT MainWindow::HandleMessage(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) {
    if (msg == OpenWindowMessage()) {
        Open();
        return 0;
    }
    if (msg == TaskbarCreatedMessage()) {
        tray_.TaskbarCreated();
        return 0;
    }
    switch (msg) {
    case WM_COMMAND:
        if (commands_.Execute(LOWORD(wp)))
            return 0;
        break;
    case WM_SHOWWINDOW:
        // Shown from the tray: the tree is built once the window is on screen.
        if (wp && !treeView_) {
            EnsureContent();
            PostMessageA(hwnd, kFirstShown, 0, 0);
        }
        break;
    case kFirstShown:
        Refresh();
        return 0;
    case WM_SIZE:
        if (wp != SIZE_MINIMIZED)
            Layout();
        return 0;
    case WM_NOTIFY: {
        const auto* header = reinterpret_cast<const NMHDR*>(lp);
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
        tray_.RemoveTrayIcon();
        PostQuitMessage(0);
        return 0;
    }
    return DefWindowProcA(hwnd, msg, wp, lp);
}

} // namespace tolvane
