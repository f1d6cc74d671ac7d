#include "models/menu_model.h"

#include "models/command_ids.h"

namespace tolvane {

namespace {

using Kind = MenuItem::Kind;

// The Menus entry of File > Refresh.
constexpr size_t kRefreshEntry = 26;

MenuItem Command(int id, const std::vector<std::string>& menus, size_t entry) {
    MenuItem item;
    item.Number = id;
    item.Caption = TextTables::Entry(menus, entry);
    for (const AcceleratorKey& key : MainAccelerators())
        if (key.Command == id)
            item.Caption.append("\t").append(key.Name);
    return item;
}

MenuItem Separator() {
    MenuItem item;
    item.Type = Kind::Separator;
    return item;
}

MenuItem Submenu(const std::vector<std::string>& menus, size_t entry, std::vector<MenuItem> items) {
    MenuItem item;
    item.Type = Kind::Submenu;
    item.Caption = TextTables::Entry(menus, entry);
    item.Entries = std::move(items);
    return item;
}

} // namespace

const std::vector<AcceleratorKey>& MainAccelerators() {
    // VK_F5, Ctrl+S, VK_F1.
    static const std::vector<AcceleratorKey> keys = {{ID_CMD_SAVE, 'S', true, "Ctrl+S"},
                                                     {ID_CMD_REFRESH, 0x74, false, "F5"},
                                                     {ID_CMD_HELP, 0x70, false, "F1"}};
    return keys;
}

std::vector<MenuItem> BuildMainMenu(const std::vector<std::string>& menus,
                                    const std::vector<LanguageEntry>& languages,
                                    std::string_view currentLanguage) {
    std::vector<MenuItem> languageItems;
    for (size_t i = 0; i < languages.size() && LanguageCommand(i) <= ID_CMD_LANGUAGE_LAST; ++i) {
        if (languages[i].Code.empty())
            continue; // the list was missing: no language to choose
        MenuItem item;
        item.Number = LanguageCommand(i);
        item.Caption = languages[i].Name;
        item.Checked = languages[i].Code == currentLanguage;
        languageItems.push_back(std::move(item));
    }
    return {
        Submenu(menus, 0,
                {Command(ID_CMD_SAVE, menus, 1), Command(ID_CMD_REFRESH, menus, kRefreshEntry),
                 Separator(), Command(ID_CMD_MINIMIZE_TO_TRAY, menus, 2),
                 Command(ID_CMD_QUIT, menus, 3)}),
        Submenu(menus, 4, {Command(ID_CMD_GROUPS, menus, 5)}),
        Submenu(menus, 27, {Command(ID_CMD_LAST_LOGON, menus, 28)}),
        Submenu(menus, 6, {Command(ID_CMD_OPTIONS, menus, 7)}),
        Submenu(menus, 8, std::move(languageItems)),
        Submenu(
            menus, 9,
            {Command(ID_CMD_HELP, menus, 10), Separator(), Command(ID_CMD_ABOUT, menus, 11),
             Separator(), Command(ID_CMD_TIPS, menus, 12), Separator(),
             Submenu(menus, 13,
                     {Command(ID_CMD_FORUMS, menus, 14), Command(ID_CMD_SUPPORT_MAIL, menus, 15),
                      Command(ID_CMD_MAIN_PAGE, menus, 16)})}),
    };
}

std::vector<MenuItem> BuildItemPopup(const std::vector<std::string>& menus) {
    return {Command(ID_CMD_DELAY, menus, 17),        Separator(),
            Command(ID_CMD_STOP, menus, 18),         Separator(),
            Command(ID_CMD_RUN, menus, 19),          Separator(),
            Command(ID_CMD_PROPERTIES, menus, 20),   Separator(),
            Command(ID_CMD_SEARCH_ONLINE, menus, 21)};
}

std::vector<ToolbarButton> BuildMainToolbar(const std::vector<std::string>& menus,
                                            const std::vector<std::string>& toolbar) {
    auto button = [&](int command, int menuEntry, size_t tip) {
        return ToolbarButton{
            command, menuEntry < 0 ? "" : WithoutMnemonic(TextTables::Entry(menus, menuEntry)),
            TextTables::Entry(toolbar, tip)};
    };
    return {button(ID_CMD_SAVE, 1, 0),
            ToolbarButton{},
            button(ID_CMD_REFRESH, -1, 1),
            ToolbarButton{},
            button(ID_CMD_STOP_CHECKED, 18, 2),
            button(ID_CMD_DELAY_CHECKED, 17, 3),
            button(ID_CMD_RUN_CHECKED, 19, 4),
            button(ID_CMD_GROUPS, 20, 5),
            ToolbarButton{},
            button(ID_CMD_LAST_LOGON, -1, 15)};
}

void ApplyEnabled(std::vector<MenuItem>& items, const CommandTable& commands) {
    for (MenuItem& item : items) {
        if (item.Type == Kind::Command)
            item.Enabled = LanguageOfCommand(item.Number) || commands.Enabled(item.Number);
        ApplyEnabled(item.Entries, commands);
    }
}

int LanguageCommand(size_t index) {
    return ID_CMD_LANGUAGE_FIRST + static_cast<int>(index);
}

std::optional<size_t> LanguageOfCommand(int command) {
    if (command < ID_CMD_LANGUAGE_FIRST || command > ID_CMD_LANGUAGE_LAST)
        return std::nullopt;
    return static_cast<size_t>(command - ID_CMD_LANGUAGE_FIRST);
}

std::string WithoutMnemonic(std::string_view caption) {
    std::string out;
    for (size_t i = 0; i < caption.size(); ++i) {
        if (caption[i] != '&')
            out += caption[i];
        else if (i + 1 < caption.size() && caption[i + 1] == '&')
            out += caption[++i];
    }
    return out;
}

} // namespace tolvane
