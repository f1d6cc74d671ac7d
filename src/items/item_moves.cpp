#include "items/item_moves.h"

#include <exception>
#include <functional>
#include <memory>
#include <optional>

#include "config/delay_load.h"
#include "config/program_group_store.h"
#include "config/run_data.h"
#include "config/system_command_line.h"
#include "items/startup_approved.h"
#include "platform/dir_struct.h"
#include "platform/file_functions.h"
#include "config/app_state.h"
#include "text/placeholders.h"
#include "text/strings.h"

namespace tolvane {

namespace {

constexpr int kRegistryMessage = 1;
constexpr int kStartupFolderMessage = 2;
constexpr int kInTheWayMessage = 14;
constexpr int kValueChangedMessage = 15;
constexpr int kGoneMessage = 16;
constexpr int kFailedMessage = 17;
constexpr int kNotTakenBackMessage = 18;
constexpr int kBlockedMessage = 28;

// A Run value's key: its location and, for the machine's, the registry view it is in. The
// saved copy of a value is kept in the same view, and a value goes back to its copy's view.
struct ValueKey {
    int Location = kUserRun;
    bool Wow32 = false;
    RegistryRoot Root() const { return RunRoot(Location, Wow32); }
    std::string Saved() const { return SavedKeyOf(Location); }
};

// Task Manager's switch of a value: the machine's 32-bit values have a key of their own.
void SwitchOnValue(const ValueKey& at, const std::string& name, UndoSteps& undo) {
    SwitchOnInTaskManager(at.Location == kUserRun ? RegistryRoot::CurrentUser
                                                  : RegistryRoot::LocalMachine,
                          at.Wow32 ? kApprovedRun32Key : kApprovedRunKey, name, undo);
}
void SwitchOnShortcut(bool user, std::string_view name, UndoSteps& undo) {
    SwitchOnInTaskManager(user ? RegistryRoot::CurrentUser : RegistryRoot::LocalMachine,
                          kApprovedFolderKey, std::string(name), undo);
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

std::string Joined(const std::vector<std::string>& lines) {
    std::string out;
    for (const std::string& line : lines)
        out += (out.empty() ? "" : "\r\n") + line;
    return out;
}

// A delayed item that the log-on run would never start would be gone from the log-on: such a
// delay is refused, and the item stays where Windows starts it (or stopped).
void RefuseBlocked(const ProgramModel& model, const RunCommandParts& command) {
    const std::string word = model.BlockingWord(command.Path, command.Parameters);
    if (!word.empty())
        throw MoveFailure("its command holds the disallowed word \"" + word + "\"",
                          Refusal::Blocked, word);
}

// Ends a pass at the item that failed; that item's failure is already recorded.
struct PassEnds {};

// What the moves share: the folders, the model and its file, and how a move ends.
class Mover {
public:
    Mover(AppState& app, HWND owner, const FileMover& mover)
        : app_(app), owner_(owner), mover_(mover) {}

    ProgramModel& Model() { return app_.model; }
    const AppFolders& Folders() const { return app_.folders; }

    std::string StartupPath(bool user, std::string_view name) const {
        return (user ? Folders().UserStartupFolder : Folders().CommonStartupFolder) + "\\" +
               std::string(name);
    }
    std::string ItemsPath(bool user, std::string_view name) const {
        return (user ? Folders().UserItemsFolder : Folders().AllUsersItemsFolder) + "\\" +
               std::string(name);
    }
    void MoveFile(const std::string& from, const std::string& to, uint16_t flags, UndoSteps& undo) {
        MoveShortcut(from, to, owner_, flags, undo, mover_);
    }

    // The delayed program of a shortcut, by its bare name as a load leaves it, or by its path
    // in the items folder as a delay since the last load left it. The command tells the two
    // Startup folders apart.
    int DelayedShortcut(std::string_view name, bool user) const {
        const ProgramGroup* group = app_.model.StartupGroup();
        if (!group)
            return -1;
        const std::string_view command = user ? kExecute : kExecuteAU;
        const std::string inItems = ItemsPath(user, name);
        for (size_t i = 0; i < group->Programs.size(); ++i) {
            const GroupProgram& p = group->Programs[i];
            if (p.Command == command && (p.Path == name || p.Path == inItems))
                return static_cast<int>(i);
        }
        return -1;
    }

    // The delayed program of a Run value, by the value's name, in the view of its saved copy.
    // A program without a name (a hand-written line) is found by its command instead, among the
    // others without one.
    int DelayedValue(const ValueKey& at, std::string_view text) const {
        const ProgramGroup* group = app_.model.StartupGroup();
        if (!group)
            return -1;
        const NameData value = SplitNameData(text);
        const SavedCopies saved = ReadSavedCopies(at.Location);
        const SavedCopyMatch match = MatchSavedCopies(app_.model, at.Location, saved.Copies);
        for (size_t i = 0; i < group->Programs.size(); ++i) {
            const GroupProgram& p = group->Programs[i];
            if (p.Path.empty() || p.Command != CommandOfLocation(at.Location) ||
                p.RegistryKeyName != value.Name)
                continue;
            const int copy = match.Delayed[i];
            if (saved.RootOf(copy) != at.Root())
                continue; // the value of that name in the other view
            if (!value.Name.empty() || Trim(value.Data) == Trim(p.Path + " " + p.Parameters) ||
                Trim(value.Data) == Trim(p.Path))
                return static_cast<int>(i);
        }
        return -1;
    }
    // The same, refused as gone when there is none.
    int DelayedValueThere(const ValueKey& at, std::string_view text) const {
        const int i = DelayedValue(at, text);
        if (i < 0)
            throw MoveFailure("\"" + std::string(text) + "\" is no longer delayed", Refusal::Gone);
        return i;
    }
    void RemoveProgram(int index) {
        if (!app_.model.RemoveProgramFromGroup(app_.model.StartupGroupIndex, index))
            throw MoveFailure("the delayed program could not be removed from the Startup group");
    }

    void Log(const std::string& text, int level = kLogError) { app_.log.WriteLog(text, level); }
    void Show(const std::string& text) {
        app_.messages.ShowMessage(text, "Tolvane", kMbOk | kMbIconExclamation);
    }
    std::string Message(int index) const { return app_.text.Message(static_cast<size_t>(index)); }

    // What the user is told of a move that was not done: the reason, with the conflict named.
    std::string Why(std::string_view item, const std::exception& e) const {
        const auto* failure = dynamic_cast<const MoveFailure*>(&e);
        switch (failure ? failure->Why() : Refusal::Failed) {
        case Refusal::InTheWay:
            return FillIn(Message(kInTheWayMessage), {item, failure->Detail()});
        case Refusal::ValueChanged:
            return FillIn(Message(kValueChangedMessage), {item, failure->Detail()});
        case Refusal::Gone:
            return FillIn(Message(kGoneMessage), {item});
        case Refusal::Blocked:
            return FillIn(Message(kBlockedMessage), {item, failure->Detail()});
        case Refusal::Failed:
            break;
        }
        return FillIn(Message(kFailedMessage), {item, e.what()});
    }

    // Logs a move that was not done and tells the user why; what could not be taken back is
    // logged at the error level and told as well, with where things are now.
    void Report(const char* routine, std::string_view item, const std::string& what,
                const std::string& why, const std::vector<std::string>& notTakenBack) {
        Log(std::string(routine) + ": \"" + std::string(item) + "\": " + what);
        for (const std::string& step : notTakenBack)
            Log(std::string(routine) + ": not taken back: " + step);
        Show(why);
        if (!notTakenBack.empty())
            Show(FillIn(Message(kNotTakenBackMessage), {item, Joined(notTakenBack)}));
    }

    // One move of one item, on the file as it is now: its steps and its changes to the model
    // stand only when the model's file was written as well. The user is told of a failure once
    // the file is free again.
    bool Single(const char* routine, std::string_view item,
                const std::function<void(UndoSteps&)>& move) {
        UndoSteps undo;
        try {
            ProgramGroupStore(app_).Change([&](ProgramModel&) { move(undo); });
        } catch (const std::exception& e) {
            const std::vector<std::string> notTakenBack = undo.TakeBack();
            Report(routine, item, e.what(), Why(item, e), notTakenBack);
            return false; // the store left the model as the file holds it
        }
        undo.Keep();
        return true;
    }

    // One item's move within a pass: its steps go into the undo list it is given.
    using ItemMove = std::function<void(UndoSteps&)>;
    using ItemRunner = std::function<void(std::string_view item, const ItemMove&)>;

    // A pass over checked items, on the file as it is now. An item that fails is taken back
    // and ends the pass; the items before it stay moved and are written to the file. Should the
    // file not be written, every item of the pass is taken back. A failure shows the pass's
    // message and the item's reason.
    bool Pass(const char* routine, int message, const std::function<void(const ItemRunner&)>& body,
              const std::function<void()>& finish = {}) {
        UndoSteps done;
        std::string failedItem, what, why;
        std::vector<std::string> notTakenBack;
        auto item = [&](std::string_view name, const ItemMove& move) {
            UndoSteps steps;
            ModelSnapshot before(app_.model);
            try {
                move(steps);
            } catch (const std::exception& e) {
                notTakenBack = steps.TakeBack();
                failedItem = std::string(name);
                what = e.what();
                why = Why(name, e);
                throw PassEnds{}; // the snapshot takes this item's model changes back
            }
            before.Keep();
            steps.MoveInto(done);
        };
        try {
            ProgramGroupStore(app_).Change([&](ProgramModel&) {
                try {
                    body(item);
                } catch (const PassEnds&) {
                } catch (const std::exception& e) {
                    what = e.what();
                    why = e.what();
                }
                if (finish)
                    finish();
            });
        } catch (const std::exception& e) {
            for (std::string& step : done.TakeBack())
                notTakenBack.push_back(std::move(step));
            what = what.empty() ? e.what() : what + "; " + e.what();
            why = why.empty() ? e.what() : why;
            Report(routine, failedItem, what, Message(message) + "\r\n\r\n" + why, notTakenBack);
            return false; // the store left the model as the file holds it
        }
        done.Keep();
        if (what.empty())
            return true;
        Report(routine, failedItem, what, Message(message) + "\r\n\r\n" + why, notTakenBack);
        return false;
    }

private:
    AppState& app_;
    HWND owner_;
    const FileMover& mover_;
};

} // namespace

ItemMoves::ItemMoves(AppState& app, TreeModel& tree, HWND owner)
    : app_(app), tree_(tree), owner_(owner) {}

// ---- Shortcuts in the Startup folders ---------------------------------------------------------

bool ItemMoves::DelayStartupItem(std::string_view name, int code, bool stop, ItemState from) {
    if (name.empty())
        return false;
    Mover m(app_, owner_, mover_);
    const bool user = code == kUserStartup;
    const int location = user ? kUserStartup : kCommonStartup;
    return m.Single("DelayStartupItem", name, [&](UndoSteps& undo) {
        ProgramModel& model = m.Model();
        if (!stop)
            RefuseBlocked(model, {std::string(name), ""});
        const std::string items = m.ItemsPath(user, name);
        if (from == ItemState::Active) {
            m.MoveFile(m.StartupPath(user, name), items, kQuietFileOperationMakeFolder, undo);
        } else {
            // Delayed or stopped: the shortcut stays in the items folder, only its entry changes.
            if (!FileThere(items))
                throw MoveFailure("\"" + items + "\" is not in the items folder", Refusal::Gone);
            if (from == (stop ? ItemState::Stopped : ItemState::Delayed))
                return; // already where it is asked to go
            if (from == ItemState::Delayed) {
                m.RemoveProgram(m.DelayedShortcut(name, user));
            } else {
                const int entry = model.FindStoppedProgram(name, location);
                if (entry < 0)
                    throw MoveFailure("\"" + std::string(name) + "\" is no longer stopped",
                                      Refusal::Gone);
                model.StoppedPrograms[static_cast<size_t>(entry)].clear();
            }
        }
        if (stop)
            model.AddStoppedProgram(name, location);
        else
            model.AddProgramToGroup(model.StartupGroupIndex, user ? kExecute : kExecuteAU, items,
                                    "", 0, "");
    });
}

void ItemMoves::RestoreStartupItem(std::string_view name, int code, bool fromStopped) {
    if (name.empty())
        return;
    Mover m(app_, owner_, mover_);
    const bool user = code == kUserStartup;
    const int location = user ? kUserStartup : kCommonStartup;
    m.Single("RestoreStartupItem", name, [&](UndoSteps& undo) {
        const std::string items = m.ItemsPath(user, name);
        // A shortcut that is no longer in the items folder has nothing to move back.
        if (FileThere(items)) {
            m.MoveFile(items, m.StartupPath(user, name), kQuietFileOperation, undo);
            SwitchOnShortcut(user, name, undo);
        }
        if (fromStopped)
            m.Model().RemoveStoppedProgram(name, location);
        else
            m.RemoveProgram(m.DelayedShortcut(name, user));
    });
}

bool ItemMoves::DelayCheckedStartupItems(bool stop, bool stoppedToDelayed) {
    Mover m(app_, owner_, mover_);
    ProgramModel& model = m.Model();
    return m.Pass("DelayCheckedStartupItems", kStartupFolderMessage, [&](const auto& item) {
        for (const std::string& name : CheckedItems(tree_, "CurrentUserStartup")) {
            item(name, [&](UndoSteps& undo) {
                if (!stop)
                    RefuseBlocked(model, {name, ""});
                const std::string items = m.ItemsPath(true, name);
                m.MoveFile(m.StartupPath(true, name), items, kQuietFileOperationMakeFolder, undo);
                if (stop)
                    model.AddStoppedProgram(name, kUserStartup);
                else
                    model.AddProgramToGroup(model.StartupGroupIndex, kExecute, items, "", 0, "");
            });
        }
        if (stop) {
            for (const std::string& name : CheckedItems(tree_, "DelayedItemsStartupCurrentUser")) {
                item(name, [&](UndoSteps&) {
                    model.AddStoppedProgram(name, kUserStartup);
                    m.RemoveProgram(m.DelayedShortcut(name, true));
                });
            }
        }
        // A stopped item that is checked when the user asks to stop stays stopped: moving it
        // back into the Startup folder would have Windows start it again.
        if (stop)
            return;
        for (const std::string& name : CheckedItems(tree_, "StoppedItemsCurrentStartup")) {
            item(name, [&](UndoSteps& undo) {
                if (stoppedToDelayed) {
                    RefuseBlocked(model, {name, ""});
                    model.AddProgramToGroup(model.StartupGroupIndex, kExecute,
                                            m.ItemsPath(true, name), "", 0, "");
                    model.RemoveStoppedProgram(name, kUserStartup);
                } else {
                    // Back in the Startup folder; the stopped entry goes with the restore pass
                    // that follows.
                    m.MoveFile(m.ItemsPath(true, name), m.StartupPath(true, name),
                               kQuietFileOperationMakeFolder, undo);
                    SwitchOnShortcut(true, name, undo);
                }
            });
        }
    });
}

bool ItemMoves::RestoreCheckedStartupItems() {
    Mover m(app_, owner_, mover_);
    return m.Pass("RestoreCheckedStartupItems", kStartupFolderMessage, [&](const auto& item) {
        for (const std::string& name : CheckedItems(tree_, "DelayedItemsStartupCurrentUser")) {
            item(name, [&](UndoSteps& undo) {
                const std::string items = m.ItemsPath(true, name);
                if (FileThere(items)) {
                    m.MoveFile(items, m.StartupPath(true, name), kQuietFileOperation, undo);
                    SwitchOnShortcut(true, name, undo);
                }
                m.RemoveProgram(m.DelayedShortcut(name, true));
            });
        }
        for (const std::string& name : CheckedItems(tree_, "StoppedItemsCurrentStartup")) {
            item(name, [&](UndoSteps& undo) {
                const std::string items = m.ItemsPath(true, name);
                // A shortcut deleted from the items folder meanwhile is not moved, but its
                // entry goes all the same.
                if (CDirStruct::OrdinaryFileExists(items)) {
                    m.MoveFile(items, m.StartupPath(true, name), kQuietFileOperation, undo);
                    SwitchOnShortcut(true, name, undo);
                }
                m.Model().RemoveStoppedProgram(name, kUserStartup);
            });
        }
    });
}

// ---- Values in the Run keys -------------------------------------------------------------------

namespace {

// A stopped value: its entry in the model, and the value it stands for. The saved copy holds
// the command exactly; an entry that names its value holds it too, without quotes.
struct StoppedValue {
    int Entry = -1;
    NameData Value;     // empty name: nothing is left to put back
    bool Saved = false; // the value is the saved copy
};

// The stopped entry of that text whose saved copy is in the view asked for (an entry without a
// copy counts as the machine's own view's).
StoppedValue FindStoppedValue(const ProgramModel& model, const ValueKey& at,
                              std::string_view text) {
    const SavedCopies saved = ReadSavedCopies(at.Location);
    const SavedCopyMatch match = MatchSavedCopies(model, at.Location, saved.Copies);
    const std::string sought = Trim(std::string(LocationPrefix(at.Location)) + std::string(text));
    for (size_t i = 0; i < model.StoppedPrograms.size(); ++i) {
        const std::string& entry = model.StoppedPrograms[i];
        if (entry.empty() || Trim(entry) != sought)
            continue;
        const int copy = match.Stopped[i];
        if (saved.RootOf(copy) != at.Root())
            continue;
        StoppedValue found;
        found.Entry = static_cast<int>(i);
        if (copy >= 0) {
            found.Value = SplitNameData(saved.Copies[static_cast<size_t>(copy)]);
            found.Saved = true;
        } else if (auto named = NamedStoppedValue(text)) {
            found.Value = *named;
        }
        return found;
    }
    throw MoveFailure("\"" + std::string(text) + "\" is no longer stopped", Refusal::Gone);
}

// Takes a value out of its Run key: a saved copy first (type and bytes as they are), its
// backup line, then the deletion. At no moment is the value nowhere. The value must still be
// the one the list showed: another command under that name is the user's to look at first.
void TakeOutValue(const ValueKey& at, const NameData& listed,
                  const std::optional<RegistryValue>& value, RegBackup& backup, UndoSteps& undo) {
    if (!value)
        throw MoveFailure("the Run value \"" + listed.Name + "\" is not there any more",
                          Refusal::Gone);
    const std::string now = TextOf(*value);
    std::string shown = listed.Data;
    while (!shown.empty() && shown.back() == '\0')
        shown.pop_back();
    if (!now.empty() && now != shown)
        throw MoveFailure("the Run value \"" + listed.Name + "\" now reads \"" + now + "\"",
                          Refusal::ValueChanged, listed.Name + "=" + now);
    PutValue(at.Root(), at.Saved(), listed.Name, *value, undo);
    backup.Value(at.Root(), ToBackupValue(listed.Name, *value));
    RemoveValue(at.Root(), kRunKey, listed.Name, undo);
}

// Puts a value back into its Run key: the saved copy, which is the user's command exactly as
// it was, or, with no copy left, the command the program knows. The copy goes only once the
// value is back. Another value of that name in the Run key is never overwritten. A value that
// Task Manager had switched off is switched on: what the list shows as started is started.
void PutBackValue(const ValueKey& at, const std::string& name, const std::string& data,
                  UndoSteps& undo) {
    // Without a name there is no value to write: an empty name is the key's default value.
    if (name.empty())
        throw MoveFailure("the item has no Run value name to be put back under");
    auto saved = CRegistry().GetValue(at.Root(), at.Saved(), name);
    PutValue(at.Root(), kRunKey, name, saved ? *saved : TextValue(Trim(data)), undo,
             Refusal::ValueChanged);
    SwitchOnValue(at, name, undo);
    if (saved)
        RemoveValue(at.Root(), at.Saved(), name, undo);
}

// A value's data read as Windows reads it; an expandable value (REG_EXPAND_SZ) with its
// variables filled in for the reading.
RunCommandParts CommandOf(const std::string& data, const std::optional<RegistryValue>& value) {
    return SplitRunData(data, value && value->Type == REG_EXPAND_SZ, SystemCommandLine());
}

// Delays or stops an active value (stop). The value must still read as the list showed it.
void DelayActiveValue(Mover& m, const ValueKey& at, std::string_view text, bool stop,
                      RegBackup& backup, UndoSteps& undo) {
    ProgramModel& model = m.Model();
    const NameData value = SplitNameData(text);
    if (value.Name.empty())
        throw MoveFailure("the item has no Run value name");
    const std::optional<RegistryValue> now = CRegistry().GetValue(at.Root(), kRunKey, value.Name);
    const RunCommandParts parts = CommandOf(value.Data, now);
    if (!stop)
        RefuseBlocked(model, parts);
    TakeOutValue(at, value, now, backup, undo);
    if (stop)
        model.AddStoppedProgram(StoppedRunEntry(value.Name, value.Data), at.Location);
    else
        model.AddProgramToGroup(model.StartupGroupIndex, CommandOfLocation(at.Location), parts.Path,
                                parts.Parameters, 0, value.Name);
}

// Stops a delayed value: its saved copy stays, and its entry names it, with the command the
// copy holds.
void StopDelayedValue(Mover& m, const ValueKey& at, std::string_view text, RegBackup* backup) {
    ProgramModel& model = m.Model();
    const int i = m.DelayedValueThere(at, text);
    const GroupProgram program = model.StartupGroup()->Programs[static_cast<size_t>(i)];
    std::string entry = program.Path; // a program without a value name is known by its path
    if (!program.RegistryKeyName.empty()) {
        auto saved = CRegistry().GetValue(at.Root(), at.Saved(), program.RegistryKeyName);
        if (saved && backup)
            backup->Value(at.Root(), ToBackupValue(program.RegistryKeyName, *saved));
        entry = StoppedRunEntry(program.RegistryKeyName,
                                saved ? TextOf(*saved) : program.Path + " " + program.Parameters);
    }
    model.AddStoppedProgram(entry, at.Location);
    m.RemoveProgram(i);
}

// Delays a stopped value. Exactly its own entry goes: another one may stand for a value of the
// same program. False when nothing is left to start it from.
bool DelayStoppedValue(Mover& m, const ValueKey& at, const StoppedValue& stopped, RegBackup* backup,
                       UndoSteps& undo) {
    ProgramModel& model = m.Model();
    const std::string& name = stopped.Value.Name;
    if (name.empty())
        return false;
    const RunCommandParts parts =
        CommandOf(stopped.Value.Data, CRegistry().GetValue(at.Root(), at.Saved(), name));
    RefuseBlocked(model, parts);
    if (!stopped.Saved) {
        // The copy is gone, but the entry names the value and its command: that becomes the
        // copy again, so the value can be put back later.
        PutValue(at.Root(), at.Saved(), name, TextValue(stopped.Value.Data), undo);
    }
    if (backup)
        if (auto saved = CRegistry().GetValue(at.Root(), at.Saved(), name))
            backup->Value(at.Root(), ToBackupValue(name, *saved));
    model.AddProgramToGroup(model.StartupGroupIndex, CommandOfLocation(at.Location), parts.Path,
                            parts.Parameters, 0, name);
    model.StoppedPrograms[static_cast<size_t>(stopped.Entry)].clear();
    return true;
}

// Puts a delayed value back and drops its program.
void RestoreDelayedValue(Mover& m, const ValueKey& at, std::string_view text, UndoSteps& undo) {
    const int i = m.DelayedValueThere(at, text);
    PutBackValue(at, m.Model().StartupGroup()->Programs[static_cast<size_t>(i)].RegistryKeyName,
                 SplitNameData(text).Data, undo);
    m.RemoveProgram(i);
}

} // namespace

bool ItemMoves::DelayRegistryItem(std::string_view text, int code, bool stop, ItemState from,
                                  bool wow32) {
    if (text.empty())
        return false;
    Mover m(app_, owner_, mover_);
    const ValueKey at{code == kMachineRun ? kMachineRun : kUserRun, code == kMachineRun && wow32};
    return m.Single("DelayRegistryItem", text, [&](UndoSteps& undo) {
        RegBackup backup(app_);
        if (from == ItemState::Active) {
            DelayActiveValue(m, at, text, stop, backup, undo);
        } else if (from == ItemState::Delayed) {
            if (stop)
                StopDelayedValue(m, at, text, &backup);
            else // delayed already: one stays one
                (void)m.DelayedValueThere(at, text);
        } else {
            const StoppedValue stopped = FindStoppedValue(m.Model(), at, text);
            if (!stop && !DelayStoppedValue(m, at, stopped, &backup, undo))
                throw MoveFailure("no saved copy of \"" + std::string(text) + "\" is left",
                                  Refusal::Gone);
        }
        backup.Close();
    });
}

void ItemMoves::RestoreRegistryItem(std::string_view text, int code, bool fromStopped, bool wow32) {
    if (text.empty())
        return;
    Mover m(app_, owner_, mover_);
    const ValueKey at{code == kMachineRun ? kMachineRun : kUserRun, code == kMachineRun && wow32};
    m.Single("RestoreRegistryItem", text, [&](UndoSteps& undo) {
        if (!fromStopped) {
            RestoreDelayedValue(m, at, text, undo);
            return;
        }
        const StoppedValue stopped = FindStoppedValue(m.Model(), at, text);
        if (stopped.Value.Name.empty())
            throw MoveFailure("no saved copy of \"" + std::string(text) + "\" is left",
                              Refusal::Gone);
        PutBackValue(at, stopped.Value.Name, stopped.Value.Data, undo);
        m.Model().StoppedPrograms[static_cast<size_t>(stopped.Entry)].clear();
    });
}

void ItemMoves::RunItem(std::string_view text, const ItemPlace& place) {
    const bool fromStopped = place.State == ItemState::Stopped;
    if (place.State != ItemState::Active) {
        if (place.Registry())
            RestoreRegistryItem(text, place.Location, fromStopped, place.Wow32);
        else
            RestoreStartupItem(text, place.Location, fromStopped);
        return;
    }
    if (text.empty())
        return;
    Mover m(app_, owner_, mover_);
    m.Single("RunItem", text, [&](UndoSteps& undo) {
        if (place.Registry())
            SwitchOnValue({place.Location, place.Wow32}, SplitNameData(text).Name, undo);
        else
            SwitchOnShortcut(place.Location == kUserStartup, text, undo);
    });
}

namespace {
// The passes move the current user's values only.
const ValueKey kUser{kUserRun, false};
} // namespace

bool ItemMoves::DelayCheckedRegistryItems(bool stop, bool stoppedToDelayed) {
    Mover m(app_, owner_, mover_);
    std::unique_ptr<RegBackup> backup;
    try {
        backup = std::make_unique<RegBackup>(app_);
    } catch (const std::exception& e) {
        m.Report("DelayCheckedRegistryItems", "", e.what(),
                 m.Message(kRegistryMessage) + "\r\n\r\n" + e.what(), {});
        return false;
    }
    return m.Pass(
        "DelayCheckedRegistryItems", kRegistryMessage,
        [&](const auto& item) {
            for (const std::string& text : CheckedItems(tree_, "CurrentUserRegistry"))
                item(text, [&](UndoSteps& undo) {
                    DelayActiveValue(m, kUser, text, stop, *backup, undo);
                });
            // A delayed value that is stopped keeps its copy; the backup was made when it left
            // the Run key.
            if (stop)
                for (const std::string& text :
                     CheckedItems(tree_, "DelayedItemsRegistryCurrentUser"))
                    item(text, [&](UndoSteps&) { StopDelayedValue(m, kUser, text, nullptr); });
            // A stopped value stays stopped when the user asks to stop.
            if (stoppedToDelayed && !stop)
                for (const std::string& text : CheckedItems(tree_, "StoppedItemsCurrentReg"))
                    item(text, [&](UndoSteps& undo) {
                        const StoppedValue stopped = FindStoppedValue(m.Model(), kUser, text);
                        if (!DelayStoppedValue(m, kUser, stopped, nullptr, undo))
                            m.Log("DelayCheckedRegistryItems: nothing is left to start the "
                                  "stopped value \"" +
                                      text + "\" from; it stays stopped",
                                  kLogWarning);
                    });
        },
        [&] { backup->Close(); });
}

bool ItemMoves::RestoreCheckedRegistryItems() {
    Mover m(app_, owner_, mover_);
    return m.Pass("RestoreCheckedRegistryItems", kRegistryMessage, [&](const auto& item) {
        for (const std::string& text : CheckedItems(tree_, "DelayedItemsRegistryCurrentUser"))
            item(text, [&](UndoSteps& undo) { RestoreDelayedValue(m, kUser, text, undo); });
        for (const std::string& text : CheckedItems(tree_, "StoppedItemsCurrentReg")) {
            item(text, [&](UndoSteps& undo) {
                const StoppedValue stopped = FindStoppedValue(m.Model(), kUser, text);
                if (!stopped.Value.Name.empty())
                    PutBackValue(kUser, stopped.Value.Name, stopped.Value.Data, undo);
                // Without anything to put back, the entry goes all the same.
                m.Model().StoppedPrograms[static_cast<size_t>(stopped.Entry)].clear();
            });
        }
    });
}

void ItemMovePasses::WriteItems() {
    // Save writes the file as it is now, in the program's own form.
    ProgramGroupStore(app_).Change([](ProgramModel&) {});
}

} // namespace tolvane
