// Every item of the startup tree as one record, and the three ways the console program prints
// them: a table for people, JSON and CSV for scripts (both UTF-8, with stable field names); and
// the kept log-on runs, as a table or JSON.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "config/logon_history.h"
#include "config/safe_list.h"
#include "config/program_model.h"
#include "items/item_program.h"
#include "items/startup_tree.h"
#include "models/tree_model.h"

namespace tolvane {

struct ItemRecord {
    int Node = -1; // the tree's node
    int Item = -1; // the listing's item
    ItemState State = ItemState::Active;
    int Location = kUserStartup;
    bool Wow32 = false;
    std::string Name;    // the list's text, the same in every state
    std::string OwnName; // the shortcut's file name or the Run value's name
    std::string Path;
    std::string Parameters;
    std::optional<float> Delay; // a delayed item's own delay
    bool Known = false;         // on the safe list
    std::string Description;
    bool SwitchedOff = false; // Task Manager keeps it from starting
    bool Movable = false;     // the list offers its moves
    bool Missing = false;     // what it starts is not there: its shortcut or its program file
    std::string Publisher;    // the program's own, or its signer's
    std::optional<SignatureState> Signature; // nothing when not asked
};

// What only the platform can tell: a shortcut's target, which files are there and what each
// program says of itself. What an item starts is the item's own File and Arguments, read the same
// way in every state.
using RecordLookups = ProgramLookups;

// A record of each item of the tree, in its order.
std::vector<ItemRecord> ItemRecords(const TreeModel& tree, const StartupListing& listing,
                                    const ProgramModel& model,
                                    const std::vector<SafeEntry>& safeList,
                                    const RecordLookups& lookups);

// "active", "delayed" or "stopped".
const char* StateWord(ItemState state);
// "trusted", "untrusted", "unsigned" or "missing".
const char* SignatureWord(SignatureState state);

// The fields are passed through as they are: the caller gives them in UTF-8.
std::string FormatRecordsTable(const std::vector<ItemRecord>& records);
std::string FormatRecordsJson(const std::vector<ItemRecord>& records);
std::string FormatRecordsCsv(const std::vector<ItemRecord>& records);

// The kept log-on runs, the newest first: for people, a line per run and one per program under
// it; for scripts, a JSON array of runs, each with its programs.
std::string FormatHistoryTable(const std::vector<LogonRun>& runs);
std::string FormatHistoryJson(const std::vector<LogonRun>& runs);

} // namespace tolvane
