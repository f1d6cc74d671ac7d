#include "config/language_files.h"

#include <exception>

#include "config/program_group_store.h"
#include "platform/event_log.h"
#include "platform/file_io.h"
#include "platform/wide_text.h"
#include "text/language.h"

namespace tolvane {

void LoadLanguageList(const std::string& programFolder, TextTables& text) {
    auto bytes = ReadTextFile(programFolder + "\\lang\\languagefile.dat");
    text.Languages = bytes ? ParseLanguageList(*bytes) : std::vector<LanguageEntry>(1);
}

void LoadTextFile(const std::string& programFolder, std::vector<std::string>& table,
                  const std::string& relativePath) {
    if (auto bytes = ReadTextFile(programFolder + "\\lang\\" + relativePath))
        ApplyTextFile(table, *bytes);
}

std::string LanguageFile(const std::string& language, const std::string& name) {
    return language + "\\" + name + "." + language;
}

void LoadLanguageTextFile(const std::string& programFolder, const std::string& language,
                          std::vector<std::string>& table, const std::string& name) {
    LoadTextFile(programFolder, table, LanguageFile(language, name));
}

void LoadLanguageFiles(const std::string& programFolder, const std::string& language,
                       TextTables& text) {
    LoadLanguageTextFile(programFolder, language, text.Buttons, "buttons");
    LoadLanguageTextFile(programFolder, language, text.Menus, "menus");
    LoadLanguageTextFile(programFolder, language, text.Messages, "messages");
    LoadLanguageTextFile(programFolder, language, text.Toolbar, "toolbar");
}

LanguageChoice ChooseLanguage(ProgramGroupStore store, TextTables& text, EventLog& log,
                              size_t index) {
    if (index >= text.Languages.size())
        return LanguageChoice::None;
    const std::string code = text.Languages[index].Code;
    if (code.empty() || code == store.Model().Language)
        return LanguageChoice::None;
    LanguageChoice choice = LanguageChoice::Chosen;
    try {
        store.Change([&](ProgramModel& file) { file.Language = code; });
    } catch (const std::exception& e) {
        // The texts change all the same, for this run: the file keeps the language it had.
        log.WriteLog(std::string("Language choice: ") + e.what(), kLogError);
        store.Model().Language = code;
        choice = LanguageChoice::NotKept;
    }
    LoadLanguageFiles(store.Folders().ProgramFolder, code, text);
    return choice;
}

} // namespace tolvane
