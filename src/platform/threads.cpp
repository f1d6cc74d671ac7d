#include "platform/threads.h"

#include <stdexcept>
#include <string>
#include <string_view>

namespace tolvane {

WorkerThread::WorkerThread(std::function<void()> work, std::function<void(const char*)> failed) {
    auto start = std::make_unique<Start>(Start{std::move(work), std::move(failed)});
    thread_.reset(CreateThread(nullptr, 0, &WorkerThread::Run, start.get(), 0, nullptr));
    if (!thread_)
        throw std::runtime_error("no thread could be made (error " +
                                 std::to_string(GetLastError()) + ")");
    start.release(); // the thread's own now
}

SharedLock::SharedLock(const std::string& name, DWORD timeoutMs)
    : mutex_(CreateMutexA(nullptr, FALSE, name.c_str())) {
    constexpr std::string_view kGlobal = "Global\\";
    if (!mutex_ && GetLastError() == ERROR_ACCESS_DENIED && name.starts_with(kGlobal)) {
        // A lock of that name made by another user, who may use it to shut this one out: the
        // processes of this session still share the session's own.
        mutex_.reset(
            CreateMutexA(nullptr, FALSE, ("Local\\" + name.substr(kGlobal.size())).c_str()));
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
