// What the helper programs wrote: one line per start.
#pragma once

#include <windows.h>

#include "support/win_test_support.h"

namespace tolvane::test {

// The lines of a record once there are at least this many, or after ten seconds.
inline std::vector<std::string> WaitForLines(const std::string& record, size_t count) {
    std::vector<std::string> lines = ReadLines(record);
    for (int i = 0; i < 500 && lines.size() < count; ++i, lines = ReadLines(record))
        Sleep(20);
    return lines;
}

// The names of the starts that start_recorder noted as "<name> <milliseconds> [arguments]".
inline std::vector<std::string> WaitForNames(const std::string& record, size_t count) {
    std::vector<std::string> names;
    for (const std::string& line : WaitForLines(record, count))
        names.push_back(line.substr(0, line.find(' ')));
    return names;
}

} // namespace tolvane::test
