#include "platform/threads.h"

#include <stdexcept>
#include <string>
#include <string_view>

#include "platform/file_io.h"
#include "platform/path_rules.h"

namespace tolvane {

WorkerThread::WorkerThread(std::function<void()> work, std::function<void(const char*)> failed) {
    auto start = std::make_unique<Start>(Start{std::move(work), std::move(failed)});
    thread_.reset(CreateThread(nullptr, 0, &WorkerThread::Run, start.get(), 0, nullptr));
    if (!thread_)
        throw std::runtime_error("no thread could be made (error " +
                                 std::to_string(GetLastError()) + ")");
    start.release(); // the thread's own now
}

std::string FileLockName(const char* kind, const std::string& filePath) {
    std::string name = "Tolvane-";
    name.append(kind).append(PathHashText(FileIdentity(filePath)));
    return name;
}

SharedLock::SharedLock(const std::string& name, DWORD timeoutMs) {
    // Global: the user's processes in other sessions (a script run as a scheduled task, a
    // second log-on through Remote Desktop) share it. A name that another user took first, who
    // could use it to shut this one out, leaves the processes of this session the session's own.
    for (const char* space : {"Global\\", "Local\\"}) {
        mutex_.reset(CreateMutexA(nullptr, FALSE, (space + name).c_str()));
        if (mutex_ || GetLastError() != ERROR_ACCESS_DENIED)
            break;
    }
    if (!mutex_)
        return;
    const DWORD r = WaitForSingleObject(mutex_.get(), timeoutMs);
    held_ = r == WAIT_OBJECT_0 || r == WAIT_ABANDONED;
}

SharedLock::~SharedLock() {
    if (held_)
        ReleaseMutex(mutex_.get());
}

void WorkerThread::Join() noexcept {
    if (thread_)
        WaitForSingleObject(thread_.get(), INFINITE);
    thread_.reset();
}

namespace {

void Report(const std::function<void(const char*)>& failed, const char* what) noexcept {
    try {
        if (failed)
            failed(what);
    } catch (...) {
        // Nothing more can be said: the log itself failed.
    }
}

} // namespace

DWORD WINAPI WorkerThread::Run(void* parameter) noexcept {
    std::unique_ptr<Start> start(static_cast<Start*>(parameter));
    try {
        start->Work();
    } catch (const std::exception& e) {
        Report(start->Failed, e.what());
    } catch (...) {
        Report(start->Failed, "an unknown failure");
    }
    return 0;
}

} // namespace tolvane
