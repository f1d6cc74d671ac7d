// CDelayLoad: the program-group model's file and the lookups that need the platform. The model
// itself is the process-wide one; an object holds only its file path.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "config/app_folders.h"
#include "config/program_model.h"
#include "config/run_data.h"
#include "platform/registry.h"
#include "text/text_tables.h"
#include "models/user_messages.h"

namespace tolvane {

// A stopped item's command as its value holds it (variables kept), and whether Windows fills
// in its variables before it starts it (an expandable value).
struct StoppedCommand {
    std::string Program;
    std::string Arguments;
    bool Expandable = false;
    // Program and arguments as they start: the variables filled in where Windows would.
    struct Start {
        std::string Path, Parameters;
    };
    Start ToStart() const;
};

// Where Tolvane keeps the copies of the Run values it took out.
inline constexpr const char* kSavedUserRunKey = "Software\\Hexmoor\\Tolvane\\HKCU";
inline constexpr const char* kSavedMachineRunKey = "Software\\Hexmoor\\Tolvane\\HKLM";

class CDelayLoad {
public:
    // Makes sure the folder named after the Windows user exists in the program folder: the
    // file is per user. The model is read into and written from; the items folders shorten its
    // paths; a language the file names loads its texts; a file that cannot be read is told.
    CDelayLoad(ProgramModel& model, const AppFolders& folders, TextTables& text,
               UserMessages& messages);

    ProgramModel& Model() { return model_; }
    const std::string& FilePath() const { return filePath_; }

    // The command that starts a stopped item, given its whole entry (prefix and name) or its
    // index. Shortcuts lie in the items folders; Run values are found among the saved copies
    // and read as Windows reads them. False when the entry is unknown.
    bool GetStoppedInfo(std::string_view entry, StoppedCommand& command);
    bool GetStoppedInfo(int index, StoppedCommand& command);

    // Rebuilds the model from the file. A missing file gives the model of a first start, which
    // is written at once unless writeMissing is false. A file that cannot be read whole is
    // reported with message 13; the model keeps what was read, and the file as it was is kept
    // beside it (".unreadable"), since the next write replaces it with what was read.
    void LoadItems(bool writeMissing = true);
    // Writes the whole model; throws FileError when it cannot, leaving the old file intact.
    void WriteItems();

    // The measurements of the programs started, beside the file.
    std::string ImpactFilePath() const;

    // The copy of a file that a load could not read.
    std::string UnreadableCopyPath() const { return filePath_ + ".unreadable"; }

private:
    bool StoppedInfoOf(int index, StoppedCommand& command);

    ProgramModel& model_;
    const AppFolders& folders_;
    TextTables& text_;
    UserMessages& messages_;
    std::string filePath_;
};

// The saved copies of one location's Run values, each its name and data as MatchSavedCopies
// takes them, with the root each was read from and whether it is expandable. The machine's are
// read from both registry views: a copy stays in the view its value came from, so that it goes
// back there. The file does not record a view: two values of the same name and command, one in
// each view, one delayed and one stopped, may show their states the other way round. Each still
// goes back to its own view, and both start the same command.
struct SavedCopies {
    int Location = 0;
    std::vector<NameData> Copies;
    std::vector<RegistryRoot> Roots;
    std::vector<bool> ExpandableCopies; // REG_EXPAND_SZ
    // The root (and view) of a matched copy; the location's own for none (-1): a value without
    // a copy counts as the machine's own view's.
    RegistryRoot RootOf(int copy) const;
    // The copy is an expandable value (REG_EXPAND_SZ).
    bool Expandable(int copy) const;
};
SavedCopies ReadSavedCopies(int location);

// The root of the Run key and of the saved copies of a location's values (code 1 the current
// user's, any other the machine's), in the view given for the machine.
RegistryRoot RunRoot(int location, bool wow32 = false);
std::string SavedKeyOf(int location);

// The saved copy of a delayed Run value is expandable (REG_EXPAND_SZ): Windows fills in the
// variables of such a command before it starts it, and so does the program. The copy is the
// one of its name whose command is the program's, else the first of its name.
bool SavedCopyIsExpandable(const GroupProgram& program);

// The Windows user's name, as the per-user folder is named.
std::string WindowsUserName();

} // namespace tolvane
