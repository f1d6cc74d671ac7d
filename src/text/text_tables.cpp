#include "text/text_tables.h"

namespace tolvane {

std::vector<std::string> UnpackTexts(const char* texts, size_t size) {
    std::vector<std::string> table;
    for (const char* end = texts + size - 1; texts < end;) {
        table.emplace_back(texts);
        texts += table.back().size() + 1;
    }
    return table;
}

// The English texts, for a language file or entry that is missing; they match lang/en.
TextTables::TextTables() : Languages(1) {
    static const char kButtons[] = "OK\0"
                                   "Cancel\0"
                                   "&Close\0"
                                   "&Add\0"
                                   "&Browse...\0"
                                   "&Remove\0"
                                   "Add Gr&oup\0"
                                   "&Update\0"
                                   "Ed&it Group\0";
    Buttons = UnpackTexts(kButtons, sizeof kButtons);
    static const char kMenus[] = "&File\0"
                                 "&Save\0"
                                 "&Minimize to Tray\0"
                                 "E&xit\0"
                                 "&Program Groups\0"
                                 "&Modify\0"
                                 "&Tools\0"
                                 "&Options\0"
                                 "&Language\0"
                                 "&Help\0"
                                 "&Help\0"
                                 "&About Tolvane\0"
                                 "&Tips\0"
                                 "&Online\0"
                                 "&Forums\0"
                                 "&Support E-Mail\0"
                                 "&Main Page\0"
                                 "Delay\0"
                                 "Stop\0"
                                 "Run\0"
                                 "Properties\0"
                                 "&Search Online\0"
                                 "Run All\0"
                                 "Stopped\0"
                                 "&Open\0"
                                 "&Quit Program\0"
                                 "&Refresh\0";
    Menus = UnpackTexts(kMenus, sizeof kMenus);
    static const char kMessages[] =
        "Tolvane is already running. Please use its open window or the Tolvane icon in the "
        "notification area.\0"
        "Not all of the ticked registry entries could be moved. Nothing is lost: every entry that "
        "was taken out of the registry has a backup (.reg file) in the \"Delayed Registry\" folder "
        "in Tolvane's program folder.\r\nRefresh the list to see the current state, then try "
        "again.\0"
        "Not all of the ticked shortcuts could be moved. Nothing is lost: any shortcut that was "
        "already taken out of your Startup folder is in the \"Tolvane Items\" folder in Tolvane's "
        "program folder.\r\nRefresh the list to see the current state, then try again.\0"
        "Please enter a group name, or choose a group from the list.\0"
        "Please enter the path of the program to start, or click Browse to find it.\0"
        "The file could not be found. Please check the path, or click Browse to choose the file.\0"
        "Something went wrong, so Tolvane has stopped this action. Please try again; if the "
        "problem persists, restart Tolvane.\0"
        "The delay must be a number of seconds, for example 5 or 2.5.\0"
        "The program groups could not be saved:\r\n\0"
        "The program groups could not be shown. Please close this window and open it again.\0"
        "Do you really want to remove the selected program group and all programs in it?\0"
        "The \"Startup\" group cannot be removed: it holds the programs that Tolvane starts when "
        "you log on.\0"
        "Programs of the \"Startup\" group cannot be removed here. Use the main window instead: "
        "there you can give them back to the normal Windows startup (Run) or stop them.\0"
        "Tolvane could not read all of its program group file, proggroup.c, and continues with "
        "what it could read.\r\nThe file as it was is kept beside it as proggroup.c.unreadable: "
        "correct the typing error there and, while Tolvane is closed, rename it back to "
        "proggroup.c.\0"
        "\"%1\" was not moved: something else of the same name is already where it would "
        "go:\r\n%2\r\nTolvane never overwrites it. Look at both, keep the one you need, then try "
        "again.\0"
        "\"%1\" was not moved: its Run value has changed since Tolvane listed it or took it out. "
        "The value now reads:\r\n%2\r\nNothing was overwritten, and Tolvane keeps its saved "
        "copy. Refresh the list, then decide again.\0"
        "\"%1\" was not moved: it is no longer where the list shows it. Refresh the list to see "
        "where it is now.\0"
        "\"%1\" could not be moved, so everything was left as it was:\r\n%2\0"
        "Tolvane could not undo everything after \"%1\" could not be moved:\r\n%2\r\nNothing was "
        "deleted. The details are in log.txt in Tolvane's program folder.\0"
        "The settings could not be saved:\r\n\0"
        "Switched off in Task Manager\0"
        "From the Run key of 32-bit programs\0"
        "Low\0"
        "Medium\0"
        "High\0"
        "%1: %2 s CPU, %3 MB read, ready after %4 s\0"
        "%1: %2 s CPU, %3 MB read\0"
        "Not started at log-on: its command holds \"%1\", a word of the DisallowedPrograms list in "
        "proggroup.c\0"
        "\"%1\" was not delayed: Tolvane's log-on run never starts a command that holds \"%2\", a "
        "word of the DisallowedPrograms list in proggroup.c. The item stays where it was.\r\nTo "
        "delay it, take the word out of that list first.\0"
        "Not found: \"%1\" is not there, so Tolvane cannot start it at log-on\0"
        "Tolvane cannot start for all users from its program folder:\r\n%1\r\nbecause that folder "
        "is inside a user profile, which other users cannot read. Keep \"for me only\", or put "
        "Tolvane into a folder that every user can read (such as Program Files) and choose this "
        "again.\0"
        "The \"Startup\" group cannot be renamed: its programs are the ones that Tolvane starts "
        "when you log on.\0"
        "No other group can be called \"Startup\", in any letter case: the name belongs to the "
        "group whose programs Tolvane starts when you log on.\0"
        "There is already a group of this name. A blank and \"_\" count as the same: \"My "
        "Tools\" and \"My_Tools\" are one name.\0"
        "A group needs a name. Type the new name of the selected group, or the name of a new "
        "group.\0"
        "Starts for every user of this computer: Tolvane lists it, but does not tick or move it\0"
        "The list could not be read completely; log.txt in Tolvane's program folder says why.\0"
        "Windows will not start Tolvane at log-on as set: its own Run value could not be "
        "changed. log.txt in Tolvane's program folder says why.\0"
        "proggroup.c could not be written:\r\n\0"
        "Your choice could not be saved in proggroup.c; log.txt in Tolvane's program folder says "
        "why.\0"
        "Version %1\0"
        "The main window's menus, toolbar and title change to the new language the next time "
        "Tolvane starts.\0"
        "No program on this computer opened the address:\r\n%1\r\nCopy it to the clipboard, to "
        "paste it into a browser?\0"
        "\"%1\" was not moved: your administrator has locked it with the policy \"Startup items "
        "that users may not move\". It stays where it is.\0"
        "\"%1\" was not moved: your administrator has set the policy \"Only the administrator "
        "moves startup items\". Tolvane lists every item, but moves none.\0"
        // What an item's program is: signed, not trusted, unsigned, with its publisher (and
        // description) and without; its file missing.
        "%1 \xe2\x80\x94 signed\0"
        "%1 \xe2\x80\x94 signature not trusted\0"
        "%1 \xe2\x80\x94 no signature\0"
        "Signed\0"
        "Signature not trusted\0"
        "No signature\0"
        "Program file missing\0";
    Messages = UnpackTexts(kMessages, sizeof kMessages);
    static const char kToolbar[] = "Save Changes\0"
                                   "Refresh the list\0"
                                   "Don't run at all\0"
                                   "Delay the startup\0"
                                   "Run at startup\0"
                                   "Properties\0"
                                   "Tick items, then use Delay, Stop or Run on the toolbar.\0"
                                   "Tolvane - Startup Programs\0"
                                   "Current User\0"
                                   "All Users\0"
                                   "Startup Folder\0"
                                   "Registry Run\0"
                                   "Delayed Items\0"
                                   "Stopped Items\0"
                                   "Registry\0";
    Toolbar = UnpackTexts(kToolbar, sizeof kToolbar);
}

const std::string& TextTables::Entry(const std::vector<std::string>& table, size_t index) {
    static const std::string empty;
    return index < table.size() ? table[index] : empty;
}

} // namespace tolvane
