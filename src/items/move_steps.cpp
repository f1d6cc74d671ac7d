#include "items/move_steps.h"

#include <cstdio>

#include "platform/dir_struct.h"
#include "platform/file_functions.h"
#include "platform/file_io.h"
#include "startup/app_state.h"

namespace tolvane {

void UndoSteps::MoveInto(UndoSteps& pass) {
    for (auto& step : steps_)
        pass.steps_.push_back(std::move(step));
    steps_.clear();
}

void UndoSteps::TakeBack() noexcept {
    for (auto it = steps_.rbegin(); it != steps_.rend(); ++it) {
        try {
            (*it)();
        } catch (...) {
            // Taking back goes on with the other steps; what stays undone is logged by the
            // move that failed.
        }
    }
    steps_.clear();
}

bool FileThere(const std::string& path) {
    return IsFile(path);
}

void MoveShortcut(const std::string& from, const std::string& to, HWND owner, uint16_t flags,
                  UndoSteps& undo) {
    auto bytes = ReadFileBytes(from);
    if (!bytes)
        throw MoveFailure("\"" + from + "\" is not there or cannot be read");
    // Anything at the target but the same file (another shortcut, a folder the shell would
    // move the file into) is left alone and the move refused.
    if (GetFileAttributesA(to.c_str()) != INVALID_FILE_ATTRIBUTES) {
        auto existing = FileThere(to) ? ReadFileBytes(to) : std::nullopt;
        if (!existing || *existing != *bytes)
            throw MoveFailure("something else named \"" + to + "\" is already there");
    }
    const int result = CFileFunctions().MoveFile(from, to, owner, "", flags);
    auto moved = ReadFileBytes(to);
    if (FileThere(from) || !moved || *moved != *bytes) {
        // Whatever the shell left: the source stays the one to keep.
        if (!FileThere(from) && moved)
            CFileFunctions().MoveFile(to, from, owner, "", kQuietFileOperationMakeFolder);
        throw MoveFailure("\"" + from + "\" could not be moved to \"" + to + "\" (shell result " +
                          std::to_string(result) + ")");
    }
    undo.Add([from, to, owner] {
        CFileFunctions().MoveFile(to, from, owner, "", kQuietFileOperationMakeFolder);
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

void PutValue(RegistryRoot root, const std::string& key, const std::string& name,
              const RegistryValue& value, UndoSteps& undo) {
    CRegistry reg;
    if (auto existing = reg.GetValue(root, key, name)) {
        if (SameValue(*existing, value))
            return; // already there: nothing to write, nothing to take back
        throw MoveFailure("another value named \"" + name + "\" is already in \"" + key + "\"");
    }
    auto back = reg.SetValue(root, key, name, value) ? reg.GetValue(root, key, name) : std::nullopt;
    if (!back || !SameValue(*back, value)) {
        reg.DeleteValue(root, key, name);
        throw MoveFailure("the value \"" + name + "\" could not be written to \"" + key + "\"");
    }
    undo.Add([root, key, name] { CRegistry().DeleteValue(root, key, name); });
}

void RemoveValue(RegistryRoot root, const std::string& key, const std::string& name,
                 UndoSteps& undo) {
    CRegistry reg;
    auto existing = reg.GetValue(root, key, name);
    if (!existing)
        return;
    if (!reg.DeleteValue(root, key, name) || reg.GetValue(root, key, name))
        throw MoveFailure("the value \"" + name + "\" could not be removed from \"" + key + "\"");
    undo.Add(
        [root, key, name, value = *existing] { CRegistry().SetValue(root, key, name, value); });
}

RegistryValue TextValue(std::string_view text) {
    RegistryValue value;
    value.Type = REG_SZ;
    const int n =
        MultiByteToWideChar(CP_ACP, 0, text.data(), static_cast<int>(text.size()), nullptr, 0);
    std::wstring wide(static_cast<size_t>(n), L'\0');
    MultiByteToWideChar(CP_ACP, 0, text.data(), static_cast<int>(text.size()), wide.data(), n);
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
    if (TextType(value.Type) || value.Type == REG_MULTI_SZ) {
        std::vector<uint8_t> data = TrimmedText(value);
        const auto* wide = reinterpret_cast<const wchar_t*>(data.data());
        const int chars = static_cast<int>(data.size() / 2);
        const int n = WideCharToMultiByte(CP_ACP, 0, wide, chars, nullptr, 0, nullptr, nullptr);
        backup.Text.assign(static_cast<size_t>(n), '\0');
        WideCharToMultiByte(CP_ACP, 0, wide, chars, backup.Text.data(), n, nullptr, nullptr);
    }
    return backup;
}

RegBackup::RegBackup(const AppState& app) {
    CDirStruct folders;
    const std::string& program = app.folders.ProgramFolder;
    SYSTEMTIME now{};
    GetLocalTime(&now);
    char date[16];
    std::snprintf(date, sizeof date, "%04u-%02u-%02u", now.wYear, now.wMonth, now.wDay);
    folders.DirectoryExists("Delayed Registry", program, true);
    folders.DirectoryExists(date, program + "\\Delayed Registry", true);
    GetLocalTime(&now);
    char time[16];
    std::snprintf(time, sizeof time, "%02u %02u %02u", now.wHour, now.wMinute, now.wSecond);
    const std::string base = program + "\\Delayed Registry\\" + date + "\\" + time;
    // A second backup within the same second gets a name of its own: every backup is kept.
    path_ = base + ".reg";
    for (int n = 2; FileThere(path_); ++n)
        path_ = base + " (" + std::to_string(n) + ").reg";
    file_.reset(CreateFileA(path_.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS,
                            FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file_)
        throw MoveFailure("the backup \"" + path_ +
                          "\" cannot be written: " + SystemErrorText(GetLastError()));
    Line(kRegFileFirstLine);
    Line("");
}

RegBackup::~RegBackup() {
    Close();
}

void RegBackup::Line(std::string_view text) {
    std::string line(text);
    line += "\r\n";
    DWORD wrote = 0;
    if (!WriteFile(file_.get(), line.data(), static_cast<DWORD>(line.size()), &wrote, nullptr) ||
        wrote != line.size() || !FlushFileBuffers(file_.get()))
        throw MoveFailure("the backup \"" + path_ +
                          "\" cannot be written: " + SystemErrorText(GetLastError()));
}

void RegBackup::Value(bool machine, const BackupValue& value) {
    if (!keyLine_) {
        Line(RegKeyLine(machine));
        keyLine_ = true;
    }
    Line(RegValueLine(value));
    hasValues_ = true;
}

void RegBackup::Close() {
    file_.reset();
}

} // namespace tolvane
