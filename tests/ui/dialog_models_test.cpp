// The rules of the options dialog and the tip of the day, on the real file format: what OK
// stores and in which order, what the boxes let through, which tip is drawn, and when closing
// the tip writes its box back.
#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <utility>

#include "config/program_group_file.h"
#include "platform/log_rules.h"
#include "support/test_support.h"
#include "text/text_tables.h"
#include "ui/options/options_model.h"
#include "ui/tips/tip_model.h"

namespace tolvane {
namespace {

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
    std::vector<std::string> calls;
    std::string file;
    bool failWrite = false;
    std::function<void(ProgramModel&)> changedElsewhere;
};

class OptionsTest : public ::testing::Test {
protected:
    void SetUp() override { SetDefaultModel(model); } // 30 s, types 1 and 1, tips 1
    OptionsModel Open(std::string decimal = ".") {
        return OptionsModel(model, host, messages, TextTables().Messages, std::move(decimal));
    }

    ProgramModel model;
    RecordingHost host{model};
    test::CapturedMessages messages;
};

TEST_F(OptionsTest, OkWritesOnlyWhatChangedInThePartsOrder) {
    // Opened and confirmed as it stands: nothing is called.
    OptionsModel options = Open();
    EXPECT_EQ(options.DelayText, "30");
    EXPECT_EQ(options.RunAtLogin, 1);
    EXPECT_EQ(options.CloseMethod, 1);
    EXPECT_TRUE(options.ShowTips);
    EXPECT_FALSE(options.Changed());
    EXPECT_TRUE(options.Ok());
    EXPECT_TRUE(host.calls.empty());

    // Only the close button: the file, and the Run keys left alone.
    options.CloseMethod = 0;
    EXPECT_TRUE(options.Ok());
    EXPECT_EQ(host.calls, std::vector<std::string>{"Change"});
    EXPECT_TRUE(host.Holds("const CloseType = 0;"));
    EXPECT_TRUE(host.Holds("const StartupType = 1;"));

    // The start-up type: the Run entry first, with the settings still the old ones, then one
    // write of the new settings. What the user left alone stays as the file has it.
    host.calls.clear();
    OptionsModel again = Open();
    again.RunAtLogin = 3;
    again.DelayText = "2.5";
    EXPECT_TRUE(again.Ok());
    EXPECT_EQ(host.calls,
              (std::vector<std::string>{"UpdateRunEntry 3 while StartupType 1", "Change"}));
    EXPECT_TRUE(host.Holds("const StartupType = 3;"));
    EXPECT_TRUE(host.Holds("const MainStartupDelay = 2.5;"));
    EXPECT_TRUE(host.Holds("const ShowTipsAtStartup = 1;"));
    // Shown again as it was typed.
    EXPECT_EQ(Open().DelayText, "2.5");
    EXPECT_FALSE(Open().Changed());

    // No start-up type chosen and a change elsewhere: -1 is passed on and stored.
    host.calls.clear();
    OptionsModel none = Open();
    none.RunAtLogin = -1;
    none.ShowTips = false;
    none.WaitForIdle = true;
    EXPECT_TRUE(none.Ok());
    EXPECT_TRUE(host.Holds("const WaitForIdle = 1;"));
    EXPECT_EQ(host.calls.front(), "UpdateRunEntry -1 while StartupType 3");
    EXPECT_EQ(model.StartupType, -1);
    EXPECT_TRUE(host.Holds("const ShowTipsAtStartup = 0;"));
    // A ticked box is stored as -1.
    OptionsModel tips = Open();
    tips.ShowTips = true;
    EXPECT_TRUE(tips.Ok());
    EXPECT_TRUE(host.Holds("const ShowTipsAtStartup = -1;"));
    EXPECT_TRUE(messages.shown.empty());
}

// The dialog was open while another copy of the program (tolvanec from a script, say) changed
// the file: OK stores what the user changed over what the file holds now, and what the other
// copy wrote stays.
TEST_F(OptionsTest, OkKeepsWhatAnotherCopyWroteMeanwhile) {
    OptionsModel options = Open();
    host.changedElsewhere = [](ProgramModel& file) {
        file.CloseType = 0;
        file.AddProgramToGroup(file.StartupGroupIndex, "ExecuteReg", "C:\\chat.exe", "-min", 0,
                               "Chat");
    };
    options.DelayText = "12";
    EXPECT_TRUE(options.Ok());
    EXPECT_TRUE(host.Holds("const MainStartupDelay = 12;"));
    EXPECT_TRUE(host.Holds("const CloseType = 0;"));
    EXPECT_TRUE(host.Holds("ExecuteReg (\"C:\\chat.exe\", \"-min\", 0, \"Chat\");"));
}

TEST_F(OptionsTest, ADelayThatIsNoNumberOrAFailedWriteKeepsTheDialogOpenAndChangesNothing) {
    // All users cannot start the program from inside one user's profile: refused, with the
    // folder named, and nothing changed.
    host.profileFolder = "C:\\Users\\Ann\\AppData\\Local\\Programs\\Tolvane";
    OptionsModel forAll = Open();
    forAll.RunAtLogin = 3;
    EXPECT_FALSE(forAll.Ok());
    EXPECT_EQ(host.calls.size(), 1u);
    EXPECT_NE(messages.shown.back().Text.find("\r\n" + host.profileFolder + "\r\n"),
              std::string::npos);
    EXPECT_EQ(model.StartupType, 1);
    forAll.RunAtLogin = 2; // for this user only, it may
    EXPECT_TRUE(forAll.Ok());
    EXPECT_TRUE(host.Holds("const StartupType = 2;"));
    model.StartupType = 1;
    host.profileFolder.clear();
    host.calls.clear();

    for (const char* bad : {"", "1.2.3", "-1", "1e3", "1,5", "5 s", "."}) {
        OptionsModel options = Open();
        options.DelayText = bad;
        options.RunAtLogin = 2;
        EXPECT_FALSE(options.Ok()) << bad;
        ASSERT_EQ(host.calls.size(), 1u) << bad;
        EXPECT_EQ(host.calls[0].rfind("Log 1 Set Startup Delay error: ", 0), 0u) << host.calls[0];
        host.calls.clear();
    }
    EXPECT_EQ(model.StartupType, 1);
    EXPECT_EQ(messages.shown.back().Text, TextTables().Message(7));

    // The locale's own separator is read as well as a full stop.
    OptionsModel comma = Open(",");
    comma.DelayText = "2,5";
    EXPECT_TRUE(comma.Ok());
    EXPECT_FLOAT_EQ(model.MainStartupDelay, 2.5f);
    EXPECT_EQ(Open(",").DelayText, "2.5");

    // A file that cannot be written: logged, told, and the settings as the file still has
    // them, so that OK once more tries again.
    host.calls.clear();
    host.failWrite = true;
    OptionsModel options = Open();
    options.CloseMethod = 0;
    options.WaitForIdle = true;
    EXPECT_FALSE(options.Ok());
    EXPECT_EQ(host.calls,
              std::vector<std::string>{"Log 1 Set Startup Delay error: the disk is full"});
    EXPECT_EQ(messages.shown.back().Text, "The settings could not be saved:\r\nthe disk is full");
    EXPECT_EQ(model.CloseType, 1);
    EXPECT_EQ(model.WaitForIdle, 0);
    host.failWrite = false;
    EXPECT_TRUE(options.Ok());
    EXPECT_TRUE(host.Holds("const CloseType = 0;"));
}

TEST(OptionsKeys, TheDelayBoxTakesDigitsAndAFullStopOnly) {
    std::string taken;
    for (int c = 1; c < 128; ++c)
        if (OptionsModel::DelayKeyAllowed(static_cast<char>(c)))
            taken += static_cast<char>(c);
    EXPECT_EQ(taken, ".0123456789"); // no Backspace, no minus, no comma
}

TEST(TipOfDay, DrawsEveryLineOfTheFileAsATip) {
    double next = 0;
    TipOfDay tips([&] { return next; });
    const std::vector<std::string> texts = BuiltInTipTexts();

    // One line: always that line.
    ASSERT_TRUE(tips.LoadTips(std::string("Only tip\r\n")));
    for (double r : {0.0, 0.5, 0.999999}) {
        next = r;
        tips.ShowRandomTip();
        EXPECT_EQ(tips.Shown(texts), "Only tip");
    }

    // An empty last line is a tip too; the draws cover each tip once over [0, 1).
    next = 0.9;
    ASSERT_TRUE(tips.LoadTips(std::string("First\r\nSecond\nThird\r\n\r\n")));
    EXPECT_EQ(tips.Tips().size(), 4u);
    EXPECT_EQ(tips.Current(), 4);
    EXPECT_EQ(tips.Shown(texts), "");
    std::vector<std::string> drawn;
    for (double r : {0.0, 0.25, 0.5, 0.75, 1.0}) {
        next = r;
        tips.ShowRandomTip();
        drawn.push_back(tips.Shown(texts));
    }
    EXPECT_EQ(drawn, (std::vector<std::string>{"First", "Second", "Third", "", ""}));

    // No file, or a file with nothing in it: the table's text, however often Next is pressed.
    TipOfDay none([] { return 0.5; });
    EXPECT_FALSE(none.LoadTips(std::nullopt));
    none.ShowRandomTip();
    EXPECT_EQ(none.Shown(texts), texts[kTipNoTips]);
    EXPECT_TRUE(none.LoadTips(std::string()));
    EXPECT_EQ(none.Shown(texts), texts[kTipNoTips]);
}

TEST(TipOfDay, ClosingWritesTheBoxBackOnlyWhenItChanged) {
    EXPECT_EQ(TipOfDay::ShowTipsOnClose(false, 1), 0);
    EXPECT_EQ(TipOfDay::ShowTipsOnClose(false, -1), 0);
    EXPECT_EQ(TipOfDay::ShowTipsOnClose(true, 0), 1);
    EXPECT_EQ(TipOfDay::ShowTipsOnClose(true, -1), std::nullopt);
    EXPECT_EQ(TipOfDay::ShowTipsOnClose(true, 1), std::nullopt);
    EXPECT_EQ(TipOfDay::ShowTipsOnClose(false, 0), std::nullopt);
}

} // namespace
} // namespace tolvane
