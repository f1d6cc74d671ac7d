// The program-group file ("proggroup.c"): the whole model in a relaxed C-like text that a
// user can read and edit. The writer produces one fixed layout; the reader tolerates more.
// Both work on bytes, so they run without the platform (and under the fuzzer).
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "config/program_model.h"
#include "text/text_tables.h"

namespace tolvane {

// Receives the file's bytes in order, a chunk at a time.
using ProgramGroupSink = std::function<void(std::string_view chunk)>;

// The file's bytes for the model: CR LF line ends, "." as the decimal separator.
void WriteProgramGroupFile(const ProgramModel& model, const std::vector<LanguageEntry>& languages,
                           const ProgramGroupSink& sink);
std::string FormatProgramGroupFile(const ProgramModel& model,
                                   const std::vector<LanguageEntry>& languages);

// What the reader needs besides the file.
struct ProgramGroupReadContext {
    // Paths inside these folders are kept relative to them (both end with a backslash).
    std::string UserItemsFolder;
    std::string AllUsersItemsFolder;
    const std::vector<LanguageEntry>* Languages = nullptr;
    // Called with the language code when the file names a known language.
    std::function<void(const std::string& code)> LanguageChosen;
};

struct ProgramGroupReadResult {
    bool Ok = true;
    std::string Error;     // what ended the load
    size_t LineNumber = 0; // 1-based line where it ended
};

// Rebuilds the groups from the file and sets the settings and lists whose lines it finds.
// On a failure the load ends where it is: the model keeps what was read, the programs are not
// sorted and the "Startup" index keeps its old value.
ProgramGroupReadResult ReadProgramGroupFile(std::string_view bytes, ProgramModel& model,
                                            const ProgramGroupReadContext& context);

// The model of a first start: one empty "Startup" group, the built-in disallowed words and
// the default settings.
void SetDefaultModel(ProgramModel& model);

// Cuts the line at its first "//" and removes every tab; leading blanks stay.
std::string StripComment(std::string_view line);

// Splits "format fdisk ..." into its words, without empty pieces.
std::vector<std::string> BuiltInDisallowedWords();

} // namespace tolvane
