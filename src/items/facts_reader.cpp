#include "items/facts_reader.h"

#include <exception>
#include <utility>

#include "platform/runtime_libraries.h"

namespace tolvane {

FactsReader::FactsReader(HWND window, UINT message, std::function<void(const char*)> failed)
    : window_(window), message_(message), failed_(std::move(failed)) {}

FactsReader::~FactsReader() {
    {
        ScopedLock lock(lock_);
        stop_ = true;
    }
    wake_.NotifyAll();
    thread_.Join();
}

WPARAM FactsReader::Read(std::vector<Job> jobs) {
    WPARAM round = 0;
    {
        ScopedLock lock(lock_);
        jobs_ = std::move(jobs);
        next_ = 0;
        round = ++round_;
        found_.clear();
        told_ = false;
    }
    wake_.NotifyAll();
    // Made when first needed: a window that never shows never reads a file.
    if (!started_) {
        thread_ = WorkerThread([this] { Work(); }, failed_);
        started_ = true;
    }
    return round;
}

std::vector<FactsReader::Found> FactsReader::Take() {
    ScopedLock lock(lock_);
    told_ = false;
    return std::exchange(found_, {});
}

void FactsReader::Work() {
    // Shortcuts are read through the shell, which needs COM on this thread.
    EnsureCom();
    const ProgramLookups lookups = MachineProgramLookups(cache_);
    ScopedLock lock(lock_);
    while (true) {
        wake_.Wait(lock, [this] { return stop_ || next_ < jobs_.size(); });
        if (stop_)
            break;
        const Job job = jobs_[next_++];
        const WPARAM round = round_;
        lock.Unlock();
        std::optional<ProgramFacts> facts;
        try {
            facts = FactsOfItem(ProgramOfItem(job.Item, lookups), lookups);
        } catch (const std::exception& e) {
            // One item not read leaves its tip without the line; the others go on.
            if (failed_)
                failed_(e.what());
        }
        lock.Lock();
        if (facts && round == round_ && !stop_) {
            found_.push_back({job.Node, std::move(*facts)});
            if (!told_)
                told_ = PostMessageA(window_, message_, round, 0) != FALSE;
        }
    }
    lock.Unlock();
    LeaveCom();
}

} // namespace tolvane
