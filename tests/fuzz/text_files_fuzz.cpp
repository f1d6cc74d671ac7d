// Any bytes as a language list, a text file or a safe list line set: no crash, no hang, no
// read outside a string.
#include <cstdint>
#include <string>

#include "text/language.h"

using namespace tolvane;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string_view text(reinterpret_cast<const char*>(data), size);
    auto list = ParseLanguageList(text);
    std::vector<std::string> table(3, "default");
    ApplyTextFile(table, text);
    if (list.empty() || table.size() < 3)
        __builtin_trap();
    return 0;
}
