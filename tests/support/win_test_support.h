// Helpers for test groups that run under Wine against the real file system and registry.
#pragma once

#include <windows.h>
#include <shlobj.h>

#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "platform/handles.h"
#include "platform/registry.h"
#include "support/test_support.h"

namespace tolvane::test {

bool PathExists(const std::string& path);
// Makes a folder and any missing parents.
void MakeFolder(const std::string& path);
// Removes a folder and everything in it; a missing folder is fine.
void RemoveTree(const std::string& path);
void CopyTree(const std::string& from, const std::string& to);
// The files below a folder, at any depth, as full paths in sorted order.
std::vector<std::string> FilesBelow(const std::string& folder);

// A fresh folder in the Windows temp folder, removed with all it holds when the test ends.
class TempFolder {
public:
    explicit TempFolder(std::string_view hint = "tolvane");
    ~TempFolder() { RemoveTree(path_); }
    TempFolder(const TempFolder&) = delete;
    const std::string& Path() const { return path_; }
    // The folder, a backslash and the name.
    std::string operator/(std::string_view name) const { return path_ + "\\" + std::string(name); }

private:
    std::string path_;
};

// Deletes a key with all its values and subkeys; a missing key is fine.
void DeleteRegistryTree(RegistryRoot root, const std::string& path);

// A real shell shortcut (.lnk) to a target with arguments, made through IShellLink.
bool CreateShortcut(const std::string& linkPath, const std::string& target,
                    const std::string& arguments = "");
// The shell's folder for a CSIDL value, "" when it has none.
std::string ShellFolder(int csidl);

// The folder of the built Tolvane.exe with its lang and data folders.
std::string BuiltProgramFolder();

// A copy of a small program whose version resource names "Hexmoor Ltd" and "Hexmoor Clock",
// made by the build: "trusted.exe" (signed by a chain of the test root), "untrusted.exe"
// and "sha256.exe" (signed by certificates nobody trusts, SHA-1 and SHA-256), "unsigned.exe";
// "bare-trusted.exe" and "bare-untrusted.exe" (the same without a version resource); and the
// root itself, "root.cer".
std::string SignedCopy(const char* name);
// The test root trusted by every program of this prefix from now on.
bool TrustTestRoot();

// A text value as the system stores it: UTF-16 with its end NUL.
RegistryValue WideValue(uint32_t type, std::string_view text);

// A process started from a command line (why it could not be is printed), ended (killed if
// need be) when the owner goes.
class ChildProcess {
public:
    explicit ChildProcess(const std::string& commandLine);
    ~ChildProcess() { Kill(); }
    ChildProcess(const ChildProcess&) = delete;
    bool Started() const { return bool(process_); }
    unsigned long Id() const { return id_; }
    // True when the process ended within the time (0: has ended); its exit code then.
    bool WaitForExit(unsigned long milliseconds, unsigned long* exitCode = nullptr);
    void Kill();

private:
    UniqueHandle process_;
    unsigned long id_ = 0;
};

// A window of the process with that class, shown or not, once there is one within the time;
// nullptr otherwise. Message-only windows are looked for below HWND_MESSAGE.
HWND WindowOf(unsigned long process, const char* className, bool visibleOnly,
              unsigned long timeoutMs, HWND parent = nullptr);
// Serves this thread's windows until done() holds, for at most the time; whether it held.
bool PumpUntil(const std::function<bool()>& done, unsigned long timeoutMs = 5000);
// Serves this thread's windows until nothing but timers waits in its queue: the keys and clicks
// sent so far have been handled.
void PumpUntilIdle();
// Real input, queued at once for the window that has the keyboard (or lies under the pointer)
// now: the caller waits for what the input must bring about (PumpUntilIdle for this thread's
// windows, or the window, file or process it expects) before it sends input that a window
// opened by this input must receive.
// Key presses, as the user types them.
void Type(std::initializer_list<unsigned short> keys);
// Keys pressed together (Alt+F4, Shift+F10), released in reverse.
void Chord(std::initializer_list<unsigned short> keys);
// A real click of the left mouse button at a point of the screen, the pointer put there first.
void Click(POINT at);

// The test prefix's startup locations: both Startup folders, both Run keys, and the keys that
// keep the saved copies of Run values, with the administrator's policies that govern them. Tests
// that use them hold the ctest lock "startup_locations" and leave them empty.
struct StartupLocations {
    std::string UserFolder = ShellFolder(CSIDL_STARTUP);
    std::string CommonFolder = ShellFolder(CSIDL_COMMON_STARTUP);
    // Removes every shortcut, Run value and saved copy.
    void Clear() const;
};

} // namespace tolvane::test
