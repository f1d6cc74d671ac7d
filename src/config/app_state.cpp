#include "config/app_state.h"

#include "text/code_page.h"

namespace tolvane {

AppFolders FoldersForProgramFolder(std::string programFolder) {
    while (EndsWithCharacter(programFolder, '\\'))
        programFolder.pop_back();
    AppFolders f;
    f.ProgramFolder = programFolder;
    f.RunCommand = "\"" + programFolder + "\\Tolvane.exe\" -nogui";
    f.UserItemsFolder = programFolder + "\\Tolvane Items\\Current User\\";
    f.AllUsersItemsFolder = programFolder + "\\Tolvane Items\\All Users\\";
    return f;
}

AppState::AppState(std::string programFolder, UserMessages& messages)
    : folders(FoldersForProgramFolder(std::move(programFolder))),
      log(folders.ProgramFolder + "\\log.txt"), messages(messages) {}

} // namespace tolvane
