#include "config/language_files.h"

#include "platform/file_io.h"
#include "config/app_state.h"
#include "text/language.h"

namespace tolvane {

void LoadLanguageList(AppState& app) {
    auto bytes = ReadFileBytes(app.folders.ProgramFolder + "\\lang\\languagefile.dat");
    app.text.Languages = bytes ? ParseLanguageList(*bytes) : std::vector<LanguageEntry>(1);
}

void LoadTextFile(const AppState& app, std::vector<std::string>& table,
                  const std::string& relativePath) {
    if (auto bytes = ReadFileBytes(app.folders.ProgramFolder + "\\lang\\" + relativePath))
        ApplyTextFile(table, *bytes);
}

void LoadLanguageFiles(AppState& app) {
    const std::string& code = app.model.Language;
    LoadTextFile(app, app.text.Buttons, code + "\\buttons." + code);
    LoadTextFile(app, app.text.Menus, code + "\\menus." + code);
    LoadTextFile(app, app.text.Messages, code + "\\messages." + code);
    LoadTextFile(app, app.text.Toolbar, code + "\\toolbar." + code);
}

} // namespace tolvane
