#include "cli/item_records.h"

#include <cstdio>

#include "cli/cli_args.h"
#include "config/run_data.h"
#include "items/startup_tree.h"
#include "text/strings.h"

namespace tolvane {

namespace {

std::string JsonText(const std::string& s) {
    std::string out = "\"";
    for (unsigned char c : s) {
        if (c == '"' || c == '\\') {
            out += '\\';
            out += static_cast<char>(c);
        } else if (c < 0x20) {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\u%04x", c);
            out += escaped;
        } else {
            out += static_cast<char>(c);
        }
    }
    return out + "\"";
}

std::string CsvText(const std::string& s) {
    if (s.find_first_of(",\"\r\n") == std::string::npos)
        return s;
    return "\"" + ReplaceAll(s, "\"", "\"\"") + "\"";
}

std::string DelayText(const ItemRecord& r) {
    return r.Delay ? FormatSingle(*r.Delay) : std::string();
}

} // namespace

const char* StateWord(ItemState state) {
    switch (state) {
    case ItemState::Active:
        return "active";
    case ItemState::Delayed:
        return "delayed";
    case ItemState::Stopped:
        return "stopped";
    }
    return "";
}

std::vector<ItemRecord> ItemRecords(const TreeModel& tree, const ProgramModel& model,
                                    const std::vector<SafeEntry>& safeList,
                                    const RecordLookups& lookups) {
    std::vector<ItemRecord> records;
    for (size_t i = 0; i < tree.Count(); ++i) {
        const int node = static_cast<int>(i);
        const std::optional<ItemPlace> place = PlaceOf(tree, node);
        if (!place)
            continue;
        const TreeNode& n = tree.Node(node);
        ItemRecord r;
        r.Node = node;
        r.State = place->State;
        r.Location = place->Location;
        r.Wow32 = place->Wow32;
        r.Name = n.Text;
        r.Description = SafeListDescription(n.Text, safeList);
        r.Known = n.Bold || !r.Description.empty();
        r.SwitchedOff = n.Cut;
        r.Movable = n.Tag == kPopupTag;
        const bool user = r.Location == kUserStartup || r.Location == kUserRun;
        const std::string& items = user ? lookups.UserItemsFolder : lookups.AllUsersItemsFolder;
        auto useCommand = [&](const ItemCommand& command) {
            r.Path = command.Program;
            r.Parameters = command.Arguments;
            r.Missing = lookups.ProgramThere && !lookups.ProgramThere(command);
        };
        // A shortcut kept in the items folder: missing when the file is gone from there.
        auto keptShortcut = [&](const std::string& name) {
            const std::string file = items + name;
            r.Missing = lookups.FileThere && !lookups.FileThere(file);
            r.Path = lookups.ShortcutTarget && EndsWith(ToLower(name), ".lnk")
                         ? lookups.ShortcutTarget(file)
                         : file;
        };
        if (r.State == ItemState::Stopped) {
            if (!place->Registry())
                keptShortcut(r.Name);
            else if (lookups.StoppedCommand)
                useCommand(
                    lookups.StoppedCommand(std::string(LocationPrefix(r.Location)) + r.Name));
        } else if (r.State == ItemState::Delayed) {
            if (const GroupProgram* p = DelayedProgramOf(model, r.Location, r.Name)) {
                r.Delay = p->Delay;
                if (!place->Registry()) {
                    keptShortcut(p->Path);
                    r.Parameters = p->Parameters;
                } else if (lookups.DelayedRunCommand)
                    useCommand(lookups.DelayedRunCommand(*p));
            }
        } else if (place->Registry()) {
            if (lookups.ActiveRunCommand)
                useCommand(lookups.ActiveRunCommand(r.Location, r.Wow32, OwnName(r),
                                                    SplitNameData(n.Text).Data));
        } else {
            const std::string file =
                (user ? lookups.UserStartupFolder : lookups.CommonStartupFolder) + "\\" + n.Text;
            const std::string target = lookups.ShortcutTarget && EndsWith(ToLower(n.Text), ".lnk")
                                           ? lookups.ShortcutTarget(file)
                                           : std::string();
            r.Path = target.empty() ? file : target;
        }
        records.push_back(std::move(r));
    }
    return records;
}

std::string OwnName(const ItemRecord& record) {
    if (record.Location == kUserRun || record.Location == kMachineRun)
        return SplitNameData(record.Name).Name;
    return record.Name;
}

std::string FormatRecordsTable(const std::vector<ItemRecord>& records) {
    std::string out = "STATE    LOCATION        DELAY  NAME\n";
    for (const ItemRecord& r : records) {
        char head[64];
        std::snprintf(head, sizeof head, "%-8s %-15s %-6s ", StateWord(r.State),
                      CliLocationWord(r.Location, r.Wow32), DelayText(r).c_str());
        out += head + r.Name;
        if (r.SwitchedOff)
            out += "  (switched off in Task Manager)";
        if (r.Missing)
            out += "  (not found)";
        if (r.Known)
            out += "  [" + r.Description + "]";
        out += "\n";
    }
    return out;
}

std::string FormatRecordsJson(const std::vector<ItemRecord>& records) {
    std::string out = "[";
    for (size_t i = 0; i < records.size(); ++i) {
        const ItemRecord& r = records[i];
        out += std::string(i ? "," : "") + "\n  {\"state\": \"" + StateWord(r.State) +
               "\", \"location\": \"" + CliLocationWord(r.Location, r.Wow32) +
               "\", \"name\": " + JsonText(r.Name) + ", \"path\": " + JsonText(r.Path) +
               ", \"parameters\": " + JsonText(r.Parameters) +
               ", \"delay\": " + (r.Delay ? DelayText(r) : std::string("null")) +
               ", \"known\": " + (r.Known ? "true" : "false") +
               ", \"description\": " + JsonText(r.Description) +
               ", \"switchedOff\": " + (r.SwitchedOff ? "true" : "false") +
               ", \"missing\": " + (r.Missing ? "true" : "false") + "}";
    }
    return out + (records.empty() ? "]\n" : "\n]\n");
}

std::string FormatRecordsCsv(const std::vector<ItemRecord>& records) {
    std::string out =
        "state,location,name,path,parameters,delay,known,description,switchedOff,missing\r\n";
    for (const ItemRecord& r : records)
        out += std::string(StateWord(r.State)) + "," + CliLocationWord(r.Location, r.Wow32) + "," +
               CsvText(r.Name) + "," + CsvText(r.Path) + "," + CsvText(r.Parameters) + "," +
               DelayText(r) + "," + (r.Known ? "true" : "false") + "," + CsvText(r.Description) +
               "," + (r.SwitchedOff ? "true" : "false") + "," + (r.Missing ? "true" : "false") +
               "\r\n";
    return out;
}

} // namespace tolvane
