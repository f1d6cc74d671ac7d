#include "config/run_state.h"

#include <algorithm>

namespace tolvane {

bool StartLog::Has(const std::string& id) const {
    return std::find(Started.begin(), Started.end(), id) != Started.end();
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

} // namespace tolvane
