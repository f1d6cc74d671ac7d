#include "cli/cli_commands.h"

#include <windows.h>

#include <stdexcept>

#include "cli/item_records.h"
#include "config/delay_load.h"
#include "config/program_group_store.h"
#include "config/run_data.h"
#include "config/system_command_line.h"
#include "platform/dir_struct.h"
#include "platform/processes.h"
#include "platform/registry.h"
#include "items/item_moves.h"
#include "items/move_steps.h"
#include "items/refresh.h"
#include "items/run_entry.h"
#include "text/strings.h"

namespace tolvane {

namespace {

// Windows will not start the program as its settings ask: its own Run value could not be
// changed (the window's status line says the same).
constexpr size_t kOwnRunEntryMessage = 37;

// What the records ask of the files on this machine.
RecordLookups FileLookups() {
    RecordLookups l;
    l.ShortcutTarget = [](const std::string& link) {
        const std::string target = ShortcutTarget(link);
        return target.empty() ? link : target;
    };
    l.ProgramThere = [](const std::string& program, bool expandable) {
        return ProgramFound(program, expandable, SystemCommandLine());
    };
    l.FileThere = [](const std::string& file) { return FileThere(file); };
    return l;
}

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

} // namespace

int ConsoleMessages::ShowMessage(std::string_view text, std::string_view, unsigned style) {
    Shown.emplace_back(text);
    return (style & kMbYesNo) ? kIdNo : kIdOk;
}

int RunCliRequest(const CliNeeds& needs, ConsoleMessages& messages, const CliRequest& request,
                  std::string& out, std::string& err) {
    ProgramGroupStore store = needs.Store;
    ProgramModel& model = store.Model();
    const AppFolders& folders = store.Folders();
    TreeModel tree;
    StartupListing listing;
    // A list changes nothing; a move brings the program's own Run value up to date, as the
    // window does around each move.
    const bool look = request.Verb == CliVerb::List;
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
    std::vector<ItemRecord> records =
        ItemRecords(tree, listing, model, needs.SafeList, FileLookups());
    if (request.Verb == CliVerb::List) {
        out = request.Format == ListFormat::Json  ? FormatRecordsJson(records)
              : request.Format == ListFormat::Csv ? FormatRecordsCsv(records)
                                                  : FormatRecordsTable(records);
        return kCliDone;
    }

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
        return finish(kCliNoItem);
    }
    if (found.size() > 1) {
        err = "\"" + request.Name + "\" names " + std::to_string(found.size()) + " items:";
        for (const ItemRecord* r : found)
            err += std::string(" ") + CliLocationWord(r->Location, r->Wow32) + " (" +
                   StateWord(r->State) + ")";
        err += ". Choose one with --location.\n";
        return finish(kCliNoItem);
    }
    const ItemRecord& item = *found.front();
    if (!item.Movable) {
        err = "\"" + item.Name + "\" starts for every user; the list offers no moves for it.\n";
        return finish(kCliRefused);
    }
    const size_t shownBefore = messages.Shown.size();
    // Asked for where it already is, an item stays: a script may run the same command twice.
    const ItemState to = request.Verb == CliVerb::Restore ? ItemState::Active
                         : request.Verb == CliVerb::Stop  ? ItemState::Stopped
                                                          : ItemState::Delayed;
    const StartupItem listed = listing.Items.at(static_cast<size_t>(item.Item));
    bool ok = true;
    if (item.State != to || (to == ItemState::Active && item.SwitchedOff))
        ok = ItemMoves({store, needs.Text, messages, needs.Log}, nullptr).Move(listed, to);
    if (!ok || messages.Shown.size() > shownBefore) {
        err = Joined(messages.Shown, shownBefore);
        if (err.empty())
            err = "\"" + item.Name + "\" could not be moved; log.txt says why.\n";
        return finish(kCliRefused);
    }
    int code = kCliDone;
    if (request.Verb == CliVerb::Delay && request.Delay) {
        StartupItem delayed = listed;
        delayed.State = ItemState::Delayed;
        try {
            SetDelay(store, delayed, *request.Delay);
        } catch (const std::exception& e) {
            err = "\"" + item.Name + "\" was delayed, but its delay could not be set: " + e.what() +
                  "\n";
            code = kCliRefused;
        }
    }
    // The program's own Run value follows the delayed items as the file holds them now.
    ownInStep = false;
    if (RefreshData(store, needs.Text, needs.SafeList, needs.Log, tree, listing))
        updateOwn();
    return finish(code);
}

} // namespace tolvane
