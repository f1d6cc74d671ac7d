// Where the program and the items it holds lie: the program folder, the two Startup folders
// and the two items folders.
#pragma once

#include <string>

namespace tolvane {

struct AppFolders {
    std::string ProgramFolder;       // the exe's folder, no trailing backslash
    std::string RunCommand;          // "\"<folder>\Tolvane.exe\" -nogui"
    std::string UserStartupFolder;   // no trailing backslash; "" when the shell has none
    std::string CommonStartupFolder; // no trailing backslash
    std::string UserItemsFolder;     // ends with a backslash
    std::string AllUsersItemsFolder; // ends with a backslash
};

// The folders that follow from the program folder alone. They are known before the model is
// first read, so the reader can shorten items-folder paths from the very first load.
AppFolders FoldersForProgramFolder(std::string programFolder);

} // namespace tolvane
