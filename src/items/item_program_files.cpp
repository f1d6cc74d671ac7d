#include "items/item_program.h"

#include <windows.h>

#include <algorithm>
#include <map>
#include <memory>
#include <optional>

#include "config/system_command_line.h"
#include "platform/environment.h"
#include "platform/path_rules.h"
#include "platform/processes.h"
#include "platform/program_facts.h"
#include "platform/registry.h"
#include "platform/threads.h"
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

void ReadFactsAhead(const std::vector<StartupItem>& items, ProgramLookups& lookups,
                    unsigned threads) {
    if (!lookups.Facts || !lookups.ShortcutTarget)
        return;
    auto targets = std::make_shared<std::map<std::string, std::string>>();
    lookups.ShortcutTarget = [read = lookups.ShortcutTarget, targets](const std::string& link) {
        auto known = targets->find(link);
        if (known == targets->end())
            known = targets->emplace(link, read(link)).first;
        return known->second;
    };
    // Each program once, in the items' order.
    std::vector<std::pair<std::string, bool>> programs;
    std::map<std::pair<std::string, bool>, size_t> index;
    for (const StartupItem& item : items) {
        const ItemProgram p = ProgramOfItem(item, lookups);
        if (!p.Missing && index.emplace(std::pair(p.Path, p.Expandable), programs.size()).second)
            programs.emplace_back(p.Path, p.Expandable);
    }
    // Each worker takes every n-th program, with a cache of its own, and writes only its own
    // places of `found`.
    std::vector<std::optional<ProgramFacts>> found(programs.size());
    {
        std::vector<WorkerThread> workers;
        const size_t n = std::clamp<size_t>(threads, 1, std::max<size_t>(programs.size(), 1));
        for (size_t w = 0; w < n; ++w) {
            try {
                workers.emplace_back(
                    [&, w, n] {
                        ProgramFactsCache cache;
                        for (size_t i = w; i < programs.size(); i += n)
                            found[i] = CachedProgramFacts(
                                cache, ProgramFile(programs[i].first, programs[i].second));
                    },
                    nullptr);
            } catch (const std::exception&) {
                break; // fewer workers; what none read is read when asked
            }
        }
    } // joined
    lookups.Facts = [read = lookups.Facts, index = std::move(index),
                     found = std::move(found)](const std::string& program, bool expandable) {
        const auto at = index.find(std::pair(program, expandable));
        return at != index.end() && found[at->second] ? *found[at->second]
                                                      : read(program, expandable);
    };
}

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
