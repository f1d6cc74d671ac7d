#include "startup/launcher.h"

#include <windows.h>
#include <shellapi.h>
#include <shlobj.h>

#include "platform/handles.h"
#include "platform/message_pump.h"
#include "config/run_state.h"
#include "platform/event_log.h"
#include "text/strings.h"

namespace tolvane {

namespace {

bool ShellOpen(const std::string& path, const std::string& parameters, UniqueHandle& process) {
    // An empty item would be the desktop folder: the shell would open a window at log-on.
    if (path.empty())
        return false;
    // The request carries the item's ID list, as the shell's own "open" does; the verb stays
    // unset, which is the item's default verb (for a shortcut, the only form Wine accepts).
    // A path that the shell cannot turn into an ID list (a bare name found along PATH) goes as
    // a plain request, which is what the same request without a list means on Windows.
    EnsureCom(); // opening a shortcut goes through COM
    UniquePidl item(ILCreateFromPathA(path.c_str()));
    SHELLEXECUTEINFOA info{};
    info.cbSize = sizeof info;
    info.fMask = SEE_MASK_NOCLOSEPROCESS | SEE_MASK_FLAG_NO_UI;
    if (item) {
        info.fMask |= SEE_MASK_INVOKEIDLIST;
        info.lpIDList = item.get();
    }
    info.lpVerb = nullptr;
    info.lpFile = path.c_str();
    info.lpParameters = parameters.c_str();
    info.lpDirectory = "";
    info.nShow = SW_SHOWNORMAL;
    const bool started = ShellExecuteExA(&info) != FALSE;
    process.reset(info.hProcess);
    return started;
}

} // namespace

UniqueHandle LaunchProgram(EventLog& log, std::string_view path, std::string_view parameters) {
    YieldToMessageLoop();
    const std::string file(path);
    UniqueHandle process;
    if (!ShellOpen(file, std::string(parameters), process)) {
        if (Contains(file, "\"")) {
            process = LaunchProgram(log, RemoveAll(file, '"'), parameters);
        } else {
            log.WriteLog("Program: " + file + " failed to start.", kLogError);
        }
    }
    YieldToMessageLoop();
    return process;
}

void LaunchMeasured(EventLog& log, StartWatcher* watcher, const std::string& path,
                    const std::string& parameters, const ImpactKey* item) {
    if (item && watcher)
        watcher->Prepare();
    const uint64_t started = NowMs();
    UniqueHandle process = LaunchProgram(log, path, parameters);
    if (item && watcher)
        watcher->Watch(*item, process.release(), RemoveAll(path, '"'), started);
}

} // namespace tolvane
