#include "ui/main_window.h"

#include <windowsx.h>
#include <shellapi.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <exception>
#include <map>
#include <utility>

#include "config/app_state.h"
#include "config/delay_load.h"
#include "config/policy_registry.h"
#include "config/program_group_store.h"
#include "config/language_files.h"
#include "items/item_moves.h"
#include "items/item_program.h"
#include "items/online_search.h"
#include "items/refresh.h"
#include "items/run_entry.h"
#include "items/startup_folders.h"
#include "platform/dir_struct.h"
#include "platform/message_pump.h"
#include "platform/min_size.h"
#include "platform/processes.h"
#include "platform/registry.h"
#include "platform/wide_text.h"
#include "platform/runtime_libraries.h"
#include "resource_ids.h"
#include "startup/tray_commands.h"
#include "text/placeholders.h"
#include "text/strings.h"
#include "ui/about/about_dialog.h"
#include "ui/group_editor/group_editor_dialog.h"
#include "ui/menu_view.h"
#include "ui/options/options_dialog.h"
#include "ui/timeline/timeline_window.h"
#include "ui/tips/tip_dialog.h"
#include "ui/tray_menu_view.h"

namespace tolvane {

namespace {

constexpr int kTreeId = 100;
// The lines of an item's tip: switched off in Task Manager, listed from the 32-bit Run key.
constexpr size_t kSwitchedOffLine = 20;
constexpr size_t kWow32Line = 21;
// An active item of all users: why it is neither ticked nor moved.
constexpr size_t kAllUsersLine = 35;
// The status line: a refresh that failed, the program's own Run value not as set.
constexpr size_t kNotReadLine = 36, kOwnRunEntryLine = 37;
// Save could not write the file.
constexpr size_t kNotWrittenMessage = 38;
// The status line: the tip box or the language could not be kept in the file.
constexpr size_t kNotKeptLine = 39;
// A language chosen: the window's own texts follow at the next start.
constexpr size_t kNextStartMessage = 41;
// Search Online: no program opened the address; the user may copy it.
constexpr size_t kNotOpenedMessage = 42;
// The tip's line of what an item's program is: signed, not trusted, unsigned (with the publisher
// and without), missing.
constexpr size_t kSignedLine = 45, kUntrustedLine = 46, kUnsignedLine = 47, kSignedAloneLine = 48,
                 kUntrustedAloneLine = 49, kUnsignedAloneLine = 50, kMissingLine = 51;
// The window's title, in its own texts (the Toolbar table).
constexpr size_t kTitleEntry = 7;
// Messages 22 to 24: the ratings; 25 and 26: a measurement with and without its ready time.
constexpr size_t kImpactRatingFirst = 22, kImpactFiguresReady = 25, kImpactFigures = 26;
// The first showing builds the tree once the window is on screen.
constexpr UINT kFirstShown = WM_APP + 2;
// A folder or key that the tree shows changed; the tree follows after a short while, so that a
// burst of changes (a move of many items elsewhere) rebuilds it once.
constexpr UINT kChangedElsewhere = WM_APP + 3;
// The worker found facts of the items' programs (wParam: its round); the tree has painted, and
// the worker may start on the facts of its items.
constexpr UINT kFactsFound = WM_APP + 9, kReadFacts = WM_APP + 10;
constexpr UINT_PTR kChangedTimer = 1;
constexpr UINT kChangedWaitMs = 300;

// The window's place is kept in the registry, not in proggroup.c: it belongs to this user's
// screens on this machine, while proggroup.c may be carried to another machine with other
// screens, and an older copy, which reads past a setting it does not know, would drop it from
// the file at its next write.
constexpr const char* kPlaceKey = "Software\\Hexmoor\\Tolvane";
constexpr const char* kPlaceValue = "WindowPlacement";
// The size a first start opens at, in pixels at 96 dots per inch.
constexpr long kFirstWidth = 760, kFirstHeight = 520;
// The status bar's progress part.
constexpr long kProgressTwips = 1800;

// At most this many yields wait for a running log-on wait to see that the program ends.
constexpr int kEndingYields = 5001;

// The toolbar's pictures by command.
const std::map<int, int>& ToolbarIcons() {
    static const std::map<int, int> icons = {{ID_CMD_SAVE, IDI_BAR_SAVE},
                                             {ID_CMD_REFRESH, IDI_BAR_REFRESH},
                                             {ID_CMD_STOP_CHECKED, IDI_TREE_STOPPED},
                                             {ID_CMD_DELAY_CHECKED, IDI_TREE_DELAY},
                                             {ID_CMD_RUN_CHECKED, IDI_BAR_RUN},
                                             {ID_CMD_GROUPS, IDI_BAR_PROPERTIES},
                                             {ID_CMD_LAST_LOGON, IDI_BAR_LAST_LOGON}};
    return icons;
}

// Shows a modeless dialog, or brings it to the front when it is open already.
template <class D, class... Args>
void OpenModeless(std::unique_ptr<D>& dialog, HINSTANCE instance, HWND owner, Args&&... args) {
    if (dialog && dialog->Hwnd()) {
        SetForegroundWindow(dialog->Hwnd());
        return;
    }
    dialog = std::make_unique<D>(std::forward<Args>(args)...);
    if (!dialog->ShowModeless(instance, owner))
        dialog.reset();
}

// A node as a rebuilt tree knows it again: an item by its key, a container by its own key;
// never by a caption, which two items (a value in both of the machine's views) may share.
struct NodePlace {
    std::string Container;
    std::optional<ItemKey> Item;
    bool operator==(const NodePlace&) const = default;
};

NodePlace PlaceOfNode(const TreeModel& tree, const StartupListing& listing, int node) {
    if (const StartupItem* item = ItemOfNode(tree, listing, node))
        return {"", item->Key()};
    return {tree.Node(node).Key, std::nullopt};
}

} // namespace

UINT OpenWindowMessage() {
    static const UINT message = RegisterWindowMessageA("Tolvane.OpenWindow");
    return message;
}

MainWindow::MainWindow(AppState& app, HINSTANCE instance)
    : Window(&app.log, "Startup Items Error! Reported: "), app_(app), instance_(instance),
      tray_(&app.log) {
    OpenWithShell = [this](const std::string& target) {
        SHELLEXECUTEINFOA info{sizeof info};
        info.fMask = SEE_MASK_FLAG_NO_UI;
        info.hwnd = Hwnd();
        info.lpFile = target.c_str();
        info.nShow = SW_SHOWNORMAL;
        return ShellExecuteExA(&info) != FALSE;
    };
    OpenGroupEditor = [this](std::optional<GroupProgram> record) {
        GroupEditorDialog editor(app_.Store(), app_.text, app_.messages, app_.log);
        editor.OpenOn(std::move(record));
        editor.ShowModal(instance_, Hwnd());
        // The editor may have changed the delayed programs.
        Refresh();
    };
    AddCommands();
}

OptionsDialog* MainWindow::Options() const {
    return options_ && options_->Hwnd() ? options_.get() : nullptr;
}

TimelineWindow* MainWindow::Timeline() const {
    return timeline_ && timeline_->Hwnd() ? timeline_.get() : nullptr;
}

TipDialog* MainWindow::Tip() const {
    return tip_ && tip_->Hwnd() ? tip_.get() : nullptr;
}

MainWindow::~MainWindow() {
    tray_.RemoveTrayIcon();
    SetAccelerators(nullptr, nullptr);
}

void MainWindow::ClassStyle(WNDCLASSEXA& wc) {
    wc.hIcon = LoadIconA(wc.hInstance, "clock");
    wc.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1);
}

void MainWindow::AddCommands() {
    commands_.Add(ID_CMD_OPEN, [this] { Open(); });
    commands_.Add(ID_CMD_QUIT, [this] { EndForGood(); });
    commands_.Add(ID_CMD_MINIMIZE_TO_TRAY, [this] { ShowWindow(Hwnd(), SW_HIDE); });
    commands_.Add(ID_CMD_REFRESH, [this] { Refresh(); });
    commands_.Add(ID_CMD_SAVE, [this] { Save(); });
    commands_.Add(ID_CMD_GROUPS, [this] {
        if (OpenGroupEditor)
            OpenGroupEditor(std::nullopt);
    });
    commands_.Add(ID_CMD_OPTIONS, [this] {
        OpenModeless(options_, instance_, Hwnd(), app_.Store(), app_.text, app_.messages, app_.log);
    });
    commands_.Add(ID_CMD_LAST_LOGON, [this] {
        std::vector<std::string> texts = BuiltInTimelineTexts();
        LoadLanguageTextFile(app_.folders.ProgramFolder, app_.model.Language, texts, "timeline");
        OpenModeless(timeline_, instance_, Hwnd(),
                     HistoryFileBeside(app_.Store().File().ImpactFilePath()), std::move(texts),
                     LocaleDecimalSeparator(), &app_.log);
    });
    commands_.Add(ID_CMD_TIPS, [this] {
        OpenModeless(tip_, instance_, Hwnd(), app_.Store(), app_.text, app_.log);
    });
    commands_.Add(ID_CMD_ABOUT, [this] {
        AboutDialog about(app_.text, app_.log,
                          [this](const std::string& target) { (void)OpenWithShell(target); });
        about.ShowModal(instance_, Hwnd());
    });
    commands_.Add(ID_CMD_HELP, [this] { OpenHelp(); });
    commands_.Add(ID_CMD_FORUMS, [this] { (void)OpenWithShell(kForumsAddress); });
    commands_.Add(ID_CMD_MAIN_PAGE, [this] { (void)OpenWithShell(kMainPageAddress); });
    commands_.Add(ID_CMD_SUPPORT_MAIL, [this] { (void)OpenWithShell(kSupportMailAddress); });

    // The ticked items' moves, as CheckForOptions last found them.
    commands_.Add(
        ID_CMD_STOP_CHECKED, [this] { MoveChecked(CheckedMove::Stop); },
        [this] { return moves_.Stop; });
    commands_.Add(
        ID_CMD_DELAY_CHECKED, [this] { MoveChecked(CheckedMove::Delay); },
        [this] { return moves_.Delay; });
    commands_.Add(
        ID_CMD_RUN_CHECKED, [this] { MoveChecked(CheckedMove::Run); },
        [this] { return moves_.Run; });

    // The selected item's moves, as its state allows them.
    auto state = [this](auto allowed) {
        return [this, allowed] {
            auto place = SelectedItem();
            return place && allowed(place->State);
        };
    };
    commands_.Add(
        ID_CMD_DELAY, [this] { MoveSelected(ID_CMD_DELAY); },
        state([](ItemState s) { return s != ItemState::Delayed; }));
    commands_.Add(
        ID_CMD_STOP, [this] { MoveSelected(ID_CMD_STOP); },
        state([](ItemState s) { return s != ItemState::Stopped; }));
    // An active item that Task Manager switched off can be run too: that switches it on.
    commands_.Add(
        ID_CMD_RUN, [this] { MoveSelected(ID_CMD_RUN); },
        [this] {
            auto place = SelectedItem();
            return place && (place->State != ItemState::Active || tree_.Node(tree_.Selected()).Cut);
        });
    commands_.Add(
        ID_CMD_PROPERTIES,
        [this] {
            // The editor opens on the item's own record, never on a program of the same path:
            // found by the item's key in the model as it is now, which a change since the
            // refresh (Options, the tip box, another copy) may have reordered.
            std::optional<GroupProgram> record;
            if (const StartupItem* item = ItemOfNode(tree_, listing_, tree_.Selected()))
                if (const int i = FindDelayedRecord(app_.model, *item); i >= 0)
                    record = app_.model.StartupGroup()->Programs[static_cast<size_t>(i)];
            if (OpenGroupEditor)
                OpenGroupEditor(record);
        },
        state([](ItemState s) { return s == ItemState::Delayed; }));
    commands_.Add(ID_CMD_SEARCH_ONLINE, [this] { SearchOnline(); });
}

bool MainWindow::Load() {
    if (!Create(instance_, 0, TextTables::Entry(app_.text.Toolbar, kTitleEntry).c_str(),
                WS_OVERLAPPEDWINDOW, CW_USEDEFAULT, CW_USEDEFAULT, kFirstWidth, kFirstHeight,
                nullptr))
        return false;
    PlaceWindow();
    std::vector<ACCEL> keys;
    for (const AcceleratorKey& key : MainAccelerators())
        keys.push_back(ACCEL{static_cast<BYTE>(FVIRTKEY | (key.Control ? FCONTROL : 0)), key.Key,
                             static_cast<WORD>(key.Command)});
    accelerators_.reset(CreateAcceleratorTableA(keys.data(), static_cast<int>(keys.size())));
    SetAccelerators(Hwnd(), accelerators_.get());
    icon_.reset(
        static_cast<HICON>(LoadImageA(instance_, "clock", IMAGE_ICON, GetSystemMetrics(SM_CXSMICON),
                                      GetSystemMetrics(SM_CYSMICON), 0)));
    // A user who started the program sees the tree first; the icon follows.
    if (app_.ShowGui) {
        ShowWindowNow(openMaximized_ ? SW_SHOWMAXIMIZED : SW_SHOWNORMAL);
        UpdateWindow(Hwnd());
    }
    if (tray_.Create(instance_)) {
        tray_.SetPicture(icon_.get());
        // Two clicks open the window as "&Open" does: during the log-on run that keeps the
        // program once the run is over, as the user who opened it expects.
        tray_.Opened = [this] { Open(); };
        tray_.BuildMenu = [this] { return TrayMenuChoice(); };
        tray_.ItemClicked = [this](int number) {
            TrayMenuCommand(RunNeedsOf(app_), *this, trayMenu_, number);
        };
        tray_.LoadTrayIcon("Tolvane");
    }
    return true;
}

void MainWindow::Ready() {
    if (!Hwnd() && !Load())
        throw std::runtime_error("the main window could not be made");
}

int MainWindow::TrayMenuChoice() {
    trayMenu_ = BuildTrayMenuModel(app_.model, app_.text);
    return ShowTrayMenu(Hwnd(), trayMenu_);
}

void MainWindow::EnsureContent() {
    if (treeView_)
        return;
    EnsureCommonControls();
    EnsureStartupFolders(app_.folders);
    // The captions: a window without its menu bar still shows and moves the items.
    try {
        std::vector<MenuItem> items =
            BuildMainMenu(app_.text.Menus, app_.text.Languages, app_.model.Language);
        ApplyEnabled(items, commands_);
        SetMenu(Hwnd(), MakeMenuBar(items).release()); // the window's now: destroyed with it
    } catch (const std::exception& e) {
        app_.log.WriteLog(std::string("Startup Items - Form Captions: ") + e.what(), kLogWarning);
    }
    toolbar_ = std::make_unique<ToolbarControl>(
        Hwnd(), instance_, BuildMainToolbar(app_.text.Menus, app_.text.Toolbar), ToolbarIcons());
    statusBar_ = CreateWindowExA(0, STATUSCLASSNAMEA, "", WS_CHILD | WS_VISIBLE | SBARS_SIZEGRIP, 0,
                                 0, 0, 0, Hwnd(), nullptr, instance_, nullptr);
    ShowStatus("");
    progress_ = std::make_unique<AdvProgressBar>(Hwnd(), &app_.log);
    progress_->SetMin(0);
    progress_->SetMax(100);
    progress_->SetValue(0);
    progress_->SetGradient(false);
    progress_->SetMyParent(statusBar_);
    progress_->SetStatusBarPanelIndex(2);
    treeView_ = std::make_unique<TreeViewControl>(Hwnd(), kTreeId, instance_);
    treeView_->ToolTip = [this](int node) {
        if (node == TreeModel::kNone)
            return std::string();
        std::string impact;
        if (const std::optional<ImpactKey> item = DelayedItemKey(tree_, listing_, node))
            if (const ImpactRecord* record =
                    FindImpact(listing_.Impacts, *item, CDirStruct::CompareNames)) {
                ImpactTexts texts;
                for (size_t i = 0; i < 3; ++i)
                    texts.Ratings[i] = app_.text.Message(kImpactRatingFirst + i);
                texts.FiguresReady = app_.text.Message(kImpactFiguresReady);
                texts.Figures = app_.text.Message(kImpactFigures);
                texts.Decimal = LocaleDecimalSeparator();
                impact = ImpactTipLine(*record, texts);
            }
        // What the item starts: a shortcut's target, a Run value's program as written.
        std::string program = ProgramOfShortcut(tree_.Node(node).File);
        if (program.empty())
            program = tree_.Node(node).File;
        return ItemToolTip(tree_.Node(node), app_.SafeList,
                           {app_.text.Message(kSwitchedOffLine), app_.text.Message(kWow32Line),
                            app_.text.Message(kAllUsersLine)},
                           impact, program, FactsLine(node));
    };
    facts_ =
        std::make_unique<FactsReader>(Hwnd(), kFactsFound, [log = &app_.log](const char* what) {
            log->WriteLog(std::string("Program facts: ") + what, kLogWarning);
        });
    CheckForOptions();
    Layout();
    WatchForChanges();
}

void MainWindow::WatchForChanges() {
    watch_ = std::make_unique<ChangeWatch>(Hwnd(), kChangedElsewhere);
    const std::string file = app_.Store().File().FilePath();
    watch_->Folder(file.substr(0, file.find_last_of('\\')));
    watch_->Folder(app_.folders.UserStartupFolder);
    watch_->Folder(app_.folders.CommonStartupFolder);
    for (RegistryRoot root :
         {RegistryRoot::CurrentUser, RegistryRoot::LocalMachine, RegistryRoot::LocalMachine32})
        watch_->Key(root, kRunKey);
    // Task Manager's switches.
    watch_->Key(RegistryRoot::CurrentUser, kApprovedRunKey);
    watch_->Key(RegistryRoot::CurrentUser, kApprovedFolderKey);
    watch_->Key(RegistryRoot::LocalMachine, kApprovedRunKey);
    watch_->Key(RegistryRoot::LocalMachine, kApprovedRun32Key);
    watch_->Key(RegistryRoot::LocalMachine, kApprovedFolderKey);
    if (!watch_->Start())
        app_.log.WriteLog("Changes made elsewhere are not followed: nothing can be watched",
                          kLogWarning);
}

void MainWindow::ChangedElsewhere() {
    if (!treeView_)
        return; // the first showing builds the tree anyway
    if (!IsWindowVisible(Hwnd())) {
        stale_ = true;
        return;
    }
    SetTimer(Hwnd(), kChangedTimer, kChangedWaitMs, nullptr);
}

void MainWindow::RefreshForChange() {
    KillTimer(Hwnd(), kChangedTimer);
    // A move of this window is under way (its shell operation serves the message loop): the
    // tree follows once it is done.
    if (ProgramGroupStore::Changing()) {
        SetTimer(Hwnd(), kChangedTimer, kChangedWaitMs, nullptr);
        return;
    }
    stale_ = false;
    Refresh(true);
}

void MainWindow::ReadFacts() {
    nodeFacts_.assign(tree_.Count(), std::nullopt);
    factsRound_ = 0; // what the worker finds for the tree before this one is not this one's
    pendingFacts_.clear();
    for (size_t i = 0; i < tree_.Count(); ++i)
        if (const StartupItem* item = ItemOfNode(tree_, listing_, static_cast<int>(i)))
            pendingFacts_.push_back({static_cast<int>(i), *item});
    // The worker starts once the tree has painted: its first files and libraries would
    // otherwise take the time of the first paint.
    PostMessageA(Hwnd(), kReadFacts, 0, 0);
}

void MainWindow::StartFacts() {
    if (pendingFacts_.empty() || !facts_)
        return;
    UpdateWindow(treeView_->Hwnd());
    try {
        factsRound_ = facts_->Read(std::exchange(pendingFacts_, {}));
    } catch (const std::exception& e) {
        // The tree shows all the same, its tips without the programs' facts.
        app_.log.WriteLog(std::string("Program facts: ") + e.what(), kLogWarning);
    }
}

void MainWindow::FactsFound(WPARAM round) {
    if (round != factsRound_ || !facts_)
        return; // a later refresh reads its own
    for (const FactsReader::Found& found : facts_->Take()) {
        if (found.Node < 0 || static_cast<size_t>(found.Node) >= nodeFacts_.size())
            continue;
        nodeFacts_[static_cast<size_t>(found.Node)] = found.Facts;
        if (found.Facts.Signature == SignatureState::Missing) {
            tree_.Node(found.Node).Missing = true;
            treeView_->ShowMark(tree_, found.Node);
        }
    }
}

std::string MainWindow::FactsLine(int node) const {
    if (node < 0 || static_cast<size_t>(node) >= nodeFacts_.size() ||
        !nodeFacts_[static_cast<size_t>(node)])
        return {};
    const auto m = [this](size_t line) { return app_.text.Message(line); };
    return FactsTipLine(*nodeFacts_[static_cast<size_t>(node)],
                        {m(kSignedLine), m(kUnsignedLine), m(kUntrustedLine), m(kSignedAloneLine),
                         m(kUnsignedAloneLine), m(kUntrustedAloneLine), m(kMissingLine)});
}

void MainWindow::Layout() {
    if (!treeView_)
        return;
    RECT client{};
    GetClientRect(Hwnd(), &client);
    const int bar = toolbar_->Fit();
    SendMessageA(statusBar_, WM_SIZE, 0, 0);
    RECT status{};
    GetWindowRect(statusBar_, &status);
    const UINT dpi = GetDpiForWindow(Hwnd());
    // The status line's text takes what the progress part at the right leaves: the parts follow
    // every size, so the text shows whole however wide the window is.
    int parts[] = {std::max(0, static_cast<int>(status.right - status.left -
                                                TwipsToPixels(kProgressTwips, dpi))),
                   -1};
    SendMessageA(statusBar_, SB_SETPARTS, 2, reinterpret_cast<LPARAM>(parts));
    // A margin of 75 twips around the tree, between the toolbar and the status bar.
    const int margin = static_cast<int>(TwipsToPixels(75, dpi));
    const int height = client.bottom - 2 * margin - bar - (status.bottom - status.top);
    const int width = client.right - 2 * margin;
    MoveWindow(treeView_->Hwnd(), margin, bar + margin, width > 0 ? width : 0,
               height > 0 ? height : 0, TRUE);
    progress_->Reposition();
}

void MainWindow::Refresh(bool keepPlace) {
    EnsureContent();
    HCURSOR previous = SetCursor(LoadCursorA(nullptr, MAKEINTRESOURCEA(32514)));
    NodePlace selected;
    std::vector<NodePlace> ticked;
    if (keepPlace) {
        (void)treeView_->ReadChecks(tree_); // the ticks as the control shows them now
        const int node = tree_.Selected();
        if (node != TreeModel::kNone)
            selected = PlaceOfNode(tree_, listing_, node);
        for (size_t i = 0; i < tree_.Count(); ++i)
            if (tree_.Node(static_cast<int>(i)).Checked &&
                tree_.Node(static_cast<int>(i)).Parent != TreeModel::kNone)
                ticked.push_back(PlaceOfNode(tree_, listing_, static_cast<int>(i)));
    }
    // A change made elsewhere is shown, not answered: the program's own Run value and a
    // missing file are left to whoever made it.
    const bool listed = RefreshData(
        app_.Store(), app_.text, app_.SafeList, app_.log, tree_, listing_,
        [this](double value) { progress_->SetValue(static_cast<float>(value)); }, keepPlace);
    // The program's own Run value follows the settings and the delayed items as the file holds
    // them now, not whatever this process held before it read them.
    const bool ownInStep =
        keepPlace || !listed ||
        UpdateRunEntry(app_.model.StartupType, app_.folders.RunCommand, app_.model, app_.log);
    // What went wrong is told where the user looks, not only in the log.
    // A choice not kept stays said until the user's own next refresh: a refresh for a change
    // made elsewhere (the failed write's own traces, say) is no answer to it.
    if (!keepPlace)
        notKept_ = false;
    ShowStatus(!listed      ? app_.text.Message(kNotReadLine)
               : !ownInStep ? app_.text.Message(kOwnRunEntryLine)
               : notKept_   ? app_.text.Message(kNotKeptLine)
                            : std::string());
    if (keepPlace) {
        for (size_t i = 0; i < tree_.Count(); ++i) {
            TreeNode& node = tree_.Node(static_cast<int>(i));
            const NodePlace place = PlaceOfNode(tree_, listing_, static_cast<int>(i));
            if (place == selected)
                tree_.Select(static_cast<int>(i));
            node.Checked = node.Parent != TreeModel::kNone &&
                           std::find(ticked.begin(), ticked.end(), place) != ticked.end();
        }
    }
    treeView_->Render(tree_);
    ReadFacts();
    progress_->SetValue(0);
    SetCursor(previous);
    CheckForOptions();
}

void MainWindow::ShowStatus(const std::string& text) {
    // Nothing to tell: the line says how the window is used.
    const std::string& shown = text.empty() ? TextTables::Entry(app_.text.Toolbar, 6) : text;
    SendMessageA(statusBar_, SB_SETTEXTA, 0, reinterpret_cast<LPARAM>(shown.c_str()));
}

void MainWindow::NotKept() {
    notKept_ = true;
    ShowStatus(app_.text.Message(kNotKeptLine));
}

void MainWindow::CheckForOptions() {
    if (!treeView_)
        return;
    try {
        moves_ = ::tolvane::CheckForOptions(tree_);
        if (moves_.Unticked)
            treeView_->ShowChecks(tree_);
    } catch (const std::exception& e) {
        moves_ = {};
        app_.log.WriteLog(std::string("CheckForOptions: ") + e.what(), kLogError);
    }
    toolbar_->ShowEnabled(commands_);
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
    CheckForOptions();
}

ItemMoves MainWindow::Moves() {
    return ItemMoves({app_.Store(), app_.text, app_.messages, app_.log}, Hwnd());
}

void MainWindow::MoveChecked(CheckedMove move) {
    ItemMovePasses passes(Moves(), tree_, listing_, [this] { Refresh(); });
    // Nothing ticked moves nothing (the button was off); an item that failed, the pass told.
    (void)RunCheckedMove(move, tree_, passes);
    CheckForOptions();
}

void MainWindow::Save() {
    try {
        ItemMovePasses passes(Moves(), tree_, listing_, [this] { Refresh(); });
        // Nothing ticked writes nothing, as asked; a file not written throws to below.
        (void)RunCheckedMove(CheckedMove::Save, tree_, passes);
    } catch (const std::exception& e) {
        app_.log.WriteLog(std::string("Menu Save Error: ") + e.what(), kLogError);
        app_.messages.ShowMessage(app_.text.Message(kNotWrittenMessage) + e.what(), "Tolvane",
                                  kMbOk | kMbIconExclamation);
    }
    CheckForOptions();
}

std::optional<ItemPlace> MainWindow::SelectedItem() const {
    const int node = tree_.Selected();
    auto place = PlaceOf(tree_, node);
    return place && tree_.Node(node).Tag == kPopupTag ? place : std::nullopt;
}

void MainWindow::ItemMenu(std::optional<POINT> at) {
    HWND tree = treeView_->Hwnd();
    if (at) {
        // A right click selects the item under the pointer first.
        TVHITTESTINFO hit{};
        hit.pt = *at;
        ScreenToClient(tree, &hit.pt);
        if (HTREEITEM item = reinterpret_cast<HTREEITEM>(
                SendMessageA(tree, TVM_HITTEST, 0, reinterpret_cast<LPARAM>(&hit))))
            SendMessageA(tree, TVM_SELECTITEM, TVGN_CARET, reinterpret_cast<LPARAM>(item));
    } else if (HTREEITEM item = treeView_->ItemOf(tree_.Selected())) {
        // The keyboard's menu opens below the selected item.
        RECT r{};
        std::memcpy(&r, &item, sizeof item); // the item goes in where the rectangle comes out
        SendMessageA(tree, TVM_GETITEMRECT, TRUE, reinterpret_cast<LPARAM>(&r));
        POINT p{r.left, r.bottom};
        ClientToScreen(tree, &p);
        at = p;
    }
    if (at && SelectedItem()) {
        std::vector<MenuItem> items = BuildItemPopup(app_.text.Menus);
        ApplyEnabled(items, commands_);
        UniqueMenu menu = MakePopupMenu(items);
        const UINT chosen = TrackPopupMenuEx(menu.get(), TPM_RETURNCMD | TPM_RIGHTBUTTON, at->x,
                                             at->y, Hwnd(), nullptr);
        if (chosen)
            commands_.Execute(static_cast<int>(chosen));
    }
    CheckForOptions();
}

void MainWindow::MoveSelected(UINT command) {
    if (!SelectedItem())
        return;
    const StartupItem* item = ItemOfNode(tree_, listing_, tree_.Selected());
    if (!item)
        return;
    const ItemState to = command == ID_CMD_RUN    ? ItemState::Active
                         : command == ID_CMD_STOP ? ItemState::Stopped
                                                  : ItemState::Delayed;
    // A move that was not made is told the user, with why, by the move itself.
    (void)Moves().Move(StartupItem(*item), to);
    Refresh();
}

void MainWindow::SearchOnline() {
    const StartupItem* item = ItemOfNode(tree_, listing_, tree_.Selected());
    if (!item)
        return;
    const std::string address = SearchAddress(app_.OnlineSearchTemplate, *item);
    if (address.empty() || OpenWithShell(address))
        return;
    // No browser, or nothing registered for the address: the user may still take it elsewhere.
    if (app_.messages.ShowMessage(FillIn(app_.text.Message(kNotOpenedMessage), {address}),
                                  "Tolvane", kMbYesNo | kMbIconExclamation) == kIdYes &&
        !CopyToClipboard(Hwnd(), address))
        app_.log.WriteLog("Search Online: the address could not be copied", kLogWarning);
}

void MainWindow::ChooseLanguage(size_t index) {
    const LanguageChoice choice =
        ::tolvane::ChooseLanguage(app_.Store(), app_.text, app_.log, index);
    if (choice == LanguageChoice::None)
        return;
    // The menu shows the choice at once, the list's headings and tips with the tree; the menus,
    // the toolbar and the title stay until the next start, as the user is told in the new
    // language (unless the choice could not be kept, which the status line says).
    for (size_t i = 0; i < app_.text.Languages.size(); ++i)
        CheckMenuItem(
            GetMenu(Hwnd()), static_cast<UINT>(LanguageCommand(i)),
            MF_BYCOMMAND |
                (app_.text.Languages[i].Code == app_.model.Language ? MF_CHECKED : MF_UNCHECKED));
    if (choice == LanguageChoice::NotKept)
        NotKept();
    if (treeView_)
        Refresh(true);
    if (choice == LanguageChoice::Chosen)
        app_.messages.ShowMessage(app_.text.Message(kNextStartMessage), "Tolvane",
                                  kMbOk | kMbIconInformation);
}

void MainWindow::OpenHelp() {
    const std::string help = app_.folders.ProgramFolder + "\\Tolvane.chm";
    if (CDirStruct::OrdinaryFileExists(help))
        (void)OpenWithShell(help);
}

void MainWindow::PlaceWindow() {
    HWND hwnd = Hwnd();
    WINDOWPLACEMENT place{sizeof place};
    GetWindowPlacement(hwnd, &place);
    RECT& r = place.rcNormalPosition; // in work-area coordinates, as it was kept
    // "left top right bottom maximised", as KeepPlace writes it.
    const std::string kept =
        CRegistry().GetSettingString(RegistryRoot::CurrentUser, kPlaceKey, kPlaceValue);
    long numbers[5] = {};
    const char* at = kept.data();
    const char* const end = at + kept.size();
    bool known = true;
    for (long& n : numbers) {
        while (at < end && *at == ' ')
            ++at;
        const auto [next, error] = std::from_chars(at, end, n);
        known = known && error == std::errc();
        at = next;
    }
    const long left = numbers[0], top = numbers[1], right = numbers[2], bottom = numbers[3];
    const bool maximized = numbers[4] != 0;
    known = known && at == end && right > left && bottom > top;
    if (known) {
        r = RECT{left, top, right, bottom};
        openMaximized_ = maximized;
    }
    place.showCmd = SW_HIDE;
    // Onto the screen it was on first: a screen of another density gives the window its own
    // size there, and the kept size is set again on it.
    SetWindowPlacement(hwnd, &place);
    if (known && !MonitorFromRect(&r, MONITOR_DEFAULTTONULL)) {
        // That screen is gone: the middle of the main one.
        RECT work{};
        SystemParametersInfoA(SPI_GETWORKAREA, 0, &work, 0);
        const long width = r.right - r.left, height = r.bottom - r.top;
        r.left = std::max(0L, (work.right - work.left - width) / 2);
        r.top = std::max(0L, (work.bottom - work.top - height) / 2);
        r.right = r.left + width;
        r.bottom = r.top + height;
        SetWindowPlacement(hwnd, &place);
    }
    const UINT dpi = GetDpiForWindow(hwnd);
    if (!known) {
        r.right = r.left + MulDiv(kFirstWidth, static_cast<int>(dpi), 96);
        r.bottom = r.top + MulDiv(kFirstHeight, static_cast<int>(dpi), 96);
    }
    r.right = std::max(r.right, r.left + TwipsToPixels(kMinimumWidthTwips, dpi));
    r.bottom = std::max(r.bottom, r.top + TwipsToPixels(kMinimumHeightTwips, dpi));
    SetWindowPlacement(hwnd, &place);
}

void MainWindow::KeepPlace() {
    // Never shown: the place is the one it was given, nothing the user chose.
    if (!treeView_)
        return;
    WINDOWPLACEMENT place{sizeof place};
    if (!GetWindowPlacement(Hwnd(), &place))
        return;
    const RECT& r = place.rcNormalPosition;
    std::string text;
    for (long n : {r.left, r.top, r.right, r.bottom, IsZoomed(Hwnd()) ? 1L : 0L})
        text += (text.empty() ? "" : " ") + std::to_string(n);
    if (!CRegistry().SaveSettingString(RegistryRoot::CurrentUser, kPlaceKey, kPlaceValue, text))
        app_.log.WriteLog("The window's place could not be kept", kLogWarning);
}

void MainWindow::ShowWindowNow(int command) {
    const bool first = !treeView_;
    EnsureContent();
    // The first showing paints the filled tree at once, not an empty frame that fills after.
    if (first)
        Refresh();
    ShowWindow(Hwnd(), command);
    if (first)
        UpdateWindow(Hwnd());
}

void MainWindow::Open() {
    if (!app_.ShowGui)
        isVisible_ = true;
    const bool first = !treeView_;
    ShowWindowNow(IsIconic(Hwnd())          ? SW_RESTORE
                  : first && openMaximized_ ? SW_SHOWMAXIMIZED
                                            : SW_SHOW);
    SetForegroundWindow(Hwnd());
}

void MainWindow::Unload() {
    EndForGood();
}

void MainWindow::EndForGood() {
    if (ending_ || !Hwnd())
        return;
    ending_ = true;
    // A running wait sees this as soon as it gets the thread back, and starts nothing more.
    app_.wait.QuitRequested = true;
    if (app_.model.CloseType == 1)
        for (int i = 0; i < kEndingYields && app_.wait.WaitActive; ++i)
            YieldToMessageLoop();
    tray_.RemoveTrayIcon();
    DestroyWindow(Hwnd());
    if (InForce(app_.model, ReadPolicies(app_.log)).StartupType == 1)
        (void)UpdateRunEntry(1, app_.folders.RunCommand, app_.model,
                             app_.log); // its problems are logged: the program is ending
}

LRESULT MainWindow::HandleMessage(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) {
    if (msg == OpenWindowMessage()) {
        Open();
        return 0;
    }
    if (msg == TipNotKeptMessage()) {
        NotKept();
        return 0;
    }
    if (msg == TaskbarCreatedMessage()) {
        tray_.TaskbarCreated();
        return 0;
    }
    switch (msg) {
    case WM_COMMAND:
        if (auto language = LanguageOfCommand(LOWORD(wp))) {
            ChooseLanguage(*language);
            return 0;
        }
        if (commands_.Execute(LOWORD(wp)))
            return 0;
        break;
    case WM_INITMENUPOPUP:
        ShowEnabled(reinterpret_cast<HMENU>(wp), commands_);
        return 0;
    case WM_SHOWWINDOW:
        // Shown from the tray: the tree is built once the window is on screen, and rebuilt
        // when something changed elsewhere while it was hidden.
        if (wp && !treeView_) {
            EnsureContent();
            PostMessageA(hwnd, kFirstShown, 0, 0);
        } else if (wp && stale_) {
            SetTimer(hwnd, kChangedTimer, 0, nullptr);
        }
        break;
    case kFirstShown:
        Refresh();
        return 0;
    case kChangedElsewhere:
        ChangedElsewhere();
        return 0;
    case kFactsFound:
        FactsFound(wp);
        return 0;
    case kReadFacts:
        StartFacts();
        return 0;
    case WM_TIMER:
        if (wp == kChangedTimer) {
            RefreshForChange();
            return 0;
        }
        break;
    case WM_SIZE:
        if (wp != SIZE_MINIMIZED)
            Layout();
        return 0;
    case WM_SIZING: {
        auto* r = reinterpret_cast<RECT*>(lp);
        SizingRect sizing{r->left, r->top, r->right, r->bottom};
        const UINT dpi = GetDpiForWindow(hwnd);
        CorrectSizing(sizing, static_cast<unsigned>(wp), TwipsToPixels(kMinimumWidthTwips, dpi),
                      TwipsToPixels(kMinimumHeightTwips, dpi));
        *r = RECT{sizing.left, sizing.top, sizing.right, sizing.bottom};
        return TRUE;
    }
    case WM_DPICHANGED:
        // The base has taken the suggested size; the pictures follow the new density.
        if (treeView_) {
            toolbar_->LoadPictures();
            treeView_->LoadPictures();
            Layout();
        }
        return 0;
    case WM_NOTIFY: {
        const auto* header = reinterpret_cast<const NMHDR*>(lp);
        if (toolbar_ && toolbar_->OnNotify(header))
            return 0;
        if (treeView_ && header->hwndFrom == treeView_->Hwnd() && header->code == NM_RCLICK) {
            POINT at{};
            GetCursorPos(&at);
            ItemMenu(at);
            return TRUE;
        }
        LRESULT result = 0;
        if (treeView_ && treeView_->OnNotify(header, tree_, result))
            return result;
        break;
    }
    case WM_CONTEXTMENU:
        // The menu key or Shift+F10 in the tree.
        if (treeView_ && reinterpret_cast<HWND>(wp) == treeView_->Hwnd()) {
            POINT at{GET_X_LPARAM(lp), GET_Y_LPARAM(lp)};
            ItemMenu(lp == -1 ? std::nullopt : std::optional<POINT>(at));
            return 0;
        }
        break;
    case TreeViewControl::kChecksMayHaveChanged:
        ChecksMayHaveChanged();
        return 0;
    case TreeViewControl::kLoadIcons:
        if (treeView_)
            treeView_->LoadIcons(tree_, wp);
        return 0;
    case WM_SYSCOMMAND:
        // The close button and the system menu keep the program in the tray when the settings
        // ask for it; any other close ends it.
        if ((wp & 0xFFF0) == SC_CLOSE && app_.model.CloseType == 1) {
            KeepPlace();
            ShowWindow(hwnd, SW_HIDE);
            return 0;
        }
        break;
    case WM_CLOSE:
        EndForGood();
        return 0;
    case WM_QUERYENDSESSION:
        return TRUE;
    case WM_ENDSESSION:
        if (wp)
            EndForGood();
        return 0;
    case WM_DESTROY:
        KeepPlace();
        watch_.reset();
        facts_.reset(); // its worker stops after the file it reads
        tray_.RemoveTrayIcon();
        PostQuitMessage(0);
        return 0;
    }
    return DefWindowProcA(hwnd, msg, wp, lp);
}

} // namespace tolvane
