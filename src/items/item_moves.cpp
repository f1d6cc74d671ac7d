#include "items/item_moves.h"

#include <algorithm>
#include <exception>
#include <functional>
#include <memory>
#include <optional>

#include "config/delay_load.h"
#include "config/policy_registry.h"
#include "config/program_group_store.h"
#include "config/run_data.h"
#include "config/system_command_line.h"
#include "items/startup_approved.h"
#include "platform/dir_struct.h"
#include "platform/file_functions.h"
#include "config/program_group_store.h"
#include "text/placeholders.h"
#include "platform/path_rules.h"
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
constexpr int kLockedMessage = 43;
constexpr int kAdminMovesOnlyMessage = 44;

// A Run value's key: its location and, for the machine's, the registry view it is in. The
// saved copy of a value is kept in the same view, and a value goes back to its copy's view.
struct ValueKey {
    int Location = kUserRun;
    bool Wow32 = false;
    RegistryRoot Root() const { return RunRoot(Location, Wow32); }
    std::string Saved() const { return SavedKeyOf(Location); }
};

ValueKey KeyOf(const StartupItem& item) {
    return {item.Code() == kMachineRun ? kMachineRun : kUserRun, item.Wow32()};
}

// Names as Windows compares value and file names: in any letter case.
bool SameName(std::string_view a, std::string_view b) {
    return CDirStruct::SameName(a, b);
}

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

std::string Joined(const std::vector<std::string>& lines) {
    std::string out;
    for (const std::string& line : lines)
        out += (out.empty() ? "" : "\r\n") + line;
    return out;
}

// A delayed item that the log-on run would never start would be gone from the log-on: such a
// delay is refused, and the item stays where Windows starts it (or stopped). The command is
// the one its record will start (StartedCommand reads the same parts back from the record).
void RefuseBlocked(const ProgramModel& model, const RunCommandParts& command) {
    const std::string word = model.BlockingWord(command.Path, command.Parameters);
    if (!word.empty())
        throw MoveFailure("its command holds the disallowed word \"" + word + "\"",
                          Refusal::Blocked, word);
}

MoveFailure NoLonger(const StartupItem& item, ItemState state) {
    return MoveFailure("\"" + item.Text() + "\" is no longer " +
                           (state == ItemState::Delayed ? "delayed" : "stopped"),
                       Refusal::Gone);
}

// A delayed value's command as its record holds it.
std::string RecordCommand(const GroupProgram& p) {
    const std::string path = Trim(p.Path);
    return p.Parameters.empty() ? path : path + " " + p.Parameters;
}

// The delayed program of a shortcut, by its file name. The command tells the two Startup
// folders apart.
int DelayedShortcutOf(const ProgramModel& model, std::string_view name, bool user) {
    const ProgramGroup* group = model.StartupGroup();
    if (!group)
        return -1;
    const std::string_view command = user ? kExecute : kExecuteAU;
    for (size_t i = 0; i < group->Programs.size(); ++i) {
        const GroupProgram& p = group->Programs[i];
        if (p.Command == command && !p.Path.empty() && SameName(PathLastPart(p.Path), name))
            return static_cast<int>(i);
    }
    return -1;
}

// The delayed program of a Run value, by the value's name, in the view of its saved copy.
// A program without a name (a hand-written line) is found by its command instead, among the
// others without one.
int DelayedValueOf(const ProgramModel& model, const ValueKey& at, const StartupItem& item) {
    const ProgramGroup* group = model.StartupGroup();
    if (!group)
        return -1;
    const SavedCopies saved = ReadSavedCopies(at.Location);
    const SavedCopyMatch match = MatchSavedCopies(model, at.Location, saved.Copies);
    for (size_t i = 0; i < group->Programs.size(); ++i) {
        const GroupProgram& p = group->Programs[i];
        if (IsFreeSlot(p) || p.Command != CommandOfLocation(at.Location))
            continue;
        if (item.Name.empty()
                ? !p.RegistryKeyName.empty() || (Trim(item.Command) != Trim(RecordCommand(p)) &&
                                                 Trim(item.Command) != Trim(p.Path))
                : !SameName(p.RegistryKeyName, item.Name))
            continue;
        if (saved.RootOf(match.Delayed[i]) != at.Root())
            continue; // the value of that name in the other view
        return static_cast<int>(i);
    }
    return -1;
}

// Ends a pass at the item that failed; that item's failure is already recorded.
struct PassEnds {};

// What the moves share: the folders, the model and its file, and how a move ends.
class Mover {
public:
    Mover(ItemMoves::Needs needs, HWND owner, const FileMover& mover)
        : needs_(needs), owner_(owner), mover_(mover) {}

    ProgramModel& Model() const { return needs_.Store.Model(); }
    const AppFolders& Folders() const { return needs_.Store.Folders(); }

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

    int DelayedShortcut(std::string_view name, bool user) const {
        return DelayedShortcutOf(Model(), name, user);
    }
    // The stopped entry of a shortcut.
    int StoppedShortcut(std::string_view name, int location) const {
        const auto& stopped = Model().StoppedPrograms;
        for (size_t i = 0; i < stopped.size(); ++i)
            if (std::string_view(stopped[i]).substr(0, kPrefixLength) == LocationPrefix(location) &&
                SameName(Trim(std::string_view(stopped[i]).substr(kPrefixLength)), name))
                return static_cast<int>(i);
        return -1;
    }

    int DelayedValue(const ValueKey& at, const StartupItem& item) const {
        return DelayedValueOf(Model(), at, item);
    }
    int DelayedValueThere(const ValueKey& at, const StartupItem& item) const {
        const int i = DelayedValue(at, item);
        if (i < 0)
            throw NoLonger(item, ItemState::Delayed);
        return i;
    }
    void RemoveProgram(int index) {
        if (index < 0 || !Model().RemoveProgramFromGroup(Model().StartupGroupIndex, index))
            throw MoveFailure("the delayed program could not be removed from the Startup group");
    }

    Policies PoliciesNow() const { return ReadPolicies(needs_.Log); }
    void Log(const std::string& text, int level = kLogError) { needs_.Log.WriteLog(text, level); }
    void Show(const std::string& text) {
        needs_.Messages.ShowMessage(text, "Tolvane", kMbOk | kMbIconExclamation);
    }
    std::string Message(int index) const { return needs_.Text.Message(static_cast<size_t>(index)); }

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
            needs_.Store.Change([&](ProgramModel&) { move(undo); });
        } catch (const std::exception& e) {
            const std::vector<std::string> notTakenBack = undo.TakeBack();
            Report(routine, item, e.what(), Why(item, e), notTakenBack);
            return false; // the store left the model as the file holds it
        }
        undo.Keep();
        return true;
    }

    // One item's move within a pass: its steps go into the undo list it is given.
    using ItemStep = std::function<void(UndoSteps&)>;
    using ItemRunner = std::function<void(const StartupItem& item, const ItemStep&)>;

    // A pass over ticked items, on the file as it is now. An item that fails is taken back and
    // ends the pass; the items before it stay moved and are written to the file. Should the
    // file not be written, every item of the pass is taken back. A failure shows the pass's
    // message (of registry entries or of shortcuts, by the item) and the item's reason.
    bool Pass(const char* routine, bool registry,
              const std::function<void(const ItemRunner&)>& body) {
        UndoSteps done;
        std::string failedItem, what, why;
        std::vector<std::string> notTakenBack;
        int message = registry ? kRegistryMessage : kStartupFolderMessage;
        auto item = [&](const StartupItem& it, const ItemStep& move) {
            UndoSteps steps;
            ModelSnapshot before(Model());
            try {
                move(steps);
            } catch (const std::exception& e) {
                notTakenBack = steps.TakeBack();
                failedItem = it.Text();
                what = e.what();
                why = Why(failedItem, e);
                message = it.Registry() ? kRegistryMessage : kStartupFolderMessage;
                throw PassEnds{}; // the snapshot takes this item's model changes back
            }
            before.Keep();
            steps.MoveInto(done);
        };
        try {
            needs_.Store.Change([&](ProgramModel&) {
                try {
                    body(item);
                } catch (const PassEnds&) {
                } catch (const std::exception& e) {
                    what = e.what();
                    why = e.what();
                }
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
    ItemMoves::Needs needs_;
    HWND owner_;
    const FileMover& mover_;
};

// ---- Shortcuts in the Startup folders ---------------------------------------------------------

void MoveShortcutItem(Mover& m, const StartupItem& item, ItemState to, UndoSteps& undo) {
    ProgramModel& model = m.Model();
    const bool user = item.Location == ItemLocation::UserFolder;
    const int location = item.Code();
    const std::string& name = item.Name;
    if (name.empty())
        throw MoveFailure("the item has no file name");
    const std::string items = m.ItemsPath(user, name);
    auto record = [&](ItemState state) {
        const int i = state == ItemState::Delayed ? m.DelayedShortcut(name, user)
                                                  : m.StoppedShortcut(name, location);
        if (i < 0)
            throw NoLonger(item, state);
        return i;
    };
    auto drop = [&](ItemState state, int i) {
        if (state == ItemState::Delayed)
            m.RemoveProgram(i);
        else
            model.StoppedPrograms[static_cast<size_t>(i)].clear();
    };
    auto add = [&](ItemState state) {
        if (state == ItemState::Stopped)
            model.AddStoppedProgram(name, location);
        else
            model.AddProgramToGroup(model.StartupGroupIndex, user ? kExecute : kExecuteAU, items,
                                    "", 0, "");
    };

    if (item.State == to) {
        // Asked to go where it is: it stays, once; an active one is switched on.
        if (to == ItemState::Active) {
            if (item.SwitchedOff)
                SwitchOnShortcut(user, name, undo);
        } else {
            (void)record(to);
        }
        return;
    }
    if (item.State == ItemState::Active) {
        if (to == ItemState::Delayed)
            RefuseBlocked(model, {name, ""});
        m.MoveFile(m.StartupPath(user, name), items, kQuietFileOperationMakeFolder, undo);
        add(to);
        return;
    }
    const int i = record(item.State);
    if (to == ItemState::Active) {
        // A shortcut that is no longer in the items folder has nothing to move back; its
        // record goes all the same.
        if (FileThere(items)) {
            m.MoveFile(items, m.StartupPath(user, name), kQuietFileOperation, undo);
            SwitchOnShortcut(user, name, undo);
        }
        drop(item.State, i);
        return;
    }
    // Delayed or stopped: the shortcut stays in the items folder, only its record changes.
    if (!FileThere(items))
        throw MoveFailure("\"" + items + "\" is not in the items folder", Refusal::Gone);
    if (to == ItemState::Delayed)
        RefuseBlocked(model, {name, ""});
    drop(item.State, i);
    add(to);
}

// ---- Values in the Run keys -------------------------------------------------------------------

// A stopped value: its entry in the model, and the value it stands for. The saved copy holds
// the command exactly; an entry that names its value holds it too, without quotes.
struct StoppedValue {
    int Entry = -1;
    NameData Value;     // empty name: nothing is left to put back
    bool Saved = false; // the value is the saved copy
};

// The stopped entry of the item whose saved copy is in the item's view (an entry without a
// copy counts as the machine's own view's): the entry of its record when that still is one of
// its name, else the first of its name; a record without a name by its command.
StoppedValue FindStoppedValue(const ProgramModel& model, const ValueKey& at,
                              const StartupItem& item) {
    const SavedCopies saved = ReadSavedCopies(at.Location);
    const SavedCopyMatch match = MatchSavedCopies(model, at.Location, saved.Copies);
    const std::string_view prefix = LocationPrefix(at.Location);
    auto valueOf = [&](size_t i) -> std::optional<StoppedValue> {
        const std::string& entry = model.StoppedPrograms[i];
        if (entry.empty() || std::string_view(entry).substr(0, kPrefixLength) != prefix)
            return std::nullopt;
        const int copy = match.Stopped[i];
        if (saved.RootOf(copy) != at.Root())
            return std::nullopt;
        StoppedValue found;
        found.Entry = static_cast<int>(i);
        const std::string text = Trim(std::string_view(entry).substr(kPrefixLength));
        if (copy >= 0) {
            found.Value = saved.Copies[static_cast<size_t>(copy)];
            found.Saved = true;
        } else if (auto named = NamedStoppedValue(text)) {
            found.Value = *named;
        }
        const bool ours = item.Name.empty()
                              ? found.Value.Name.empty() && Trim(item.Command) == text
                              : SameName(found.Value.Name, item.Name) ||
                                    (!found.Saved && StoppedEntryNames(text, item.Name));
        if (!ours)
            return std::nullopt;
        if (!found.Saved && !item.Name.empty())
            found.Value.Name = item.Name; // a name that holds "=" is the item's own
        return found;
    };
    const size_t count = model.StoppedPrograms.size();
    if (item.Record >= 0 && static_cast<size_t>(item.Record) < count)
        if (auto found = valueOf(static_cast<size_t>(item.Record)))
            return *found;
    for (size_t i = 0; i < count; ++i)
        if (auto found = valueOf(i))
            return *found;
    throw NoLonger(item, ItemState::Stopped);
}

// Takes a value out of its Run key: a saved copy first (type and bytes as they are), its
// backup line, then the deletion. At no moment is the value nowhere. The value must still be
// the one the list showed: another command under that name is the user's to look at first.
void TakeOutValue(const ValueKey& at, const NameData& listed,
                  const std::optional<RegistryValue>& value, RegBackup& backup, UndoSteps& undo) {
    if (!value)
        throw MoveFailure("the Run value \"" + listed.Name + "\" is not there any more",
                          Refusal::Gone);
    const std::string now = ValueText(*value);
    if (now != listed.Data)
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

// Delays or stops an active value. The value must still read as the list showed it.
void DelayActiveValue(Mover& m, const ValueKey& at, const StartupItem& item, bool stop,
                      RegBackup& backup, UndoSteps& undo) {
    ProgramModel& model = m.Model();
    if (item.Name.empty())
        throw MoveFailure("the item has no Run value name");
    const std::optional<RegistryValue> now = CRegistry().GetValue(at.Root(), kRunKey, item.Name);
    const RunCommandParts parts = CommandOf(item.Command, now);
    if (!stop)
        RefuseBlocked(model, parts);
    TakeOutValue(at, {item.Name, item.Command}, now, backup, undo);
    if (stop)
        model.AddStoppedProgram(StoppedRunEntry(item.Name, item.Command), at.Location);
    else
        model.AddProgramToGroup(model.StartupGroupIndex, CommandOfLocation(at.Location), parts.Path,
                                parts.Parameters, 0, item.Name);
}

// Stops a delayed value: its saved copy stays, and its entry names it, with the command the
// copy holds.
void StopDelayedValue(Mover& m, const ValueKey& at, const StartupItem& item, RegBackup& backup) {
    ProgramModel& model = m.Model();
    const int i = m.DelayedValueThere(at, item);
    const GroupProgram program = model.StartupGroup()->Programs[static_cast<size_t>(i)];
    std::string entry = program.Path; // a program without a value name is known by its path
    if (!program.RegistryKeyName.empty()) {
        auto saved = CRegistry().GetValue(at.Root(), at.Saved(), program.RegistryKeyName);
        if (saved)
            backup.Value(at.Root(), ToBackupValue(program.RegistryKeyName, *saved));
        entry = StoppedRunEntry(program.RegistryKeyName,
                                saved ? ValueText(*saved) : RecordCommand(program));
    }
    model.AddStoppedProgram(entry, at.Location);
    m.RemoveProgram(i);
}

// Delays a stopped value. Exactly its own entry goes: another one may stand for a value of the
// same program.
void DelayStoppedValue(Mover& m, const ValueKey& at, const StartupItem& item, RegBackup& backup,
                       UndoSteps& undo) {
    ProgramModel& model = m.Model();
    const StoppedValue stopped = FindStoppedValue(model, at, item);
    const std::string& name = stopped.Value.Name;
    if (name.empty())
        throw MoveFailure("no saved copy of \"" + item.Text() + "\" is left", Refusal::Gone);
    const RunCommandParts parts =
        CommandOf(stopped.Value.Data, CRegistry().GetValue(at.Root(), at.Saved(), name));
    RefuseBlocked(model, parts);
    if (!stopped.Saved) {
        // The copy is gone, but the entry names the value and its command: that becomes the
        // copy again, so the value can be put back later.
        PutValue(at.Root(), at.Saved(), name, TextValue(stopped.Value.Data), undo);
    }
    if (auto saved = CRegistry().GetValue(at.Root(), at.Saved(), name))
        backup.Value(at.Root(), ToBackupValue(name, *saved));
    model.AddProgramToGroup(model.StartupGroupIndex, CommandOfLocation(at.Location), parts.Path,
                            parts.Parameters, 0, name);
    model.StoppedPrograms[static_cast<size_t>(stopped.Entry)].clear();
}

// Puts a stopped value back; an entry with nothing left to put back goes all the same.
void RestoreStoppedValue(Mover& m, const ValueKey& at, const StartupItem& item, UndoSteps& undo) {
    const StoppedValue stopped = FindStoppedValue(m.Model(), at, item);
    if (!stopped.Value.Name.empty())
        PutBackValue(at, stopped.Value.Name, stopped.Value.Data, undo);
    else
        m.Log("nothing is left to put \"" + item.Text() + "\" back from; its entry goes",
              kLogWarning);
    m.Model().StoppedPrograms[static_cast<size_t>(stopped.Entry)].clear();
}

// Puts a delayed value back and drops its program.
void RestoreDelayedValue(Mover& m, const ValueKey& at, const StartupItem& item, UndoSteps& undo) {
    const int i = m.DelayedValueThere(at, item);
    const GroupProgram& program = m.Model().StartupGroup()->Programs[static_cast<size_t>(i)];
    PutBackValue(at, program.RegistryKeyName, item.Command, undo);
    m.RemoveProgram(i);
}

void MoveValueItem(Mover& m, const StartupItem& item, ItemState to, RegBackup& backup,
                   UndoSteps& undo) {
    const ValueKey at = KeyOf(item);
    if (item.State == to) {
        // Asked to go where it is: it stays, once; an active one is switched on.
        if (to == ItemState::Active) {
            if (item.SwitchedOff)
                SwitchOnValue(at, item.Name, undo);
        } else if (to == ItemState::Delayed) {
            (void)m.DelayedValueThere(at, item);
        } else {
            (void)FindStoppedValue(m.Model(), at, item);
        }
        return;
    }
    switch (item.State) {
    case ItemState::Active:
        DelayActiveValue(m, at, item, to == ItemState::Stopped, backup, undo);
        return;
    case ItemState::Delayed:
        if (to == ItemState::Stopped)
            StopDelayedValue(m, at, item, backup);
        else
            RestoreDelayedValue(m, at, item, undo);
        return;
    case ItemState::Stopped:
        if (to == ItemState::Delayed)
            DelayStoppedValue(m, at, item, backup, undo);
        else
            RestoreStoppedValue(m, at, item, undo);
        return;
    }
}

// The routine a move is logged under.
const char* RoutineOf(const StartupItem& item, ItemState to) {
    if (item.Registry())
        return to == ItemState::Active ? "RestoreRegistryItem" : "DelayRegistryItem";
    return to == ItemState::Active ? "RestoreStartupItem" : "DelayStartupItem";
}

void MoveOne(Mover& m, const StartupItem& item, ItemState to, RegBackup*& backup,
             std::unique_ptr<RegBackup>& owned, UndoSteps& undo) {
    if (!item.Registry()) {
        MoveShortcutItem(m, item, to, undo);
        return;
    }
    // The backup folders are made with the first value a move takes out or stops.
    if (!backup) {
        owned = std::make_unique<RegBackup>(m.Folders().ProgramFolder);
        backup = owned.get();
    }
    MoveValueItem(m, item, to, *backup, undo);
}

// The administrator's policies as they are now refuse a move of a locked item, and every move
// while only the administrator moves items: the user is told which policy, the log says so, and
// nothing is touched. A pass with a locked item among its items moves none of them.
bool RefusedByPolicy(Mover& m, const char* routine, const std::vector<const StartupItem*>& items) {
    if (items.empty())
        return false;
    const Policies policies = m.PoliciesNow();
    for (const StartupItem* item : items) {
        const PolicyRefusal why = RefusedMove(policies, item->Code(), item->Wow32(), item->Name,
                                              &CDirStruct::CompareNames);
        if (why == PolicyRefusal::None)
            continue;
        const bool all = why == PolicyRefusal::AdminMovesOnly;
        m.Log(std::string(routine) + ": \"" + item->Text() + "\": refused by the " +
                  (all ? "AdminMovesOnly" : "LockedItems") + " policy",
              kLogWarning);
        m.Show(FillIn(m.Message(all ? kAdminMovesOnlyMessage : kLockedMessage), {item->Text()}));
        return true;
    }
    return false;
}

} // namespace

int FindDelayedRecord(const ProgramModel& model, const StartupItem& item) {
    if (item.Registry())
        return DelayedValueOf(model, KeyOf(item), item);
    return item.Name.empty()
               ? -1
               : DelayedShortcutOf(model, item.Name, item.Location == ItemLocation::UserFolder);
}

ItemMoves::ItemMoves(Needs needs, HWND owner) : needs_(needs), owner_(owner) {}

bool ItemMoves::Move(const StartupItem& item, ItemState to) {
    Mover m(needs_, owner_, mover_);
    if (RefusedByPolicy(m, RoutineOf(item, to), {&item}))
        return false;
    return m.Single(RoutineOf(item, to), item.Text(), [&](UndoSteps& undo) {
        RegBackup* backup = nullptr;
        std::unique_ptr<RegBackup> owned;
        MoveOne(m, item, to, backup, owned, undo);
        if (owned)
            owned->Close();
    });
}

bool ItemMoves::MovePass(const std::vector<ItemMove>& moves) {
    Mover m(needs_, owner_, mover_);
    std::vector<const StartupItem*> items;
    for (const ItemMove& move : moves)
        items.push_back(&move.Item);
    if (RefusedByPolicy(m, "MovePass", items))
        return false;
    const bool registry = std::any_of(moves.begin(), moves.end(),
                                      [](const ItemMove& move) { return move.Item.Registry(); });
    RegBackup* backup = nullptr;
    std::unique_ptr<RegBackup> owned;
    const bool done = m.Pass("MovePass", registry, [&](const Mover::ItemRunner& run) {
        for (const ItemMove& move : moves)
            run(move.Item,
                [&](UndoSteps& undo) { MoveOne(m, move.Item, move.To, backup, owned, undo); });
    });
    return done;
}

void ItemMovePasses::Move(const std::vector<CheckedTarget>& targets) {
    std::vector<ItemMove> moves;
    for (const CheckedTarget& target : targets)
        if (const StartupItem* item = ItemOfNode(tree_, listing_, target.Node))
            moves.push_back({*item, target.To});
    // An item that was not moved is told the user, with why, by the pass itself.
    (void)moves_.MovePass(moves);
}

void ItemMovePasses::WriteItems() {
    // Save writes the file as it is now, in the program's own form.
    moves_.Store().Change([](ProgramModel&) {});
}

} // namespace tolvane
