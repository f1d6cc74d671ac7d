#include "items/refresh.h"

#include <windows.h>

#include <exception>

#include "config/delay_load.h"
#include "config/delayed_program.h"
#include "config/program_group_store.h"
#include "platform/dir_struct.h"
#include "platform/file_io.h"
#include "platform/registry.h"
#include "items/run_entry.h"
#include "text/strings.h"

namespace tolvane {

long long SecondsSinceMidnight() {
    SYSTEMTIME now{};
    GetLocalTime(&now);
    const double seconds =
        now.wHour * 3600.0 + now.wMinute * 60.0 + now.wSecond + now.wMilliseconds / 1000.0;
    return RoundHalfEven(seconds);
}

namespace {

// Task Manager's switches of every location, one listing of each of its keys.
void ReadSwitchedOff(CRegistry& registry, StartupListing& listing) {
    auto off = [&](RegistryRoot root, const char* key) {
        return SwitchedOffNames(registry.EnumValues(root, key));
    };
    listing.OffUserFolder = off(RegistryRoot::CurrentUser, kApprovedFolderKey);
    listing.OffUserRun = off(RegistryRoot::CurrentUser, kApprovedRunKey);
    listing.OffCommonFolder = off(RegistryRoot::LocalMachine, kApprovedFolderKey);
    listing.OffMachineRun = off(RegistryRoot::LocalMachine, kApprovedRunKey);
    listing.OffMachineRun32 = off(RegistryRoot::LocalMachine, kApprovedRun32Key);
}

} // namespace

bool RefreshData(AppState& app, TreeModel& tree, StartupListing& listing,
                 const std::function<void(double)>& progress, bool ownRunEntry) {
    try {
        const std::string own = OwnRunEntry(app.folders);
        // The file first: the program's own Run value follows the settings and the delayed
        // items the file holds, not whatever this process held before it read them.
        ProgramGroupStore(app).Load(!ownRunEntry);
        if (ownRunEntry)
            UpdateRunEntry(app, app.model.StartupType);
        CDirStruct folders;
        folders.ReturnFiles(app.folders.UserStartupFolder, listing.UserStartupFiles);
        folders.ReturnFiles(app.folders.CommonStartupFolder, listing.CommonStartupFiles);
        CRegistry registry;
        registry.EnumKey(RegistryRoot::CurrentUser, kRunKey, listing.UserRunValues);
        registry.EnumKey(RegistryRoot::LocalMachine, kRunKey, listing.MachineRunValues);
        registry.EnumKey(RegistryRoot::LocalMachine32, kRunKey, listing.MachineRun32Values);
        ReadSwitchedOff(registry, listing);
        const SavedCopies machineCopies = ReadSavedCopies(kMachineRun);
        listing.SavedMachineCopies = machineCopies.Copies;
        listing.SavedMachineCopyIs32.clear();
        for (RegistryRoot root : machineCopies.Roots)
            listing.SavedMachineCopyIs32.push_back(root == RegistryRoot::LocalMachine32);
        // Measurements are shown, never needed: a missing or unreadable file shows none.
        const std::optional<std::string> impact = ReadFileBytes(CDelayLoad(app).ImpactFilePath());
        listing.Impacts = impact ? ParseImpactFile(*impact).Records : std::vector<ImpactRecord>();
        listing.DelayedNotices = WhyNotStarted(app);
        StartupTreeHooks hooks;
        hooks.Timer = SecondsSinceMidnight;
        hooks.Progress = progress;
        BuildStartupTree(tree, listing, app.model, own, hooks);
    } catch (const std::exception& e) {
        app.log.WriteLog(std::string("RefreshData Error: ") + e.what(), kLogError);
        return false;
    }
    try {
        MarkKnown(tree, app.SafeList);
    } catch (const std::exception& e) {
        app.log.WriteLog(std::string("MarkKnown Error: ") + e.what(), kLogError);
    }
    return true;
}

} // namespace tolvane
