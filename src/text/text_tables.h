// The shared text tables and the language list, with built-in English texts for whatever a
// language file does not supply.
#pragma once

#include <string>
#include <vector>

namespace tolvane {

struct LanguageEntry {
    std::string Name; // shown in the language menu
    std::string Code; // folder name, file extension and the Language setting
};

// Built-in texts kept as one block, each text ended by a NUL (size: the block's, with the NUL
// that ends the literal): a list of separate literals would make each string in code of its
// own, costing the program more than the texts themselves.
std::vector<std::string> UnpackTexts(const char* texts, size_t size);

struct TextTables {
    TextTables(); // the built-in English texts

    std::vector<LanguageEntry> Languages; // one empty entry when no list was read
    std::vector<std::string> Buttons;
    std::vector<std::string> Menus;
    std::vector<std::string> Messages;
    std::vector<std::string> Toolbar;

    // The entry, or "" for an index that the table does not hold.
    static const std::string& Entry(const std::vector<std::string>& table, size_t index);
    const std::string& Message(size_t index) const { return Entry(Messages, index); }
};

} // namespace tolvane
