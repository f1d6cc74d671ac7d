#include "text/text_tables.h"

namespace tolvane {

// The English texts, for a language file or entry that is missing; they match lang/en.
TextTables::TextTables() : Languages(1) {
    Buttons = {
        "OK",      "Cancel",     "&Close",  "&Add",        "&Browse...",
        "&Remove", "Add Grou&p", "&Update", "Edit Gro&up",
    };
    Menus = {
        "&File",
        "&Save",
        "&Minimize to Tray",
        "E&xit",
        "&Program Groups",
        "&Modify",
        "&Tools",
        "&Options",
        "&Language",
        "&Help",
        "&Help",
        "&About",
        "&Tips",
        "&Online",
        "&Forums",
        "&Support E-Mail",
        "&Main Page",
        "Delay",
        "Stop",
        "Run",
        "Properties",
        "&Search Online",
        "Run All",
        "Stopped",
        "&Open",
        "&Quit Program",
    };
    Messages = {
        "Tolvane is already running. Please use its open window or the Tolvane icon in the "
        "notification area.",
        "Not all of the ticked registry entries could be moved. Nothing is lost: every entry that "
        "was taken out of the registry has a backup (.reg file) in the \"Delayed Registry\" folder "
        "in Tolvane's program folder.\r\nRefresh the list to see the current state, then try "
        "again.",
        "Not all of the ticked shortcuts could be moved. Nothing is lost: any shortcut that was "
        "already taken out of your Startup folder is in the \"Tolvane Items\" folder in Tolvane's "
        "program folder.\r\nRefresh the list to see the current state, then try again.",
        "Please enter a group name, or choose a group from the list.",
        "Please enter the path of the program to start, or click Browse to find it.",
        "The file could not be found. Please check the path, or click Browse to choose the file.",
        "Something went wrong, so Tolvane has stopped this action. Please try again; if the "
        "problem persists, restart Tolvane.",
        "The delay must be a number of seconds, for example 5 or 2.5.",
        "The program groups could not be saved:\r\n",
        "The program groups could not be shown. Please close this window and open it again.",
        "Do you really want to remove the selected program group and all programs in it?",
        "The \"Startup\" group cannot be removed: it holds the programs that Tolvane starts when "
        "you log on.",
        "Programs of the \"Startup\" group cannot be removed here. Use the main window instead: "
        "there you can give them back to the normal Windows startup (Run) or stop them.",
        "Tolvane could not read all of its program group file, proggroup.c, and continues with "
        "what it could read.\r\nThe file as it was is kept beside it as proggroup.c.unreadable: "
        "correct the typing error there and, while Tolvane is closed, rename it back to "
        "proggroup.c.",
        "\"%1\" was not moved: something else of the same name is already where it would "
        "go:\r\n%2\r\nTolvane never overwrites it. Look at both, keep the one you need, then try "
        "again.",
        "\"%1\" was not moved: its Run value has changed since Tolvane listed it or took it out. "
        "The value now reads:\r\n%2\r\nNothing was overwritten, and Tolvane keeps its saved "
        "copy. Refresh the list, then decide again.",
        "\"%1\" was not moved: it is no longer where the list shows it. Refresh the list to see "
        "where it is now.",
        "\"%1\" could not be moved, so everything was left as it was:\r\n%2",
        "Tolvane could not undo everything after \"%1\" could not be moved:\r\n%2\r\nNothing was "
        "deleted. The details are in log.txt in Tolvane's program folder.",
        "The settings could not be saved:\r\n",
        "Switched off in Task Manager",
        "From the Run key of 32-bit programs",
        "Low",
        "Medium",
        "High",
        "%1: %2 s CPU, %3 MB read, ready after %4 s",
        "%1: %2 s CPU, %3 MB read",
        "Not started at log-on: its command holds \"%1\", a word of the DisallowedPrograms list in "
        "proggroup.c",
        "\"%1\" was not delayed: Tolvane's log-on run never starts a command that holds \"%2\", a "
        "word of the DisallowedPrograms list in proggroup.c. The item stays where it was.\r\nTo "
        "delay it, take the word out of that list first.",
        "Not found: \"%1\" is not there, so Tolvane cannot start it at log-on",
        "Tolvane cannot start for all users from its program folder:\r\n%1\r\nbecause that folder "
        "is inside a user profile, which other users cannot read. Keep \"for me only\", or put "
        "Tolvane into a folder that every user can read (such as Program Files) and choose this "
        "again.",
        "The \"Startup\" group cannot be renamed: its programs are the ones that Tolvane starts "
        "when you log on.",
        "No other group can be called \"Startup\", in any letter case: the name belongs to the "
        "group whose programs Tolvane starts when you log on.",
        "There is already a group of this name. A blank and \"_\" count as the same: \"My "
        "Tools\" and \"My_Tools\" are one name.",
        "A group needs a name. Type the new name of the selected group, or the name of a new "
        "group.",
        "Starts for every user of this computer: Tolvane lists it, but does not tick or move it",
        "The list could not be read completely; log.txt in Tolvane's program folder says why.",
        "Windows will not start Tolvane at log-on as set: its own Run value could not be "
        "changed. log.txt in Tolvane's program folder says why.",
        "proggroup.c could not be written:\r\n",
        "Your choice could not be saved in proggroup.c; log.txt in Tolvane's program folder says "
        "why.",
    };
    Toolbar = {
        "Save Changes",
        "Refresh the list",
        "Don't run at all",
        "Delay the startup",
        "Run at startup",
        "Properties",
        "Tick items, then use Delay, Stop or Run on the toolbar.",
    };
}

const std::string& TextTables::Entry(const std::vector<std::string>& table, size_t index) {
    static const std::string empty;
    return index < table.size() ? table[index] : empty;
}

} // namespace tolvane
