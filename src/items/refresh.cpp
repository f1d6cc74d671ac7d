#include "items/refresh.h"

#include <windows.h>

#include <exception>
#include <iterator>

#include "config/delay_load.h"
#include "config/delayed_program.h"
#include "config/program_group_store.h"
#include "config/system_command_line.h"
#include "platform/dir_struct.h"
#include "platform/file_io.h"
#include "platform/wide_text.h"
#include "platform/registry.h"
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

// Task Manager's switches of every location, one listing of each of its keys that was written
// since the last refresh read it.
void ReadSwitchedOff(CRegistry& registry, StartupListing& listing) {
    const struct {
        RegistryRoot Root;
        const char* Key;
        SwitchedOffNames* Off;
    } keys[] = {
        {RegistryRoot::CurrentUser, kApprovedFolderKey, &listing.OffUserFolder},
        {RegistryRoot::CurrentUser, kApprovedRunKey, &listing.OffUserRun},
        {RegistryRoot::LocalMachine, kApprovedFolderKey, &listing.OffCommonFolder},
        {RegistryRoot::LocalMachine, kApprovedRunKey, &listing.OffMachineRun},
        {RegistryRoot::LocalMachine, kApprovedRun32Key, &listing.OffMachineRun32},
    };
    // A key written within the clock's last ticks may be written again within the same tick,
    // under the same time: it is read again until its last write is older than that.
    constexpr uint64_t kTrustedAfter = 2 * 10'000'000ull; // two seconds in FILETIME units
    FILETIME nowTime{};
    GetSystemTimeAsFileTime(&nowTime);
    const uint64_t now =
        (static_cast<uint64_t>(nowTime.dwHighDateTime) << 32) | nowTime.dwLowDateTime;
    for (size_t i = 0; i < std::size(keys); ++i) {
        StartupListing::SwitchKeyRead& read = listing.SwitchKeysRead[i];
        const std::optional<uint64_t> written = registry.LastWriteTime(keys[i].Root, keys[i].Key);
        if (read.Read && written && read.Written == written)
            continue;
        *keys[i].Off = SwitchedOffNames(registry.EnumValues(keys[i].Root, keys[i].Key),
                                        CDirStruct::CompareNames);
        const bool settled = written && *written + kTrustedAfter < now;
        read = {settled, written};
    }
}

// Why a delayed program will not start, for its item's tip.
struct Notices {
    const ProgramModel& Model;
    const AppFolders& Folders;
    const TextTables& Text;
    std::string operator()(const GroupProgram& program, bool expandable) const {
        return WhyNotStarted(program, expandable, Model, Folders, Text);
    }
};

} // namespace

bool RefreshData(ProgramGroupStore store, const TextTables& text,
                 const std::vector<SafeEntry>& safeList, EventLog& log, TreeModel& tree,
                 StartupListing& listing, const std::function<void(double)>& progress, bool look) {
    const AppFolders& folders = store.Folders();
    ProgramModel& model = store.Model();
    try {
        const ListedValue own = OwnRunEntry(folders);
        store.Load(look);
        CDirStruct files;
        files.ReturnFiles(folders.UserStartupFolder, listing.UserStartupFiles);
        files.ReturnFiles(folders.CommonStartupFolder, listing.CommonStartupFiles);
        CRegistry registry;
        // Each value by its name and its data, read apart: a name may hold "=".
        auto values = [&](RegistryRoot root) {
            std::vector<ListedValue> listed;
            for (auto& [name, value] : registry.EnumValues(root, kRunKey))
                if (value.Type == REG_SZ || value.Type == REG_EXPAND_SZ)
                    listed.push_back({name, ValueText(value), value.Type == REG_EXPAND_SZ});
            return listed;
        };
        listing.UserRunValues = values(RegistryRoot::CurrentUser);
        listing.MachineRunValues = values(RegistryRoot::LocalMachine);
        listing.MachineRun32Values = values(RegistryRoot::LocalMachine32);
        ReadSwitchedOff(registry, listing);
        const SavedCopies userCopies = ReadSavedCopies(kUserRun);
        listing.SavedUserCopies = userCopies.Copies;
        listing.SavedUserCopyExpandable = userCopies.ExpandableCopies;
        const SavedCopies machineCopies = ReadSavedCopies(kMachineRun);
        listing.SavedMachineCopies = machineCopies.Copies;
        listing.SavedMachineCopyExpandable = machineCopies.ExpandableCopies;
        listing.SavedMachineCopyIs32.clear();
        for (RegistryRoot root : machineCopies.Roots)
            listing.SavedMachineCopyIs32.push_back(root == RegistryRoot::LocalMachine32);
        // Measurements are shown, never needed: a missing or unreadable file shows none.
        const std::optional<std::string> impact = ReadTextFile(store.File().ImpactFilePath());
        listing.Impacts = impact ? ParseImpactFile(*impact, CDirStruct::CompareNames).Records
                                 : std::vector<ImpactRecord>();
        StartupTreeHooks hooks;
        hooks.Folders = &folders;
        hooks.System = &SystemCommandLine();
        hooks.Order = CDirStruct::CompareNames;
        hooks.Timer = SecondsSinceMidnight;
        hooks.Progress = progress;
        hooks.Notice = Notices{model, folders, text};
        hooks.Headings = &text.Toolbar;
        BuildStartupTree(tree, listing, model, own, hooks);
    } catch (const std::exception& e) {
        log.WriteLog(std::string("RefreshData Error: ") + e.what(), kLogError);
        return false;
    }
    try {
        MarkKnown(tree, safeList);
    } catch (const std::exception& e) {
        log.WriteLog(std::string("MarkKnown Error: ") + e.what(), kLogError);
    }
    return true;
}

} // namespace tolvane
