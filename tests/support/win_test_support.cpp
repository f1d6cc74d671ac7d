#include "support/win_test_support.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>

#include <wincrypt.h>

#include <gtest/gtest.h>

#include "platform/message_pump.h"
#include "platform/runtime_libraries.h"
#include "platform/wide_text.h"

namespace tolvane::test {

namespace {

std::string UniqueName(std::string_view hint) {
    static std::atomic<unsigned> counter{0};
    return std::string(hint) + '-' + std::to_string(GetCurrentProcessId()) + '-' +
           std::to_string(GetTickCount()) + '-' + std::to_string(counter++);
}

// Calls visit(path, isFolder) for every entry below a folder but "." and "..", at any depth, a
// folder before what it holds.
template <class Visit> void ForEachBelow(const std::string& folder, const Visit& visit) {
    WIN32_FIND_DATAA data{};
    UniqueFind find(FindFirstFileA((folder + "\\*").c_str(), &data));
    if (!find)
        return;
    do {
        const std::string name = data.cFileName, path = folder + "\\" + name;
        const bool isFolder = (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
        if (name == "." || name == "..")
            continue;
        visit(path, isFolder);
        if (isFolder)
            ForEachBelow(path, visit);
    } while (FindNextFileA(find.get(), &data));
}

HKEY KeyOf(RegistryRoot root) {
    return root == RegistryRoot::CurrentUser ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE;
}

} // namespace

TempFolder::TempFolder(std::string_view hint) {
    char temp[MAX_PATH] = {};
    GetTempPathA(MAX_PATH, temp);
    path_ = std::string(temp) + UniqueName(hint);
    MakeFolder(path_);
}

bool PathExists(const std::string& path) {
    return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

void MakeFolder(const std::string& path) {
    SHCreateDirectoryExA(nullptr, path.c_str(), nullptr);
}

void RemoveTree(const std::string& path) {
    std::vector<std::string> folders{path};
    ForEachBelow(path, [&](const std::string& entry, bool isFolder) {
        SetFileAttributesA(entry.c_str(), FILE_ATTRIBUTE_NORMAL);
        isFolder ? folders.push_back(entry) : void(DeleteFileA(entry.c_str()));
    });
    for (auto folder = folders.rbegin(); folder != folders.rend(); ++folder)
        RemoveDirectoryA(folder->c_str());
}

void CopyTree(const std::string& from, const std::string& to) {
    // An empty source or a drive's root (a path argument that went missing) would copy the whole
    // disk; a test that gets one has a broken command line and stops here.
    if (from.size() < 4 || from.find('\\', 3) == std::string::npos) {
        std::fprintf(stderr, "CopyTree: refusing to copy \"%s\"\n", from.c_str());
        std::abort();
    }
    MakeFolder(to);
    ForEachBelow(from, [&](const std::string& entry, bool isFolder) {
        const std::string target = to + entry.substr(from.size());
        isFolder ? MakeFolder(target) : void(CopyFileA(entry.c_str(), target.c_str(), FALSE));
    });
}

std::vector<std::string> FilesBelow(const std::string& folder) {
    std::vector<std::string> files;
    ForEachBelow(folder, [&](const std::string& entry, bool isFolder) {
        if (!isFolder)
            files.push_back(entry);
    });
    std::sort(files.begin(), files.end());
    return files;
}

void DeleteRegistryTree(RegistryRoot root, const std::string& path) {
    RegDeleteTreeA(KeyOf(root), path.c_str());
    RegDeleteKeyA(KeyOf(root), path.c_str());
}

RegistryValue WideValue(uint32_t type, std::string_view text) {
    const std::wstring wide = Wide(text, CP_UTF8) + L'\0';
    const auto* bytes = reinterpret_cast<const uint8_t*>(wide.c_str());
    return RegistryValue{type, std::vector<uint8_t>(bytes, bytes + wide.size() * 2)};
}

bool CreateShortcut(const std::string& linkPath, const std::string& target,
                    const std::string& arguments) {
    // The path in the code page, as every other path of the tests.
    IShellLinkA* link = nullptr;
    IPersistFile* file = nullptr;
    const bool ok =
        EnsureCom() &&
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
    return ok;
}

std::string ShellFolder(int csidl) {
    char path[MAX_PATH] = {};
    return SUCCEEDED(SHGetFolderPathA(nullptr, csidl, nullptr, SHGFP_TYPE_CURRENT, path)) ? path
                                                                                          : "";
}

std::string BuiltProgramFolder() {
    return WinePathOfUnixPath(TOLVANE_BIN_DIR);
}

std::string SignedCopy(const char* name) {
    return WinePathOfUnixPath(TOLVANE_SIGNED_DIR) + "\\" + name;
}

bool TrustTestRoot() {
    const std::string root = ReadFileBytes(SignedCopy("root.cer"));
    HCERTSTORE store =
        CertOpenStore(CERT_STORE_PROV_SYSTEM_A, 0, 0, CERT_SYSTEM_STORE_LOCAL_MACHINE, "Root");
    const bool added = !root.empty() && store &&
                       CertAddEncodedCertificateToStore(
                           store, X509_ASN_ENCODING, reinterpret_cast<const BYTE*>(root.data()),
                           static_cast<DWORD>(root.size()), CERT_STORE_ADD_USE_EXISTING, nullptr);
    if (store)
        CertCloseStore(store, 0);
    return added;
}

ChildProcess::ChildProcess(const std::string& commandLine) {
    STARTUPINFOA si{sizeof si};
    PROCESS_INFORMATION pi{};
    // A prefix that is still starting up may refuse a start now and then: a few tries.
    for (int attempt = 0; attempt < 5 && !pi.hProcess; ++attempt) {
        std::string line = commandLine;
        if (!CreateProcessA(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &si,
                            &pi))
            std::fprintf(stderr, "cannot start %s: error %lu\n", line.c_str(), GetLastError());
    }
    if (!pi.hProcess)
        return;
    CloseHandle(pi.hThread);
    process_.reset(pi.hProcess);
    id_ = pi.dwProcessId;
}

bool ChildProcess::WaitForExit(unsigned long milliseconds, unsigned long* exitCode) {
    DWORD code = 0;
    if (!process_ || WaitForSingleObject(process_.get(), milliseconds) != WAIT_OBJECT_0 ||
        !GetExitCodeProcess(process_.get(), &code))
        return false;
    if (exitCode)
        *exitCode = code;
    return true;
}

void ChildProcess::Kill() {
    if (process_ && TerminateProcess(process_.get(), 9))
        WaitForSingleObject(process_.get(), 5000);
}

void StartupLocations::Clear() const {
    for (const std::string& folder : {UserFolder, CommonFolder})
        if (!folder.empty()) {
            RemoveTree(folder);
            MakeFolder(folder);
        }
    // Both Run keys emptied, the machine's 32-bit one by the path a 64-bit program sees it
    // under; the saved copies, Task Manager's switches and the administrator's policies gone.
    const std::pair<RegistryRoot, std::string> views[] = {
        {RegistryRoot::CurrentUser, "Software\\"},
        {RegistryRoot::LocalMachine, "Software\\"},
        {RegistryRoot::LocalMachine, "Software\\WOW6432Node\\"}};
    for (const auto& [root, software] : views) {
        const std::string windows = software + "Microsoft\\Windows\\CurrentVersion\\";
        DeleteRegistryTree(root, windows + "Run");
        UniqueHKey key;
        RegCreateKeyA(KeyOf(root), (windows + "Run").c_str(), key.put());
        DeleteRegistryTree(root, software + "Hexmoor");
        DeleteRegistryTree(root, software + "Policies\\Hexmoor");
        DeleteRegistryTree(root, windows + "Explorer\\StartupApproved");
    }
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

void Click(POINT at) {
    SetCursorPos(at.x, at.y);
    INPUT inputs[2] = {{INPUT_MOUSE}, {INPUT_MOUSE}};
    inputs[0].mi.dwFlags = MOUSEEVENTF_LEFTDOWN;
    inputs[1].mi.dwFlags = MOUSEEVENTF_LEFTUP;
    SendInput(2, inputs, sizeof(INPUT));
}

} // namespace tolvane::test
