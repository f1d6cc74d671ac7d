#include "config/language_files.h"

#include <exception>

#include "config/delay_load.h"
#include "config/program_group_store.h"
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

std::string LanguageFile(const AppState& app, const std::string& name) {
    const std::string& code = app.model.Language;
    return code + "\\" + name + "." + code;
}

void LoadLanguageTextFile(const AppState& app, std::vector<std::string>& table,
                          const std::string& name) {
    LoadTextFile(app, table, LanguageFile(app, name));
}

void LoadLanguageFiles(AppState& app) {
    LoadLanguageTextFile(app, app.text.Buttons, "buttons");
    LoadLanguageTextFile(app, app.text.Menus, "menus");
    LoadLanguageTextFile(app, app.text.Messages, "messages");
    LoadLanguageTextFile(app, app.text.Toolbar, "toolbar");
}

bool ChooseLanguage(AppState& app, size_t index) {
    if (index >= app.text.Languages.size())
        return false;
    const std::string& code = app.text.Languages[index].Code;
    if (code.empty() || code == app.model.Language)
        return false;
    try {
        ProgramGroupStore(app).Change([&](ProgramModel& file) { file.Language = code; });
    } catch (const std::exception& e) {
        // The texts change all the same, for this run: the file keeps the language it had.
        app.log.WriteLog(std::string("Language choice: ") + e.what(), kLogError);
        app.model.Language = code;
    }
    LoadLanguageFiles(app);
    return true;
}

} // namespace tolvane
