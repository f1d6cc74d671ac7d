#include "cli/cli_commands.h"

#include <windows.h>

#include <algorithm>
#include <stdexcept>

#include "cli/item_records.h"
#include "cli/logon_plan.h"
#include "config/delay_load.h"
#include "config/program_group_store.h"
#include "config/run_data.h"
#include "config/system_command_line.h"
#include "platform/dir_struct.h"
#include "platform/environment.h"
#include "platform/file_io.h"
#include "platform/processes.h"
#include "platform/registry.h"
#include "platform/wide_text.h"
#include "items/item_moves.h"
#include "items/move_steps.h"
#include "items/refresh.h"
#include "items/run_entry.h"
#include "text/placeholders.h"
#include "text/strings.h"

namespace tolvane {

namespace {

// Windows will not start the program as its settings ask: its own Run value could not be
// changed (the window's status line says the same).
constexpr size_t kOwnRunEntryMessage = 37;
// Started for all users from a folder inside a user's profile, which the others cannot read.
constexpr size_t kNotForAllUsersMessage = 30;
constexpr int kForAllUsers = 3;

std::string Joined(const std::vector<std::string>& lines, size_t from) {
    std::string text;
    for (size_t i = from; i < lines.size(); ++i)
        text += lines[i] + "\n";
    return text;
}

// A delayed item's own delay, set after its move, on the file as it is now: on the program that
// stands for the item itself, found by its key (location, registry view, own name), never on
// another of the same name. Throws when none does, and nothing is written then.
void SetDelay(ProgramGroupStore store, const StartupItem& item, float delay) {
    store.Change([&](ProgramModel& model) {
        const int i = FindDelayedRecord(model, item);
        if (i < 0)
            throw std::runtime_error("it is no longer delayed");
        const GroupProgram p = model.StartupGroup()->Programs[static_cast<size_t>(i)];
        if (!model.UpdateProgramInGroup(model.StartupGroupIndex, i, p.Path, p.Parameters, delay))
            throw std::runtime_error("its program could not be changed");
    });
}

// The plan's text is UTF-8; the program's is in its code page, which is UTF-8 itself wherever
// Windows honours the manifest.
std::string FromUtf8(const std::string& text) {
    return GetACP() == CP_UTF8 ? text : Narrow(Wide(text, CP_UTF8));
}

// The plan in the file, or why there is none ("FILE:LINE:COLUMN: sentence" for a fault).
std::optional<LogonPlan> ReadPlanFile(const std::string& file, std::string& err) {
    const std::optional<std::string> bytes = ReadFileBytes(file);
    if (!bytes) {
        err = file + ": the plan cannot be read: " + SystemErrorText(GetLastError()) + "\n";
        return std::nullopt;
    }
    PlanParse parse = ParsePlanJson(*bytes, CDirStruct::CompareNames);
    if (!parse.Plan) {
        err = file + ":" + std::to_string(parse.Line) + ":" + std::to_string(parse.Column) + ": " +
              parse.Error + "\n";
        return std::nullopt;
    }
    for (PlanItem& item : parse.Plan->Items) {
        item.Name = FromUtf8(item.Name);
        item.Command = FromUtf8(item.Command);
    }
    return std::move(parse.Plan);
}

// The plan that keeps this user's log-on as it is, as UTF-8 JSON, into the file whole or to
// `out`.
int ExportPlan(const std::vector<ItemRecord>& records, const ProgramModel& model,
               const std::string& file, std::string& out, std::string& err) {
    std::string json = FormatPlanJson(
        PlanFromRecords(records, model, ProfileVariables(), CDirStruct::CompareNames));
    if (file.empty()) {
        out = std::move(json);
        return kCliDone;
    }
    if (GetACP() != CP_UTF8)
        json = Narrow(Wide(json), CP_UTF8);
    try {
        AtomicFileWriter writer(file);
        writer.Write(json);
        writer.Commit();
    } catch (const FileError& e) {
        err = std::string(e.what()) + "\n";
        return kCliRefused;
    }
    return kCliDone;
}

// The plan's settings that differ, changed on the file at once, as the Options dialog changes
// them; the program's own Run value follows when the caller updates it. False when refused or
// not written.
bool ApplySettings(const LogonPlan& plan, const std::vector<PlanDifference>& differences,
                   ProgramGroupStore store, const TextTables& text, std::string& out,
                   std::string& err) {
    std::vector<const PlanDifference*> changes;
    bool ok = true;
    for (const PlanDifference& d : differences) {
        if (d.Item >= 0 || !d.Change)
            continue;
        const std::string& folder = store.Folders().ProgramFolder;
        if (d.Setting == "startupType" && plan.StartupType == kForAllUsers &&
            FolderInUserProfile(folder)) {
            err += d.Text + ": " + FillIn(text.Message(kNotForAllUsersMessage), {folder}) + "\n";
            ok = false;
        } else {
            changes.push_back(&d);
        }
    }
    if (changes.empty())
        return ok;
    try {
        store.Change([&](ProgramModel& model) {
            for (const PlanDifference* d : changes)
                if (d->Setting == "mainDelay")
                    model.MainStartupDelay = *plan.MainDelay;
                else if (d->Setting == "idleStart")
                    model.WaitForIdle = *plan.IdleStart ? 1 : 0;
                else
                    model.StartupType = *plan.StartupType;
        });
    } catch (const std::exception& e) {
        err += std::string("The settings could not be changed: ") + e.what() + "\n";
        return false;
    }
    for (const PlanDifference* d : changes)
        out += d->Text + "\n";
    return ok;
}

// What the moves of one command work with: the listing the records were made from.
struct Moving {
    const CliNeeds& Needs;
    ConsoleMessages& Messages;
    ProgramGroupStore Store;
    const StartupListing& Listing;
};

// The item the request names, moved as the list's popup moves it. `moved`: it is where it was
// asked to go, and the program's own Run value is to follow.
int MoveNamed(const CliRequest& request, const std::vector<ItemRecord>& records, const Moving& m,
              std::string& err, bool& moved) {
    // The item: its text in the list, or its own name, in any letter case as Windows
    // compares names.
    std::vector<const ItemRecord*> found;
    for (const ItemRecord& r : records) {
        if (request.Location &&
            (request.Location->Code != r.Location || request.Location->Wow32 != r.Wow32))
            continue;
        if (CDirStruct::SameName(r.Name, request.Name) ||
            CDirStruct::SameName(r.OwnName, request.Name))
            found.push_back(&r);
    }
    if (found.empty()) {
        err = "No startup item is named \"" + request.Name + "\".\n";
        return kCliNoItem;
    }
    if (found.size() > 1) {
        err = "\"" + request.Name + "\" names " + std::to_string(found.size()) + " items:";
        for (const ItemRecord* r : found)
            err += std::string(" ") + CliLocationWord(r->Location, r->Wow32) + " (" +
                   StateWord(r->State) + ")";
        err += ". Choose one with --location.\n";
        return kCliNoItem;
    }
    const ItemRecord& item = *found.front();
    if (!item.Movable) {
        err = "\"" + item.Name + "\" starts for every user; the list offers no moves for it.\n";
        return kCliRefused;
    }
    const size_t shownBefore = m.Messages.Shown.size();
    // Asked for where it already is, an item stays: a script may run the same command twice.
    const ItemState to = request.Verb == CliVerb::Restore ? ItemState::Active
                         : request.Verb == CliVerb::Stop  ? ItemState::Stopped
                                                          : ItemState::Delayed;
    const StartupItem listed = m.Listing.Items.at(static_cast<size_t>(item.Item));
    bool ok = true;
    if (item.State != to || (to == ItemState::Active && item.SwitchedOff))
        ok = ItemMoves({m.Store, m.Needs.Text, m.Messages, m.Needs.Log}, nullptr).Move(listed, to);
    if (!ok || m.Messages.Shown.size() > shownBefore) {
        err = Joined(m.Messages.Shown, shownBefore);
        if (err.empty())
            err = "\"" + item.Name + "\" could not be moved; log.txt says why.\n";
        return kCliRefused;
    }
    moved = true;
    if (request.Verb == CliVerb::Delay && request.Delay) {
        StartupItem delayed = listed;
        delayed.State = ItemState::Delayed;
        try {
            SetDelay(m.Store, delayed, *request.Delay);
        } catch (const std::exception& e) {
            err = "\"" + item.Name + "\" was delayed, but its delay could not be set: " + e.what() +
                  "\n";
            return kCliRefused;
        }
    }
    return kCliDone;
}

// Brings the user's log-on to the plan, or with `check` only lists what differs. Each item is
// moved on its own, so that one refused leaves the others to go on. `changed`: something was
// changed, and the program's own Run value is to follow.
int ApplyPlan(const LogonPlan& plan, const std::vector<ItemRecord>& records, bool check,
              const Moving& m, std::string& out, std::string& err, bool& changed) {
    const std::vector<PlanDifference> differences =
        ComparePlan(plan, records, m.Store.Model(), SystemCommandLine(), CDirStruct::CompareNames);
    const bool differs = std::any_of(differences.begin(), differences.end(),
                                     [](const PlanDifference& d) { return d.Change; });
    if (check || !differs) {
        for (const PlanDifference& d : differences)
            out += d.Text + "\n";
        if (!differs)
            out += "Nothing to change: this user's log-on already matches the plan.\n";
        return differs ? kCliDiffers : kCliDone;
    }
    changed = true;
    bool ok = ApplySettings(plan, differences, m.Store, m.Needs.Text, out, err);
    ItemMoves moves({m.Store, m.Needs.Text, m.Messages, m.Needs.Log}, nullptr);
    for (const PlanDifference& d : differences) {
        if (d.Item < 0)
            continue;
        if (!d.Change) {
            out += d.Text + "\n";
            continue;
        }
        const ItemRecord& r = records.at(static_cast<size_t>(d.Record));
        StartupItem item = m.Listing.Items.at(static_cast<size_t>(r.Item));
        const std::string label = std::string(CliLocationWord(r.Location, r.Wow32)) + " \"" +
                                  plan.Items.at(static_cast<size_t>(d.Item)).Name + "\": ";
        const size_t shownBefore = m.Messages.Shown.size();
        if (d.What == PlanDifference::Kind::State &&
            (!moves.Move(item, d.To) || m.Messages.Shown.size() > shownBefore)) {
            const std::string told = Joined(m.Messages.Shown, shownBefore);
            err += label + (told.empty() ? "could not be moved; log.txt says why.\n" : told);
            ok = false;
            continue;
        }
        if (d.To == ItemState::Delayed) {
            item.State = ItemState::Delayed;
            try {
                SetDelay(m.Store, item, d.Delay.value_or(0));
            } catch (const std::exception& e) {
                err += label + "delayed, but its delay could not be set: " + e.what() + "\n";
                ok = false;
                continue;
            }
        }
        out += d.Text + "\n";
    }
    return ok ? kCliDone : kCliRefused;
}

// The kept runs; none without a file. Lines that could not be read are said, and the command
// is not done in full.
int ShowHistory(const std::string& file, ListFormat format, std::string& out, std::string& err) {
    HistoryFileContent content;
    if (const std::optional<std::string> bytes = ReadTextFile(file))
        content = ParseHistoryFile(*bytes);
    out = format == ListFormat::Json ? FormatHistoryJson(content.Runs)
                                     : FormatHistoryTable(content.Runs);
    if (!content.SkippedLines)
        return kCliDone;
    err = file + ": " + std::to_string(content.SkippedLines) +
          " lines could not be read; the runs listed are the ones that could.\n";
    return kCliRefused;
}

} // namespace

int ConsoleMessages::ShowMessage(std::string_view text, std::string_view, unsigned style) {
    Shown.emplace_back(text);
    return (style & kMbYesNo) ? kIdNo : kIdOk;
}

int RunCliRequest(const CliNeeds& needs, ConsoleMessages& messages, const CliRequest& request,
                  std::string& out, std::string& err) {
    if (request.Verb == CliVerb::History)
        return ShowHistory(HistoryFileBeside(needs.Store.File().ImpactFilePath()), request.Format,
                           out, err);
    // A plan is read before anything is looked at: one that is at fault changes nothing.
    std::optional<LogonPlan> plan;
    if (request.Verb == CliVerb::Apply && !(plan = ReadPlanFile(request.File, err)))
        return kCliUsage;
    ProgramGroupStore store = needs.Store;
    ProgramModel& model = store.Model();
    const AppFolders& folders = store.Folders();
    TreeModel tree;
    StartupListing listing;
    // A list, an export or a check changes nothing; a move brings the program's own Run value up
    // to date, as the window does around each move.
    const bool look = request.Verb == CliVerb::List || request.Verb == CliVerb::Export ||
                      (request.Verb == CliVerb::Apply && request.Check);
    if (!RefreshData(store, needs.Text, needs.SafeList, needs.Log, tree, listing, {}, look)) {
        err = "The startup items could not be read; log.txt says why.\n";
        return kCliRefused;
    }
    // Whether Windows starts the program as its settings ask, after the last update of its own
    // Run value. A script must know when it will not: the command is then not done in full.
    bool ownInStep = true;
    auto updateOwn = [&] {
        ownInStep = UpdateRunEntry(model.StartupType, folders.RunCommand, model, needs.Log);
    };
    auto finish = [&](int code) {
        if (ownInStep)
            return code;
        err += needs.Text.Message(kOwnRunEntryMessage) + "\n";
        return code == kCliDone ? static_cast<int>(kCliRefused) : code;
    };
    if (!look)
        updateOwn(); // the move goes on all the same; the update after it decides
    if (request.Verb == CliVerb::RunStartup) {
        if (needs.RunStartup)
            needs.RunStartup();
        return finish(kCliDone);
    }
    ProgramFactsCache facts;
    RecordLookups lookups = MachineProgramLookups(facts);
    // Only the list says what each program is: a move need not verify every signature.
    if (request.Verb != CliVerb::List) {
        lookups.Facts = nullptr;
    } else {
        std::vector<StartupItem> items;
        for (size_t i = 0; i < tree.Count(); ++i)
            if (const StartupItem* item = ItemOfNode(tree, listing, static_cast<int>(i)))
                items.push_back(*item);
        SYSTEM_INFO system{};
        GetSystemInfo(&system);
        ReadFactsAhead(items, lookups, std::min<unsigned>(system.dwNumberOfProcessors, 8));
    }
    std::vector<ItemRecord> records = ItemRecords(tree, listing, model, needs.SafeList, lookups);
    if (request.Verb == CliVerb::List) {
        out = request.Format == ListFormat::Json  ? FormatRecordsJson(records)
              : request.Format == ListFormat::Csv ? FormatRecordsCsv(records)
                                                  : FormatRecordsTable(records);
        return kCliDone;
    }
    if (request.Verb == CliVerb::Export)
        return ExportPlan(records, model, request.File, out, err);
    const Moving moving{needs, messages, store, listing};
    bool changed = false;
    const int code = request.Verb == CliVerb::Apply
                         ? ApplyPlan(*plan, records, request.Check, moving, out, err, changed)
                         : MoveNamed(request, records, moving, err, changed);
    if (!changed)
        return finish(code);
    // The program's own Run value follows the delayed items as the file holds them now.
    ownInStep = false;
    if (RefreshData(store, needs.Text, needs.SafeList, needs.Log, tree, listing))
        updateOwn();
    return finish(code);
}

} // namespace tolvane
