// The process-wide program-group model: groups of delayed programs, the disallowed words, the
// stopped items and the settings, with the operations that every part of the program uses to
// change them. Plain data and rules; the file and the registry stay outside.
#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "config/run_data.h"

namespace tolvane {

inline constexpr std::string_view kStartupGroup = "Startup";

// The one spelling of a group name that every lookup compares: the file writes a blank as "_"
// (`void My_Tools()`) and reads it back as a blank, so "My Tools" and "My_Tools" are one group.
// Only a whole "_" counts: a double-byte character may end in its byte.
std::string NormalGroupName(std::string_view name);
// A name typed for a new or renamed group: its one spelling, without blanks at either end.
std::string TypedGroupName(std::string_view name);

// Why a group cannot take a name, as a new group or by renaming.
enum class GroupNameProblem {
    None,
    Empty,            // nothing but blanks
    StartupKeepsName, // the "Startup" group is the one to be renamed
    StartupReserved,  // "Startup" in any letter case: only the log-on group is called so
    Taken,            // another group has the name, in either spelling
};

// Command words of program lines: where a delayed program came from.
inline constexpr std::string_view kExecute = "Execute";           // user's Startup folder, editor
inline constexpr std::string_view kExecuteReg = "ExecuteReg";     // user's Run key
inline constexpr std::string_view kExecuteAU = "ExecuteAU";       // all users' Startup folder
inline constexpr std::string_view kExecuteRegAU = "ExecuteRegAU"; // machine's Run key

// Where a startup item lives; a stopped entry is the location's prefix and the item's name.
enum LocationCode : int {
    kMachineRun = 0,    // "_REGAU_"
    kUserRun = 1,       // "_REGCU_"
    kCommonStartup = 2, // "_STPAU_"
    kUserStartup = 3,   // "_STPCU_"
};
inline constexpr size_t kPrefixLength = 7;

// Windows starts an active item; the program starts a delayed one at log-on, after its delay;
// nobody starts a stopped one, which can be put back.
enum class ItemState { Active, Delayed, Stopped };
// The prefix of a location code; "" for any other code.
std::string_view LocationPrefix(int code);
// The command word of a delayed program from that location, and the location of a command
// word; "" and -1 for anything else.
std::string_view CommandOfLocation(int code);
int LocationOfCommand(std::string_view command);

// A location as scripts and the administrator's policies name it: its code and, for the
// machine's Run key, its registry view.
struct LocationWord {
    const char* Word;
    int Code;
    bool Wow32;
};
// "user-folder", "user-run", "common-folder", "machine-run", "machine-run-32"; nothing else.
std::optional<LocationWord> ParseLocationWord(std::string_view word);
// The word of a location; "" for a code that is none.
const char* LocationWordOf(int code, bool wow32);

// The built-in disallowed words, each followed by one blank.
inline constexpr std::string_view kBuiltInDisallowed = "format fdisk del rmdir mkdir delete ";

struct GroupProgram {
    std::string Path; // empty with no value name: a free slot that the next addition fills
    std::string Parameters;
    std::string Command;
    float Delay = 0;
    std::string RegistryKeyName;
};

// A slot that holds no program: no path and no value name. A Run value whose command is empty
// is a record all the same, kept by its name: it must come back as it was.
inline bool IsFreeSlot(const GroupProgram& program) {
    return program.Path.empty() && program.RegistryKeyName.empty();
}

// The same program line: command, path, parameters, delay and value name.
bool SameRecord(const GroupProgram& a, const GroupProgram& b);

struct ProgramGroup {
    std::string Name; // empty: a hole left by RemoveProgramGroup
    std::vector<GroupProgram> Programs;
};

// An operation asked for an element that is not in its list. The caller reports it; the model
// never reads or writes outside a list.
class ModelError : public std::out_of_range {
public:
    using std::out_of_range::out_of_range;
};

class ProgramModel {
public:
    std::vector<ProgramGroup> ProgramGroups;
    int StartupGroupIndex = -1;
    std::vector<std::string> DisallowedPrograms;
    std::vector<std::string> StoppedPrograms;

    float MainStartupDelay = 0;
    int StartupType = 0;
    int CloseType = 0;
    std::string Language;
    int ShowTipsAtStartup = 0;
    // Not 0: the log-on run starts each program once the machine is idle, at the latest its
    // delay plus two minutes after the one before. A file without the line means 0.
    int WaitForIdle = 0;

    // Empties the path of every "Startup" program that a disallowed word blocks and returns
    // those trimmed paths, once per blocking word; one "" when none. The words are looked for
    // in what each program starts with, as `started` reads it (StartedCommand).
    std::vector<std::string> RemoveDisallowed(RunCommandParts (*started)(const GroupProgram&));
    // The disallowed word that keeps this command from starting, or "" when none does. A word
    // blocks a command, never a name: it matches the program's own name ("del", "format.com",
    // "rmdir.exe") or a whole word of the arguments, also as a program there ("cmd /c del
    // C:\x", "/c C:\x\format.com d:"), in any letter case. A word of several words matches
    // them in a row. Folder and file names that merely hold the letters ("C:\Program
    // Files\Dell", "ModelViewer", "Delete.txt") never match: blocking them would silently take
    // a user's program out of the log-on.
    std::string BlockingWord(std::string_view program, std::string_view arguments) const;

    int GetGroupID(std::string_view name) const;
    // The program whose "path parameters" or path alone equals the trimmed text; -1 when none,
    // also when the group does not exist.
    int GetProgramID(std::string_view program, std::string_view groupName) const;
    int GetProgramID(std::string_view program, int groupIndex) const;

    void AddStoppedProgram(std::string_view name, int code);
    void RemoveStoppedProgram(std::string_view name, int code);
    // Index of the stopped entry for this name and code, or -1.
    int FindStoppedProgram(std::string_view name, int code) const;

    // Adds a group of the name's normal spelling, or gives the group that has it already.
    int AddGroup(std::string_view name);
    // Why a new group cannot have this name; None when it can. "Startup" in its own spelling
    // can be added while the file has no such group: the log-on run needs it back.
    GroupNameProblem NewGroupProblem(std::string_view name) const;
    // Why the group cannot be renamed to this name; None when it can, also when the name is
    // its own in another spelling.
    GroupNameProblem RenameProblem(int groupIndex, std::string_view newName) const;
    // False, and nothing renamed, for an index outside the list and for every problem above:
    // the "Startup" group never loses its name, so the log-on run never loses its programs.
    bool UpdateGroupName(int groupIndex, std::string_view newName);
    bool UpdateGroupNameString(std::string_view oldName, std::string_view newName);

    // groupIndex -1 means the "Startup" group, made when missing. Throws ModelError for an
    // index outside the list.
    void AddProgramToGroup(int groupIndex, std::string_view command, std::string_view path,
                           std::string_view parameters, float delay,
                           std::string_view registryKeyName);
    bool UpdateProgramInGroup(int groupIndex, int programIndex, std::string_view path,
                              std::string_view parameters, float delay);
    bool RemoveProgramFromGroup(int groupIndex, int programIndex);
    // Throws ModelError for an index outside the list and for the only group.
    void RemoveProgramGroup(int groupIndex);

    void SortArray();
    bool AreAllUserDelays() const;
    bool AreUserDelays() const;

    // The "Startup" group as the item moves and the log-on run see it: nullptr when the index
    // is unknown, outside the list, or names a removed group (a group without programs).
    const ProgramGroup* StartupGroup() const;
    ProgramGroup* StartupGroup();

private:
    const ProgramGroup* GroupForDelays() const;
};

} // namespace tolvane
