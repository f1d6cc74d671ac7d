#include "text/text_tables.h"

namespace tolvane {

TextTables::TextTables() : Languages(1) {}

const std::string& TextTables::Entry(const std::vector<std::string>& table, size_t index) {
    static const std::string empty;
    return index < table.size() ? table[index] : empty;
}

} // namespace tolvane
