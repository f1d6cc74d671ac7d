// The one place that holds what the whole process shares: the program-group model, the
// folders, the wait flags, the text tables and the lists read at start. The program makes one
// AppState in its entry and hands it down; tests make their own, with their own program folder.
#pragma once

#include <string>
#include <vector>

#include "config/program_model.h"
#include "platform/event_log.h"
#include "text/text_tables.h"
#include "models/user_messages.h"

namespace tolvane {

struct AppFolders {
    std::string ProgramFolder;       // the exe's folder, no trailing backslash
    std::string RunCommand;          // "\"<folder>\Tolvane.exe\" -nogui"
    std::string UserStartupFolder;   // no trailing backslash; "" when the shell has none
    std::string CommonStartupFolder; // no trailing backslash
    std::string UserItemsFolder;     // ends with a backslash
    std::string AllUsersItemsFolder; // ends with a backslash
};

struct WaitFlags {
    bool WaitActive = false;    // a timed wait is running
    bool QuitRequested = false; // the program is ending: stop waiting, start nothing more
};

struct SafeEntry {
    std::string Name;
    std::string Description;
};

class AppState {
public:
    AppState(std::string programFolder, UserMessages& messages);
    AppState(const AppState&) = delete;
    AppState& operator=(const AppState&) = delete;

    AppFolders folders;
    bool ShowGui = true;
    WaitFlags wait;
    ProgramModel model;
    TextTables text;
    std::vector<SafeEntry> SafeList{1};
    std::string OnlineSearchTemplate;
    EventLog log; // "log.txt" in the program folder
    UserMessages& messages;
};

// The folders that follow from the program folder alone. They are known before the model is
// first read, so the reader can shorten items-folder paths from the very first load.
AppFolders FoldersForProgramFolder(std::string programFolder);

} // namespace tolvane
