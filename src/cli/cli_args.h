// The command line of tolvanec, the console program for scripts: what it is asked to do, read
// from its arguments without the platform.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tolvane {

// Exit codes a script can rely on.
// kCliRefused: refused, or not done in full (moved, but its delay or the program's own Run value
// could not be set). kCliUsage also for a plan that cannot be read or holds a fault: nothing was
// changed. kCliDiffers: apply --check found something that apply would change.
enum CliExit : int {
    kCliDone = 0,
    kCliNoItem = 1,
    kCliRefused = 2,
    kCliUsage = 3,
    kCliDiffers = 4
};

enum class CliVerb { Help, List, Delay, Stop, Restore, RunStartup, Export, Apply, History };
enum class ListFormat { Table, Json, Csv };

// Where an item lives, as the command line names it: a location code and, for the machine's
// Run key, its view.
struct CliLocation {
    int Code = 0;
    bool Wow32 = false;
};
// "user-folder", "user-run", "common-folder", "machine-run", "machine-run-32"; nothing else.
std::optional<CliLocation> ParseCliLocation(const std::string& word);
const char* CliLocationWord(int code, bool wow32);

struct CliRequest {
    CliVerb Verb = CliVerb::Help;
    ListFormat Format = ListFormat::Table;
    std::string Name;
    std::optional<CliLocation> Location;
    std::optional<float> Delay; // seconds, for delay
    std::string File;           // the plan's file; "" for export to standard output
    bool Check = false;         // apply only lists what differs
};

// The request, or the reason the arguments are not one (a usage error).
struct CliParse {
    std::optional<CliRequest> Request;
    std::string Error;
};
CliParse ParseCliArguments(const std::vector<std::string>& arguments);

std::string CliUsage();

} // namespace tolvane
