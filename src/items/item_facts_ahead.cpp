// The console's read of every program's facts ahead, on several threads: in a file of its
// own, so that the window program, which reads them one by one on its worker, does not carry it.
#include "items/item_program.h"

#include <algorithm>
#include <exception>
#include <map>
#include <memory>
#include <optional>

#include "platform/threads.h"

namespace tolvane {

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
                        const ProgramLookups machine = MachineProgramLookups(cache);
                        for (size_t i = w; i < programs.size(); i += n)
                            found[i] = machine.Facts(programs[i].first, programs[i].second);
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

} // namespace tolvane
