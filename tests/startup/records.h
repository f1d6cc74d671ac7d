// What start_recorder wrote: one line per start, "<name> <milliseconds> [arguments]".
#pragma once

#include <windows.h>

#include <cstdint>
#include <sstream>

#include "support/win_test_support.h"

namespace tolvane::test {

struct Start {
    std::string Name; // with the arguments after it, if any
    uint64_t Ms = 0;
};

// The starts recorded once there are at least this many, or after a few seconds.
inline std::vector<Start> WaitForStarts(const std::string& record, size_t count,
                                        unsigned long timeoutMs = 8000) {
    std::vector<Start> starts;
    for (unsigned long waited = 0; starts.size() < count && waited <= timeoutMs; waited += 20) {
        Sleep(waited ? 20 : 0);
        starts.clear();
        for (const std::string& line : ReadLines(record)) {
            std::istringstream in(line);
            Start s;
            std::string arguments;
            in >> s.Name >> s.Ms;
            std::getline(in, arguments);
            starts.push_back({s.Name + arguments, s.Ms});
        }
    }
    return starts;
}

inline std::vector<std::string> Names(const std::vector<Start>& starts) {
    std::vector<std::string> names;
    for (const Start& s : starts)
        names.push_back(s.Name);
    return names;
}

} // namespace tolvane::test
