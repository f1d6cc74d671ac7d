// What tolvanec does: lists the startup items, or moves one of them by name as the list's popup
// would, with the same saved copies, backups and program-group file; or starts the delayed
// programs now, as the tray's "Run All" does.
#pragma once

#include <string>
#include <vector>

#include "cli/cli_args.h"
#include "models/user_messages.h"

namespace tolvane {

class AppState;

// The messages a move would show in a box, kept for standard error; a question is answered no.
class ConsoleMessages : public UserMessages {
public:
    int ShowMessage(std::string_view text, std::string_view title, unsigned style) override;
    std::vector<std::string> Shown;
};

// Returns the exit code; `out` and `err` get what goes to standard output and error.
int RunCliRequest(AppState& app, ConsoleMessages& messages, const CliRequest& request,
                  std::string& out, std::string& err);

} // namespace tolvane
