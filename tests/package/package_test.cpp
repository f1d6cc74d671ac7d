// The package as a user gets it: the MSI installed, upgraded and removed by the real Windows
// Installer (msiexec).
#include <gtest/gtest.h>

#include <windows.h>
#include <msi.h>
#include <shlobj.h>

#include <string>
#include <vector>

#include "config/delay_load.h"
#include "platform/processes.h"
#include "platform/registry.h"
#include "support/win_test_support.h"
#include "text/strings.h"

namespace tolvane {
namespace {

// The installed products named Tolvane, as "Installed apps" lists them.
std::vector<std::string> InstalledProducts() {
    std::vector<std::string> products;
    char code[39] = {}, name[64] = {};
    for (DWORD i = 0; MsiEnumProductsA(i, code) == ERROR_SUCCESS; ++i) {
        DWORD size = sizeof name;
        if (MsiGetProductInfoA(code, INSTALLPROPERTY_INSTALLEDPRODUCTNAME, name, &size) ==
                ERROR_SUCCESS &&
            std::string(name) == "Tolvane")
            products.push_back(code);
    }
    return products;
}

unsigned long RunAndWait(const std::string& commandLine) {
    test::ChildProcess child(commandLine);
    unsigned long code = 999;
    EXPECT_TRUE(child.WaitForExit(120000, &code)) << commandLine;
    return code;
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
    // one entry in "Installed apps".
    for (const char* file : {"Tolvane.exe", "tolvanec.exe", "Tolvane.chm", "lang\\languagefile.dat",
                             "lang\\en\\messages.en", "data\\safelist.dat", "data\\online.txt",
                             "policy\\Tolvane.admx", "policy\\de-DE\\Tolvane.adml"})
        EXPECT_TRUE(test::PathExists(installed + "\\" + file)) << file;
    const std::string shortcut = test::ShellFolder(CSIDL_PROGRAMS) + "\\Tolvane.lnk";
    EXPECT_EQ(ToLower(ShortcutTarget(shortcut)), ToLower(exe));
    ASSERT_EQ(InstalledProducts().size(), 1u);

    // A Run value delayed by the installed console program, which writes the program-group
    // file into the program's folder: its user can write to it.
    const std::string probe = "\"C:\\Probe\\probe.exe\" --tray";
    ASSERT_TRUE(reg.SaveSettingString(RegistryRoot::CurrentUser, kRunKey, "PackageProbe", probe));
    ASSERT_EQ(RunAndWait(console + "delay PackageProbe --location user-run"), 0u);
    const std::string delayed = UsersData();
    ASSERT_NE(delayed.find("PackageProbe\");"), std::string::npos);
    EXPECT_NE(delayed.find("||" + probe), std::string::npos); // out of the Run key, saved

    // The next version replaces the program (one entry still), brings its own Run value in step
    // and leaves everything of the user's as it was.
    ASSERT_EQ(RunAndWait("msiexec /i \"" + upgrade + "\" /qn"), 0u);
    ASSERT_EQ(InstalledProducts().size(), 1u);
    EXPECT_EQ(UsersData(), delayed);
    EXPECT_EQ(ToLower(Run("Tolvane")), ToLower("\"" + exe + "\" -nogui"));

    // Uninstalling ends the copy that waits in the tray, removes the program's files and its
    // own Run value, and keeps the user's data: the file, the saved value, the log-on items.
    test::ChildProcess waiting("\"" + exe + "\" -nogui");
    ASSERT_TRUE(test::WindowOf(waiting.Id(), "TolvaneStartupItems", false, 10000));
    ASSERT_EQ(RunAndWait("msiexec /x \"" + upgrade + "\" /qn"), 0u);
    EXPECT_TRUE(waiting.WaitForExit(5000)) << "the waiting copy was not ended";
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
    EXPECT_TRUE(test::PathExists(data + "\\proggroup.c"));
    EXPECT_EQ(RunAndWait("\"" + folder + "\\tolvanec.exe\" list --csv"), 0u);
}

} // namespace
} // namespace tolvane
