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

class AppState;

// A move that could not be done; the text names the item and the reason.
class MoveFailure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Steps that can be taken back, newest first. Unless kept, they are taken back when the owner
// goes, so an item whose later step failed leaves nothing half done.
class UndoSteps {
public:
    UndoSteps() = default;
    UndoSteps(const UndoSteps&) = delete;
    UndoSteps& operator=(const UndoSteps&) = delete;
    ~UndoSteps() { TakeBack(); }

    void Add(std::function<void()> undo) { steps_.push_back(std::move(undo)); }
    // This item's steps join a pass's: they are taken back with it, if at all.
    void MoveInto(UndoSteps& pass);
    void Keep() { steps_.clear(); }
    void TakeBack() noexcept;

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

// Moves a shortcut through the shell. A file of the same name at the target is replaced only
// when it is the same file byte for byte; another one is never overwritten.
void MoveShortcut(const std::string& from, const std::string& to, HWND owner, uint16_t flags,
                  UndoSteps& undo);
bool FileThere(const std::string& path);

// Registry values with their type and bytes.
bool SameValue(const RegistryValue& a, const RegistryValue& b);
// Writes the value unless the key already holds it; another value of that name is never
// overwritten.
void PutValue(RegistryRoot root, const std::string& key, const std::string& name,
              const RegistryValue& value, UndoSteps& undo);
void RemoveValue(RegistryRoot root, const std::string& key, const std::string& name,
                 UndoSteps& undo);
// A REG_SZ value holding the text.
RegistryValue TextValue(std::string_view text);
BackupValue ToBackupValue(const std::string& name, const RegistryValue& value);

// A ".reg" backup below "Delayed Registry" in the program folder, one file per move, named
// by the date and the time. Each line reaches the disk when it is written.
class RegBackup {
public:
    explicit RegBackup(const AppState& app);
    ~RegBackup();
    RegBackup(const RegBackup&) = delete;
    RegBackup& operator=(const RegBackup&) = delete;

    void Value(bool machine, const BackupValue& value);
    bool HasValues() const { return hasValues_; }
    const std::string& Path() const { return path_; }
    void Close();

private:
    void Line(std::string_view text);
    std::string path_;
    UniqueFile file_;
    bool keyLine_ = false;
    bool hasValues_ = false;
};

} // namespace tolvane
