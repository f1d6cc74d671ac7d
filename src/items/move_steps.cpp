#include "items/move_steps.h"

#include <cstdio>

#include "platform/dir_struct.h"
#include "platform/file_functions.h"
#include "platform/file_io.h"
#include "platform/wide_text.h"
#include "items/startup_approved.h"
#include "text/strings.h"

namespace tolvane {

void UndoSteps::MoveInto(UndoSteps& pass) {
    for (auto& step : steps_)
        pass.steps_.push_back(std::move(step));
    steps_.clear();
}

std::vector<std::string> UndoSteps::TakeBack() noexcept {
    std::vector<std::string> failures;
    for (auto it = steps_.rbegin(); it != steps_.rend(); ++it) {
        try {
            (*it)();
        } catch (const std::exception& e) {
            // The other steps are still taken back; the caller reports what stays undone.
            try {
                failures.emplace_back(e.what());
            } catch (...) {
            }
        } catch (...) {
        }
    }
    steps_.clear();
    return failures;
}

bool FileThere(const std::string& path) {
    return IsFile(path);
}

namespace {

int ShellMove(const std::string& from, const std::string& to, HWND owner, uint16_t flags) {
    return CFileFunctions().MoveFile(from, to, owner, "", flags);
}

// The shortcut is back at `from` with its bytes, and nothing is left at `to`.
void ExpectMovedBack(const std::string& from, const std::string& to,
                     const std::optional<std::string>& bytes) {
    auto back = ReadFileBytes(from);
    if (!back || back != bytes || FileThere(to))
        throw MoveFailure("\"" + std::string(to) + "\" could not be moved back to \"" + from +
                          "\"; the shortcut is " +
                          (FileThere(to) ? "still at \"" + to + "\"" : "gone from both places"));
}

} // namespace

void MoveShortcut(const std::string& from, const std::string& to, HWND owner, uint16_t flags,
                  UndoSteps& undo, const FileMover& mover) {
    auto bytes = ReadFileBytes(from);
    if (!bytes)
        throw MoveFailure("\"" + from + "\" is not there or cannot be read", Refusal::Gone, from);
    // Anything at the target but the same file (another shortcut, a folder the shell would
    // move the file into) is left alone and the move refused.
    const bool targetWasThere = GetFileAttributesA(to.c_str()) != INVALID_FILE_ATTRIBUTES;
    if (targetWasThere) {
        auto existing = FileThere(to) ? ReadFileBytes(to) : std::nullopt;
        if (!existing || *existing != *bytes)
            throw MoveFailure("something else named \"" + to + "\" is already there",
                              Refusal::InTheWay, to);
    }
    const int result = mover ? mover(from, to) : ShellMove(from, to, owner, flags);
    auto moved = ReadFileBytes(to);
    if (FileThere(from) || !moved || *moved != *bytes) {
        // Whatever the shell left: the source stays the one to keep.
        std::string left;
        if (!FileThere(from) && moved) {
            ShellMove(to, from, owner, kQuietFileOperationMakeFolder);
            if (!FileThere(from))
                left = "; the shortcut is left at \"" + to + "\"";
        } else if (FileThere(from) && !targetWasThere && FileThere(to)) {
            // A move between volumes copies first: the copy goes again, or the shortcut would
            // be in two places and start twice.
            DeleteFileA(to.c_str());
            if (FileThere(to))
                left = "; a copy is left at \"" + to + "\"";
        }
        throw MoveFailure("\"" + from + "\" could not be moved to \"" + to + "\" (shell result " +
                          std::to_string(result) + ")" + left);
    }
    undo.Add([from, to, owner, bytes, mover] {
        // Whatever took the shortcut's old place meanwhile is not overwritten either.
        if (GetFileAttributesA(from.c_str()) != INVALID_FILE_ATTRIBUTES)
            throw MoveFailure("something else now stands at \"" + from +
                              "\"; the shortcut stays at \"" + to + "\"");
        if (mover)
            mover(to, from);
        else
            ShellMove(to, from, owner, kQuietFileOperationMakeFolder);
        ExpectMovedBack(from, to, bytes);
    });
}

namespace {

bool TextType(uint32_t type) {
    return type == REG_SZ || type == REG_EXPAND_SZ;
}

// Text data without the NULs at its end: stored with or without them, it is the same text.
std::vector<uint8_t> TrimmedText(const RegistryValue& v) {
    std::vector<uint8_t> data = v.Data;
    while (data.size() >= 2 && data[data.size() - 1] == 0 && data[data.size() - 2] == 0)
        data.resize(data.size() - 2);
    return data;
}

} // namespace

bool SameValue(const RegistryValue& a, const RegistryValue& b) {
    if (a.Type != b.Type)
        return false;
    return TextType(a.Type) ? TrimmedText(a) == TrimmedText(b) : a.Data == b.Data;
}

namespace {
// Writes the value and reads it back: true when the key now holds exactly it.
bool WriteExactly(RegistryRoot root, const std::string& key, const std::string& name,
                  const RegistryValue& value) {
    CRegistry reg;
    auto back = reg.SetValue(root, key, name, value) ? reg.GetValue(root, key, name) : std::nullopt;
    return back && SameValue(*back, value);
}
} // namespace

std::string ShownKey(RegistryRoot root, std::string_view key) {
    std::string shown(key);
    if (root == RegistryRoot::LocalMachine32 && StartsWith(ToLower(key), "software\\"))
        shown.insert(std::string_view("Software\\").size(), "WOW6432Node\\");
    return shown;
}

void PutValue(RegistryRoot root, const std::string& key, const std::string& name,
              const RegistryValue& value, UndoSteps& undo, Refusal conflict) {
    CRegistry reg;
    const std::string shown = ShownKey(root, key);
    if (auto existing = reg.GetValue(root, key, name)) {
        if (SameValue(*existing, value))
            return; // already there: nothing to write, nothing to take back
        throw MoveFailure("another value named \"" + name + "\" is already in \"" + shown + "\"",
                          conflict, name + "=" + ValueText(*existing));
    }
    if (!WriteExactly(root, key, name, value)) {
        // Whatever was written of it goes again; what cannot go is said with the failure.
        const bool cleared = reg.DeleteValue(root, key, name);
        throw MoveFailure("the value \"" + name + "\" could not be written to \"" + shown + "\"" +
                          (cleared ? "" : ", and what was written of it could not be removed"));
    }
    undo.Add([root, key, name, shown] {
        if (!CRegistry().DeleteValue(root, key, name))
            throw MoveFailure("the value \"" + name + "\" could not be removed again from \"" +
                              shown + "\"");
    });
}

void RemoveValue(RegistryRoot root, const std::string& key, const std::string& name,
                 UndoSteps& undo) {
    CRegistry reg;
    const std::string shown = ShownKey(root, key);
    auto existing = reg.GetValue(root, key, name);
    if (!existing)
        return;
    if (!reg.DeleteValue(root, key, name) || reg.GetValue(root, key, name))
        throw MoveFailure("the value \"" + name + "\" could not be removed from \"" + shown + "\"");
    undo.Add([root, key, name, shown, value = *existing] {
        if (!WriteExactly(root, key, name, value))
            throw MoveFailure("the value \"" + name + "\" could not be written back to \"" + shown +
                              "\"; its copy is in the latest backup");
    });
}

void SwitchOnInTaskManager(RegistryRoot root, const char* key, const std::string& name,
                           UndoSteps& undo) {
    CRegistry reg;
    auto flag = reg.GetValue(root, key, name);
    if (!flag || !SwitchedOff(flag->Type, flag->Data))
        return;
    FILETIME now{};
    GetSystemTimeAsFileTime(&now);
    const RegistryValue on{
        flag->Type,
        SwitchedOnFlag(flag->Data, (uint64_t{now.dwHighDateTime} << 32) | now.dwLowDateTime)};
    if (!WriteExactly(root, key, name, on)) {
        const bool restored = reg.SetValue(root, key, name, *flag);
        throw MoveFailure("Task Manager's switch of \"" + name + "\" (" + ShownKey(root, key) +
                          ") could not be turned on, so Windows would not start it" +
                          (restored ? "" : ", and its old state could not be written back"));
    }
    undo.Add([root, key = std::string(key), name, was = *flag] {
        if (!WriteExactly(root, key, name, was))
            throw MoveFailure("Task Manager's switch of \"" + name + "\" could not be set back");
    });
}

RegistryValue TextValue(std::string_view text) {
    RegistryValue value;
    value.Type = REG_SZ;
    std::wstring wide = Wide(text);
    wide.push_back(L'\0');
    const auto* bytes = reinterpret_cast<const uint8_t*>(wide.data());
    value.Data.assign(bytes, bytes + wide.size() * sizeof(wchar_t));
    return value;
}

BackupValue ToBackupValue(const std::string& name, const RegistryValue& value) {
    BackupValue backup;
    backup.Name = name;
    backup.Type = value.Type;
    backup.Data = value.Data;
    if (value.Type == REG_SZ) {
        backup.Text = ValueText(value);
    } else if (value.Type == REG_EXPAND_SZ || value.Type == REG_MULTI_SZ) {
        // Kept in UTF-16, as the registry holds them, so no character the code page lacks is
        // lost. An odd last byte belongs to no character.
        const std::vector<uint8_t> data = TrimmedText(value);
        for (size_t i = 0; i + 1 < data.size(); i += 2)
            backup.Wide.push_back(static_cast<char16_t>(data[i] | data[i + 1] << 8));
    }
    return backup;
}

RegBackup::RegBackup(const std::string& program) {
    CDirStruct folders;
    SYSTEMTIME now{};
    GetLocalTime(&now);
    const std::string date =
        ZeroPadded(now.wYear, 4) + "-" + ZeroPadded(now.wMonth, 2) + "-" + ZeroPadded(now.wDay, 2);
    (void)folders.DirectoryExists("Delayed Registry", program, true);
    (void)folders.DirectoryExists(date, program + "\\Delayed Registry", true);
    folder_ = program + "\\Delayed Registry\\" + date;
    const DWORD attributes = GetFileAttributesA(folder_.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || !(attributes & FILE_ATTRIBUTE_DIRECTORY))
        throw MoveFailure("the backup folder \"" + folder_ +
                          "\" cannot be made: " + SystemErrorText(GetLastError()));
}

RegBackup::~RegBackup() {
    Close();
}

void RegBackup::Line(std::string_view text, bool first) {
    // UTF-16LE, as the registry editor writes its files: a double click brings back every name
    // and every text exactly, whatever the code page of the machine that reads it.
    std::wstring line = Wide(text) + L"\r\n";
    if (first)
        line.insert(line.begin(), L'\xFEFF'); // the byte-order mark
    const DWORD size = static_cast<DWORD>(line.size() * sizeof(wchar_t));
    DWORD wrote = 0;
    if (!WriteFile(file_.get(), line.data(), size, &wrote, nullptr) || wrote != size ||
        !FlushFileBuffers(file_.get()))
        throw MoveFailure("the backup \"" + path_ +
                          "\" cannot be written: " + SystemErrorText(GetLastError()));
}

void RegBackup::Value(RegistryRoot root, const BackupValue& value) {
    if (!file_) {
        SYSTEMTIME now{};
        GetLocalTime(&now);
        const std::string time = ZeroPadded(now.wHour, 2) + " " + ZeroPadded(now.wMinute, 2) + " " +
                                 ZeroPadded(now.wSecond, 2);
        const std::string base = folder_ + "\\" + time;
        // A second backup within the same second, of this process or another, gets a name of
        // its own: every backup is kept.
        std::string path;
        for (int n = 1; !file_ && n < 1000; ++n) {
            path = n == 1 ? base + ".reg" : base + " (" + std::to_string(n) + ").reg";
            file_.reset(CreateFileA(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                    CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
            if (!file_ && GetLastError() != ERROR_FILE_EXISTS)
                break;
        }
        if (!file_)
            throw MoveFailure("the backup \"" + path +
                              "\" cannot be written: " + SystemErrorText(GetLastError()));
        path_ = path;
        Line(kRegFileFirstLine, true);
        Line("");
    }
    // Each value below its own key: a line for the key whenever it changes.
    if (!keyLine_ || root != keyRoot_) {
        if (keyLine_)
            Line("");
        Line(RegKeyLine(root));
        keyLine_ = true;
        keyRoot_ = root;
    }
    Line(RegValueLine(value));
    hasValues_ = true;
}

void RegBackup::Close() {
    file_.reset();
}

} // namespace tolvane
