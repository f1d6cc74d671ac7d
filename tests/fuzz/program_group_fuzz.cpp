// Any bytes as a program-group file: the reader must neither crash, hang nor read outside a
// string, and whatever it made of them must be written so that it reads back whole.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "config/program_group_file.h"
#include "text/code_page.h"

using namespace tolvane;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const std::vector<LanguageEntry> languages = {{"English", "en"}, {"Deutsch", "de"}};
    ProgramGroupReadContext context;
    context.UserItemsFolder = "C:\\T\\Tolvane Items\\Current User\\";
    context.AllUsersItemsFolder = "C:\\T\\Tolvane Items\\All Users\\";
    context.Languages = &languages;

    // Half the inputs are read as Shift-JIS, where a byte may be the second of a character.
    SetActiveCodePage(size > 0 && (data[0] & 1) ? 932 : kDefaultCodePage);
    ProgramModel model;
    ReadProgramGroupFile(std::string_view(reinterpret_cast<const char*>(data), size), model,
                         context);

    ProgramModel again;
    ProgramGroupReadResult result =
        ReadProgramGroupFile(FormatProgramGroupFile(model, languages), again, context);
    if (!result.Ok) {
        std::fprintf(stderr, "written file unreadable at line %zu: %s\n", result.LineNumber,
                     result.Error.c_str());
        std::abort();
    }
    return 0;
}
