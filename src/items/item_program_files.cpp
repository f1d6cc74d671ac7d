#include "items/item_program.h"

#include <windows.h>

#include "config/system_command_line.h"
#include "platform/environment.h"
#include "platform/path_rules.h"
#include "platform/processes.h"
#include "platform/program_facts.h"
#include "platform/registry.h"
#include "text/strings.h"

namespace tolvane {

namespace {

// The file a program's name stands for, as CreateProcess and the shell find it: a path as it
// is (".exe" added to one without an extension), a bare name in the program search order, then
// among the programs registered under App Paths. "" when none is found.
std::string ProgramFile(const std::string& program, bool expandable) {
    const std::string path = expandable ? ExpandEnvironment(program) : program;
    if (path.empty())
        return path;
    if (PathLastPart(path).size() != path.size()) {
        const bool bare = PathLastPart(path).find('.') == std::string_view::npos;
        return bare && GetFileAttributesA(path.c_str()) == INVALID_FILE_ATTRIBUTES ? path + ".exe"
                                                                                   : path;
    }
    char found[MAX_PATH] = {};
    const DWORD n = SearchPathA(nullptr, path.c_str(), ".exe", MAX_PATH, found, nullptr);
    if (n > 0 && n < MAX_PATH)
        return found;
    const std::string key = "Software\\Microsoft\\Windows\\CurrentVersion\\App Paths\\" + path;
    for (RegistryRoot root : {RegistryRoot::CurrentUser, RegistryRoot::LocalMachine})
        if (const auto value = CRegistry().GetValue(root, key, ""))
            return ExpandEnvironment(Trim(RemoveAll(ValueText(*value), '"')));
    return {};
}

} // namespace

ProgramLookups MachineProgramLookups(ProgramFactsCache& cache) {
    ProgramLookups l;
    l.ShortcutTarget = [](const std::string& link) {
        const std::string target = ShortcutTarget(link);
        return target.empty() ? link : target;
    };
    l.ProgramThere = [](const std::string& program, bool expandable) {
        return ProgramFound(program, expandable, SystemCommandLine());
    };
    l.FileThere = [](const std::string& file) {
        return !file.empty() && GetFileAttributesA(file.c_str()) != INVALID_FILE_ATTRIBUTES;
    };
    l.Facts = [&cache](const std::string& program, bool expandable) {
        return CachedProgramFacts(cache, ProgramFile(program, expandable));
    };
    return l;
}

} // namespace tolvane
