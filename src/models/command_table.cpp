#include "models/command_table.h"

namespace tolvane {

void CommandTable::Add(int id, Handler run, Rule enabled) {
    commands_[id] = Command{std::move(run), std::move(enabled)};
}

bool CommandTable::Enabled(int id) const {
    auto it = commands_.find(id);
    return it != commands_.end() && (!it->second.IsEnabled || it->second.IsEnabled());
}

bool CommandTable::Execute(int id) const {
    if (!Enabled(id))
        return false;
    // A copy: the command may change the table (a window that closes itself).
    const Handler run = commands_.at(id).Run;
    if (run)
        run();
    return true;
}

} // namespace tolvane
