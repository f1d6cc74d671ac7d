// The packages as a user gets them: the MSI installed, upgraded and removed by the real
// Windows Installer (msiexec), and the portable zip unzipped and run.
#include <gtest/gtest.h>

#include <windows.h>
#include <msi.h>
#include <shlobj.h>

#include <optional>
#include <string>
#include <vector>

#include "config/delay_load.h"
#include "platform/handles.h"
#include "platform/processes.h"
#include "platform/registry.h"
#include "platform/version_info.h"
#include "support/win_test_support.h"
#include "text/strings.h"

namespace tolvane {
namespace {

std::string ProductInfo(const std::string& product, const char* property) {
    char value[512] = {};
    DWORD size = sizeof value;
    return MsiGetProductInfoA(product.c_str(), property, value, &size) == ERROR_SUCCESS ? value
                                                                                        : "";
}

// The installed products named Tolvane, as "Installed apps" lists them.
std::vector<std::string> InstalledProducts() {
    std::vector<std::string> products;
    char code[39] = {};
    for (DWORD i = 0; MsiEnumProductsA(i, code) == ERROR_SUCCESS; ++i)
        if (ProductInfo(code, INSTALLPROPERTY_INSTALLEDPRODUCTNAME) == "Tolvane")
            products.push_back(code);
    return products;
}

// The fixed file version of an exe as its resource states it: "major.minor.revision".
std::string FileVersion(const std::string& exe) {
    UniqueModule module(LoadLibraryExA(exe.c_str(), nullptr,
                                       LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE));
    const std::optional<ModuleVersion> v = module ? ReadModuleVersion(module.get()) : std::nullopt;
    return v ? std::to_string(v->Major) + "." + std::to_string(v->Minor) + "." +
                   std::to_string(v->Revision)
             : "";
}

unsigned long RunAndWait(const std::string& commandLine) {
    test::ChildProcess child(commandLine);
    unsigned long code = 999;
    EXPECT_TRUE(child.WaitForExit(120000, &code)) << commandLine;
    return code;
}

// The line the delayed program appended to its record as it started: each wait ends when
// something in the record's folder changes, at most 50 of them (and 30 s each, a safeguard).
std::string StartRecorded(const std::string& folder, const std::string& record) {
    HANDLE change = FindFirstChangeNotificationA(
        folder.c_str(), FALSE, FILE_NOTIFY_CHANGE_FILE_NAME | FILE_NOTIFY_CHANGE_SIZE);
    auto read = [&] { return test::PathExists(record) ? test::ReadFileBytes(record) : ""; };
    std::string line = read();
    for (int i = 0; i < 50 && line.find("\r\n") == std::string::npos &&
                    WaitForSingleObject(change, 30000) == WAIT_OBJECT_0;
         ++i) {
        FindNextChangeNotification(change);
        line = read();
    }
    FindCloseChangeNotification(change);
    return line;
}

class Package : public ::testing::Test {
protected:
    void SetUp() override { TearDown(); }
    void TearDown() override {
        for (const std::string& product : InstalledProducts())
            RunAndWait("msiexec /x " + product + " /qn");
        test::RemoveTree(installed);
        places.Clear();
    }
    std::string Run(const std::string& name) {
        return reg.GetSettingString(RegistryRoot::CurrentUser, kRunKey, name);
    }
    // Everything of the user's: the program-group file, the delayed value and its saved copy.
    std::string UsersData() {
        return test::ReadFileBytes(groupFile) + "|" + Run("PackageProbe") + "|" +
               reg.GetSettingString(RegistryRoot::CurrentUser, kSavedUserRunKey, "PackageProbe");
    }

    test::StartupLocations places;
    CRegistry reg;
    const std::string msi = test::WinePathOfUnixPath(TOLVANE_MSI),
                      upgrade = test::WinePathOfUnixPath(TOLVANE_UPGRADE_MSI);
    const std::string installed = test::ShellFolder(CSIDL_LOCAL_APPDATA) + "\\Programs\\Tolvane";
    const std::string exe = installed + "\\Tolvane.exe";
    const std::string console = "\"" + installed + "\\tolvanec.exe\" ";
    const std::string groupFile = installed + "\\" + WindowsUserName() + "\\proggroup.c";
};

TEST_F(Package, InstallsForOneUserRunsUpgradesAndUninstallsKeepingTheUsersData) {
    ASSERT_EQ(RunAndWait("msiexec /i \"" + msi + "\" /qn"), 0u);

    // The program's files in the user's own Programs folder, a Start-menu shortcut to it, and
    // an entry in "Installed apps" with its publisher and version.
    for (const char* file : {"Tolvane.exe", "tolvanec.exe", "Tolvane.chm", "lang\\languagefile.dat",
                             "lang\\en\\messages.en", "data\\safelist.dat", "data\\online.txt"})
        EXPECT_TRUE(test::PathExists(installed + "\\" + file)) << file;
    const std::string shortcut = test::ShellFolder(CSIDL_PROGRAMS) + "\\Tolvane.lnk";
    EXPECT_EQ(ToLower(ShortcutTarget(shortcut)), ToLower(exe));
    std::vector<std::string> products = InstalledProducts();
    ASSERT_EQ(products.size(), 1u);
    EXPECT_EQ(ProductInfo(products[0], INSTALLPROPERTY_PUBLISHER), "Hexmoor");
    // One version in the exe, in "Installed apps" and in the package's name.
    const std::string version = ProductInfo(products[0], INSTALLPROPERTY_VERSIONSTRING);
    EXPECT_EQ(version, FileVersion(exe));
    EXPECT_NE(std::string(TOLVANE_MSI).find("/Tolvane-" + version + ".msi"), std::string::npos);

    // The installed program starts and writes its first program-group file into its folder,
    // which its user can write to; with nothing delayed its log-on run ends at once.
    EXPECT_EQ(RunAndWait("\"" + exe + "\" -nogui"), 0u);
    EXPECT_NE(test::ReadFileBytes(groupFile).find("MainStartupDelay"), std::string::npos);

    // A Run value delayed by the installed console program.
    const std::string record = installed + "\\started.txt";
    const std::string probe =
        "\"" + test::WinePathOfUnixPath(TOLVANE_START_RECORDER) + "\" \"" + record + "\" probe";
    ASSERT_TRUE(reg.SaveSettingString(RegistryRoot::CurrentUser, kRunKey, "PackageProbe", probe));
    ASSERT_EQ(RunAndWait(console + "delay PackageProbe --location user-run"), 0u);
    EXPECT_EQ(ToLower(Run("Tolvane")), ToLower("\"" + exe + "\" -nogui"));
    const std::string delayed = UsersData();
    ASSERT_NE(delayed.find("PackageProbe\");"), std::string::npos);
    EXPECT_NE(delayed.find("||" + probe), std::string::npos); // out of the Run key, saved

    // The next version replaces the program and leaves everything of the user's as it was:
    // the delayed item still starts.
    ASSERT_EQ(RunAndWait("msiexec /i \"" + upgrade + "\" /qn"), 0u);
    products = InstalledProducts();
    ASSERT_EQ(products.size(), 1u);
    const std::string next = ProductInfo(products[0], INSTALLPROPERTY_VERSIONSTRING);
    EXPECT_NE(next, version);
    EXPECT_NE(std::string(TOLVANE_UPGRADE_MSI).find("/Tolvane-" + next + ".msi"),
              std::string::npos);
    EXPECT_EQ(UsersData(), delayed);
    EXPECT_EQ(ToLower(Run("Tolvane")), ToLower("\"" + exe + "\" -nogui"));
    ASSERT_EQ(RunAndWait(console + "run-startup"), 0u);
    EXPECT_EQ(StartRecorded(installed, record).rfind("probe ", 0), 0u);

    // Uninstalling ends the copy that waits in the tray, removes the program's files and its
    // own Run value, and keeps the user's data: the file, the saved value, the log-on items.
    test::ChildProcess waiting("\"" + exe + "\" -nogui");
    ASSERT_TRUE(test::WindowOf(waiting.Id(), "TolvaneStartupItems", false, 10000));
    ASSERT_EQ(RunAndWait("msiexec /x \"" + upgrade + "\" /qn"), 0u);
    EXPECT_TRUE(waiting.WaitForExit(5000)) << "the waiting copy was not ended";
    EXPECT_TRUE(InstalledProducts().empty());
    for (const char* file : {"Tolvane.exe", "tolvanec.exe", "Tolvane.chm", "lang", "data"})
        EXPECT_FALSE(test::PathExists(installed + "\\" + file)) << file;
    EXPECT_FALSE(test::PathExists(shortcut));
    EXPECT_EQ(Run("Tolvane"), "");
    EXPECT_EQ(UsersData(), delayed);
}

// Unzipped by the test's set-up into a folder of the build: the whole program, which runs there
// and keeps its data beside itself.
TEST_F(Package, ThePortableZipRunsWhereItIsUnzipped) {
    const std::string folder = test::WinePathOfUnixPath(TOLVANE_PORTABLE_DIR) + "\\Tolvane";
    for (const char* file : {"Tolvane.exe", "tolvanec.exe", "Tolvane.chm", "README.txt",
                             "lang\\languagefile.dat", "data\\safelist.dat"})
        EXPECT_TRUE(test::PathExists(folder + "\\" + file)) << file;
    const std::string data = folder + "\\" + WindowsUserName();
    test::RemoveTree(data);
    // Nothing is delayed yet: the log-on run has nothing to wait for and ends at once.
    EXPECT_EQ(RunAndWait("\"" + folder + "\\Tolvane.exe\" -nogui"), 0u);
    EXPECT_NE(test::ReadFileBytes(data + "\\proggroup.c").find("MainStartupDelay"),
              std::string::npos);
    EXPECT_EQ(RunAndWait("\"" + folder + "\\tolvanec.exe\" list --csv"), 0u);
    test::RemoveTree(data);
}

} // namespace
} // namespace tolvane
