// A heavy start-up program: it waits for input once (so that it counts as ready), burns one
// core for the CPU time asked, reads a file whole, then records "<name> <milliseconds>" when it
// is done and ends.
//   load_program <record file> <name> <cpu milliseconds> [file to read]
#include <windows.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "record_line.h"

namespace {

unsigned long long ThreadCpuMs() {
    FILETIME created, exited, kernel, user;
    GetThreadTimes(GetCurrentThread(), &created, &exited, &kernel, &user);
    auto ticks = [](const FILETIME& t) {
        return (static_cast<unsigned long long>(t.dwHighDateTime) << 32) | t.dwLowDateTime;
    };
    return (ticks(kernel) + ticks(user)) / 10000;
}

} // namespace

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) {
    if (__argc < 4)
        return 2;
    // Waits for a message once, as a window program does when it is ready for input.
    MSG msg;
    const UINT_PTR timer = SetTimer(nullptr, 0, 20, nullptr);
    while (GetMessageA(&msg, nullptr, 0, 0) > 0 && msg.message != WM_TIMER) {
    }
    KillTimer(nullptr, timer);

    const unsigned long long cpuMs = std::strtoull(__argv[3], nullptr, 10);
    volatile unsigned long long spin = 0;
    while (ThreadCpuMs() < cpuMs)
        for (int i = 0; i < 100000; ++i)
            spin = spin + static_cast<unsigned long long>(i);

    if (__argc > 4) {
        HANDLE file = CreateFileA(__argv[4], GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                  FILE_FLAG_SEQUENTIAL_SCAN, nullptr);
        if (file == INVALID_HANDLE_VALUE)
            return 3;
        std::vector<char> buffer(1 << 20);
        DWORD got = 0;
        while (ReadFile(file, buffer.data(), static_cast<DWORD>(buffer.size()), &got, nullptr) &&
               got > 0) {
        }
        CloseHandle(file);
    }
    return AppendRecordLine(__argv[1],
                            std::string(__argv[2]) + " " + std::to_string(GetTickCount64()))
               ? 0
               : 1;
}
