// How the helper programs note that they ran: one line appended to a record file.
#pragma once

#include <windows.h>

#include <string>

// Several helpers may end at once: each line goes in with one appending write. False when the
// file stayed locked.
inline bool AppendRecordLine(const char* file, std::string line) {
    line += "\r\n";
    for (int attempt = 0; attempt < 200; ++attempt) {
        HANDLE f = CreateFileA(file, FILE_APPEND_DATA, FILE_SHARE_READ, nullptr, OPEN_ALWAYS,
                               FILE_ATTRIBUTE_NORMAL, nullptr);
        if (f != INVALID_HANDLE_VALUE) {
            DWORD wrote = 0;
            WriteFile(f, line.data(), static_cast<DWORD>(line.size()), &wrote, nullptr);
            CloseHandle(f);
            return true;
        }
        Sleep(5);
    }
    return false;
}
