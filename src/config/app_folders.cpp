#include "config/app_folders.h"

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

} // namespace tolvane
