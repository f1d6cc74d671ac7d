#include "cli/cli_args.h"

#include "config/program_model.h"
#include "text/strings.h"

namespace tolvane {

namespace {

CliParse Fail(std::string error) {
    return {std::nullopt, std::move(error)};
}

} // namespace

std::optional<CliLocation> ParseCliLocation(const std::string& word) {
    if (const std::optional<LocationWord> w = ParseLocationWord(word))
        return CliLocation{w->Code, w->Wow32};
    return std::nullopt;
}

const char* CliLocationWord(int code, bool wow32) {
    return LocationWordOf(code, wow32);
}

CliParse ParseCliArguments(const std::vector<std::string>& arguments) {
    if (arguments.empty())
        return Fail("no command given");
    CliRequest request;
    const std::string& verb = arguments[0];
    if (verb == "--help" || verb == "-h" || verb == "/?" || verb == "help") {
        request.Verb = CliVerb::Help;
        return {request, ""};
    }
    if (verb == "list")
        request.Verb = CliVerb::List;
    else if (verb == "delay")
        request.Verb = CliVerb::Delay;
    else if (verb == "stop")
        request.Verb = CliVerb::Stop;
    else if (verb == "restore")
        request.Verb = CliVerb::Restore;
    else if (verb == "run-startup")
        request.Verb = CliVerb::RunStartup;
    else if (verb == "export")
        request.Verb = CliVerb::Export;
    else if (verb == "apply")
        request.Verb = CliVerb::Apply;
    else if (verb == "history")
        request.Verb = CliVerb::History;
    else
        return Fail("unknown command \"" + verb + "\"");

    const bool named = request.Verb == CliVerb::Delay || request.Verb == CliVerb::Stop ||
                       request.Verb == CliVerb::Restore;
    const bool plan = request.Verb == CliVerb::Export || request.Verb == CliVerb::Apply;
    bool formatGiven = false;
    for (size_t i = 1; i < arguments.size(); ++i) {
        const std::string& a = arguments[i];
        auto value = [&]() -> const std::string* {
            return i + 1 < arguments.size() ? &arguments[++i] : nullptr;
        };
        if (a == "--help" || a == "-h") {
            request = CliRequest();
            return {request, ""};
        }
        if (request.Verb == CliVerb::History && a == "--json") {
            request.Format = ListFormat::Json;
        } else if (request.Verb == CliVerb::List && (a == "--json" || a == "--csv")) {
            if (formatGiven)
                return Fail("choose one of --json and --csv");
            formatGiven = true;
            request.Format = a == "--json" ? ListFormat::Json : ListFormat::Csv;
        } else if (named && a == "--location") {
            const std::string* word = value();
            if (!word)
                return Fail("--location needs a location");
            request.Location = ParseCliLocation(*word);
            if (!request.Location)
                return Fail("unknown location \"" + *word + "\"");
        } else if (request.Verb == CliVerb::Delay && a == "--delay") {
            const std::string* seconds = value();
            const std::optional<float> delay = seconds ? ParseSingle(*seconds) : std::nullopt;
            if (!delay || *delay < 0)
                return Fail("--delay needs a number of seconds, 0 or more");
            request.Delay = delay;
        } else if (request.Verb == CliVerb::Apply && a == "--check") {
            request.Check = true;
        } else if (named && request.Name.empty() && !StartsWith(a, "--")) {
            request.Name = a;
        } else if (plan && request.File.empty() && !a.empty() && !StartsWith(a, "--")) {
            request.File = a;
        } else {
            return Fail("unexpected \"" + a + "\"");
        }
    }
    if (named && request.Name.empty())
        return Fail(verb + " needs the name of an item");
    if (request.Verb == CliVerb::Apply && request.File.empty())
        return Fail("apply needs the plan's file");
    return {request, ""};
}

std::string CliUsage() {
    return "usage: tolvanec COMMAND [options]\n"
           "  list [--json | --csv]               every startup item, one record each\n"
           "  delay NAME [--location L] [--delay SECONDS]\n"
           "                                      Tolvane starts it after log-on\n"
           "  stop NAME [--location L]            nobody starts it; it can be restored\n"
           "  restore NAME [--location L]         Windows starts it again\n"
           "  run-startup                         starts the delayed programs now\n"
           "  export [FILE]                       this user's log-on plan as JSON, into FILE\n"
           "                                      or to standard output\n"
           "  apply FILE [--check]                brings this user's log-on to the plan in FILE;\n"
           "                                      --check changes nothing and lists what differs\n"
           "  history [--json]                    the kept log-on runs, the newest first: the\n"
           "                                      main wait and what each program cost\n"
           "NAME is the item's text in the list or, for a Run value, its value name.\n"
           "L is user-folder, user-run, common-folder, machine-run or machine-run-32.\n"
           "Exit codes: 0 done, 1 no such item or ambiguous, 2 refused or not done in full,\n"
           "3 bad usage, or a plan that cannot be read or holds a fault (nothing changed),\n"
           "4 apply --check: the log-on differs from the plan. history: 2 when lines of the\n"
           "history file could not be read (the runs that could be are listed).\n";
}

} // namespace tolvane
