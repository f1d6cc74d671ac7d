#include <gtest/gtest.h>

#include <windows.h>

#include <random>

#include "config/delay_load.h"
#include "config/program_group_file.h"
#include "platform/file_io.h"
#include "platform/handles.h"
#include "support/test_support.h"
#include "support/win_test_support.h"
#include "support/writer_models.h"
#include "text/language_files.h"

namespace tolvane {
namespace {

class ProgramGroupFileOnDisk : public ::testing::Test {
protected:
    void SetUp() override {
        test::MakeFolder(folder / "lang\\de");
        test::WriteFileBytes(folder / "lang\\languagefile.dat", "English, en\r\nDeutsch, de\r\n");
        test::WriteFileBytes(folder / "lang\\de\\messages.de", "null\r\neins\r\n");
        LoadLanguageList(app);
    }
    std::string File() const { return CDelayLoad(const_cast<AppState&>(app)).FilePath(); }

    test::TempFolder folder{"program"};
    test::CapturedMessages messages;
    AppState app{folder.Path(), messages};
};

TEST_F(ProgramGroupFileOnDisk, AMissingFileIsCreatedWithTheFirstStartModel) {
    CDelayLoad dl(app);
    ASSERT_FALSE(test::PathExists(dl.FilePath()));
    dl.LoadItems();
    EXPECT_TRUE(messages.shown.empty());
    EXPECT_EQ(test::ReadFileBytes(dl.FilePath()),
              test::ReadFileBytes(test::TestDataPath("config/golden/default_proggroup.c")));
    EXPECT_EQ(app.model.StartupGroupIndex, 0);
    EXPECT_FALSE(test::PathExists(dl.FilePath() + ".new")); // no temporary file left
}

TEST_F(ProgramGroupFileOnDisk, ALoadPicksTheLanguageAndAReadFailureKeepsTheFile) {
    CDelayLoad dl(app);
    const std::string good = "const Language = Deutsch;\r\nvoid Startup()\r\n{\r\n"
                             "     Execute (\"" +
                             app.folders.UserItemsFolder + "\\Tool.lnk\", \"\", 3, \"\");\r\n}\r\n";
    test::WriteFileBytes(dl.FilePath(), good);
    dl.LoadItems();
    EXPECT_TRUE(messages.shown.empty());
    EXPECT_EQ(app.model.Language, "de");
    EXPECT_EQ(app.text.Message(1), "eins");                  // the German file was loaded
    EXPECT_EQ(app.text.Message(2), TextTables().Message(2)); // the rest stays English
    ASSERT_EQ(app.model.StartupGroupIndex, 0);
    EXPECT_EQ(app.model.ProgramGroups[0].Programs[0].Path, "Tool.lnk");

    const std::string broken =
        "void Startup()\r\n{\r\n     Execute (\"C:\\a.exe\", \"\", 1, \"\");\r\n"
        "     Execute C:\\b.exe\r\n     Execute (\"C:\\c.exe\", \"\", 2, \"\");\r\n}\r\n";
    test::WriteFileBytes(dl.FilePath(), broken);
    dl.LoadItems();
    ASSERT_EQ(messages.shown.size(), 1u);
    EXPECT_EQ(messages.shown[0].Text, app.text.Message(13));
    EXPECT_EQ(messages.shown[0].Title, "Tolvane - Error");
    EXPECT_EQ(messages.shown[0].Style, static_cast<unsigned>(kMbIconInformation));
    ASSERT_EQ(app.model.ProgramGroups.size(), 1u);
    EXPECT_EQ(app.model.ProgramGroups[0].Programs.back().Path, ""); // the slot of the bad line
    EXPECT_EQ(app.model.ProgramGroups[0].Programs[0].Path, "C:\\a.exe");
    // The next write replaces the file with what was read; the copy keeps the rest.
    EXPECT_EQ(test::ReadFileBytes(dl.UnreadableCopyPath()), broken);

    test::WriteFileBytes(dl.FilePath(), "");
    dl.LoadItems();
    EXPECT_EQ(messages.shown.size(), 2u);
    ASSERT_EQ(app.model.ProgramGroups.size(), 1u);
    EXPECT_EQ(app.model.ProgramGroups[0].Name, "");
}

TEST_F(ProgramGroupFileOnDisk, AWriteThatCannotReplaceTheFileLeavesItAsItWas) {
    CDelayLoad dl(app);
    dl.LoadItems();
    const std::string before = test::ReadFileBytes(dl.FilePath());
    test::FillWriterModel(app.model, 1, 10);
    {
        // Another program holds the file open without sharing it.
        UniqueFile lock(CreateFileA(dl.FilePath().c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                                    0, nullptr));
        ASSERT_TRUE(lock);
        EXPECT_THROW(dl.WriteItems(), FileError);
    }
    EXPECT_EQ(test::ReadFileBytes(dl.FilePath()), before);
    EXPECT_FALSE(test::PathExists(dl.FilePath() + ".new"));
    dl.WriteItems();
    EXPECT_EQ(test::ReadFileBytes(dl.FilePath()),
              FormatProgramGroupFile(app.model, app.text.Languages));
}

// A writer killed at any moment leaves the old file or the new one, whole.
TEST_F(ProgramGroupFileOnDisk, AKilledWriterNeverLeavesATornFile) {
    constexpr int kPrograms = 4000;
    CDelayLoad dl(app);
    std::string expected[2];
    for (int v = 0; v < 2; ++v) {
        test::FillWriterModel(app.model, v, kPrograms);
        expected[v] = FormatProgramGroupFile(app.model, app.text.Languages);
    }
    test::FillWriterModel(app.model, 0, kPrograms);
    dl.WriteItems();

    char self[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, self, MAX_PATH);
    std::string child = self;
    child = child.substr(0, child.find_last_of('\\')) + "\\proggroup_writer_child.exe";
    ASSERT_TRUE(test::PathExists(child)) << child;
    const std::string eventName = "Local\\tolvane-writer-" + std::to_string(GetCurrentProcessId());
    UniqueHandle started(CreateEventA(nullptr, TRUE, FALSE, eventName.c_str()));
    const std::string command = "\"" + child + "\" \"" + folder.Path() + "\" " +
                                std::to_string(kPrograms) + " " + eventName;

    std::mt19937 rng(20261123);
    std::uniform_int_distribution<int> wait(0, 30);
    int seenA = 0, seenB = 0;
    for (int round = 0; round < 300; ++round) {
        STARTUPINFOA si{sizeof si};
        PROCESS_INFORMATION pi{};
        std::string line = command;
        ASSERT_TRUE(CreateProcessA(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr,
                                   nullptr, &si, &pi));
        UniqueHandle process(pi.hProcess), thread(pi.hThread);
        // The kill lands at a random moment once the child writes, however slowly it started.
        ASSERT_EQ(WaitForSingleObject(started.get(), 20000), static_cast<DWORD>(WAIT_OBJECT_0))
            << "round " << round;
        ResetEvent(started.get());
        Sleep(static_cast<DWORD>(wait(rng)));
        TerminateProcess(process.get(), 1);
        WaitForSingleObject(process.get(), INFINITE);

        auto bytes = ReadFileBytes(dl.FilePath());
        ASSERT_TRUE(bytes) << "round " << round;
        if (*bytes == expected[0])
            ++seenA;
        else if (*bytes == expected[1])
            ++seenB;
        else
            FAIL() << "round " << round << ": a torn file of " << bytes->size() << " bytes";
    }
    // The child really wrote both models meanwhile: the kills landed while it worked.
    EXPECT_GT(seenA, 0);
    EXPECT_GT(seenB, 0);
}

} // namespace
} // namespace tolvane
