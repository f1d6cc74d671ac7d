// What the whole process shares: the program-group model, the folders, the wait flags, the text
// tables and the lists read at start. The program makes one AppState in its entry and hands each
// part to what uses it; tests make their own, with their own program folder.
#pragma once

#include <string>
#include <vector>

#include "config/app_folders.h"
#include "config/program_group_store.h"
#include "config/program_model.h"
#include "config/run_state.h"
#include "config/safe_list.h"
#include "platform/event_log.h"
#include "text/text_tables.h"
#include "models/user_messages.h"

namespace tolvane {

class AppState {
public:
    AppState(std::string programFolder, UserMessages& messages);
    AppState(const AppState&) = delete;
    AppState& operator=(const AppState&) = delete;

    AppFolders folders;
    bool ShowGui = true;
    WaitFlags wait;
    StartLog starts;
    ProgramModel model;
    TextTables text;
    std::vector<SafeEntry> SafeList{1};
    std::string OnlineSearchTemplate;
    EventLog log; // "log.txt" in the program folder
    UserMessages& messages;
    StartWatcher* watcher = nullptr; // none: nothing is measured

    // The program-group file and the model it fills, for whatever changes or reads it.
    ProgramGroupStore Store() { return ProgramGroupStore(model, folders, text, messages); }
};

} // namespace tolvane
