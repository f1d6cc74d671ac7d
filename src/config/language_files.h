// Loading the language list and the text tables from the "lang" folder beside the exe.
#pragma once

#include <string>
#include <vector>

#include "config/program_group_store.h"
#include "text/text_tables.h"

namespace tolvane {

class EventLog;

// "lang\languagefile.dat" of the program folder; one empty entry when it is missing.
void LoadLanguageList(const std::string& programFolder, TextTables& text);
// A text file below "lang" into the table; a missing file leaves the table as it was.
void LoadTextFile(const std::string& programFolder, std::vector<std::string>& table,
                  const std::string& relativePath);
// "<code>\<name>.<code>", the language's own file of that name, below "lang".
std::string LanguageFile(const std::string& language, const std::string& name);
// The language's own text file of that name into the table.
void LoadLanguageTextFile(const std::string& programFolder, const std::string& language,
                          std::vector<std::string>& table, const std::string& name);
// The four shared tables of the language.
void LoadLanguageFiles(const std::string& programFolder, const std::string& language,
                       TextTables& text);

// Makes language i of the list the current one: its tables are loaded and the choice is written
// to the program-group file, so that it lasts. Nothing is done when it is the current language
// already or no language of the list. A file that cannot be written is logged, and the language
// stays chosen for this run only.
enum class LanguageChoice { None, Chosen, NotKept };
[[nodiscard]] LanguageChoice ChooseLanguage(ProgramGroupStore store, TextTables& text,
                                            EventLog& log, size_t index);

} // namespace tolvane
