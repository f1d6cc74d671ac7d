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
    return program.Command + '\n' + program.RegistryKeyName + '\n' + program.Path + '\n' +
           program.Parameters;
}

size_t AlikeBefore(const std::vector<GroupProgram>& programs, size_t index) {
    const std::string id = DelayedProgramId(programs.at(index));
    return static_cast<size_t>(
        std::count_if(programs.begin(), programs.begin() + index,
                      [&](const GroupProgram& p) { return DelayedProgramId(p) == id; }));
}

} // namespace tolvane
