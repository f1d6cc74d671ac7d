// The log-on run: wait the main delay, then start the "Startup" group's programs one after
// another, each after its own delay, writing each step to the event log.
#pragma once

#include <string>

namespace tolvane {

class AppState;

// What the run needs of the main window.
class MainWindowControl {
public:
    virtual ~MainWindowControl() = default;
    // True once the user opened the window from the tray during the run.
    virtual bool IsVisible() const = 0;
    // Closes the window for good; with no window left the process ends.
    virtual void Unload() = 0;
};

// Waits the time while the message loop is served, in slices of at most 2 seconds; stops at
// once when the program is quitting.
void WaitMilliseconds(AppState& app, long long milliseconds);

// A bare shortcut name ("Word.lnk") that is not found where it stands is looked for in the
// items folders; "" when it is nowhere. Anything else comes back unchanged.
std::string ItemsFolderLookup(const AppState& app, const std::string& path);

void DelayedRun(AppState& app, MainWindowControl& window);

} // namespace tolvane
