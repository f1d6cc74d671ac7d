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
// The four shared tables for the current Language setting.
void LoadLanguageFiles(AppState& app);

} // namespace tolvane
