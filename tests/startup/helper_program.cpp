// The program that the tests and benchmarks start in place of real ones. By its first argument:
//   helper_program record <record file> <name>
//     appends "<name> <milliseconds>" to the record and ends;
//   helper_program load <record file> <name> <cpu milliseconds> [file to read]
//     a heavy start-up program: waits for input once (so that it counts as ready), burns one
//     core for the CPU time asked, reads the file whole, then records "<name> <milliseconds>";
//   helper_program write <program folder> <programs> <event>
//     writes the program-group file over and over, alternating two models, until it is killed;
//     sets the event once one whole write is done.
// Copied under any other name, it stands for a real program at its path: it appends "<its own
// path>|<arguments>" to the file that TOLVANE_ARGS_RECORD names, the arguments exactly as its
// command line holds them after the program, as the C runtime and CommandLineToArgvW part them.
// A window program, so that starting it opens no console.
#include <windows.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "config/app_state.h"
#include "config/delay_load.h"
#include "config/language_files.h"
#include "support/test_support.h"

namespace {

// Several programs may end at once: each line goes in with one appending write. False when the
// file stayed locked.
bool AppendLine(const char* file, std::string line) {
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

std::string Stamp(const char* name) {
    return std::string(name) + " " + std::to_string(GetTickCount64());
}

// The command line after the program's own name: up to the closing quote, or the first blank.
const char* Arguments() {
    const char* line = GetCommandLineA();
    const bool quoted = *line == '"';
    for (line += quoted; *line && (quoted ? *line != '"' : *line != ' ' && *line != '\t');)
        ++line;
    for (line += quoted && *line; *line == ' ' || *line == '\t';)
        ++line;
    return line;
}

unsigned long long ThreadCpuMs() {
    FILETIME created, exited, kernel, user;
    GetThreadTimes(GetCurrentThread(), &created, &exited, &kernel, &user);
    auto ticks = [](const FILETIME& t) {
        return (static_cast<unsigned long long>(t.dwHighDateTime) << 32) | t.dwLowDateTime;
    };
    return (ticks(kernel) + ticks(user)) / 10000;
}

int Load(int argc, char** argv) {
    // Waits for a message once, as a window program does when it is ready for input.
    MSG msg;
    const UINT_PTR timer = SetTimer(nullptr, 0, 20, nullptr);
    while (GetMessageA(&msg, nullptr, 0, 0) > 0 && msg.message != WM_TIMER) {
    }
    KillTimer(nullptr, timer);
    volatile unsigned long long spin = 0;
    while (ThreadCpuMs() < std::strtoull(argv[4], nullptr, 10))
        for (int i = 0; i < 100000; ++i)
            spin = spin + static_cast<unsigned long long>(i);
    if (argc > 5) {
        HANDLE file = CreateFileA(argv[5], GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
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
    return !AppendLine(argv[2], Stamp(argv[3]));
}

int Write(char** argv) {
    tolvane::test::CapturedMessages messages;
    tolvane::AppState app(argv[2], messages);
    // The same language list as the test that compares the bytes.
    tolvane::LoadLanguageList(app.folders.ProgramFolder, app.text);
    tolvane::CDelayLoad delayLoad = app.Store().File();
    HANDLE started = OpenEventA(EVENT_MODIFY_STATE, FALSE, argv[4]);
    for (unsigned round = 0;; ++round) {
        if (round == 1)
            SetEvent(started); // one whole write done: from now on every moment is mid-work
        tolvane::test::FillWriterModel(app.model, round % 2, std::atoi(argv[3]));
        delayLoad.WriteItems();
    }
}

} // namespace

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) {
    char self[MAX_PATH * 2] = {}, record[MAX_PATH * 2] = {};
    GetModuleFileNameA(nullptr, self, sizeof self);
    const std::string mode = __argc > 1 ? __argv[1] : "";
    if (!std::string(self).ends_with("\\helper_program.exe"))
        return !(GetEnvironmentVariableA("TOLVANE_ARGS_RECORD", record, sizeof record) &&
                 AppendLine(record, std::string(self) + "|" + Arguments()));
    if (mode == "record" && __argc > 3)
        return !AppendLine(__argv[2], Stamp(__argv[3]));
    if (mode == "load" && __argc > 4)
        return Load(__argc, __argv);
    if (mode == "write" && __argc > 4)
        return Write(__argv);
    return 2;
}
