#include "config/delay_load.h"

#include <windows.h>

#include "items/run_data.h"
#include "platform/dir_struct.h"
#include "platform/registry.h"
#include "text/strings.h"

namespace tolvane {

std::string WindowsUserName() {
    char buffer[256] = {};
    DWORD size = sizeof buffer;
    if (!GetUserNameA(buffer, &size))
        return std::string();
    return std::string(buffer, strnlen(buffer, sizeof buffer));
}

CDelayLoad::CDelayLoad(AppState& app) : app_(app) {
    const std::string user = WindowsUserName();
    CDirStruct().DirectoryExists(user, app_.folders.ProgramFolder, true);
    filePath_ = app_.folders.ProgramFolder + "\\" + user + "\\proggroup.c";
}

bool CDelayLoad::GetStoppedInfo(std::string_view entry, std::string& path,
                                std::string& parameters) {
    const auto& stopped = app_.model.StoppedPrograms;
    for (const std::string& e : stopped)
        if (e == entry)
            return StoppedInfoOf(e, path, parameters);
    return false;
}

bool CDelayLoad::GetStoppedInfo(int index, std::string& path, std::string& parameters) {
    const auto& stopped = app_.model.StoppedPrograms;
    if (index < 0 || static_cast<size_t>(index) >= stopped.size())
        return false;
    return StoppedInfoOf(stopped[index], path, parameters);
}

bool CDelayLoad::StoppedInfoOf(const std::string& entry, std::string& path,
                               std::string& parameters) {
    std::string_view prefix = std::string_view(entry).substr(0, kPrefixLength);
    std::string name = entry.size() > kPrefixLength ? entry.substr(kPrefixLength) : std::string();
    if (prefix == LocationPrefix(kUserStartup)) {
        path = app_.folders.UserItemsFolder + name;
        return true;
    }
    if (prefix == LocationPrefix(kCommonStartup)) {
        path = app_.folders.AllUsersItemsFolder + name;
        return true;
    }
    if (prefix == LocationPrefix(kMachineRun) || prefix == LocationPrefix(kUserRun)) {
        const bool machine = prefix == LocationPrefix(kMachineRun);
        std::vector<std::string> saved;
        CRegistry().EnumKey(machine ? RegistryRoot::LocalMachine : RegistryRoot::CurrentUser,
                            machine ? kSavedMachineRunKey : kSavedUserRunKey, saved);
        int i = FindSavedRunValue(saved, name);
        if (i < 0)
            return true;
        RunCommandParts parts = SplitRunData(Trim(SplitNameData(saved[i]).Data));
        path = parts.Path;
        parameters = parts.Parameters;
        return true;
    }
    return true;
}

} // namespace tolvane
