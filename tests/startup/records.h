// What start_recorder wrote: one line per start, "<name> <milliseconds> [arguments]".
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

#include "support/win_test_support.h"

namespace tolvane::test {

struct Start {
    std::string Name;
    uint64_t Ms = 0;
    std::string Arguments;
};

inline std::vector<Start> ReadStarts(const std::string& record) {
    std::vector<Start> starts;
    for (const std::string& line : ReadLines(record)) {
        Start s;
        size_t a = line.find(' ');
        s.Name = line.substr(0, a);
        if (a != std::string::npos) {
            size_t b = line.find(' ', a + 1);
            s.Ms = std::stoull(line.substr(a + 1, b - a - 1));
            if (b != std::string::npos)
                s.Arguments = line.substr(b + 1);
        }
        starts.push_back(s);
    }
    return starts;
}

// The starts recorded once there are at least this many, or after a few seconds.
inline std::vector<Start> WaitForStarts(const std::string& record, size_t count,
                                        unsigned long timeoutMs = 8000) {
    std::vector<Start> starts;
    for (unsigned long waited = 0; waited <= timeoutMs; waited += 20) {
        starts = ReadStarts(record);
        if (starts.size() >= count)
            break;
        Sleep(20);
    }
    return starts;
}

inline std::vector<std::string> Names(const std::vector<Start>& starts) {
    std::vector<std::string> names;
    for (const Start& s : starts)
        names.push_back(s.Arguments.empty() ? s.Name : s.Name + " " + s.Arguments);
    return names;
}

} // namespace tolvane::test
