#include "startup/impact_meter.h"

#include <algorithm>
#include <cstdio>
#include <exception>

#include "platform/file_io.h"
#include "platform/wide_text.h"
#include "platform/message_pump.h"
#include "platform/path_rules.h"
#include "platform/processes.h"
#include "text/strings.h"

namespace tolvane {

namespace {

constexpr DWORD kPollMs = 50;
constexpr int kFindAttempts = 40; // 2 s for a shortcut's program to show
constexpr uint64_t kSystemTicksPerMs = 10000;

std::string LocalTimeText() {
    SYSTEMTIME t{};
    GetLocalTime(&t);
    return ZeroPadded(t.wYear, 4) + "-" + ZeroPadded(t.wMonth, 2) + "-" + ZeroPadded(t.wDay, 2) +
           " " + ZeroPadded(t.wHour, 2) + ":" + ZeroPadded(t.wMinute, 2) + ":" +
           ZeroPadded(t.wSecond, 2);
}

} // namespace

ImpactMeter::ImpactMeter(std::string file, const EventLog* log, uint64_t watchMs)
    : file_(std::move(file)), log_(log), watchMs_(watchMs),
      stop_(CreateEventA(nullptr, TRUE, FALSE, nullptr)), history_(HistoryFileBeside(file_)) {}

ImpactMeter::~ImpactMeter() {
    SetEvent(stop_.get());
    {
        ScopedLock lock(jobsMutex_);
        ending_ = true;
    }
    wake_.NotifyAll();
    for (Worker& worker : workers_)
        worker.Thread.Join();
}

bool ImpactMeter::Stopping(DWORD waitMs) const {
    return WaitForSingleObject(stop_.get(), waitMs) == WAIT_OBJECT_0;
}

void ImpactMeter::AddWorker() {
    for (auto w = workers_.begin(); w != workers_.end();) {
        if (*w->Done) {
            w->Thread.Join();
            w = workers_.erase(w);
        } else {
            ++w;
        }
    }
    auto done = std::make_shared<std::atomic<bool>>(false);
    // What a measurement's own guard cannot catch ends the worker, said in the log.
    workers_.push_back(
        {WorkerThread([this, done] { Work(done); },
                      [this, done](const char* what) {
                          *done = true;
                          if (log_)
                              log_->WriteLog(std::string("Impact Meter Error: ") + what, kLogError);
                      }),
         done});
}

void ImpactMeter::Prepare() {
    ScopedLock lock(jobsMutex_);
    try {
        if (idle_ == 0)
            AddWorker();
    } catch (const std::exception&) {
        // Watch tries again, after the start.
    }
}

void ImpactMeter::Work(std::shared_ptr<std::atomic<bool>> done) {
    ScopedLock lock(jobsMutex_);
    for (;;) {
        ++idle_;
        wake_.Wait(lock, [this] { return ending_ || !jobs_.empty(); });
        --idle_;
        if (ending_)
            return;
        Job job = std::move(jobs_.front());
        jobs_.pop_front();
        lock.Unlock();
        try {
            Measure(std::move(job));
        } catch (const std::exception& e) {
            // One measurement lost, said in the log; the item keeps its last one.
            if (log_)
                log_->WriteLog("Impact of " + job.Item.Name + " not measured: " + e.what(),
                               kLogWarning);
        }
        --pending_;
        lock.Lock();
        // One worker waiting is enough for the next start.
        if (idle_ > 0 && jobs_.empty()) {
            *done = true;
            return;
        }
    }
}

void ImpactMeter::Watch(const ImpactKey& item, void* process, const std::string& launched,
                        uint64_t startedMs) {
    UniqueHandle owned(static_cast<HANDLE>(process));
    // The system time of the start, for telling a shortcut's new process from older ones.
    const uint64_t elapsed = NowMs() - std::min(startedMs, NowMs());
    const uint64_t since = SystemTimeNow() - (elapsed + 1000) * kSystemTicksPerMs;
    std::optional<RunPlace> inRun;
    {
        ScopedLock lock(mutex_);
        if (owned)
            claimed_.push_back(GetProcessId(owned.get()));
        const auto start =
            std::find_if(runStarts_.begin(), runStarts_.end(),
                         [&](const RunStart& s) { return SameItem(s.Item, item, nullptr); });
        if (start != runStarts_.end()) {
            inRun = std::move(start->Place);
            runStarts_.erase(start);
        }
    }
    ++pending_;
    {
        ScopedLock lock(jobsMutex_);
        jobs_.push_back({item, std::move(owned), launched, startedMs, since, LocalTimeText(),
                         std::move(inRun)});
        try {
            if (idle_ < static_cast<int>(jobs_.size()))
                AddWorker();
        } catch (const std::exception& e) {
            // Without a new worker the job waits for one that is busy now.
            if (log_)
                log_->WriteLog(std::string("Impact of ") + item.Name +
                                   " measured late: " + e.what(),
                               kLogWarning);
        }
    }
    wake_.NotifyOne();
}

UniqueHandle ImpactMeter::FindStarted(const std::string& launched, uint64_t since) {
    // A shortcut is looked for as the program it points to; anything else the shell opened
    // without a process of its own (a script, a document) as a new child of this program.
    std::string exe(
        PathLastPart(EndsWith(ToLower(launched), ".lnk") ? ShortcutTarget(launched) : launched));
    if (!EndsWith(ToLower(exe), ".exe"))
        exe.clear();
    for (int attempt = 0; attempt < kFindAttempts && (attempt == 0 || !Stopping(kPollMs));
         ++attempt) {
        ScopedLock lock(mutex_);
        FoundProcess found = FindNewProcess(exe, since, claimed_);
        if (found.Handle) {
            claimed_.push_back(found.Id);
            return std::move(found.Handle);
        }
    }
    return UniqueHandle();
}

void ImpactMeter::Measure(Job job) {
    UniqueHandle process = std::move(job.Process);
    const uint64_t startedMs = job.StartedMs;
    // The program's own start comes first: looking at a process while it starts competes with
    // it (under Wine, for the server that both ask). Its figures add up all the same, and its
    // ready time is read at a poll in any case.
    if (Stopping(kPollMs))
        return;
    if (!process)
        process = FindStarted(job.Launched, job.StartedSystemTime);
    if (!process)
        return; // nothing of its own to measure: the item keeps its last measurement
    const DWORD id = GetProcessId(process.get());
    const uint64_t deadline = startedMs + watchMs_;
    auto left = [&] {
        const uint64_t now = NowMs();
        return static_cast<DWORD>(now >= deadline ? 0 : deadline - now);
    };
    ImpactRecord record{job.Item, job.MeasuredAt};
    // The figures are read while it runs too: where the system tells another process's CPU
    // time only by its running threads (Wine), the last reading before it ends is the nearest.
    // The largest reading counts.
    bool read = false;
    auto readFigures = [&] {
        if (const std::optional<ProcessFigures> f = ReadProcessFigures(process.get())) {
            record.CpuMs = std::max(record.CpuMs, f->CpuMs);
            record.ReadBytes = std::max(record.ReadBytes, f->ReadBytes);
            record.WriteBytes = std::max(record.WriteBytes, f->WriteBytes);
            read = true;
        }
    };
    // Short waits, so that quitting never waits for a slow program.
    bool askReady = true;
    const HANDLE waits[] = {process.get(), stop_.get()};
    for (;;) {
        // Wine answers "ready" for a program that has ended: only a running one is asked.
        if (askReady && WaitForSingleObject(process.get(), 0) == WAIT_TIMEOUT) {
            const DWORD r = WaitForInputIdle(process.get(), 0);
            if (r == 0)
                record.ReadyMs = NowMs() - startedMs;
            // Ready, or no input of its own (a console program): nothing more to ask.
            askReady = r == WAIT_TIMEOUT;
        }
        const DWORD r = WaitForMultipleObjects(2, waits, FALSE, std::min<DWORD>(left(), kPollMs));
        if (r == WAIT_OBJECT_0 + 1)
            return;
        readFigures();
        if (r != WAIT_TIMEOUT || left() == 0)
            break;
    }
    record.WatchedMs = std::min<uint64_t>(NowMs() - startedMs, watchMs_);
    if (read)
        Keep(record, job.InRun);
    ScopedLock lock(mutex_);
    claimed_.erase(std::remove(claimed_.begin(), claimed_.end(), id), claimed_.end());
}

void ImpactMeter::Keep(const ImpactRecord& record, const std::optional<RunPlace>& inRun) {
    ScopedLock lock(mutex_);
    if (inRun) {
        inRun->Run->Programs.push_back({record.Key, inRun->Path, inRun->AtMs, record.ReadyMs,
                                        record.CpuMs, record.ReadBytes, record.WriteBytes,
                                        record.WatchedMs});
        KeepRun(*inRun->Run);
    }
    // Another process (a console run-startup, a second log-on run) may keep its measurements
    // in the same file at the same moment: one read-change-write at a time, or one is lost.
    // A holder that hangs is not waited for: the measurement is kept all the same.
    const SharedLock fileLock(FileLockName("impact-", file_), 5000);
    try {
        std::vector<ImpactRecord> records;
        if (const std::optional<std::string> bytes = ReadTextFile(file_))
            records = ParseImpactFile(*bytes).Records;
        PutImpact(records, record);
        AtomicFileWriter writer(file_);
        writer.Write(FormatImpactFile(records));
        writer.Commit();
    } catch (const std::exception& e) {
        if (log_)
            log_->WriteLog("Impact of " + record.Key.Name + " not kept: " + e.what(), kLogWarning);
    }
}

void ImpactMeter::KeepRun(const LogonRun& run) {
    // One read-change-write at a time across processes, as for the impact file.
    const SharedLock fileLock(FileLockName("history-", history_), 5000);
    try {
        HistoryFileContent content;
        if (const std::optional<std::string> bytes = ReadTextFile(history_))
            content = ParseHistoryFile(*bytes);
        if (content.SkippedLines && log_)
            log_->WriteLog("History file " + history_ + ": " +
                               std::to_string(content.SkippedLines) + " broken lines passed over",
                           kLogWarning);
        PutRun(content.Runs, run);
        AtomicFileWriter writer(history_);
        writer.Write(FormatHistoryFile(content.Runs));
        writer.Commit();
    } catch (const std::exception& e) {
        if (log_)
            log_->WriteLog(std::string("Log-on history not kept: ") + e.what(), kLogWarning);
    }
}

void ImpactMeter::BeginRun() {
    auto run = std::make_shared<LogonRun>();
    run->Id = std::to_string(GetCurrentProcessId()) + "-" + std::to_string(NowMs());
    run->Started = LocalTimeText();
    ScopedLock lock(mutex_);
    run_ = run;
    runStarts_.clear();
}

void ImpactMeter::MainWaitOver(uint64_t ms) {
    ScopedLock lock(mutex_);
    if (run_)
        run_->MainDelayMs = ms;
}

void ImpactMeter::StartsInRun(const ImpactKey& item, const std::string& path, uint64_t atMs) {
    ScopedLock lock(mutex_);
    if (run_)
        runStarts_.push_back({item, {run_, path, atMs}});
}

void ImpactMeter::EndRun() {
    ScopedLock lock(mutex_);
    if (run_)
        KeepRun(*run_);
    run_.reset();
    runStarts_.clear();
}

} // namespace tolvane
