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

std::string SignatureText(const ItemRecord& r) {
    return r.Signature ? SignatureWord(*r.Signature) : "";
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

const char* SignatureWord(SignatureState state) {
    switch (state) {
    case SignatureState::Trusted:
        return "trusted";
    case SignatureState::Untrusted:
        return "untrusted";
    case SignatureState::Unsigned:
        return "unsigned";
    case SignatureState::Missing:
        return "missing";
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
        const ItemProgram program = ProgramOfItem(*item, lookups);
        r.Path = program.Path;
        r.Missing = program.Missing;
        if (item->Registry())
            r.Parameters = item->Arguments;
        else if (delayed)
            r.Parameters = delayed->Parameters;
        if (const std::optional<ProgramFacts> facts = FactsOfItem(program, lookups)) {
            r.Publisher = facts->Publisher;
            r.Signature = facts->Signature;
        }
        records.push_back(std::move(r));
    }
    return records;
}

std::string FormatRecordsTable(const std::vector<ItemRecord>& records) {
    std::string out = "STATE    LOCATION        DELAY  SIGNATURE NAME\n";
    for (const ItemRecord& r : records) {
        auto column = [](std::string text, size_t width) {
            text.resize(std::max(text.size(), width), ' ');
            return text + " ";
        };
        out += column(StateWord(r.State), 8) + column(CliLocationWord(r.Location, r.Wow32), 15) +
               column(DelayText(r), 6) + column(SignatureText(r), 9) + r.Name;
        if (r.SwitchedOff)
            out += "  (switched off in Task Manager)";
        if (r.Missing)
            out += "  (not found)";
        if (r.Known)
            out += "  [" + r.Description + "]";
        if (!r.Publisher.empty())
            out += "  (by " + r.Publisher + ")";
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
               ", \"missing\": " + (r.Missing ? "true" : "false") +
               ", \"publisher\": " + JsonText(r.Publisher) + ", \"signature\": " +
               (r.Signature ? "\"" + SignatureText(r) + "\"" : std::string("null")) + "}";
    }
    return out + (records.empty() ? "]\n" : "\n]\n");
}

std::string FormatRecordsCsv(const std::vector<ItemRecord>& records) {
    std::string out =
        "state,location,name,path,parameters,delay,known,description,switchedOff,missing,publisher,"
        "signature\r\n";
    for (const ItemRecord& r : records)
        out += std::string(StateWord(r.State)) + "," + CliLocationWord(r.Location, r.Wow32) + "," +
               CsvText(r.Name) + "," + CsvText(r.Path) + "," + CsvText(r.Parameters) + "," +
               DelayText(r) + "," + (r.Known ? "true" : "false") + "," + CsvText(r.Description) +
               "," + (r.SwitchedOff ? "true" : "false") + "," + (r.Missing ? "true" : "false") +
               "," + CsvText(r.Publisher) + "," + SignatureText(r) + "\r\n";
    return out;
}

namespace {

constexpr std::string_view kRatingWords[] = {"Low", "Medium", "High"};

std::string Seconds(uint64_t ms) {
    return Tenths(ms, 1000, ".") + " s";
}

std::string Number(const std::optional<uint64_t>& value) {
    return value ? std::to_string(*value) : std::string("null");
}

} // namespace

std::string FormatHistoryTable(const std::vector<LogonRun>& runs) {
    std::string out;
    for (auto run = runs.rbegin(); run != runs.rend(); ++run) {
        out += "Log-on " + run->Started + ", main wait " +
               (run->MainDelayMs ? Seconds(*run->MainDelayMs) : std::string("not over")) + ", " +
               std::to_string(run->Programs.size()) + " programs measured\n";
        if (!run->Programs.empty())
            out += "  START     READY     CPU       DISK      RATING  LOCATION        NAME\n";
        for (const RunProgram& p : run->Programs) {
            auto column = [](std::string text, size_t width) {
                text.resize(std::max(text.size(), width), ' ');
                return text + " ";
            };
            out += "  " + column(Seconds(p.StartMs), 9) +
                   column(p.ReadyMs ? Seconds(*p.ReadyMs) : "-", 9) + column(Seconds(p.CpuMs), 9) +
                   column(Tenths(p.ReadBytes + p.WriteBytes, 1024 * 1024, ".") + " MB", 9) +
                   column(std::string(kRatingWords[static_cast<int>(p.Rating())]), 7) +
                   column(CliLocationWord(p.Item.Location, false), 15) + p.Item.Name + "\n";
        }
    }
    return out;
}

std::string FormatHistoryJson(const std::vector<LogonRun>& runs) {
    std::string out = "[";
    for (auto run = runs.rbegin(); run != runs.rend(); ++run) {
        out += std::string(run == runs.rbegin() ? "" : ",") + "\n  {\"id\": " + JsonText(run->Id) +
               ", \"started\": " + JsonText(run->Started) +
               ", \"mainDelayMs\": " + Number(run->MainDelayMs) + ", \"programs\": [";
        for (size_t i = 0; i < run->Programs.size(); ++i) {
            const RunProgram& p = run->Programs[i];
            out +=
                std::string(i ? "," : "") + "\n    {\"location\": \"" +
                CliLocationWord(p.Item.Location, false) + "\", \"name\": " + JsonText(p.Item.Name) +
                ", \"path\": " + JsonText(p.Path) + ", \"startMs\": " + std::to_string(p.StartMs) +
                ", \"readyMs\": " + Number(p.ReadyMs) + ", \"cpuMs\": " + std::to_string(p.CpuMs) +
                ", \"readBytes\": " + std::to_string(p.ReadBytes) +
                ", \"writeBytes\": " + std::to_string(p.WriteBytes) +
                ", \"watchedMs\": " + std::to_string(p.WatchedMs) + ", \"rating\": \"" +
                std::string(kRatingWords[static_cast<int>(p.Rating())]) + "\"}";
        }
        out += std::string(run->Programs.empty() ? "" : "\n  ") + "]}";
    }
    return out + (runs.empty() ? "" : "\n") + "]\n";
}

} // namespace tolvane
