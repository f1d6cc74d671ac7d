// Loading the language list and the text tables from the "lang" folder beside the exe.
#pragma once

#include <string>
#include <vector>

namespace tolvane {

class AppState;

// "lang\languagefile.dat"; one empty entry when it is missing.
void LoadLanguageList(AppState& app);
// A text file below "lang" into the table; a missing file leaves the table as it was.
void LoadTextFile(const AppState& app, std::vector<std::string>& table,
                  const std::string& relativePath);
// "<code>\<name>.<code>", the current language's own file of that name, below "lang".
std::string LanguageFile(const AppState& app, const std::string& name);
// The current language's own text file of that name into the table.
void LoadLanguageTextFile(const AppState& app, std::vector<std::string>& table,
                          const std::string& name);
// The four shared tables for the current Language setting.
void LoadLanguageFiles(AppState& app);

// Makes language i of the list the current one: its tables are loaded and the choice is written
// to the program-group file, so that it lasts. False, and nothing done, when it is the current
// language already or no language of the list. A file that cannot be written is logged; the
// language stays chosen for this run.
bool ChooseLanguage(AppState& app, size_t index);

} // namespace tolvane
