// frmStartupItems, the program's one main window. Loaded in both modes: shown at once when the
// user started the program, hidden with only its tray icon while the log-on run waits.
#pragma once

#include <windows.h>

#include <memory>

#include "items/startup_tree.h"
#include "models/command_table.h"
#include "models/tray_menu.h"
#include "models/tree_model.h"
#include "platform/handles.h"
#include "startup/delayed_run.h"
#include "ui/progress_bar.h"
#include "ui/tray_icon.h"
#include "ui/tree_view.h"
#include "ui/window.h"

namespace tolvane {

class AppState;

inline constexpr const char* kMainWindowTitle = "Tolvane Tolvane & Program Manager";

// Asks the running copy's main window to open as the tray's "Open" does: a second start sends
// it.
UINT OpenWindowMessage();

class MainWindow : public Window<MainWindow>, public MainWindowControl {
public:
    static constexpr const char* kClassName = "TolvaneStartupItems";

    MainWindow(AppState& app, HINSTANCE instance);
    ~MainWindow() override;

    // Creates the window and its tray icon; shows it when the user started the program.
    bool Load();
    HWND Handle() const { return Hwnd(); }

    bool IsVisible() const override { return isVisible_; }
    void Unload() override;
    // The tray's "Open", and a second start of the program: during the log-on run this marks
    // the window as opened by the user, so the program stays when the run is over.
    void Open() override;

    // Rebuilds the startup tree from the folders, the Run keys and the file, and shows it.
    void Refresh();

    // The startup items as the last refresh left them, and the user's checks on them.
    TreeModel& Tree() { return tree_; }
    const StartupListing& Listing() const { return listing_; }
    TreeViewControl* TreeView() { return treeView_.get(); }
    const CommandTable& Commands() const { return commands_; }
    TrayIcon& Tray() { return tray_; }

    static void ClassStyle(WNDCLASSEXA& wc);
    LRESULT HandleMessage(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp);

private:
    void AddCommands();
    // The controls inside the window, made when it is first shown: while the log-on run waits
    // the window stays hidden, and its controls would load libraries that waiting never needs.
    void EnsureContent();
    void ShowWindowNow(int command);
    void Layout();
    void ChecksMayHaveChanged();
    // The popup of a delayable item: Delay, Stop and Run as the item's state allows.
    void ItemMenu();
    void MoveSelected(UINT command);
    // The tray menu as the model is now; the chosen number.
    int TrayMenuChoice();
    void EndForGood();

    AppState& app_;
    HINSTANCE instance_;
    HWND statusBar_ = nullptr; // a child: destroyed with the window
    std::unique_ptr<AdvProgressBar> progress_;
    std::unique_ptr<TreeViewControl> treeView_;
    TreeModel tree_;
    StartupListing listing_;
    CommandTable commands_;
    TrayMenu trayMenu_;
    UniqueIcon icon_;
    TrayIcon tray_;
    bool isVisible_ = false;
    bool ending_ = false;
};

} // namespace tolvane
