// frmStartupItems, the program's one main window. Loaded in both modes: shown at once when the
// user started the program, hidden with only its tray icon while the log-on run waits.
//
// The window renders models and hands the user's input back: its menus, toolbar and the tree's
// popup are plain menu models whose commands, and when each can be used, are the command table.
#pragma once

#include <windows.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "items/checked_items.h"
#include "items/facts_reader.h"
#include "items/item_moves.h"
#include "items/startup_tree.h"
#include "models/command_table.h"
#include "models/tray_menu.h"
#include "models/tree_model.h"
#include "platform/change_watch.h"
#include "platform/handles.h"
#include "startup/delayed_run.h"
#include "startup/tray_commands.h"
#include "ui/maker_links.h"
#include "ui/progress_bar.h"
#include "ui/toolbar.h"
#include "ui/tray_icon.h"
#include "ui/tree_view.h"
#include "ui/window.h"

namespace tolvane {

class AppState;
class OptionsDialog;
class TipDialog;
class TimelineWindow;

// The smallest size the user can drag the window to, in twips.
inline constexpr long kMinimumWidthTwips = 10725, kMinimumHeightTwips = 6285;

// Asks the running copy's main window to open as the tray's "Open" does: a second start sends
// it.
UINT OpenWindowMessage();

class MainWindow : public Window<MainWindow>, public MainWindowControl {
public:
    // Another copy of the program finds the window by its class: its title is in the user's
    // language.
    static constexpr const char* kClassName = "TolvaneStartupItems";

    MainWindow(AppState& app, HINSTANCE instance);
    ~MainWindow() override;

    // Creates the window with its menus and its tray icon; shows it when the user started the
    // program.
    bool Load();
    HWND Handle() const { return Hwnd(); }

    bool IsVisible() const override { return isVisible_; }
    void Unload() override;
    // The tray's "Open", and a second start of the program: during the log-on run this marks
    // the window as opened by the user, so the program stays when the run is over.
    void Open() override;
    // The log-on run needs the window now: made (hidden) with its tray icon.
    void Ready() override;

    // Rebuilds the startup tree from the folders, the Run keys and the file, and shows it.
    // keepPlace: a refresh for a change made elsewhere, which only looks: the selected item
    // and the ticked ones stay so where they are still listed, and the program's own Run value
    // is left as it is.
    void Refresh(bool keepPlace = false);

    // The startup items as the last refresh left them, and the user's checks on them.
    TreeModel& Tree() { return tree_; }
    TreeViewControl* TreeView() { return treeView_.get(); }
    ToolbarControl* Toolbar() { return toolbar_.get(); }
    const CommandTable& Commands() const { return commands_; }
    TrayIcon& Tray() { return tray_; }
    // The modeless options and tip windows while they are open; nullptr otherwise.
    OptionsDialog* Options() const;
    TipDialog* Tip() const;
    // The Last Log-on window while it is open; nullptr otherwise.
    TimelineWindow* Timeline() const;

    // How addresses and files are opened: the shell's default action unless set. False when no
    // program opened it (no browser, nothing registered for the kind of file).
    std::function<bool(const std::string& target)> OpenWithShell;
    // Opens the group editor (modal), on a delayed item's program when its record is given;
    // the tree is rebuilt after it.
    std::function<void(std::optional<GroupProgram> record)> OpenGroupEditor;

    static void ClassStyle(WNDCLASSEXA& wc);
    LRESULT HandleMessage(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp);

private:
    void AddCommands();
    // The controls inside the window, made when it is first shown: while the log-on run waits
    // the window stays hidden, and its controls would load libraries that waiting never needs.
    void EnsureContent();
    void ShowWindowNow(int command);
    // Where the window opens: where it was last closed, at the size it had, never below its
    // minimum for the screen it opens on; and the keeping of that place when it closes.
    void PlaceWindow();
    void KeepPlace();
    void Layout();
    void ChecksMayHaveChanged();
    // The status line's first part: what went wrong that the user must know, "" for nothing.
    void ShowStatus(const std::string& text);
    // A choice of the user (the tip box, the language) could not be kept in the file.
    void NotKept();
    // Which toolbar moves the ticked items allow; all-users items lose their ticks.
    void CheckForOptions();
    // The moves of this window: its messages and the shell's file moves belong to it.
    ItemMoves Moves();
    void MoveChecked(CheckedMove move);
    void Save();
    // The popup of an item: at the point on the screen, or below the selected item for the
    // keyboard.
    void ItemMenu(std::optional<POINT> at);
    std::optional<ItemPlace> SelectedItem() const;
    void MoveSelected(UINT command);
    void SearchOnline();
    void ChooseLanguage(size_t index);
    void OpenHelp();
    // The tray menu as the model is now; the chosen number.
    int TrayMenuChoice();
    // Closing for good (Exit, Windows ending, a close that is not the user's close button).
    void EndForGood();
    // Tells the window of changes to the file, the Run keys and the Startup folders made by
    // anyone: another copy of the program, tolvanec, an installer, the user in Explorer.
    void WatchForChanges();
    // Something changed elsewhere: the tree is rebuilt a moment later (a burst of changes once),
    // at once if shown, else when the window is next shown.
    void ChangedElsewhere();
    void RefreshForChange();
    // What each item's program says of itself, read by a worker after the tree shows; the
    // facts found so far go into the tips and the tree's marks.
    void ReadFacts();
    void StartFacts();
    void FactsFound(WPARAM round);
    std::string FactsLine(int node) const;

    AppState& app_;
    HINSTANCE instance_;
    HWND statusBar_ = nullptr; // a child: destroyed with the window
    std::unique_ptr<AdvProgressBar> progress_;
    std::unique_ptr<TreeViewControl> treeView_;
    std::unique_ptr<ToolbarControl> toolbar_;
    TreeModel tree_;
    StartupListing listing_;
    ToolbarMoves moves_;
    CommandTable commands_;
    ShownTrayMenu trayMenu_;
    UniqueIcon icon_;
    UniqueAccelerators accelerators_;
    bool openMaximized_ = false;
    TrayIcon tray_;
    std::unique_ptr<OptionsDialog> options_;
    std::unique_ptr<TipDialog> tip_;
    std::unique_ptr<TimelineWindow> timeline_;
    bool isVisible_ = false;
    bool ending_ = false;
    std::unique_ptr<ChangeWatch> watch_;
    bool stale_ = false;   // changed elsewhere while the window was hidden
    bool notKept_ = false; // the status line says that a choice was not kept
    std::unique_ptr<FactsReader> facts_;
    WPARAM factsRound_ = 0;
    std::vector<FactsReader::Job> pendingFacts_;         // the tree's, until it has painted
    std::vector<std::optional<ProgramFacts>> nodeFacts_; // by node, as far as read
};

} // namespace tolvane
