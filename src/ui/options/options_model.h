// The options dialog's rules, without a window: the five settings as the dialog shows them,
// whether OK changed any, and what OK stores, in which order. The dialog renders this model and
// hands the user's typing and choices back.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "config/policies.h"
#include "config/program_model.h"
#include "models/user_messages.h"

namespace tolvane {

// What OK needs from outside: the program's own Run entry, the program-group file and the log.
class OptionsHost {
public:
    virtual ~OptionsHost() = default;
    virtual void UpdateRunEntry(int startupType) = 0;
    // Makes the change on the program-group file as it is now and writes it; the model then
    // holds what was written. Throws when it cannot, leaving the model as the file holds it.
    virtual void Change(const std::function<void(ProgramModel&)>& change) = 0;
    virtual void Log(std::string_view text, int level) = 0;
    // The program folder when it lies inside a user profile, where other users cannot read
    // it; "" when every user can start the program from there.
    virtual std::string ProgramFolderOfOneUser() = 0;
};

// The dialog's own texts, by the lines of its language file; the built-in English ones stand
// for whatever the file does not supply.
enum OptionsText : size_t {
    kOptionsPageName = 0,
    kOptionsRunAtLoginFirst = 1,  // 1 to 4: start-up types 0 to 3
    kOptionsCloseMethodFirst = 5, // 5, 6: close types 0 and 1
    kOptionsTitle = 7,
    kOptionsExample = 8,
    kOptionsStartupDelay = 9,
    kOptionsSeconds = 10,
    kOptionsRunAtStartup = 11,
    kOptionsProgramClosing = 12,
    kOptionsShowTips = 13,
    kOptionsWaitForIdle = 14,
    kOptionsSetByAdministrator = 15, // the tip of a setting fixed by policy
};
inline constexpr int kStartupTypeCount = 4, kCloseTypeCount = 2;
std::vector<std::string> BuiltInOptionsTexts();

// The delay as the user typed it: digits with one decimal separator, a full stop or the one
// the user's locale writes. Nothing else counts as a number of seconds, so a negative delay,
// an exponent or a thousands separator is refused rather than misread.
std::optional<float> ParseDelayText(std::string_view text, std::string_view localeDecimal);

class OptionsModel {
public:
    // messages: the shared message table; localeDecimal: the user's decimal separator.
    // The fields start as the settings stand: the policy's where the administrator fixes one,
    // the model's otherwise.
    OptionsModel(const ProgramModel& model, OptionsHost& host, UserMessages& messages,
                 std::vector<std::string> messageTable, std::string localeDecimal,
                 const Policies& policies = {});

    // The fields as the dialog shows them; they start as the settings stand.
    std::string DelayText;
    int RunAtLogin = -1;  // index of the start-up type's entry; -1: none chosen
    int CloseMethod = -1; // index of the close type's entry; -1: none chosen
    bool ShowTips = false;
    bool WaitForIdle = false;

    // The settings that the administrator's policies fix: the dialog shows them unchangeable,
    // and OK never stores them, so the user's own value is back once the policy goes.
    struct Fixed {
        bool Delay = false, RunAtLogin = false, WaitForIdle = false;
    } FixedByPolicy;

    // The fields differ from what the dialog showed.
    [[nodiscard]] bool Changed() const;
    // OK: stores the changed settings and writes the file. True when the dialog may close;
    // false, with the user told and the failure logged, when it stays open.
    [[nodiscard]] bool Ok();

    // The delay box takes digits and a full stop; Backspace and every other key are dropped.
    static bool DelayKeyAllowed(char key);

private:
    void Fail(std::string_view logText, size_t message, std::string_view extra);

    // The settings as the dialog showed them when it opened: OK stores only what the user
    // changed since, over what the file holds by then.
    struct Shown {
        std::string DelayText;
        int RunAtLogin, CloseMethod;
        bool ShowTips, WaitForIdle;
    } shown_;

    OptionsHost& host_;
    UserMessages& messages_;
    std::vector<std::string> messageTable_;
    std::string localeDecimal_;
};

} // namespace tolvane
