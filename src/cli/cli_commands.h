// What tolvanec does: lists the startup items, or moves one of them by name as the list's popup
// would, with the same saved copies, backups and program-group file; writes the user's log-on
// plan, or brings the user to a plan by the same moves; or starts the delayed programs now, as
// the tray's "Run All" does.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "cli/cli_args.h"
#include "config/program_group_store.h"
#include "config/safe_list.h"
#include "models/user_messages.h"
#include "platform/event_log.h"
#include "text/text_tables.h"

namespace tolvane {

// The messages a move would show in a box, kept for standard error; a question is answered no.
class ConsoleMessages : public UserMessages {
public:
    int ShowMessage(std::string_view text, std::string_view title, unsigned style) override;
    std::vector<std::string> Shown;
};

// What the commands use: the program-group store (the model, its file and its folders, the
// Startup folders looked up), the texts of the messages, the safe list, the log, and how the
// "Startup" group is started now.
struct CliNeeds {
    ProgramGroupStore Store;
    const TextTables& Text;
    const std::vector<SafeEntry>& SafeList;
    EventLog& Log;
    std::function<void()> RunStartup;
};

// Returns the exit code; `out` and `err` get what goes to standard output and error. The moves'
// messages go to `messages`, which the store is to tell as well.
int RunCliRequest(const CliNeeds& needs, ConsoleMessages& messages, const CliRequest& request,
                  std::string& out, std::string& err);

} // namespace tolvane
