#include "config/run_state.h"

#include <algorithm>

namespace tolvane {

bool StartLog::Has(const std::string& id, size_t alike) const {
    return static_cast<size_t>(std::count(Started.begin(), Started.end(), id)) > alike;
}

void StartLog::Add(std::string id, uint64_t ms) {
    Started.push_back(std::move(id));
    LastMs = ms;
    ++Changes;
}

std::string DelayedProgramId(const GroupProgram& program) {
    std::string id;
    for (const std::string* part :
         {&program.Command, &program.RegistryKeyName, &program.Path, &program.Parameters})
        id.append(*part).push_back('\n');
    return id;
}

size_t AlikeBefore(const std::vector<GroupProgram>& programs, size_t index) {
    const std::string id = DelayedProgramId(programs.at(index));
    return static_cast<size_t>(
        std::count_if(programs.begin(), programs.begin() + static_cast<ptrdiff_t>(index),
                      [&](const GroupProgram& q) { return DelayedProgramId(q) == id; }));
}

} // namespace tolvane
