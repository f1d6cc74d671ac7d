#include "startup/run_entry.h"

#include "platform/registry.h"
#include "startup/app_state.h"

namespace tolvane {

namespace {

void Apply(AppState& app, int mode, const std::string& user, const std::string& machine) {
    CRegistry reg;
    const std::string& command = app.folders.RunCommand;
    switch (mode) {
    case 0:
        if (!user.empty())
            reg.DeleteValue(RegistryRoot::CurrentUser, kRunKey, kOwnRunValue);
        if (!machine.empty())
            reg.DeleteValue(RegistryRoot::LocalMachine, kRunKey, kOwnRunValue);
        break;
    case 2:
        if (!machine.empty())
            reg.DeleteValue(RegistryRoot::LocalMachine, kRunKey, kOwnRunValue);
        if (user.empty())
            reg.SaveSettingString(RegistryRoot::CurrentUser, kRunKey, kOwnRunValue, command);
        break;
    case 3:
        if (!user.empty())
            reg.DeleteValue(RegistryRoot::CurrentUser, kRunKey, kOwnRunValue);
        if (machine.empty())
            reg.SaveSettingString(RegistryRoot::LocalMachine, kRunKey, kOwnRunValue, command);
        break;
    case 1:
        if (app.model.AreAllUserDelays())
            Apply(app, 3, user, machine);
        else if (app.model.AreUserDelays())
            Apply(app, 2, user, machine);
        else if (!user.empty() || !machine.empty())
            Apply(app, 0, user, machine);
        break;
    }
}

} // namespace

bool UpdateRunEntry(AppState& app, int mode) {
    if (mode == -1) {
        if (app.model.StartupType > 1)
            return true;
        if (app.model.StartupType <= 0)
            return false;
        return app.model.AreAllUserDelays() || app.model.AreUserDelays();
    }
    if (mode < 0 || mode > 3)
        return false;
    CRegistry reg;
    const std::string user = reg.GetSettingString(RegistryRoot::CurrentUser, kRunKey, kOwnRunValue);
    const std::string machine =
        reg.GetSettingString(RegistryRoot::LocalMachine, kRunKey, kOwnRunValue);
    Apply(app, mode, user, machine);
    return false;
}

} // namespace tolvane
