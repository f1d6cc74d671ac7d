// Records that it was started: appends "<name> <milliseconds> [arguments]" to a file and ends.
//   start_recorder <record file> <name> [arguments...]
// A window program, so that starting it opens no console.
#include <windows.h>

#include <string>

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) {
    if (__argc < 3)
        return 2;
    const unsigned long long now = GetTickCount64();
    std::string line = std::string(__argv[2]) + " " + std::to_string(now);
    for (int i = 3; i < __argc; ++i)
        line += std::string(" ") + __argv[i];
    line += "\r\n";
    // Several recorders may start at once: each line goes in with one appending write.
    for (int attempt = 0; attempt < 200; ++attempt) {
        HANDLE file = CreateFileA(__argv[1], FILE_APPEND_DATA, FILE_SHARE_READ, nullptr,
                                  OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
        if (file != INVALID_HANDLE_VALUE) {
            DWORD wrote = 0;
            WriteFile(file, line.data(), static_cast<DWORD>(line.size()), &wrote, nullptr);
            CloseHandle(file);
            return 0;
        }
        Sleep(5);
    }
    return 1;
}
