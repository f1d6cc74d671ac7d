// What an item starts, whether it is there, and what that program says of itself (its
// publisher, its description, its signature): the one reading that the console's records and
// the window's tree share.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "items/startup_tree.h"
#include "platform/program_facts_cache.h"

namespace tolvane {

// What only the platform can tell: a shortcut's target and which files are there.
struct ProgramLookups {
    // A shortcut's target; the shortcut itself when it names no file.
    std::function<std::string(const std::string& shortcut)> ShortcutTarget;
    // The program is there, its variables filled in when the command is expandable.
    std::function<bool(const std::string& program, bool expandable)> ProgramThere;
    // A file or a folder is there.
    std::function<bool(const std::string& file)> FileThere;
    // What a program that is there says of itself; not set: nothing is asked.
    std::function<ProgramFacts(const std::string& program, bool expandable)> Facts;
};

struct ItemProgram {
    // A shortcut's target (the shortcut itself where it names none); the program a Run value's
    // command names, variables as written.
    std::string Path;
    bool Expandable = false;
    // What it starts is not there: a kept shortcut gone from the items folder, a shortcut's
    // target, a Run value's program.
    bool Missing = false;
};
ItemProgram ProgramOfItem(const StartupItem& item, const ProgramLookups& lookups);

// The facts of the item's program, Missing for one that is not there; nullopt when the lookups
// ask for none.
std::optional<ProgramFacts> FactsOfItem(const ItemProgram& program, const ProgramLookups& lookups);

// The tip's line of what the program is: "Hexmoor Ltd — signed", "No signature". The texts
// come from the language files; those with "%1" take the publisher (with the description
// before it when there is one), the others stand for a program that names no one.
struct FactsTexts {
    std::string Signed, Unsigned, Untrusted;                // with "%1"
    std::string SignedAlone, UnsignedAlone, UntrustedAlone; // without
    std::string Missing;
};
std::string FactsTipLine(const ProgramFacts& facts, const FactsTexts& texts);

// The lookups of this machine; a program's facts read through the cache, which only one thread
// may use at a time (Win32: item_program_files.cpp).
ProgramLookups MachineProgramLookups(ProgramFactsCache& cache);

// Reads the facts of every program these items start on up to `threads` workers at once, and
// makes the lookups answer from what was read (a shortcut's target too, read once): checking a
// signature reads and hashes the whole file, and the console asks for every item's (Win32).
void ReadFactsAhead(const std::vector<StartupItem>& items, ProgramLookups& lookups,
                    unsigned threads);

} // namespace tolvane
