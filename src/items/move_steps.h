// The single steps of the item moves, each checked after it was taken and each able to be taken
// back. A step that cannot be done throws MoveFailure and leaves things as they were.
#pragma once

#include <windows.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "config/program_model.h"
#include "items/reg_backup_format.h"
#include "platform/handles.h"
#include "platform/registry.h"

namespace tolvane {

// Why a move was not done; each reason has its own message for the user.
enum class Refusal {
    Failed,       // a step could not be taken (no rights, a full disk)
    InTheWay,     // something else of that name is where the item would go
    ValueChanged, // the Run value is not the one the list showed, or the one taken out
    Gone,         // the item is no longer where the list shows it
    Blocked,      // the log-on run would never start it: a disallowed word blocks its command
};

// A move that could not be done; the text names the item and the reason for the log, the
// detail names the conflict for the user (what is in the way, what the value reads now).
class MoveFailure : public std::runtime_error {
public:
    explicit MoveFailure(const std::string& what, Refusal why = Refusal::Failed,
                         std::string detail = std::string())
        : std::runtime_error(what), why_(why), detail_(std::move(detail)) {}
    Refusal Why() const { return why_; }
    const std::string& Detail() const { return detail_; }

private:
    Refusal why_;
    std::string detail_;
};

// Steps that can be taken back, newest first. A step that cannot put things back throws
// MoveFailure. Taken back when the owner goes unless kept; the owner's caller takes them back
// itself, to learn what could not be put back.
class UndoSteps {
public:
    UndoSteps() = default;
    UndoSteps(const UndoSteps&) = delete;
    UndoSteps& operator=(const UndoSteps&) = delete;
    ~UndoSteps() { (void)TakeBack(); }

    void Add(std::function<void()> undo) { steps_.push_back(std::move(undo)); }
    // This item's steps join a pass's: they are taken back with it, if at all.
    void MoveInto(UndoSteps& pass);
    void Keep() { steps_.clear(); }
    // Every step is tried; what could not be put back comes back, one text each.
    [[nodiscard]] std::vector<std::string> TakeBack() noexcept;

private:
    std::vector<std::function<void()>> steps_;
};

// The model as it was; put back when the move fails, unless kept.
class ModelSnapshot {
public:
    explicit ModelSnapshot(ProgramModel& model) : model_(model), saved_(model) {}
    ~ModelSnapshot() {
        if (!kept_)
            model_ = saved_;
    }
    void Keep() { kept_ = true; }
    // The pass goes on from here: what the model holds now is what a failure goes back to.
    void Update() { saved_ = model_; }

private:
    ProgramModel& model_;
    ProgramModel saved_;
    bool kept_ = false;
};

// How a file is moved: the shell's move, which between volumes is a copy and a delete. Tests
// put another in its place. Returns what the shell returned.
using FileMover = std::function<int(const std::string& from, const std::string& to)>;

// Moves a shortcut through the shell. A file of the same name at the target is replaced only
// when it is the same file byte for byte; another one is never overwritten.
void MoveShortcut(const std::string& from, const std::string& to, HWND owner, uint16_t flags,
                  UndoSteps& undo, const FileMover& mover = {});
[[nodiscard]] bool FileThere(const std::string& path);

// Registry values with their type and bytes.
[[nodiscard]] bool SameValue(const RegistryValue& a, const RegistryValue& b);
// Writes the value unless the key already holds it; another value of that name is never
// overwritten: that is refused for the given reason, with what the value reads now.
void PutValue(RegistryRoot root, const std::string& key, const std::string& name,
              const RegistryValue& value, UndoSteps& undo, Refusal conflict = Refusal::InTheWay);
void RemoveValue(RegistryRoot root, const std::string& key, const std::string& name,
                 UndoSteps& undo);
// A key as the user finds it in the registry editor: the 32-bit view's below WOW6432Node.
std::string ShownKey(RegistryRoot root, std::string_view key);
// An item put back where Windows starts it must not stay switched off in Task Manager: a flag
// that is off is switched on, with the time of now. A flag that is on, missing or in a missing
// key is left as it is.
void SwitchOnInTaskManager(RegistryRoot root, const char* key, const std::string& name,
                           UndoSteps& undo);
// A REG_SZ value holding the text.
RegistryValue TextValue(std::string_view text);
BackupValue ToBackupValue(const std::string& name, const RegistryValue& value);

// A ".reg" backup below "Delayed Registry" in the program folder, one file per move, named
// by the date and the time. The folders are made at once; the file with the first value, so a
// move that takes out nothing leaves none. Each line reaches the disk when it is written.
class RegBackup {
public:
    explicit RegBackup(const std::string& programFolder);
    ~RegBackup();
    RegBackup(const RegBackup&) = delete;
    RegBackup& operator=(const RegBackup&) = delete;

    // A value of the Run key of that root (and view).
    void Value(RegistryRoot root, const BackupValue& value);
    bool HasValues() const { return hasValues_; }
    // The file's path; "" until a value was written.
    const std::string& Path() const { return path_; }
    void Close();

private:
    // A line of the file; the first one with the byte-order mark.
    void Line(std::string_view text, bool first = false);
    std::string folder_;
    std::string path_;
    UniqueFile file_;
    bool keyLine_ = false;
    RegistryRoot keyRoot_ = RegistryRoot::CurrentUser;
    bool hasValues_ = false;
};

} // namespace tolvane
