// The program's commands by the ids that its menus, toolbar, tray menu and accelerators share:
// what each does, and whether it can be used now. The windows ask the table; no caption decides
// anything.
#pragma once

#include <functional>
#include <map>

namespace tolvane {

class CommandTable {
public:
    using Handler = std::function<void()>;
    using Rule = std::function<bool()>;

    // A command without a rule can always be used. Adding an id again replaces it.
    void Add(int id, Handler run, Rule enabled = {});
    bool Has(int id) const { return commands_.count(id) != 0; }
    // False for an unknown id.
    bool Enabled(int id) const;
    // Runs the command when it is known and can be used; true then.
    bool Execute(int id) const;

private:
    struct Command {
        Handler Run;
        Rule IsEnabled;
    };
    std::map<int, Command> commands_;
};

} // namespace tolvane
