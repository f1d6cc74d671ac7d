// tolvanec: Tolvane for scripts, in a console. Reads the same program folder and per-user file
// as Tolvane.exe beside it and moves items with the same rules.
#include <windows.h>

#include <fcntl.h>
#include <io.h>

#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "app/main.h"
#include "cli/cli_commands.h"
#include "config/app_state.h"
#include "items/startup_folders.h"
#include "platform/wide_text.h"
#include "startup/tray_commands.h"
#include "text/code_page.h"

int main(int argc, char** argv) {
    using namespace tolvane;
    const std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
    const CliParse parse = ParseCliArguments(arguments);
    if (!parse.Request) {
        std::fprintf(stderr, "tolvanec: %s\n%s", parse.Error.c_str(), CliUsage().c_str());
        return kCliUsage;
    }
    if (parse.Request->Verb == CliVerb::Help) {
        std::fputs(CliUsage().c_str(), stdout);
        return kCliDone;
    }
    // What a script reads is UTF-8, in a console too, with the line ends as written.
    SetConsoleOutputCP(CP_UTF8);
    _setmode(_fileno(stdout), _O_BINARY);
    _setmode(_fileno(stderr), _O_BINARY);
    SetActiveCodePage(GetACP());
    ConsoleMessages messages;
    std::string out, err;
    int code = kCliRefused;
    try {
        AppState app(RunningProgramFolder(), messages);
        InitGlobals(app);
        EnsureStartupFolders(app.folders);
        const CliNeeds needs{app.Store(), app.text, app.SafeList, app.log, [&app] {
                                 const RunNeeds run = RunNeedsOf(app);
                                 RunGroupNow(run, app.model.StartupGroupIndex, MessageLoopClock(),
                                             MeasuredLauncher(run));
                             }};
        code = RunCliRequest(needs, messages, *parse.Request, out, err);
    } catch (const std::exception& e) {
        err += std::string("tolvanec: ") + e.what() + "\n";
        code = kCliRefused;
    }
    // Scripts read UTF-8. The program's texts are in its code page, which is UTF-8 itself
    // wherever Windows honours the manifest (Windows 10 1903 and later).
    if (GetACP() != CP_UTF8) {
        out = Narrow(Wide(out), CP_UTF8);
        err = Narrow(Wide(err), CP_UTF8);
    }
    std::fwrite(out.data(), 1, out.size(), stdout);
    std::fwrite(err.data(), 1, err.size(), stderr);
    std::fflush(stdout);
    return code;
}
