#include "support/win_test_support.h"

#include <windows.h>
#include <shellapi.h>

#include <atomic>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include "platform/handles.h"

namespace tolvane::test {

namespace {

std::string UniqueName(std::string_view hint) {
    static std::atomic<unsigned> counter{0};
    std::ostringstream s;
    s << hint << '-' << GetCurrentProcessId() << '-' << GetTickCount() << '-' << counter++;
    return s.str();
}

HKEY RootHKey(RegistryRoot root) {
    return root == RegistryRoot::LocalMachine ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER;
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

std::string TempFolder::operator/(std::string_view name) const {
    return path_ + "\\" + std::string(name);
}

void WriteFileBytes(const std::string& path, std::string_view bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    ASSERT_TRUE(out) << "cannot write " << path;
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

std::string ReadFileBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    EXPECT_TRUE(in) << "cannot read " << path;
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

bool PathExists(const std::string& path) {
    return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

void MakeFolder(const std::string& path) {
    // Parents first, so a test can ask for a deep folder in one call.
    size_t pos = path.find('\\', 3);
    while (pos != std::string::npos) {
        CreateDirectoryA(path.substr(0, pos).c_str(), nullptr);
        pos = path.find('\\', pos + 1);
    }
    CreateDirectoryA(path.c_str(), nullptr);
}

void RemoveTree(const std::string& path) {
    WIN32_FIND_DATAA data{};
    UniqueFind find(FindFirstFileA((path + "\\*").c_str(), &data));
    if (find) {
        do {
            std::string name = data.cFileName;
            if (name == "." || name == "..")
                continue;
            std::string child = path + "\\" + name;
            SetFileAttributesA(child.c_str(), FILE_ATTRIBUTE_NORMAL);
            if (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)
                RemoveTree(child);
            else
                DeleteFileA(child.c_str());
        } while (FindNextFileA(find.get(), &data));
    }
    find.reset();
    RemoveDirectoryA(path.c_str());
}

ScratchKey::ScratchKey(RegistryRoot root)
    : root_(root), path_("Software\\TolvaneTests\\" + UniqueName("key")) {
    UniqueHKey key;
    RegCreateKeyExA(RootHKey(root_), path_.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                    key.put(), nullptr);
}

ScratchKey::~ScratchKey() {
    DeleteRegistryTree(root_, path_);
}

void ScratchKey::SetRaw(std::string_view name, unsigned long type, std::string_view bytes) const {
    UniqueHKey key;
    ASSERT_EQ(RegOpenKeyExA(RootHKey(root_), path_.c_str(), 0, KEY_SET_VALUE, key.put()),
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
    RegDeleteTreeA(RootHKey(root), path.c_str());
    RegDeleteKeyA(RootHKey(root), path.c_str());
}

} // namespace tolvane::test

#include <objbase.h>
#include <shlobj.h>

namespace tolvane::test {

namespace {

template <class T> struct ComRelease {
    T* p = nullptr;
    ~ComRelease() {
        if (p)
            p->Release();
    }
};

} // namespace

bool CreateShortcut(const std::string& linkPath, const std::string& target,
                    const std::string& arguments) {
    HRESULT init = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    bool ok = false;
    {
        ComRelease<IShellLinkA> link;
        ComRelease<IPersistFile> file;
        if (SUCCEEDED(CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER,
                                       IID_IShellLinkA, reinterpret_cast<void**>(&link.p))) &&
            SUCCEEDED(link.p->SetPath(target.c_str())) &&
            SUCCEEDED(link.p->SetArguments(arguments.c_str())) &&
            SUCCEEDED(
                link.p->QueryInterface(IID_IPersistFile, reinterpret_cast<void**>(&file.p)))) {
            std::wstring wide(linkPath.begin(), linkPath.end());
            ok = SUCCEEDED(file.p->Save(wide.c_str(), TRUE));
        }
    }
    if (SUCCEEDED(init))
        CoUninitialize();
    return ok;
}

std::string WinePathOfUnixPath(std::string_view unixPath) {
    std::string path = "Z:" + std::string(unixPath);
    for (char& c : path)
        if (c == '/')
            c = '\\';
    return path;
}

std::string ShellFolder(int csidl) {
    char path[MAX_PATH] = {};
    if (FAILED(SHGetFolderPathA(nullptr, csidl, nullptr, SHGFP_TYPE_CURRENT, path)))
        return std::string();
    return path;
}

} // namespace tolvane::test

namespace tolvane::test {

namespace {

std::string WindowsPath(const char* unixPath) {
    std::string path = std::string("Z:") + unixPath;
    for (char& c : path)
        if (c == '/')
            c = '\\';
    return path;
}

} // namespace

std::string BuiltProgramFolder() {
    return WindowsPath(TOLVANE_BIN_DIR);
}

std::string HelperProgram(std::string_view exeName) {
    char self[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, self, MAX_PATH);
    std::string path = self;
    return path.substr(0, path.find_last_of('\\') + 1) + std::string(exeName);
}

void CopyTree(const std::string& from, const std::string& to) {
    MakeFolder(to);
    WIN32_FIND_DATAA data{};
    UniqueFind find(FindFirstFileA((from + "\\*").c_str(), &data));
    if (!find)
        return;
    do {
        std::string name = data.cFileName;
        if (name == "." || name == "..")
            continue;
        if (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)
            CopyTree(from + "\\" + name, to + "\\" + name);
        else
            CopyFileA((from + "\\" + name).c_str(), (to + "\\" + name).c_str(), FALSE);
    } while (FindNextFileA(find.get(), &data));
}

ChildProcess::ChildProcess(const std::string& commandLine) {
    STARTUPINFOA si{sizeof si};
    PROCESS_INFORMATION pi{};
    std::string line = commandLine;
    if (CreateProcessA(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &si,
                       &pi)) {
        CloseHandle(pi.hThread);
        process_ = pi.hProcess;
        id_ = pi.dwProcessId;
    }
}

ChildProcess::~ChildProcess() {
    if (process_) {
        Kill();
        CloseHandle(process_);
    }
}

bool ChildProcess::WaitForExit(unsigned long milliseconds, unsigned long* exitCode) {
    if (!process_ || WaitForSingleObject(process_, milliseconds) != WAIT_OBJECT_0)
        return false;
    DWORD code = 0;
    GetExitCodeProcess(process_, &code);
    if (exitCode)
        *exitCode = code;
    return true;
}

bool ChildProcess::Running() {
    return process_ && WaitForSingleObject(process_, 0) == WAIT_TIMEOUT;
}

void ChildProcess::Kill() {
    if (Running()) {
        TerminateProcess(process_, 9);
        WaitForSingleObject(process_, 5000);
    }
}

std::vector<std::string> ReadLines(const std::string& path) {
    std::vector<std::string> lines;
    std::ifstream in(path, std::ios::binary);
    std::string line;
    while (std::getline(in, line)) {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        lines.push_back(line);
    }
    return lines;
}

} // namespace tolvane::test

namespace tolvane::test {

StartupLocations::StartupLocations()
    : UserFolder(ShellFolder(CSIDL_STARTUP)), CommonFolder(ShellFolder(CSIDL_COMMON_STARTUP)) {}

void StartupLocations::Clear() const {
    for (const std::string& folder : {UserFolder, CommonFolder}) {
        if (folder.empty())
            continue;
        RemoveTree(folder);
        MakeFolder(folder);
    }
    for (RegistryRoot root : {RegistryRoot::CurrentUser, RegistryRoot::LocalMachine}) {
        DeleteRegistryTree(root, "Software\\Microsoft\\Windows\\CurrentVersion\\Run");
        UniqueHKey key;
        RegCreateKeyExA(RootHKey(root), "Software\\Microsoft\\Windows\\CurrentVersion\\Run", 0,
                        nullptr, 0, KEY_ALL_ACCESS, nullptr, key.put(), nullptr);
        DeleteRegistryTree(root, "Software\\Hexmoor");
    }
}

} // namespace tolvane::test
