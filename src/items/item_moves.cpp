#include "items/item_moves.h"

#include <exception>
#include <functional>
#include <memory>

#include "config/delay_load.h"
#include "items/move_steps.h"
#include "items/run_data.h"
#include "items/startup_tree.h"
#include "platform/dir_struct.h"
#include "platform/file_functions.h"
#include "startup/app_state.h"
#include "text/strings.h"

namespace tolvane {

namespace {

constexpr int kStartupFolderMessage = 2;
constexpr int kRegistryMessage = 1;

RegistryRoot RunRoot(int code) {
    return code == kMachineRun ? RegistryRoot::LocalMachine : RegistryRoot::CurrentUser;
}
std::string SavedKey(int code) {
    return code == kMachineRun ? kSavedMachineRunKey : kSavedUserRunKey;
}

// The texts of the checked items of a container.
std::vector<std::string> CheckedItems(const TreeModel& tree, const char* container) {
    std::vector<std::string> texts;
    const int node = tree.Find(container);
    if (node == TreeModel::kNone)
        return texts;
    for (int child : tree.Node(node).Children)
        if (tree.Node(child).Checked)
            texts.push_back(tree.Node(child).Text);
    return texts;
}

} // namespace

ItemMoves::ItemMoves(AppState& app, TreeModel& tree, HWND owner)
    : app_(app), tree_(tree), owner_(owner) {}

namespace {

// What the moves share: the folders, the model and its file, and how a move ends.
class Mover {
public:
    Mover(AppState& app, TreeModel& tree, HWND owner) : app_(app), tree_(tree), owner_(owner) {}

    ProgramModel& Model() { return app_.model; }
    const AppFolders& Folders() const { return app_.folders; }
    HWND Owner() const { return owner_; }

    std::string StartupPath(bool user, std::string_view name) const {
        return (user ? Folders().UserStartupFolder : Folders().CommonStartupFolder) + "\\" +
               std::string(name);
    }
    std::string ItemsPath(bool user, std::string_view name) const {
        return (user ? Folders().UserItemsFolder : Folders().AllUsersItemsFolder) + "\\" +
               std::string(name);
    }

    // The delayed program of an item of one location. The command tells the locations apart:
    // the same shortcut name in both Startup folders, or the same command in both Run keys,
    // are two items, and moving one must never touch the other's entry.
    int Delayed(std::string_view program, std::string_view command) const {
        const ProgramGroup* group = app_.model.StartupGroup();
        if (!group)
            return -1;
        const std::string sought = Trim(program);
        for (size_t i = 0; i < group->Programs.size(); ++i) {
            const GroupProgram& p = group->Programs[i];
            if (p.Command == command && (sought == p.Path + " " + p.Parameters || sought == p.Path))
                return static_cast<int>(i);
        }
        return -1;
    }
    // A shortcut's program: by its bare name, as a load leaves it, or by its path in the items
    // folder, as a delay made since the last load left it.
    int DelayedShortcut(std::string_view name, bool user) const {
        const std::string_view command = user ? kExecute : kExecuteAU;
        const int i = Delayed(name, command);
        return i >= 0 ? i : Delayed(ItemsPath(user, name), command);
    }
    void RemoveDelayedShortcut(std::string_view name, bool user) {
        app_.model.RemoveProgramFromGroup(app_.model.StartupGroupIndex,
                                          DelayedShortcut(name, user));
    }
    void RemoveDelayedValue(std::string_view text, int location) {
        app_.model.RemoveProgramFromGroup(
            app_.model.StartupGroupIndex,
            Delayed(text, location == kMachineRun ? kExecuteRegAU : kExecuteReg));
    }

    bool SelectedIsStopped() const {
        const int selected = tree_.Selected();
        return selected != TreeModel::kNone && Contains(tree_.FullPath(selected), "Stopped Items");
    }

    void Write() { CDelayLoad(app_).WriteItems(); }

    void Log(const std::string& routine, const std::string& what, int level = kLogError) {
        app_.log.WriteLog(routine + ": " + what, level);
    }
    void Tell(int message) {
        app_.messages.ShowMessage(app_.text.Message(message), "Tolvane",
                                  kMbOk | kMbIconExclamation);
    }

    // One move of one item: its steps and its changes to the model stand only when the model's
    // file was written as well. Failures are logged and end the move with false.
    bool Single(const char* routine, const std::function<void(UndoSteps&)>& move) {
        ModelSnapshot snapshot(app_.model);
        UndoSteps undo;
        try {
            move(undo);
            Write();
        } catch (const std::exception& e) {
            Log(routine, e.what());
            return false;
        }
        undo.Keep();
        snapshot.Keep();
        return true;
    }

    // A pass over checked items. An item that fails is taken back and ends the pass; the items
    // before it stay moved and are written to the file. Should the file not be written, every
    // item of the pass is taken back. A failure shows the pass's message.
    // One item's move: its steps go into the undo list it is given.
    using ItemMove = std::function<void(UndoSteps&)>;
    // Runs one item's move as a unit of the pass.
    using ItemRunner = std::function<void(const ItemMove&)>;

    bool Pass(const char* routine, int message, const std::function<void(const ItemRunner&)>& body,
              const std::function<void()>& finish = {}) {
        ModelSnapshot snapshot(app_.model);
        UndoSteps done;
        std::string failure;
        auto item = [&](const ItemMove& move) {
            UndoSteps steps;
            ModelSnapshot before(app_.model);
            move(steps); // a throw takes this item's steps and model changes back
            before.Keep();
            steps.MoveInto(done);
        };
        try {
            body(item);
        } catch (const std::exception& e) {
            failure = e.what();
        }
        try {
            if (finish)
                finish();
            Write();
        } catch (const std::exception& e) {
            done.TakeBack();
            failure = failure.empty() ? e.what() : failure + "; " + e.what();
            Log(routine, failure);
            Tell(message);
            return false; // the snapshot puts the model back
        }
        done.Keep();
        snapshot.Keep();
        if (!failure.empty()) {
            Log(routine, failure);
            Tell(message);
            return false;
        }
        return true;
    }

private:
    AppState& app_;
    TreeModel& tree_;
    HWND owner_;
};

} // namespace

// ---- Shortcuts in the Startup folders ---------------------------------------------------------

bool ItemMoves::DelayStartupItem(std::string_view name, int code, bool stop) {
    if (name.empty())
        return false;
    Mover m(app_, tree_, owner_);
    const bool user = code == kUserStartup;
    const int location = user ? kUserStartup : kCommonStartup;
    return m.Single("DelayStartupItem", [&](UndoSteps& undo) {
        const std::string items = m.ItemsPath(user, name);
        const std::string& folder =
            user ? m.Folders().UserStartupFolder : m.Folders().CommonStartupFolder;
        if (CDirStruct().FileExists(name, folder)) {
            MoveShortcut(m.StartupPath(user, name), items, m.Owner(), kQuietFileOperationMakeFolder,
                         undo);
        } else {
            // Delayed or stopped already: the shortcut stays in the items folder.
            if (!FileThere(items))
                throw MoveFailure("\"" + std::string(name) +
                                  "\" is neither in its Startup folder nor in the items folder");
            m.RemoveDelayedShortcut(name, user);
            m.Model().RemoveStoppedProgram(name, location);
        }
        if (stop)
            m.Model().AddStoppedProgram(name, location);
        else
            m.Model().AddProgramToGroup(m.Model().StartupGroupIndex, user ? kExecute : kExecuteAU,
                                        items, "", 0, "");
    });
}

void ItemMoves::RestoreStartupItem(std::string_view name, int code, bool fromStopped) {
    if (name.empty())
        return;
    Mover m(app_, tree_, owner_);
    const bool user = code == kUserStartup;
    const int location = user ? kUserStartup : kCommonStartup;
    m.Single("RestoreStartupItem", [&](UndoSteps& undo) {
        const std::string items = m.ItemsPath(user, name);
        // A shortcut that is no longer in the items folder has nothing to move back.
        if (FileThere(items))
            MoveShortcut(items, m.StartupPath(user, name), m.Owner(), kQuietFileOperation, undo);
        if (fromStopped)
            m.Model().RemoveStoppedProgram(name, location);
        else
            m.RemoveDelayedShortcut(name, user);
    });
}

bool ItemMoves::DelayCheckedStartupItems(bool stop, bool stoppedToDelayed) {
    Mover m(app_, tree_, owner_);
    return m.Pass("DelayCheckedStartupItems", kStartupFolderMessage, [&](const auto& item) {
        for (const std::string& name : CheckedItems(tree_, "CurrentUserStartup")) {
            item([&](UndoSteps& undo) {
                const std::string items = m.ItemsPath(true, name);
                MoveShortcut(m.StartupPath(true, name), items, m.Owner(),
                             kQuietFileOperationMakeFolder, undo);
                if (stop)
                    m.Model().AddStoppedProgram(name, kUserStartup);
                else
                    m.Model().AddProgramToGroup(m.Model().StartupGroupIndex, kExecute, items, "", 0,
                                                "");
            });
        }
        if (stop) {
            for (const std::string& name : CheckedItems(tree_, "DelayedItemsStartupCurrentUser")) {
                item([&](UndoSteps&) {
                    m.Model().AddStoppedProgram(name, kUserStartup);
                    m.RemoveDelayedShortcut(name, true);
                });
            }
        }
        for (const std::string& name : CheckedItems(tree_, "StoppedItemsCurrentStartup")) {
            item([&](UndoSteps& undo) {
                if (stoppedToDelayed) {
                    m.Model().AddProgramToGroup(m.Model().StartupGroupIndex, kExecute,
                                                m.ItemsPath(true, name), "", 0, "");
                    m.Model().RemoveStoppedProgram(name, kUserStartup);
                } else {
                    // Back in the Startup folder; the stopped entry goes with the restore pass
                    // that follows.
                    MoveShortcut(m.ItemsPath(true, name), m.StartupPath(true, name), m.Owner(),
                                 kQuietFileOperationMakeFolder, undo);
                }
            });
        }
    });
}

bool ItemMoves::RestoreCheckedStartupItems() {
    Mover m(app_, tree_, owner_);
    const int container = tree_.Find("StoppedItemsCurrentStartup");
    return m.Pass("RestoreCheckedStartupItems", kStartupFolderMessage, [&](const auto& item) {
        for (const std::string& name : CheckedItems(tree_, "DelayedItemsStartupCurrentUser")) {
            item([&](UndoSteps& undo) {
                const std::string items = m.ItemsPath(true, name);
                if (FileThere(items))
                    MoveShortcut(items, m.StartupPath(true, name), m.Owner(), kQuietFileOperation,
                                 undo);
                m.RemoveDelayedShortcut(name, true);
            });
        }
        const bool user =
            container != TreeModel::kNone && Contains(tree_.FullPath(container), "Current User");
        for (const std::string& name : CheckedItems(tree_, "StoppedItemsCurrentStartup")) {
            item([&](UndoSteps& undo) {
                const std::string items = m.ItemsPath(user, name);
                // A shortcut deleted from the items folder meanwhile is not moved, but its
                // entry goes all the same.
                if (CDirStruct::OrdinaryFileExists(items))
                    MoveShortcut(items, m.StartupPath(user, name), m.Owner(), kQuietFileOperation,
                                 undo);
                m.Model().RemoveStoppedProgram(name, kUserStartup);
            });
        }
    });
}

// ---- Values in the Run keys -------------------------------------------------------------------

namespace {

// Name and data of a stopped value, from its saved copy; the name is "" when none is left.
NameData SavedValueFor(int code, std::string_view path) {
    std::vector<std::string> saved;
    CRegistry().EnumKey(RunRoot(code), SavedKey(code), saved);
    const int i = FindSavedRunValue(saved, path);
    return i < 0 ? NameData{} : SplitNameData(saved[static_cast<size_t>(i)]);
}

// Takes a value out of its Run key: a saved copy first (type and bytes as they are), its
// backup line, then the deletion. At no moment is the value nowhere.
void TakeOutValue(int code, const std::string& name, RegBackup& backup, UndoSteps& undo) {
    auto value = CRegistry().GetValue(RunRoot(code), kRunKey, name);
    if (!value)
        throw MoveFailure("the Run value \"" + name + "\" is not there any more");
    PutValue(RunRoot(code), SavedKey(code), name, *value, undo);
    backup.Value(code == kMachineRun, ToBackupValue(name, *value));
    RemoveValue(RunRoot(code), kRunKey, name, undo);
}

// Puts a value back into its Run key: the saved copy, which is the user's command exactly as it
// was, or, with no copy left, the item's text. The copy goes only once the value is back.
void PutBackValue(int code, const std::string& name, const std::string& data, UndoSteps& undo) {
    auto saved = CRegistry().GetValue(RunRoot(code), SavedKey(code), name);
    PutValue(RunRoot(code), kRunKey, name, saved ? *saved : TextValue(data), undo);
    if (saved)
        RemoveValue(RunRoot(code), SavedKey(code), name, undo);
}

} // namespace

bool ItemMoves::DelayRegistryItem(std::string_view text, int code, bool stop) {
    if (text.empty())
        return false;
    Mover m(app_, tree_, owner_);
    const int location = code == kMachineRun ? kMachineRun : kUserRun;
    return m.Single("DelayRegistryItem", [&](UndoSteps& undo) {
        RegBackup backup(app_);
        NameData value = Contains(text, "=") ? SplitNameData(text) : SavedValueFor(location, text);
        // Without a name there is no value to move: an empty name would be the key's default.
        if (value.Name.empty())
            throw MoveFailure("no Run value or saved copy for \"" + std::string(text) + "\"");
        if (CRegistry().GetValue(RunRoot(location), kRunKey, value.Name)) {
            TakeOutValue(location, value.Name, backup, undo);
        } else if (auto saved =
                       CRegistry().GetValue(RunRoot(location), SavedKey(location), value.Name)) {
            // Delayed or stopped already: the saved copy keeps the command as it was.
            backup.Value(location == kMachineRun, ToBackupValue(value.Name, *saved));
        } else {
            throw MoveFailure("the Run value \"" + value.Name + "\" is not there any more");
        }
        const RunCommandParts parts = SplitRunData(value.Data);
        ProgramModel& model = m.Model();
        if (stop) {
            model.AddStoppedProgram(parts.Path, location);
            m.RemoveDelayedValue(parts.Path, location);
        } else {
            model.AddProgramToGroup(model.StartupGroupIndex,
                                    location == kUserRun ? kExecuteReg : kExecuteRegAU, parts.Path,
                                    parts.Parameters, 0, value.Name);
            model.RemoveStoppedProgram(parts.Path, location);
        }
        if (m.SelectedIsStopped())
            model.RemoveStoppedProgram(parts.Path, location);
        backup.Close();
    });
}

void ItemMoves::RestoreRegistryItem(std::string_view text, int code, bool fromStopped) {
    if (text.empty())
        return;
    Mover m(app_, tree_, owner_);
    const int location = code == kMachineRun ? kMachineRun : kUserRun;
    if (!Contains(text, "=") && !m.SelectedIsStopped())
        return;
    m.Single("RestoreRegistryItem", [&](UndoSteps& undo) {
        if (Contains(text, "=")) {
            const NameData value = SplitNameData(text);
            PutBackValue(location, value.Name, value.Data, undo);
            if (fromStopped)
                m.Model().RemoveStoppedProgram(text, location);
            else
                m.RemoveDelayedValue(value.Data, location);
            return;
        }
        const NameData value = SavedValueFor(location, text);
        if (value.Name.empty())
            return; // no saved copy: nothing changes
        PutBackValue(location, value.Name, value.Data, undo);
        m.Model().RemoveStoppedProgram(text, location);
    });
}

bool ItemMoves::DelayCheckedRegistryItems(bool stop, bool stoppedToDelayed) {
    Mover m(app_, tree_, owner_);
    std::unique_ptr<RegBackup> backup;
    try {
        backup = std::make_unique<RegBackup>(app_);
    } catch (const std::exception& e) {
        m.Log("DelayCheckedRegistryItems", e.what());
        m.Tell(kRegistryMessage);
        return false;
    }
    ProgramModel& model = m.Model();
    return m.Pass(
        "DelayCheckedRegistryItems", kRegistryMessage,
        [&](const auto& item) {
            for (const std::string& text : CheckedItems(tree_, "CurrentUserRegistry")) {
                item([&](UndoSteps& undo) {
                    const NameData value = SplitNameData(text);
                    TakeOutValue(kUserRun, value.Name, *backup, undo);
                    const RunCommandParts parts = SplitRunData(value.Data);
                    if (stop)
                        model.AddStoppedProgram(parts.Path, kUserRun);
                    else
                        model.AddProgramToGroup(model.StartupGroupIndex, kExecuteReg, parts.Path,
                                                parts.Parameters, 0, value.Name);
                });
            }
            if (stop) {
                for (const std::string& text :
                     CheckedItems(tree_, "DelayedItemsRegistryCurrentUser")) {
                    item([&](UndoSteps&) {
                        const std::string data = SplitNameData(text).Data;
                        const int i = m.Delayed(data, kExecuteReg);
                        const ProgramGroup* group = model.StartupGroup();
                        if (i < 0 || !group)
                            throw MoveFailure("the delayed value \"" + text +
                                              "\" is no longer in the Startup group");
                        model.AddStoppedProgram(group->Programs[static_cast<size_t>(i)].Path,
                                                kUserRun);
                        model.RemoveProgramFromGroup(model.StartupGroupIndex, i);
                    });
                }
            }
            if (stoppedToDelayed) {
                for (const std::string& text : CheckedItems(tree_, "StoppedItemsCurrentReg")) {
                    item([&](UndoSteps&) {
                        const NameData value = SavedValueFor(kUserRun, text);
                        if (value.Name.empty()) {
                            // No saved copy to start it from: the item stays stopped.
                            m.Log("DelayCheckedRegistryItems",
                                  "no saved copy of the stopped value \"" + text + "\"",
                                  kLogWarning);
                            return;
                        }
                        const RunCommandParts parts = SplitRunData(Trim(value.Data));
                        model.AddProgramToGroup(model.StartupGroupIndex, kExecuteReg,
                                                Trim(parts.Path), parts.Parameters, 0, value.Name);
                        model.RemoveStoppedProgram(text, kUserRun);
                    });
                }
            }
        },
        [&] {
            backup->Close();
            if (!backup->HasValues())
                CFileFunctions().DeleteFile(backup->Path(), m.Owner(), "Deleting",
                                            kQuietFileOperation);
        });
}

bool ItemMoves::RestoreCheckedRegistryItems() {
    Mover m(app_, tree_, owner_);
    ProgramModel& model = m.Model();
    return m.Pass("RestoreCheckedRegistryItems", kRegistryMessage, [&](const auto& item) {
        for (const std::string& text : CheckedItems(tree_, "DelayedItemsRegistryCurrentUser")) {
            item([&](UndoSteps& undo) {
                const NameData value = SplitNameData(text);
                PutBackValue(kUserRun, value.Name, value.Data, undo);
                m.RemoveDelayedValue(value.Data, kUserRun);
            });
        }
        for (const std::string& text : CheckedItems(tree_, "StoppedItemsCurrentReg")) {
            item([&](UndoSteps& undo) {
                const NameData value = SavedValueFor(kUserRun, text);
                if (!value.Name.empty())
                    PutBackValue(kUserRun, value.Name, value.Data, undo);
                // Without a saved copy there is nothing to put back; the entry goes.
                model.RemoveStoppedProgram(text, kUserRun);
            });
        }
    });
}

} // namespace tolvane
