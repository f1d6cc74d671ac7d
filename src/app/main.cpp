#include "app/main.h"

#include <windows.h>
#include <shlobj.h>

#include <exception>
#include <memory>

#include "config/delay_load.h"
#include "config/policy_registry.h"
#include "config/program_group_store.h"
#include "platform/dir_struct.h"
#include "platform/handles.h"
#include "platform/message_pump.h"
#include "platform/path_rules.h"
#include "config/app_state.h"
#include "startup/data_lists.h"
#include "startup/delayed_run.h"
#include "startup/impact_meter.h"
#include "text/code_page.h"
#include "config/language_files.h"
#include "items/run_entry.h"
#include "items/startup_folders.h"
#include "models/command_ids.h"
#include "text/strings.h"
#include "ui/main_window.h"
#include "ui/tips/tip_dialog.h"

namespace tolvane {

void InitGlobals(AppState& app) {
    if (app.model.Language.empty())
        app.model.Language = "en";
    LoadLanguageList(app.folders.ProgramFolder, app.text);
    LoadLanguageFiles(app.folders.ProgramFolder, app.model.Language, app.text);
    if (std::optional<std::string> online = LoadOnlineTemplate(app.folders.ProgramFolder))
        app.OnlineSearchTemplate = std::move(*online);
    app.SafeList = LoadSafePrograms(app.folders.ProgramFolder, app.log);
}

bool ArgumentsAskForLogOnMode(std::string_view arguments) {
    return Contains(ToLower(arguments), "-nogui");
}

bool ArgumentsAskForUninstall(std::string_view arguments) {
    return Contains(ToLower(arguments), "-uninstall");
}

bool ArgumentsTellInstalled(std::string_view arguments) {
    return Contains(ToLower(arguments), "-installed");
}

namespace {

// The running exe's full path, however long.
std::string RunningExePath() {
    std::string path(MAX_PATH, '\0');
    for (;;) {
        DWORD n = GetModuleFileNameA(nullptr, path.data(), static_cast<DWORD>(path.size()));
        if (n < path.size()) {
            path.resize(n);
            return path;
        }
        path.resize(path.size() * 2);
    }
}

} // namespace

std::string RunningProgramFolder() {
    const std::string path = RunningExePath();
    return path.substr(0, FindLastCharacterOf(path, "\\"));
}

namespace {

// One name per executable: a second start of the same exe, in either mode, finds it taken,
// while a copy of the program elsewhere runs on its own.
std::string InstanceMutexName() {
    return "Local\\Tolvane-" + PathHashText(RunningExePath());
}

std::string ProcessImage(HANDLE process) {
    char path[MAX_PATH * 3] = {};
    DWORD size = sizeof path;
    return QueryFullProcessImageNameA(process, 0, path, &size) ? std::string(path, size) : "";
}

// A copy of this exe that runs (waiting in the tray, say) is asked to quit as File > Exit
// asks, so that the installer can remove its files, and is given a while to end. It is ended
// before the Run values go: on its way out it brings its own value up to date.
void EndRunningCopies() {
    constexpr DWORD kEndWaitMs = 15000;
    const std::string self = ToLower(RunningExePath());
    HWND window = nullptr;
    while ((window = FindWindowExA(nullptr, window, MainWindow::kClassName, nullptr)) != nullptr) {
        DWORD id = 0;
        GetWindowThreadProcessId(window, &id);
        if (id == GetCurrentProcessId())
            continue;
        UniqueHandle process(
            OpenProcess(SYNCHRONIZE | PROCESS_QUERY_LIMITED_INFORMATION, FALSE, id));
        if (!process || ToLower(ProcessImage(process.get())) != self)
            continue; // another copy of the program, elsewhere: not this uninstall's business
        PostMessageA(window, WM_COMMAND, ID_CMD_QUIT, 0);
        WaitForSingleObject(process.get(), kEndWaitMs);
    }
}

// The installer may run with nobody there to answer a message box, and a box would hold the
// installation until somebody did: its messages go to the log.
class LoggedMessages : public UserMessages {
public:
    int ShowMessage(std::string_view text, std::string_view title, unsigned style) override {
        if (log)
            log->WriteLog(std::string(title) + ": " + std::string(text), kLogWarning);
        return (style & kMbYesNo) ? kIdNo : kIdOk;
    }
    const EventLog* log = nullptr;
};

// The installer's steps, without a window. Uninstalling ends this copy where it runs and
// removes the Run values that start it; the user's data stays. After the files are in place
// (a new install over kept data, or an upgrade, which removed the older version first), the
// program's own Run value is brought in step with the kept settings, as every refresh does; "for
// all users" installed inside a user's profile stays that user's value (see UpdateRunEntry).
int RunInstallerStep(std::string_view arguments) {
    LoggedMessages messages;
    AppState app(RunningProgramFolder(), messages);
    messages.log = &app.log;
    try {
        if (ArgumentsAskForUninstall(arguments)) {
            EndRunningCopies();
            RemoveOwnRunEntries(app.folders.RunCommand, app.log);
        } else if (CDirStruct::OrdinaryFileExists(app.Store().File().FilePath())) {
            InitGlobals(app);
            app.Store().Load();
            (void)UpdateRunEntry(app.model.StartupType, app.folders.RunCommand, app.model,
                                 app.log); // logged: nobody to tell
        } // else a first install: nothing kept, nothing to start at log-on
    } catch (const std::exception& e) {
        app.log.WriteLog(std::string("Installer step: ") + e.what(), kLogError);
        return 1;
    }
    return 0;
}

} // namespace

int RunTolvane(HINSTANCE instance, std::string_view arguments, UserMessages& messages) {
    std::unique_ptr<AppState> app;
    std::unique_ptr<ImpactMeter> meter; // outlives the window, whose tray starts programs
    std::unique_ptr<MainWindow> window;
    UniqueHandle instanceMutex;
    SetActiveCodePage(GetACP()); // before the first path or file is read
    try {
        if (ArgumentsAskForUninstall(arguments) || ArgumentsTellInstalled(arguments))
            return RunInstallerStep(arguments);
        app = std::make_unique<AppState>(RunningProgramFolder(), messages);
        InitGlobals(*app);
        app->Store().Load();

        instanceMutex.reset(CreateMutexA(nullptr, FALSE, InstanceMutexName().c_str()));
        if (GetLastError() == ERROR_ALREADY_EXISTS) {
            // The first copy opens its window itself, as the tray's "Open" does: shown from
            // here it would be an empty frame, and the end of a log-on run would close it.
            if (HWND first = FindWindowA(MainWindow::kClassName, nullptr)) {
                DWORD process = 0;
                GetWindowThreadProcessId(first, &process);
                AllowSetForegroundWindow(process);
                PostMessageA(first, OpenWindowMessage(), 0, 0);
            }
            messages.ShowMessage(app->text.Message(0), "Tolvane", kMbOk | kMbIconInformation);
            return 0;
        }

        app->ShowGui = !ArgumentsAskForLogOnMode(arguments);
        if (app->ShowGui)
            EnsureStartupFolders(app->folders);
        if (!app->ShowGui && InForce(app->model, ReadPolicies(app->log)).StartupType <= 0)
            return 0; // a log-on start with start-up turned off does nothing

        meter = std::make_unique<ImpactMeter>(app->Store().File().ImpactFilePath(), &app->log);
        app->watcher = meter.get();
        window = std::make_unique<MainWindow>(*app, instance);
        if (!app->ShowGui) {
            // The run makes the window and its tray icon once it first waits: a program due
            // at once is not held up by them.
            DelayedRun(RunNeedsOf(*app), *window);
        } else if (!window->Load()) {
            throw std::runtime_error("the main window could not be made");
        } else if (app->model.ShowTipsAtStartup != 0) {
            TipDialog tip(app->Store(), app->text, app->log);
            tip.ShowModal(instance, window->Handle());
        }
    } catch (const std::exception& e) {
        if (app)
            app->log.WriteLog(std::string("Main: ") + e.what(), kLogError);
        messages.ShowMessage(app ? app->text.Message(6) : TextTables().Message(6), "Tolvane",
                             kMbOk | kMbIconCritical);
        if (!window || !window->Handle())
            return 1;
    }
    // A window that is still there keeps the process alive until it is closed for good.
    int code = window && window->Handle() ? RunMessageLoop() : 0;
    window.reset();
    if (app)
        app->watcher = nullptr;
    return code;
}

} // namespace tolvane
