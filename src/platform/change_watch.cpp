#include "platform/change_watch.h"

#include "platform/registry_keys.h"

namespace tolvane {

namespace {

constexpr DWORD kFolderChanges =
    FILE_NOTIFY_CHANGE_FILE_NAME | FILE_NOTIFY_CHANGE_DIR_NAME | FILE_NOTIFY_CHANGE_LAST_WRITE;
constexpr DWORD kKeyChanges = REG_NOTIFY_CHANGE_NAME | REG_NOTIFY_CHANGE_LAST_SET;

} // namespace

ChangeWatch::ChangeWatch(HWND window, UINT message)
    : window_(window), message_(message), stop_(CreateEventA(nullptr, TRUE, FALSE, nullptr)) {
    waits_.push_back(stop_.get());
}

ChangeWatch::~ChangeWatch() {
    if (stop_)
        SetEvent(stop_.get());
    thread_.Join();
    for (Watched& w : watched_)
        if (w.Folder != INVALID_HANDLE_VALUE)
            FindCloseChangeNotification(w.Folder);
}

void ChangeWatch::Folder(const std::string& path) {
    if (path.empty() || waits_.size() >= MAXIMUM_WAIT_OBJECTS)
        return;
    Watched w;
    w.Folder = FindFirstChangeNotificationA(path.c_str(), FALSE, kFolderChanges);
    if (w.Folder == INVALID_HANDLE_VALUE)
        return;
    waits_.push_back(w.Folder);
    watched_.push_back(std::move(w));
}

bool ChangeWatch::Arm(const Watched& key) {
    return RegNotifyChangeKeyValue(key.Key.get(), FALSE, kKeyChanges, key.Event.get(), TRUE) ==
           ERROR_SUCCESS;
}

bool ChangeWatch::Reach(Watched& w) {
    std::string path = w.Awaited;
    size_t cut = path.size();
    while (!(w.Key = OpenKeyToWatch(w.Root, path)) && (cut = path.rfind('\\')) != path.npos)
        path.resize(cut);
    if (w.Key && path.size() == w.Awaited.size())
        w.Awaited.clear();
    return w.Awaited.empty();
}

void ChangeWatch::Key(RegistryRoot root, const std::string& path) {
    if (waits_.size() >= MAXIMUM_WAIT_OBJECTS)
        return;
    Watched w;
    w.Root = root;
    w.Awaited = path;
    (void)Reach(w);
    w.Event.reset(CreateEventA(nullptr, FALSE, FALSE, nullptr));
    if (!w.Key || !w.Event || !Arm(w))
        return;
    waits_.push_back(w.Event.get());
    watched_.push_back(std::move(w));
}

bool ChangeWatch::Start() {
    if (!stop_ || watched_.empty())
        return false;
    try {
        thread_ = WorkerThread([this] { Run(); }, nullptr);
    } catch (const std::exception&) {
        return false;
    }
    return true;
}

void ChangeWatch::Run() {
    for (;;) {
        const DWORD r = WaitForMultipleObjects(static_cast<DWORD>(waits_.size()), waits_.data(),
                                               FALSE, INFINITE);
        if (r == WAIT_OBJECT_0 || r == WAIT_FAILED)
            return;
        const size_t i = r - WAIT_OBJECT_0 - 1;
        if (i >= watched_.size())
            return;
        // Asked again before the window hears of it: a change made while the window looks is
        // told once more, never lost.
        Watched& w = watched_[i];
        if (w.Folder != INVALID_HANDLE_VALUE) {
            FindNextChangeNotification(w.Folder);
        } else if (w.Awaited.empty()) {
            (void)Arm(w);
        } else {
            // Something was made above the awaited key: go down as far as there are keys now,
            // and look once more after asking, in case the key was made in between.
            while (!Reach(w) && Arm(w) && OpenKeyToWatch(w.Root, w.Awaited)) {
            }
            if (w.Awaited.empty())
                (void)Arm(w);
        }
        PostMessageA(window_, message_, 0, 0);
    }
}

} // namespace tolvane
