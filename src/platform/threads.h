// A worker thread, a lock and a condition, straight over the system's own. The program needs
// no more of threads than this, and the C++ library's versions would bring a POSIX thread
// layer into the exe that waits in memory at every log-on.
#pragma once

#include <windows.h>

#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "platform/handles.h"

namespace tolvane {

// A slim reader/writer lock, taken exclusively.
class SrwMutex {
public:
    SrwMutex() = default;
    SrwMutex(const SrwMutex&) = delete;
    SrwMutex& operator=(const SrwMutex&) = delete;
    void Lock() noexcept { AcquireSRWLockExclusive(&lock_); }
    void Unlock() noexcept { ReleaseSRWLockExclusive(&lock_); }
    SRWLOCK* Native() noexcept { return &lock_; }

private:
    SRWLOCK lock_ = SRWLOCK_INIT;
};

// The lock held for a scope, which may let go of it for a while.
class ScopedLock {
public:
    explicit ScopedLock(SrwMutex& mutex) noexcept : mutex_(mutex) { mutex_.Lock(); }
    ~ScopedLock() {
        if (held_)
            mutex_.Unlock();
    }
    ScopedLock(const ScopedLock&) = delete;
    ScopedLock& operator=(const ScopedLock&) = delete;
    void Unlock() noexcept {
        mutex_.Unlock();
        held_ = false;
    }
    void Lock() noexcept {
        mutex_.Lock();
        held_ = true;
    }
    SrwMutex& Mutex() noexcept { return mutex_; }

private:
    SrwMutex& mutex_;
    bool held_ = true;
};

class ConditionVariable {
public:
    ConditionVariable() = default;
    ConditionVariable(const ConditionVariable&) = delete;
    ConditionVariable& operator=(const ConditionVariable&) = delete;
    // Waits with the lock held on entry and on return, until `ready` is true.
    template <class Ready> void Wait(ScopedLock& lock, Ready ready) {
        while (!ready())
            SleepConditionVariableSRW(&condition_, lock.Mutex().Native(), INFINITE, 0);
    }
    void NotifyOne() noexcept { WakeConditionVariable(&condition_); }
    void NotifyAll() noexcept { WakeAllConditionVariable(&condition_); }

private:
    CONDITION_VARIABLE condition_ = CONDITION_VARIABLE_INIT;
};

// A lock shared by every process of the user that names it, in every session: a named mutex,
// held by this thread from the moment it is had until the owner goes. The same thread may take it
// again inside. A holder that ended without letting go (killed, say) leaves it to the next, which
// finds the files it guards whole, since they are only ever replaced whole. The name of the lock
// that guards one file, the same in every process whatever spelling of the file's path each uses;
// `kind` tells apart the locks of different files' uses.
std::string FileLockName(const char* kind, const std::string& filePath);

class SharedLock {
public:
    // Waits at most timeoutMs for the lock; Held() tells whether it was had.
    SharedLock(const std::string& name, DWORD timeoutMs);
    ~SharedLock();
    SharedLock(const SharedLock&) = delete;
    SharedLock& operator=(const SharedLock&) = delete;
    bool Held() const noexcept { return held_; }

private:
    UniqueHandle mutex_;
    bool held_ = false;
};

// One thread that runs a function and is joined by its owner. Nothing thrown leaves the
// thread: `failed` hears what was, as a window procedure's failures are logged.
class WorkerThread {
public:
    WorkerThread() = default;
    // Throws std::runtime_error when the system makes no thread.
    WorkerThread(std::function<void()> work, std::function<void(const char*)> failed);
    WorkerThread(WorkerThread&&) noexcept = default;
    WorkerThread& operator=(WorkerThread&&) noexcept = default;
    ~WorkerThread() { Join(); }
    // Waits until the function has returned.
    void Join() noexcept;

private:
    struct Start {
        std::function<void()> Work;
        std::function<void(const char*)> Failed;
    };
    static DWORD WINAPI Run(void* start) noexcept;
    UniqueHandle thread_;
};

} // namespace tolvane
