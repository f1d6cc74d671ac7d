#include "platform/processes.h"

#include <objbase.h>
#include <shlobj.h>
#include <tlhelp32.h>

#include <algorithm>

#include "platform/environment.h"
#include "platform/runtime_libraries.h"
#include "platform/wide_text.h"
#include "text/strings.h"

namespace tolvane {

namespace {

UniqueHandle OpenToWatch(DWORD id) {
    // Waiting for input needs the full query right; the figures alone would do with less.
    for (DWORD rights :
         {DWORD(PROCESS_QUERY_INFORMATION), DWORD(PROCESS_QUERY_LIMITED_INFORMATION)})
        if (HANDLE h = OpenProcess(rights | SYNCHRONIZE, FALSE, id))
            return UniqueHandle(h);
    return UniqueHandle();
}

// The CPU time of the process's running threads together, in 100 ns.
uint64_t ThreadTimes(DWORD processId) {
    UniqueFile snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0));
    if (!snapshot)
        return 0;
    uint64_t sum = 0;
    THREADENTRY32 entry{};
    entry.dwSize = sizeof entry;
    for (BOOL more = Thread32First(snapshot.get(), &entry); more;
         more = Thread32Next(snapshot.get(), &entry)) {
        if (entry.th32OwnerProcessID != processId)
            continue;
        UniqueHandle thread(
            OpenThread(THREAD_QUERY_LIMITED_INFORMATION, FALSE, entry.th32ThreadID));
        FILETIME created{}, exited{}, kernel{}, user{};
        if (thread && GetThreadTimes(thread.get(), &created, &exited, &kernel, &user))
            sum += FileTimeTicks(kernel) + FileTimeTicks(user);
    }
    return sum;
}

// Wine answers another process's times with the caller's own; its threads' times are right.
bool OthersTimesKnown() {
    static const bool known = !GetProcAddress(GetModuleHandleA("ntdll.dll"), "wine_get_version");
    return known;
}

} // namespace

std::optional<ProcessFigures> ReadProcessFigures(HANDLE process) {
    FILETIME created{}, exited{}, kernel{}, user{};
    if (!GetProcessTimes(process, &created, &exited, &kernel, &user))
        return std::nullopt;
    ProcessFigures figures;
    // Windows counts every thread in the process's times, ended ones too. Where those times
    // cannot be had, the running threads' times stand for them: read while the program runs,
    // they miss only what its ended threads used.
    const bool running = WaitForSingleObject(process, 0) == WAIT_TIMEOUT;
    const uint64_t cpu = OthersTimesKnown() ? FileTimeTicks(kernel) + FileTimeTicks(user)
                         : running          ? ThreadTimes(GetProcessId(process))
                                            : 0;
    figures.CpuMs = cpu / 10000;
    IO_COUNTERS io{};
    if (GetProcessIoCounters(process, &io)) {
        figures.ReadBytes = io.ReadTransferCount;
        figures.WriteBytes = io.WriteTransferCount;
    }
    return figures;
}

uint64_t SystemTimeNow() {
    FILETIME now{};
    GetSystemTimeAsFileTime(&now);
    return FileTimeTicks(now);
}

FoundProcess FindNewProcess(const std::string& exeName, uint64_t since,
                            const std::vector<DWORD>& claimed) {
    UniqueFile snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    if (!snapshot)
        return {};
    const DWORD self = GetCurrentProcessId();
    const std::string wanted = ToLower(exeName);
    PROCESSENTRY32 entry{};
    entry.dwSize = sizeof entry;
    for (BOOL more = Process32First(snapshot.get(), &entry); more;
         more = Process32Next(snapshot.get(), &entry)) {
        if (entry.th32ProcessID == self ||
            std::find(claimed.begin(), claimed.end(), entry.th32ProcessID) != claimed.end())
            continue;
        const bool named =
            wanted.empty() ? entry.th32ParentProcessID == self : ToLower(entry.szExeFile) == wanted;
        if (!named)
            continue;
        UniqueHandle process = OpenToWatch(entry.th32ProcessID);
        FILETIME created{}, exited{}, kernel{}, user{};
        if (process && GetProcessTimes(process.get(), &created, &exited, &kernel, &user) &&
            FileTimeTicks(created) >= since)
            return {std::move(process), entry.th32ProcessID};
    }
    return {};
}

std::string ShortcutTarget(const std::string& link) {
    if (!EnsureCom())
        return {};
    // ole32 is loaded when first needed, as everywhere in the program.
    using Create = HRESULT(WINAPI*)(REFCLSID, LPUNKNOWN, DWORD, REFIID, LPVOID*);
    static const auto create =
        ModuleFunction<Create>(GetModuleHandleA("ole32.dll"), "CoCreateInstance");
    if (!create)
        return {};
    // The three ids spelled here: taken from uuid.lib they would bring every id it holds.
    static constexpr CLSID kShellLink = {0x00021401, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
    static constexpr IID kShellLinkW = {0x000214F9, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
    static constexpr IID kPersistFile = {0x0000010B, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
    // The wide interface: a target of 260 characters may take more bytes than the narrow one's
    // buffer holds in UTF-8.
    IShellLinkW* shortcut = nullptr;
    IPersistFile* file = nullptr;
    wchar_t target[MAX_PATH] = {};
    const bool ok =
        SUCCEEDED(create(kShellLink, nullptr, CLSCTX_INPROC_SERVER, kShellLinkW,
                         reinterpret_cast<void**>(&shortcut))) &&
        SUCCEEDED(shortcut->QueryInterface(kPersistFile, reinterpret_cast<void**>(&file))) &&
        SUCCEEDED(file->Load(Wide(link).c_str(), STGM_READ)) &&
        SUCCEEDED(shortcut->GetPath(target, MAX_PATH, nullptr, 0));
    if (file)
        file->Release();
    if (shortcut)
        shortcut->Release();
    return ok ? Narrow(target) : std::string();
}

std::string ProgramOfShortcut(const std::string& file) {
    if (!EndsWith(ToLower(file), ".lnk"))
        return {};
    const std::string target = ShortcutTarget(ExpandEnvironment(file));
    return target.empty() ? target : ExpandEnvironment(target);
}

} // namespace tolvane
