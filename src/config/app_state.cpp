#include "config/app_state.h"

namespace tolvane {

AppState::AppState(std::string programFolder, UserMessages& messages)
    : folders(FoldersForProgramFolder(std::move(programFolder))),
      log(folders.ProgramFolder + "\\log.txt"), messages(messages) {}

} // namespace tolvane
