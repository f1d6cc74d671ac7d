#include "ui/options/options_model.h"

#include <exception>

#include "platform/log_rules.h"
#include "text/placeholders.h"
#include "text/strings.h"
#include "text/text_tables.h"

namespace tolvane {

namespace {

// Entries of the shared message table.
constexpr size_t kBadDelay = 7;
constexpr size_t kSettingsNotSaved = 19;
constexpr size_t kNotForAllUsers = 30;
constexpr int kForAllUsers = 3;

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

} // namespace

std::vector<std::string> BuiltInOptionsTexts() {
    return {
        "Startup",
        "Don't run at startup",
        "Run at startup only when there are delayed items",
        "Always run at startup, for me only",
        "Always run at startup, for all users",
        "Close the program",
        "Minimize to the tray",
        "The Startup Delay is the delay that the program waits for, BEFORE waiting for the "
        "specified time to run the programs.",
        "Example: with a Startup Delay of 30 seconds, a first delayed program with a delay of 5 "
        "seconds starts about 35 seconds after you log on.",
        "Startup Delay",
        "seconds",
        "Run Program at Login",
        "Main form's X",
        "Show Tips At Startup",
        "Start delayed programs when the computer is idle",
    };
}

std::optional<float> ParseDelayText(std::string_view text, std::string_view localeDecimal) {
    const std::string trimmed = Trim(text);
    std::string number;
    bool separatorSeen = false;
    for (size_t i = 0; i < trimmed.size(); ++i) {
        if (IsDigit(trimmed[i])) {
            number += trimmed[i];
            continue;
        }
        size_t length = 0;
        if (trimmed[i] == '.')
            length = 1;
        else if (!localeDecimal.empty() &&
                 trimmed.compare(i, localeDecimal.size(), localeDecimal) == 0)
            length = localeDecimal.size();
        if (length == 0 || separatorSeen)
            return std::nullopt;
        separatorSeen = true;
        number += '.';
        i += length - 1;
    }
    if (number.empty() || number == ".")
        return std::nullopt;
    return ParseSingle(number);
}

OptionsModel::OptionsModel(ProgramModel& model, OptionsHost& host, UserMessages& messages,
                           std::vector<std::string> messageTable, std::string localeDecimal)
    : DelayText(FormatSingle(model.MainStartupDelay)),
      RunAtLogin(model.StartupType >= 0 && model.StartupType < kStartupTypeCount ? model.StartupType
                                                                                 : -1),
      CloseMethod(model.CloseType >= 0 && model.CloseType < kCloseTypeCount ? model.CloseType : -1),
      ShowTips(model.ShowTipsAtStartup != 0), WaitForIdle(model.WaitForIdle != 0), model_(model),
      host_(host), messages_(messages), messageTable_(std::move(messageTable)),
      localeDecimal_(std::move(localeDecimal)) {}

bool OptionsModel::Changed() const {
    return DelayText != FormatSingle(model_.MainStartupDelay) ||
           ShowTips != (model_.ShowTipsAtStartup != 0) ||
           WaitForIdle != (model_.WaitForIdle != 0) || CloseMethod != model_.CloseType ||
           RunAtLogin != model_.StartupType;
}

bool OptionsModel::DelayKeyAllowed(char key) {
    return IsDigit(key) || key == '.';
}

bool OptionsModel::Ok() {
    if (!Changed())
        return true;
    // The delay is read before anything is changed: a delay that is no number leaves the Run
    // entry, the settings and the file as they were, rather than a Run entry that the file
    // contradicts.
    const std::optional<float> delay = ParseDelayText(DelayText, localeDecimal_);
    if (!delay) {
        Fail("\"" + DelayText + "\" is not a number of seconds", kBadDelay, "");
        return false;
    }
    // Started for all users from a folder that they cannot read, Windows would fail to start
    // the program for each of them at log-on, and nothing delayed would start: refused, with
    // everything left as it was.
    if (RunAtLogin == kForAllUsers && RunAtLogin != model_.StartupType) {
        const std::string folder = host_.ProgramFolderOfOneUser();
        if (!folder.empty()) {
            host_.Log("Options: start-up for all users refused, the program folder " + folder +
                          " is inside a user profile",
                      kLogWarning);
            messages_.ShowMessage(
                FillIn(TextTables::Entry(messageTable_, kNotForAllUsers), {folder}), "Tolvane",
                kMbOk | kMbIconExclamation);
            return false;
        }
    }
    struct Settings {
        float delay;
        int startupType, closeType, showTips, waitForIdle;
    } const before{model_.MainStartupDelay, model_.StartupType, model_.CloseType,
                   model_.ShowTipsAtStartup, model_.WaitForIdle};
    try {
        if (RunAtLogin != model_.StartupType)
            host_.UpdateRunEntry(RunAtLogin);
        model_.MainStartupDelay = *delay;
        model_.StartupType = RunAtLogin;
        model_.CloseType = CloseMethod;
        model_.ShowTipsAtStartup = ShowTips ? -1 : 0;
        if (WaitForIdle != (model_.WaitForIdle != 0))
            model_.WaitForIdle = WaitForIdle ? 1 : 0;
        host_.WriteItems();
    } catch (const std::exception& e) {
        // The settings go back to what the file holds, so that OK once more tries again
        // instead of finding nothing changed.
        model_.MainStartupDelay = before.delay;
        model_.StartupType = before.startupType;
        model_.CloseType = before.closeType;
        model_.ShowTipsAtStartup = before.showTips;
        model_.WaitForIdle = before.waitForIdle;
        Fail(e.what(), kSettingsNotSaved, e.what());
        return false;
    }
    return true;
}

void OptionsModel::Fail(std::string_view logText, size_t message, std::string_view extra) {
    host_.Log("Set Startup Delay error: " + std::string(logText), kLogError);
    messages_.ShowMessage(TextTables::Entry(messageTable_, message) + std::string(extra), "Tolvane",
                          kMbOk | kMbIconExclamation);
}

} // namespace tolvane
