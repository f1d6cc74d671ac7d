#include "support/win_test_support.h"

#include <windows.h>
#include <objbase.h>
#include <shlobj.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>

#include <gtest/gtest.h>

#include "platform/handles.h"
#include "platform/message_pump.h"
#include "platform/wide_text.h"

namespace tolvane::test {

namespace {

std::string UniqueName(std::string_view hint) {
    static std::atomic<unsigned> counter{0};
    return std::string(hint) + '-' + std::to_string(GetCurrentProcessId()) + '-' +
           std::to_string(GetTickCount()) + '-' + std::to_string(counter++);
}

// Calls visit(name, isFolder) for every entry of a folder but "." and "..".
template <class Visit> void ForEachEntry(const std::string& folder, Visit visit) {
    WIN32_FIND_DATAA data{};
    UniqueFind find(FindFirstFileA((folder + "\\*").c_str(), &data));
    if (!find)
        return;
    do {
        const std::string name = data.cFileName;
        if (name != "." && name != "..")
            visit(name, (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0);
    } while (FindNextFileA(find.get(), &data));
}

} // namespace

TempFolder::TempFolder(std::string_view hint) {
    char temp[MAX_PATH] = {};
    GetTempPathA(MAX_PATH, temp);
    path_ = std::string(temp) + UniqueName(hint);
    MakeFolder(path_);
}

TempFolder::~TempFolder() {
    RemoveTree(path_);
}

bool PathExists(const std::string& path) {
    return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

void MakeFolder(const std::string& path) {
    SHCreateDirectoryExA(nullptr, path.c_str(), nullptr);
}

void RemoveTree(const std::string& path) {
    ForEachEntry(path, [&](const std::string& name, bool isFolder) {
        const std::string child = path + "\\" + name;
        SetFileAttributesA(child.c_str(), FILE_ATTRIBUTE_NORMAL);
        if (isFolder)
            RemoveTree(child);
        else
            DeleteFileA(child.c_str());
    });
    RemoveDirectoryA(path.c_str());
}

void CopyTree(const std::string& from, const std::string& to) {
    // An empty source or a drive's root (a path argument that went missing) would copy the whole
    // disk; a test that gets one has a broken command line and stops here.
    if (from.size() < 4 || from.find('\\', 3) == std::string::npos) {
        std::fprintf(stderr, "CopyTree: refusing to copy \"%s\"\n", from.c_str());
        std::abort();
    }
    MakeFolder(to);
    ForEachEntry(from, [&](const std::string& name, bool isFolder) {
        if (isFolder)
            CopyTree(from + "\\" + name, to + "\\" + name);
        else
            CopyFileA((from + "\\" + name).c_str(), (to + "\\" + name).c_str(), FALSE);
    });
}

std::vector<std::string> FilesBelow(const std::string& folder) {
    std::vector<std::string> files;
    ForEachEntry(folder, [&](const std::string& name, bool isFolder) {
        if (!isFolder)
            files.push_back(folder + "\\" + name);
        else
            for (std::string& file : FilesBelow(folder + "\\" + name))
                files.push_back(std::move(file));
    });
    std::sort(files.begin(), files.end());
    return files;
}

ScratchKey::ScratchKey() : path_("Software\\TolvaneTests\\" + UniqueName("key")) {
    UniqueHKey key;
    RegCreateKeyExA(HKEY_CURRENT_USER, path_.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                    key.put(), nullptr);
}

ScratchKey::~ScratchKey() {
    DeleteRegistryTree(RegistryRoot::CurrentUser, path_);
}

void ScratchKey::SetRaw(std::string_view name, unsigned long type, std::string_view bytes) const {
    UniqueHKey key;
    ASSERT_EQ(RegOpenKeyExA(HKEY_CURRENT_USER, path_.c_str(), 0, KEY_SET_VALUE, key.put()),
              ERROR_SUCCESS);
    // The byte after the data is not a NUL: the system adds a "forgotten" NUL to text values
    // when the caller's buffer happens to be followed by one, and the raw bytes must stay raw.
    std::string buffer(bytes);
    buffer.push_back('X');
    ASSERT_EQ(RegSetValueExA(key.get(), std::string(name).c_str(), 0, type,
                             reinterpret_cast<const BYTE*>(buffer.data()),
                             static_cast<DWORD>(bytes.size())),
              ERROR_SUCCESS);
}

void DeleteRegistryTree(RegistryRoot root, const std::string& path) {
    const HKEY key = root == RegistryRoot::LocalMachine ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER;
    RegDeleteTreeA(key, path.c_str());
    RegDeleteKeyA(key, path.c_str());
}

std::string Utf16Bytes(std::string_view text) {
    const std::wstring wide = Wide(text, CP_UTF8);
    return std::string(reinterpret_cast<const char*>(wide.data()), wide.size() * 2);
}

std::string ReadUtf16File(const std::string& path) {
    const std::string bytes = ReadFileBytes(path);
    const auto* text = reinterpret_cast<const wchar_t*>(bytes.data() + 2);
    return bytes.substr(0, 2) == "\xff\xfe" ? Narrow({text, (bytes.size() - 2) / 2}, CP_UTF8) : "";
}

bool CreateShortcut(const std::string& linkPath, const std::string& target,
                    const std::string& arguments) {
    const HRESULT init = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    // The path in the code page, as every other path of the tests.
    IShellLinkA* link = nullptr;
    IPersistFile* file = nullptr;
    const bool ok =
        SUCCEEDED(CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IID_IShellLinkA,
                                   reinterpret_cast<void**>(&link))) &&
        SUCCEEDED(link->SetPath(target.c_str())) &&
        SUCCEEDED(link->SetArguments(arguments.c_str())) &&
        SUCCEEDED(link->QueryInterface(IID_IPersistFile, reinterpret_cast<void**>(&file))) &&
        SUCCEEDED(file->Save(Wide(linkPath, CP_ACP).c_str(), TRUE));
    if (file)
        file->Release();
    if (link)
        link->Release();
    if (SUCCEEDED(init))
        CoUninitialize();
    return ok;
}

std::string ShellFolder(int csidl) {
    char path[MAX_PATH] = {};
    if (FAILED(SHGetFolderPathA(nullptr, csidl, nullptr, SHGFP_TYPE_CURRENT, path)))
        return std::string();
    return path;
}

std::string BuiltProgramFolder() {
    return WinePathOfUnixPath(TOLVANE_BIN_DIR);
}

std::string HelperProgram(std::string_view exeName) {
    char self[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, self, MAX_PATH);
    const std::string path = self;
    return path.substr(0, path.find_last_of('\\') + 1) + std::string(exeName);
}

ChildProcess::ChildProcess(const std::string& commandLine) {
    STARTUPINFOA si{sizeof si};
    PROCESS_INFORMATION pi{};
    // A prefix that is still starting up may refuse a start now and then: a few tries.
    for (int attempt = 0; attempt < 5 && !pi.hProcess; ++attempt) {
        std::string line = commandLine;
        if (!CreateProcessA(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &si,
                            &pi))
            startError_ = GetLastError();
    }
    if (!pi.hProcess)
        return;
    startError_ = 0;
    CloseHandle(pi.hThread);
    process_ = pi.hProcess;
    id_ = pi.dwProcessId;
}

ChildProcess::~ChildProcess() {
    Kill();
    if (process_)
        CloseHandle(process_);
}

bool ChildProcess::WaitForExit(unsigned long milliseconds, unsigned long* exitCode) {
    DWORD code = 0;
    if (!process_ || WaitForSingleObject(process_, milliseconds) != WAIT_OBJECT_0 ||
        !GetExitCodeProcess(process_, &code))
        return false;
    if (exitCode)
        *exitCode = code;
    return true;
}

bool ChildProcess::Running() {
    return process_ && WaitForSingleObject(process_, 0) == WAIT_TIMEOUT;
}

void ChildProcess::Kill() {
    if (Running() && TerminateProcess(process_, 9))
        WaitForSingleObject(process_, 5000);
}

StartupLocations::StartupLocations()
    : UserFolder(ShellFolder(CSIDL_STARTUP)), CommonFolder(ShellFolder(CSIDL_COMMON_STARTUP)) {}

void StartupLocations::Clear() const {
    for (const std::string& folder : {UserFolder, CommonFolder}) {
        if (folder.empty())
            continue;
        RemoveTree(folder);
        MakeFolder(folder);
    }
    const char* run = "Software\\Microsoft\\Windows\\CurrentVersion\\Run";
    for (RegistryRoot root : {RegistryRoot::CurrentUser, RegistryRoot::LocalMachine}) {
        DeleteRegistryTree(root, run);
        UniqueHKey key;
        RegCreateKeyExA(root == RegistryRoot::LocalMachine ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER,
                        run, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, key.put(), nullptr);
        DeleteRegistryTree(root, "Software\\Hexmoor");
        DeleteRegistryTree(
            root, "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\StartupApproved");
    }
    // The machine's 32-bit view, by the path a 64-bit program sees it under.
    DeleteRegistryTree(RegistryRoot::LocalMachine, "Software\\WOW6432Node\\Hexmoor");
    const std::string run32 = "Software\\WOW6432Node\\Microsoft\\Windows\\CurrentVersion\\Run";
    DeleteRegistryTree(RegistryRoot::LocalMachine, run32);
    UniqueHKey key32;
    RegCreateKeyExA(HKEY_LOCAL_MACHINE, run32.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                    key32.put(), nullptr);
}

HWND WindowOf(unsigned long process, const char* className, bool visibleOnly,
              unsigned long timeoutMs, HWND parent) {
    for (unsigned long waited = 0; waited <= timeoutMs; waited += 50, Sleep(50))
        for (HWND w = nullptr; (w = FindWindowExA(parent, w, className, nullptr));) {
            DWORD owner = 0;
            GetWindowThreadProcessId(w, &owner);
            if (owner == process && (!visibleOnly || IsWindowVisible(w)))
                return w;
        }
    return nullptr;
}

bool PumpUntil(const std::function<bool()>& done, unsigned long timeoutMs) {
    const ULONGLONG end = GetTickCount64() + timeoutMs;
    for (;;) {
        YieldToMessageLoop();
        if (done())
            return true;
        if (GetTickCount64() >= end)
            return false;
        MsgWaitForMultipleObjectsEx(0, nullptr, 20, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
    }
}

void PumpUntilIdle() {
    // Timers are left out: a window's periodic one would never let the queue look empty.
    PumpUntil([] {
        MSG msg;
        return !PeekMessageA(&msg, nullptr, 0, 0,
                             PM_NOREMOVE | PM_QS_INPUT | PM_QS_POSTMESSAGE | PM_QS_PAINT |
                                 PM_QS_SENDMESSAGE) ||
               msg.message == WM_QUIT;
    });
}

void Type(std::initializer_list<unsigned short> keys) {
    for (unsigned short key : keys)
        Chord({key});
}

void Chord(std::initializer_list<unsigned short> keys) {
    std::vector<INPUT> inputs;
    auto add = [&](unsigned short key, DWORD flags) {
        INPUT in{INPUT_KEYBOARD};
        in.ki = {key, 0, flags};
        inputs.push_back(in);
    };
    for (unsigned short key : keys)
        add(key, 0);
    for (auto key = std::rbegin(keys); key != std::rend(keys); ++key)
        add(*key, KEYEVENTF_KEYUP);
    SendInput(static_cast<UINT>(inputs.size()), inputs.data(), sizeof(INPUT));
}

namespace {

INPUT Mouse(POINT at, DWORD flags) {
    INPUT in{};
    in.type = INPUT_MOUSE;
    // Absolute positions are in 0 to 65535 over the primary screen.
    in.mi.dx = MulDiv(at.x, 65535, GetSystemMetrics(SM_CXSCREEN) - 1);
    in.mi.dy = MulDiv(at.y, 65535, GetSystemMetrics(SM_CYSCREEN) - 1);
    in.mi.dwFlags = flags | MOUSEEVENTF_ABSOLUTE | MOUSEEVENTF_MOVE;
    return in;
}

} // namespace

void Click(POINT at) {
    INPUT inputs[3] = {Mouse(at, 0), Mouse(at, MOUSEEVENTF_LEFTDOWN),
                       Mouse(at, MOUSEEVENTF_LEFTUP)};
    SendInput(3, inputs, sizeof(INPUT));
}

void Drag(POINT from, POINT to) {
    std::vector<INPUT> inputs = {Mouse(from, 0), Mouse(from, MOUSEEVENTF_LEFTDOWN)};
    for (int step = 1; step <= 10; ++step)
        inputs.push_back(
            Mouse({from.x + (to.x - from.x) * step / 10, from.y + (to.y - from.y) * step / 10}, 0));
    inputs.push_back(Mouse(to, MOUSEEVENTF_LEFTUP));
    SendInput(static_cast<UINT>(inputs.size()), inputs.data(), sizeof(INPUT));
}

} // namespace tolvane::test
