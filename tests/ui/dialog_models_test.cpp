// The rules of the options dialog and the tip of the day, on the real file format: what OK
// stores and in which order, what it refuses, which tip is drawn, and when closing the tip
// writes its box back.
#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <utility>

#include "config/program_group_file.h"
#include "support/test_support.h"
#include "text/text_tables.h"
#include "ui/options/options_model.h"
#include "ui/tips/tip_model.h"

namespace tolvane {
namespace {

using Lines = std::vector<std::string>;

// Records every call with the settings as they stood at that moment; the file is the real
// writer's text, and `model` what it holds.
struct RecordingHost : OptionsHost {
    explicit RecordingHost(ProgramModel& model) : model(model) {}
    void UpdateRunEntry(int type) override {
        calls.push_back("UpdateRunEntry " + std::to_string(type) + " while StartupType " +
                        std::to_string(model.StartupType));
    }
    void Change(const std::function<void(ProgramModel&)>& change) override {
        if (failWrite)
            throw std::runtime_error("the disk is full");
        if (changedElsewhere) // what another copy of the program wrote, read before the change
            std::exchange(changedElsewhere, nullptr)(model);
        change(model);
        calls.push_back("Change");
        file = FormatProgramGroupFile(model, {{"English", "en"}});
    }
    void Log(std::string_view text, int level) override {
        calls.push_back("Log " + std::to_string(level) + " " + std::string(text));
    }
    std::string ProgramFolderOfOneUser() override { return profileFolder; }
    bool Holds(const std::string& line) const { return file.find(line) != std::string::npos; }

    ProgramModel& model;
    std::string profileFolder; // the program folder, when it is inside a profile
    Lines calls;
    std::string file;
    bool failWrite = false;
    std::function<void(ProgramModel&)> changedElsewhere;
};

// The settings start at 30 s, types 1 and 1, tips 1.
class OptionsTest : public ::testing::Test {
protected:
    void SetUp() override { SetDefaultModel(model); }
    OptionsModel Open(std::string decimal = ".") {
        return OptionsModel(model, host, messages, TextTables().Messages, std::move(decimal));
    }
    // What OK called, from a fresh record.
    Lines Ok(OptionsModel& options, bool closes = true) {
        host.calls.clear();
        EXPECT_EQ(options.Ok(), closes);
        return host.calls;
    }

    ProgramModel model;
    RecordingHost host{model};
    test::CapturedMessages messages;
};

TEST_F(OptionsTest, OkStoresWhatChangedOverWhatTheFileHoldsNow) {
    // Opened and confirmed as it stands: nothing is called.
    OptionsModel options = Open();
    EXPECT_EQ(std::tie(options.DelayText, options.RunAtLogin, options.CloseMethod, options.ShowTips,
                       options.WaitForIdle),
              std::tuple("30", 1, 1, true, false));
    EXPECT_EQ(Ok(options), Lines{});
    // A type stored outside the choices shows as none chosen.
    const std::tuple<int, int, int> stored[] = {
        {0, 0, 0}, {2, 2, -1}, {3, 3, -1}, {4, -1, -1}, {-1, -1, -1}};
    for (auto [type, runAtLogin, closeMethod] : stored) {
        model.StartupType = model.CloseType = type;
        const OptionsModel shown = Open();
        EXPECT_EQ(std::pair(shown.RunAtLogin, shown.CloseMethod),
                  std::pair(runAtLogin, closeMethod))
            << type;
    }
    model.StartupType = model.CloseType = 1;

    // Only the close button: the file, and the Run entry left alone. What another copy of the
    // program wrote meanwhile stays.
    host.changedElsewhere = [](ProgramModel& file) {
        file.AddProgramToGroup(file.StartupGroupIndex, "ExecuteReg", "C:\\chat.exe", "", 0, "C");
    };
    options.CloseMethod = 0;
    EXPECT_EQ(Ok(options), Lines{"Change"});
    EXPECT_TRUE(host.Holds("const CloseType = 0;"));
    EXPECT_TRUE(host.Holds("const StartupType = 1;"));
    EXPECT_TRUE(host.Holds("ExecuteReg (\"C:\\chat.exe\", \"\", 0, \"C\");"));

    // The start-up type: the Run entry first, with the settings still the old ones, then one
    // write of the new settings. What the user left alone stays as the file has it, even when
    // another copy changed it since the dialog opened.
    OptionsModel again = Open();
    again.RunAtLogin = 3;
    again.DelayText = "2.5";
    host.changedElsewhere = [](ProgramModel& file) { file.CloseType = 1; };
    EXPECT_EQ(Ok(again), (Lines{"UpdateRunEntry 3 while StartupType 1", "Change"}));
    EXPECT_TRUE(host.Holds("const StartupType = 3;"));
    EXPECT_TRUE(host.Holds("const MainStartupDelay = 2.5;"));
    EXPECT_TRUE(host.Holds("const ShowTipsAtStartup = 1;"));
    EXPECT_TRUE(host.Holds("const CloseType = 1;"));
    EXPECT_EQ(Open().DelayText, "2.5"); // shown again as it was typed

    // No start-up type chosen: -1 is passed on and stored. A cleared box is stored as 0, a
    // ticked tips box as -1.
    OptionsModel none = Open();
    none.RunAtLogin = -1;
    none.ShowTips = false;
    none.WaitForIdle = true;
    EXPECT_EQ(Ok(none).front(), "UpdateRunEntry -1 while StartupType 3");
    EXPECT_EQ(model.StartupType, -1);
    EXPECT_TRUE(host.Holds("const WaitForIdle = 1;"));
    EXPECT_TRUE(host.Holds("const ShowTipsAtStartup = 0;"));
    OptionsModel tips = Open();
    tips.ShowTips = true;
    tips.WaitForIdle = false;
    EXPECT_EQ(Ok(tips), Lines{"Change"});
    EXPECT_TRUE(host.Holds("const ShowTipsAtStartup = -1;"));
    EXPECT_EQ(model.WaitForIdle, 0);
    EXPECT_TRUE(messages.shown.empty());
}

TEST_F(OptionsTest, RefusedOrUnwrittenTheDialogStaysOpenAndNothingChanges) {
    // All users cannot start the program from inside one user's profile: refused, with the
    // folder named. For this user only, it may.
    host.profileFolder = "C:\\Users\\Ann\\AppData\\Local\\Programs\\Tolvane";
    OptionsModel forAll = Open();
    forAll.RunAtLogin = 3;
    EXPECT_EQ(Ok(forAll, false).size(), 1u); // the log line
    EXPECT_NE(messages.shown.back().Text.find("\r\n" + host.profileFolder + "\r\n"),
              std::string::npos);
    EXPECT_EQ(model.StartupType, 1);
    forAll.RunAtLogin = 2;
    EXPECT_EQ(Ok(forAll).back(), "Change");
    model.StartupType = 1;

    // A delay that is no number: logged and told, before anything changes.
    for (const char* bad : {"", "1.2.3", "-1", "1e3", "1,5", "5 s", "."}) {
        OptionsModel options = Open();
        options.DelayText = bad;
        options.RunAtLogin = 2;
        const Lines calls = Ok(options, false);
        ASSERT_EQ(calls.size(), 1u) << bad;
        EXPECT_EQ(calls[0].rfind("Log 1 Set Startup Delay error: ", 0), 0u) << calls[0];
        EXPECT_EQ(messages.shown.back().Text, TextTables().Message(7)) << bad;
    }
    EXPECT_EQ(model.StartupType, 1);

    // The locale's own separator is read as well as a full stop.
    OptionsModel comma = Open(",");
    comma.DelayText = "2,5";
    EXPECT_EQ(Ok(comma), Lines{"Change"});
    EXPECT_FLOAT_EQ(model.MainStartupDelay, 2.5f);
    EXPECT_EQ(Open(",").DelayText, "2.5");

    // A file that cannot be written: logged, told, and the settings as the file still has
    // them, so that OK once more tries again.
    host.failWrite = true;
    OptionsModel options = Open();
    options.CloseMethod = 0;
    options.WaitForIdle = true;
    EXPECT_EQ(Ok(options, false), Lines{"Log 1 Set Startup Delay error: the disk is full"});
    EXPECT_EQ(messages.shown.back().Text, "The settings could not be saved:\r\nthe disk is full");
    EXPECT_EQ(model.CloseType, 1);
    EXPECT_EQ(model.WaitForIdle, 0);
    host.failWrite = false;
    EXPECT_EQ(Ok(options), Lines{"Change"});
    EXPECT_TRUE(host.Holds("const CloseType = 0;"));
}

TEST(TipOfDay, DrawsEveryLineOfTheFileAsATip) {
    double next = 0.9;
    TipOfDay tips([&] { return next; });
    const Lines texts = BuiltInTipTexts();
    // An empty last line is a tip too; the draws cover each tip once over [0, 1), and a draw
    // of 1 still names the last.
    ASSERT_TRUE(tips.LoadTips(std::string("First\r\nSecond\nThird\r\n\r\n")));
    EXPECT_EQ(tips.Current(), 4);
    Lines drawn;
    for (double r : {0.0, 0.2499, 0.25, 0.5, 0.75, 1.0}) {
        next = r;
        tips.ShowRandomTip();
        drawn.push_back(tips.Shown(texts));
    }
    EXPECT_EQ(drawn, (Lines{"First", "First", "Second", "Third", "", ""}));

    // No file, or a file with nothing in it: the table's text, however often Next is pressed.
    TipOfDay none([] { return 0.5; });
    EXPECT_FALSE(none.LoadTips(std::nullopt));
    none.ShowRandomTip();
    EXPECT_EQ(none.Shown(texts), texts[kTipNoTips]);
    EXPECT_TRUE(none.LoadTips(std::string()));
    EXPECT_EQ(none.Shown(texts), texts[kTipNoTips]);
}

// Any setting but 0 is "on": only a real change is written.
TEST(TipOfDay, ClosingWritesTheBoxBackOnlyWhenItChanged) {
    const std::tuple<bool, int, std::optional<int>> cases[] = {
        {false, 1, 0},           {false, -1, 0},          {true, 0, 1}, {true, -1, std::nullopt},
        {true, 1, std::nullopt}, {false, 0, std::nullopt}};
    for (auto [ticked, stored, written] : cases)
        EXPECT_EQ(TipOfDay::ShowTipsOnClose(ticked, stored), written) << ticked << stored;
}

} // namespace
} // namespace tolvane
