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
    static const char kTexts[] =
        "Startup\0"
        "Don't run at startup\0"
        "Run at startup only when there are delayed items\0"
        "Always run at startup, for me only\0"
        "Always run at startup, for all users\0"
        "Close the program\0"
        "Minimize to the tray\0"
        "The Startup Delay is the delay that the program waits for, BEFORE waiting for the "
        "specified time to run the programs.\0"
        "Example: with a Startup Delay of 30 seconds, a first delayed program with a delay of 5 "
        "seconds starts about 35 seconds after you log on.\0"
        "Startup Delay\0"
        "seconds\0"
        "Run Program at Login\0"
        "Main form's X\0"
        "Show Tips At Startup\0"
        "Start delayed programs when the computer is idle\0"
        "Set by your administrator\0";
    return UnpackTexts(kTexts, sizeof kTexts);
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

OptionsModel::OptionsModel(const ProgramModel& model, OptionsHost& host, UserMessages& messages,
                           std::vector<std::string> messageTable, std::string localeDecimal,
                           const Policies& policies)
    : FixedByPolicy{IsFixed(policies, PolicyValue::MainDelay),
                    IsFixed(policies, PolicyValue::StartupType),
                    IsFixed(policies, PolicyValue::IdleStart)},
      host_(host), messages_(messages), messageTable_(std::move(messageTable)),
      localeDecimal_(std::move(localeDecimal)) {
    const SettingsInForce settings = InForce(model, policies);
    DelayText = FormatSingle(settings.MainDelay);
    RunAtLogin = settings.StartupType >= 0 && settings.StartupType < kStartupTypeCount
                     ? settings.StartupType
                     : -1;
    CloseMethod = model.CloseType >= 0 && model.CloseType < kCloseTypeCount ? model.CloseType : -1;
    ShowTips = model.ShowTipsAtStartup != 0;
    WaitForIdle = settings.IdleStart;
    shown_ = {DelayText, RunAtLogin, CloseMethod, ShowTips, WaitForIdle};
}

bool OptionsModel::Changed() const {
    return DelayText != shown_.DelayText || RunAtLogin != shown_.RunAtLogin ||
           CloseMethod != shown_.CloseMethod || ShowTips != shown_.ShowTips ||
           WaitForIdle != shown_.WaitForIdle;
}

bool OptionsModel::DelayKeyAllowed(char key) {
    return IsDigit(key) || key == '.';
}

bool OptionsModel::Ok() {
    // A fixed setting keeps the value shown, the policy's: nothing of it is stored.
    if (FixedByPolicy.Delay)
        DelayText = shown_.DelayText;
    if (FixedByPolicy.RunAtLogin)
        RunAtLogin = shown_.RunAtLogin;
    if (FixedByPolicy.WaitForIdle)
        WaitForIdle = shown_.WaitForIdle;
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
    if (RunAtLogin == kForAllUsers && RunAtLogin != shown_.RunAtLogin) {
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
    try {
        if (RunAtLogin != shown_.RunAtLogin)
            host_.UpdateRunEntry(RunAtLogin);
        // What the user changed, over the file as it is now: a setting changed meanwhile by
        // another copy of the program stays as that one left it.
        const Shown now{DelayText, RunAtLogin, CloseMethod, ShowTips, WaitForIdle};
        host_.Change([&](ProgramModel& file) {
            if (now.DelayText != shown_.DelayText)
                file.MainStartupDelay = *delay;
            if (now.RunAtLogin != shown_.RunAtLogin)
                file.StartupType = now.RunAtLogin;
            if (now.CloseMethod != shown_.CloseMethod)
                file.CloseType = now.CloseMethod;
            if (now.ShowTips != shown_.ShowTips)
                file.ShowTipsAtStartup = now.ShowTips ? -1 : 0;
            if (now.WaitForIdle != shown_.WaitForIdle)
                file.WaitForIdle = now.WaitForIdle ? 1 : 0;
        });
        shown_ = now;
    } catch (const std::exception& e) {
        // The model holds what the file holds, so OK once more tries again instead of finding
        // nothing changed.
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
