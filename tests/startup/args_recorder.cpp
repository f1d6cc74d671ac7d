// Records how it was started: appends "<its own path>|<arguments>" to the file that the
// variable TOLVANE_ARGS_RECORD names, the arguments exactly as its command line holds them
// after the program, as the C runtime and CommandLineToArgvW part them off.
// A window program, so that starting it opens no console.
#include <windows.h>

#include <string>

#include "record_line.h"

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) {
    const char* line = GetCommandLineA();
    if (*line == '"') {
        ++line;
        while (*line && *line != '"')
            ++line;
        if (*line)
            ++line;
    } else {
        while (*line && *line != ' ' && *line != '\t')
            ++line;
    }
    while (*line == ' ' || *line == '\t')
        ++line;
    char self[MAX_PATH * 2] = {}, record[MAX_PATH * 2] = {};
    GetModuleFileNameA(nullptr, self, sizeof self);
    if (!GetEnvironmentVariableA("TOLVANE_ARGS_RECORD", record, sizeof record))
        return 2;
    return AppendRecordLine(record, std::string(self) + "|" + line) ? 0 : 1;
}
