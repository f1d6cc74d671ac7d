#include "config/program_group_store.h"

#include "platform/file_io.h"
#include "platform/path_rules.h"
#include "platform/threads.h"

namespace tolvane {

namespace {

int changesUnderWay = 0;

struct UnderWay {
    UnderWay() { ++changesUnderWay; }
    ~UnderWay() { --changesUnderWay; }
    UnderWay(const UnderWay&) = delete;
    UnderWay& operator=(const UnderWay&) = delete;
};

} // namespace

std::string ProgramGroupStore::LockName(const std::string& filePath) {
    return FileLockName("groups-", filePath);
}

bool ProgramGroupStore::Changing() {
    return changesUnderWay > 0;
}

void ProgramGroupStore::Load(bool look) {
    CDelayLoad file = File();
    if (look || IsFile(file.FilePath())) {
        // Whole files only ever replace it, so a read needs no lock.
        file.LoadItems(!look);
        return;
    }
    const SharedLock lock(LockName(file.FilePath()), lockWaitMs_);
    // Writes the model of a first start, unless another process just did. Without the lock the
    // model is only read: the process that holds it may be writing the file this moment, and
    // the next change writes the file anyway.
    file.LoadItems(lock.Held());
}

void ProgramGroupStore::Change(const std::function<void(ProgramModel&)>& change) {
    const UnderWay underWay;
    CDelayLoad file = File();
    const SharedLock lock(LockName(file.FilePath()), lockWaitMs_);
    if (!lock.Held())
        throw StoreBusy("another Tolvane is changing " + file.FilePath() +
                        " and did not finish; nothing was changed. Try again in a moment.");
    file.LoadItems();
    try {
        change(model_);
        file.WriteItems();
    } catch (...) {
        file.LoadItems(); // the model as the file still holds it
        throw;
    }
}

} // namespace tolvane
