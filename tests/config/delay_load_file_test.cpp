#include <gtest/gtest.h>

#include <windows.h>

#include <future>
#include <random>
#include <thread>

#include "config/app_state.h"
#include "config/delay_load.h"
#include "config/program_group_file.h"
#include "platform/handles.h"
#include "platform/threads.h"
#include "support/test_support.h"
#include "support/win_test_support.h"
#include "config/language_files.h"

namespace tolvane {
namespace {

class ProgramGroupFileOnDisk : public ::testing::Test {
protected:
    void SetUp() override {
        test::MakeFolder(folder / "lang\\de");
        test::WriteFileBytes(folder / "lang\\languagefile.dat", "English, en\r\nDeutsch, de\r\n");
        // As an editor in the legacy code page (1252) saves it.
        test::WriteFileBytes(folder / "lang\\de\\messages.de", "null\r\nEintr\xe4ge\r\n");
        LoadLanguageList(app.folders.ProgramFolder, app.text);
    }

    test::TempFolder folder{"program"};
    test::CapturedMessages messages;
    AppState app{folder.Path(), messages};
    CDelayLoad dl = app.Store().File();
};

// Files come as UTF-8, with or without a byte-order mark, or from an earlier version or an editor
// in the legacy code page; each reads right and is written back as UTF-8 without the mark.
TEST_F(ProgramGroupFileOnDisk, ALoadPicksTheLanguageAndAReadFailureKeepsTheFile) {
    const auto file = [&](std::string_view name) {
        return "const Language = Deutsch;\r\nvoid Startup()\r\n{\r\n     Execute (\"" +
               app.folders.UserItemsFolder + "\\" + std::string(name) +
               "\", \"\", 3, \"\");\r\n}\r\n";
    };
    const struct {
        std::string bytes, name;
    } files[] = {{"\xEF\xBB\xBF" + file("Résumé 微信.lnk"), "Résumé 微信.lnk"},
                 {file("R\xe9sum\xe9.lnk"), "Résumé.lnk"}};
    for (const auto& f : files) {
        SCOPED_TRACE(f.name);
        test::WriteFileBytes(dl.FilePath(), f.bytes);
        dl.LoadItems();
        EXPECT_TRUE(messages.shown.empty());
        EXPECT_EQ(app.model.Language, "de");
        EXPECT_EQ(app.text.Message(1), "Einträge"); // the German file was loaded
        ASSERT_EQ(app.model.StartupGroupIndex, 0);
        EXPECT_EQ(app.model.ProgramGroups[0].Programs[0].Path, f.name);
        dl.WriteItems();
        const std::string written = test::ReadFileBytes(dl.FilePath());
        EXPECT_TRUE(StartsWith(written, "//") && Contains(written, "(\"" + f.name + "\""))
            << written;
    }

    const std::string broken =
        "void Startup()\r\n{\r\n     Execute (\"C:\\a.exe\", \"\", 1, \"\");\r\n"
        "     Execute C:\\b.exe\r\n     Execute (\"C:\\c.exe\", \"\", 2, \"\");\r\n}\r\n";
    test::WriteFileBytes(dl.FilePath(), broken);
    dl.LoadItems();
    EXPECT_EQ(messages.shown, (std::vector<test::CapturedMessages::Shown>{
                                  {app.text.Message(13), "Tolvane", kMbIconInformation}}));
    // The next write replaces the file with what was read (the format's own test); the copy
    // keeps the rest.
    EXPECT_EQ(test::ReadFileBytes(dl.UnreadableCopyPath()), broken);
}

// Holds the lock of a name from a thread of its own, as another process would.
class HeldElsewhere {
public:
    explicit HeldElsewhere(const std::string& name)
        : thread_([this, name] {
              const SharedLock lock(name, 0);
              held_.set_value(lock.Held());
              release_.get_future().wait();
          }) {
        EXPECT_TRUE(held_.get_future().get()) << name;
    }
    ~HeldElsewhere() {
        release_.set_value();
        thread_.join();
    }

private:
    std::promise<bool> held_;
    std::promise<void> release_;
    std::thread thread_;
};

// Whatever spelling of the file another process holds it by, no change is made meanwhile and
// nothing is written; a first start only reads until it has the file to itself, then writes the
// file of its defaults.
TEST_F(ProgramGroupFileOnDisk, AFileHeldByAnotherProcessIsNeitherWrittenNorChanged) {
    ProgramGroupStore store = app.Store();
    store.WaitAtMost(0);
    std::string upper = dl.FilePath();
    CharUpperBuffA(upper.data(), static_cast<DWORD>(upper.size()));
    const size_t cut = dl.FilePath().find_last_of('\\');
    const std::string dotted =
        dl.FilePath().substr(0, cut) + "\\.\\" + dl.FilePath().substr(cut + 1);
    {
        const HeldElsewhere other(ProgramGroupStore::LockName(upper));
        store.Load();
        EXPECT_FALSE(test::PathExists(dl.FilePath()));
        EXPECT_EQ(app.model.StartupGroupIndex, 0); // the model of a first start all the same
    }
    store.Load();
    const std::string written = test::ReadFileBytes(dl.FilePath());
    EXPECT_EQ(written,
              test::ReadFileBytes(test::TestDataPath("config/golden/default_proggroup.c")));
    // The folder by its 8.3 alias, as a program folder reached through one is spelled.
    char shortFolder[MAX_PATH] = {};
    const DWORD n = GetShortPathNameA(dl.FilePath().substr(0, cut).c_str(), shortFolder, MAX_PATH);
    std::vector<std::string> spellings{upper, dotted};
    if (n > 0 && n < MAX_PATH)
        spellings.push_back(shortFolder + dl.FilePath().substr(cut));
    for (const std::string& spelling : spellings) {
        const HeldElsewhere other(ProgramGroupStore::LockName(spelling));
        EXPECT_THROW(store.Change([](ProgramModel& m) { m.AddGroup("Tools"); }), StoreBusy)
            << spelling;
        EXPECT_TRUE(test::ReadFileBytes(dl.FilePath()) == written) << spelling;
        EXPECT_EQ(app.model.GetGroupID("Tools"), -1);
    }
    store.Change([](ProgramModel& m) { m.AddGroup("Tools"); });
    EXPECT_GE(app.model.GetGroupID("Tools"), 0);
}

// A writer killed at any moment leaves the old file or the new one, whole.
TEST_F(ProgramGroupFileOnDisk, AKilledWriterNeverLeavesATornFile) {
    constexpr int kPrograms = 4000;
    std::string expected[2];
    for (int v : {1, 0}) { // model 0 is the one on disk at the start
        test::FillWriterModel(app.model, v, kPrograms);
        expected[v] = FormatProgramGroupFile(app.model, app.text.Languages);
    }
    dl.WriteItems();
    const std::string event = "Local\\tolvane-writer-" + std::to_string(GetCurrentProcessId());
    UniqueHandle started(CreateEventA(nullptr, TRUE, FALSE, event.c_str()));
    const std::string command = "\"" + test::WinePathOfUnixPath(TOLVANE_HELPER_PROGRAM) +
                                "\" write \"" + folder.Path() + "\" " + std::to_string(kPrograms) +
                                " " + event;
    std::mt19937 rng(20261123);
    int seen[2] = {};
    for (int round = 0; round < 300; ++round) {
        test::ChildProcess writer(command);
        ASSERT_TRUE(writer.Started()) << "round " << round;
        // The kill lands at a random moment once the child writes, however slowly it started.
        ASSERT_EQ(WaitForSingleObject(started.get(), 20000), static_cast<DWORD>(WAIT_OBJECT_0))
            << "round " << round;
        ResetEvent(started.get());
        Sleep(std::uniform_int_distribution<DWORD>(0, 30)(rng));
        writer.Kill();
        ASSERT_TRUE(writer.WaitForExit(0)) << "round " << round;

        const std::string bytes = test::ReadFileBytes(dl.FilePath());
        const int which = bytes == expected[0] ? 0 : bytes == expected[1] ? 1 : -1;
        ASSERT_NE(which, -1) << "round " << round << ": a torn file of " << bytes.size()
                             << " bytes";
        ++seen[which];
    }
    // The child really wrote both models meanwhile: the kills landed while it worked.
    EXPECT_GT(seen[0], 0);
    EXPECT_GT(seen[1], 0);
}

} // namespace
} // namespace tolvane
