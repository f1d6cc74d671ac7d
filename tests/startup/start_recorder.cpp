// Records that it was started: appends "<name> <milliseconds> [arguments]" to a file and ends.
//   start_recorder <record file> <name> [arguments...]
// A window program, so that starting it opens no console.
#include <windows.h>

#include <string>

#include "record_line.h"

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) {
    if (__argc < 3)
        return 2;
    const unsigned long long now = GetTickCount64();
    std::string line = std::string(__argv[2]) + " " + std::to_string(now);
    for (int i = 3; i < __argc; ++i)
        line += std::string(" ") + __argv[i];
    return AppendRecordLine(__argv[1], line) ? 0 : 1;
}
