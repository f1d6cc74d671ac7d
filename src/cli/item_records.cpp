#include "cli/item_records.h"

#include <algorithm>
#include <cstdio>

#include "cli/cli_args.h"
#include "config/run_data.h"
#include "items/startup_tree.h"
#include "text/json.h"
#include "text/strings.h"

namespace tolvane {

namespace {

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

std::vector<ItemRecord> ItemRecords(const TreeModel& tree, const StartupListing& listing,
                                    const ProgramModel& model,
                                    const std::vector<SafeEntry>& safeList,
                                    const RecordLookups& lookups) {
    std::vector<ItemRecord> records;
    for (size_t i = 0; i < tree.Count(); ++i) {
        const int node = static_cast<int>(i);
        const StartupItem* item = ItemOfNode(tree, listing, node);
        if (!item)
            continue;
        const TreeNode& n = tree.Node(node);
        ItemRecord r;
        r.Node = node;
        r.Item = n.Item;
        r.State = item->State;
        r.Location = item->Code();
        r.Wow32 = item->Wow32();
        r.Name = item->Text();
        r.OwnName = item->Name;
        const SafeEntry* known = KnownEntry(n, safeList);
        r.Description = known ? known->Description : std::string();
        r.Known = n.Bold || !r.Description.empty();
        r.SwitchedOff = item->SwitchedOff;
        r.Movable = n.Tag == kPopupTag;
        const GroupProgram* delayed = DelayedRecord(model, *item);
        if (delayed)
            r.Delay = delayed->Delay;
        if (item->Registry()) {
            r.Path = item->File;
            r.Parameters = item->Arguments;
            r.Missing = lookups.ProgramThere && !lookups.ProgramThere(item->File, item->Expandable);
        } else {
            const std::string target =
                lookups.ShortcutTarget && EndsWith(ToLower(item->Name), ".lnk")
                    ? lookups.ShortcutTarget(item->File)
                    : std::string();
            r.Path = target.empty() ? item->File : target;
            // A shortcut kept in the items folder: missing when the file is gone from there.
            if (item->State != ItemState::Active)
                r.Missing = lookups.FileThere && !lookups.FileThere(item->File);
            if (delayed)
                r.Parameters = delayed->Parameters;
        }
        records.push_back(std::move(r));
    }
    return records;
}

std::string FormatRecordsTable(const std::vector<ItemRecord>& records) {
    std::string out = "STATE    LOCATION        DELAY  NAME\n";
    for (const ItemRecord& r : records) {
        auto column = [](std::string text, size_t width) {
            text.resize(std::max(text.size(), width), ' ');
            return text + " ";
        };
        out += column(StateWord(r.State), 8) + column(CliLocationWord(r.Location, r.Wow32), 15) +
               column(DelayText(r), 6) + r.Name;
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
