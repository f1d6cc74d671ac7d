#include "cli/cli_commands.h"

#include <windows.h>

#include <map>
#include <memory>

#include "cli/item_records.h"
#include "config/app_state.h"
#include "config/delay_load.h"
#include "config/program_group_store.h"
#include "config/impact_file.h"
#include "config/run_data.h"
#include "config/system_command_line.h"
#include "platform/dir_struct.h"
#include "platform/registry.h"
#include "items/item_moves.h"
#include "items/refresh.h"
#include "items/run_entry.h"
#include "items/startup_folders.h"
#include "platform/processes.h"
#include "startup/delayed_run.h"
#include "startup/launcher.h"
#include "startup/tray_commands.h"
#include "text/strings.h"

namespace tolvane {

namespace {

// Scripts read UTF-8; the program's own texts are in the system's code page.
std::string Utf8(const std::string& text) {
    if (text.empty())
        return text;
    const int wide =
        MultiByteToWideChar(CP_ACP, 0, text.data(), static_cast<int>(text.size()), nullptr, 0);
    std::wstring w(static_cast<size_t>(wide), L'\0');
    MultiByteToWideChar(CP_ACP, 0, text.data(), static_cast<int>(text.size()), w.data(), wide);
    const int bytes = WideCharToMultiByte(CP_UTF8, 0, w.data(), wide, nullptr, 0, nullptr, nullptr);
    std::string out(static_cast<size_t>(bytes), '\0');
    WideCharToMultiByte(CP_UTF8, 0, w.data(), wide, out.data(), bytes, nullptr, nullptr);
    return out;
}

RecordLookups Lookups(AppState& app) {
    RecordLookups l;
    l.ShortcutTarget = [](const std::string& link) {
        const std::string target = ShortcutTarget(link);
        return target.empty() ? link : target;
    };
    l.RunCommand = [](const std::string& command, bool expandable) {
        const RunCommandParts parts = SplitRunData(command, expandable, SystemCommandLine());
        return ItemCommand{parts.Path, parts.Parameters, expandable};
    };
    l.ProgramThere = [](const ItemCommand& command) {
        return ProgramFound(command.Program, command.Expandable, SystemCommandLine());
    };
    l.FileThere = [](const std::string& file) { return FileThere(file); };
    l.UserStartupFolder = app.folders.UserStartupFolder;
    l.CommonStartupFolder = app.folders.CommonStartupFolder;
    l.UserItemsFolder = app.folders.UserItemsFolder;
    l.AllUsersItemsFolder = app.folders.AllUsersItemsFolder;
    return l;
}

std::string Joined(const std::vector<std::string>& lines, size_t from) {
    std::string text;
    for (size_t i = from; i < lines.size(); ++i)
        text += lines[i] + "\n";
    return text;
}

// A delayed item's own delay, set after its move, on the file as it is now.
void SetDelay(AppState& app, const ImpactKey& item, float delay) {
    app.Store().Change([&](ProgramModel& model) {
        ProgramGroup* startup = model.StartupGroup();
        if (!startup)
            return;
        for (size_t i = 0; i < startup->Programs.size(); ++i) {
            const GroupProgram& p = startup->Programs[i];
            const std::optional<ImpactKey> key = ImpactKeyOf(p);
            if (key && SameItem(*key, item)) {
                (void)model.UpdateProgramInGroup(model.StartupGroupIndex, static_cast<int>(i),
                                                 p.Path, p.Parameters, delay);
                return;
            }
        }
    });
}

} // namespace

int ConsoleMessages::ShowMessage(std::string_view text, std::string_view, unsigned style) {
    Shown.emplace_back(text);
    return (style & kMbYesNo) ? kIdNo : kIdOk;
}

int RunCliRequest(AppState& app, ConsoleMessages& messages, const CliRequest& request,
                  std::string& out, std::string& err) {
    EnsureStartupFolders(app.folders);
    TreeModel tree;
    StartupListing listing;
    // A list changes nothing; a move brings the program's own Run value up to date, as the
    // window does around each move.
    const bool look = request.Verb == CliVerb::List;
    if (!RefreshData(app.Store(), app.text, app.SafeList, app.log, tree, listing, {}, look)) {
        err = "The startup items could not be read; log.txt says why.\n";
        return kCliRefused;
    }
    if (!look)
        (void)UpdateRunEntry(app.model.StartupType, app.folders.RunCommand, app.model,
                             app.log); // logged: the move goes on all the same
    if (request.Verb == CliVerb::RunStartup) {
        RunGroupNow(
            RunNeedsOf(app), app.model.StartupGroupIndex, MessageLoopClock(),
            [&](const std::string& path, const std::string& parameters, const ImpactKey* item) {
                LaunchMeasured(app.log, app.watcher, path, parameters, item);
            });
        return kCliDone;
    }
    std::vector<ItemRecord> records =
        ItemRecords(tree, listing, app.model, app.SafeList, Lookups(app));
    if (request.Verb == CliVerb::List) {
        for (ItemRecord& r : records) {
            r.Name = Utf8(r.Name);
            r.Path = Utf8(r.Path);
            r.Parameters = Utf8(r.Parameters);
            r.Description = Utf8(r.Description);
        }
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
    const size_t shownBefore = messages.Shown.size();
    // Asked for where it already is, an item stays: a script may run the same command twice.
    const ItemState to = request.Verb == CliVerb::Restore ? ItemState::Active
                         : request.Verb == CliVerb::Stop  ? ItemState::Stopped
                                                          : ItemState::Delayed;
    const StartupItem listed = listing.Items.at(static_cast<size_t>(item.Item));
    bool ok = true;
    if (item.State != to || (to == ItemState::Active && item.SwitchedOff))
        ok = ItemMoves({app.Store(), app.text, app.messages, app.log}, nullptr).Move(listed, to);
    if (!ok || messages.Shown.size() > shownBefore) {
        err = Joined(messages.Shown, shownBefore);
        if (err.empty())
            err = "\"" + item.Name + "\" could not be moved; log.txt says why.\n";
        return kCliRefused;
    }
    if (request.Verb == CliVerb::Delay && request.Delay) {
        try {
            SetDelay(app, {item.Location, item.OwnName}, *request.Delay);
        } catch (const std::exception& e) {
            err = "\"" + item.Name + "\" was delayed, but its delay could not be set: " + e.what() +
                  "\n";
            return kCliRefused;
        }
    }
    if (RefreshData(app.Store(), app.text, app.SafeList, app.log, tree, listing))
        (void)UpdateRunEntry(app.model.StartupType, app.folders.RunCommand, app.model, app.log);
    return kCliDone;
}

} // namespace tolvane
