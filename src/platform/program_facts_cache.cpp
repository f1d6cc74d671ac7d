#include "platform/program_facts_cache.h"

#include "text/strings.h"

namespace tolvane {

std::optional<ProgramFacts> ProgramFactsCache::Find(const std::string& path,
                                                    const FileStamp& stamp) const {
    const auto found = entries_.find(ToLower(path));
    if (found == entries_.end() || !(found->second.Stamp == stamp))
        return std::nullopt;
    return found->second.Facts;
}

void ProgramFactsCache::Keep(const std::string& path, const FileStamp& stamp,
                             const ProgramFacts& facts) {
    entries_[ToLower(path)] = Entry{stamp, facts};
}

} // namespace tolvane
