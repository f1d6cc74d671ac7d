// What a program file says of itself: its publisher and description from its version resource,
// and whether its Authenticode signature holds. Read without any user interface, revocation
// check or network fetch: the program only looks, and a list of startup items must never wait
// for the network.
#pragma once

#include <optional>
#include <string>

#include "platform/program_facts_cache.h"

namespace tolvane {

// The size and last write time of a file (or folder); nullopt when it is not there.
std::optional<FileStamp> StampOf(const std::string& path);

// The facts of a file, read now: Missing when it is not there.
ProgramFacts ReadProgramFacts(const std::string& path);

// The facts of a file, from the cache while it is unchanged, else read and kept there.
ProgramFacts CachedProgramFacts(ProgramFactsCache& cache, const std::string& path);

} // namespace tolvane
