#include <gtest/gtest.h>

#include <windows.h>

#include <algorithm>

#include "platform/registry.h"
#include "support/win_test_support.h"

namespace tolvane {
namespace {

// A Run value's command listed cut short would be moved and written back cut short.
TEST(Registry, ListsEveryValueWhole) {
    const test::ScratchKey key;
    const std::string path = key.Path();
    const RegistryRoot root = RegistryRoot::CurrentUser;
    CRegistry reg;
    EXPECT_TRUE(reg.EnumValues(root, path + "\\Missing").empty());
    const std::string longName = test::LongText(300, 'A');
    const std::string longData = "C:\\" + test::LongText(5000) + ".exe /x";
    ASSERT_TRUE(reg.SetValue(root, path, longName, test::WideValue(REG_SZ, "C:\\n.exe")));
    ASSERT_TRUE(reg.SetValue(root, path, "E", test::WideValue(REG_EXPAND_SZ, longData)));
    std::vector<std::string> listed;
    for (const auto& [name, value] : reg.EnumValues(root, path))
        listed.push_back(name + "=" + ValueText(value));
    std::sort(listed.begin(), listed.end());
    EXPECT_EQ(listed, (std::vector<std::string>{longName + "=C:\\n.exe", "E=" + longData}));
}

} // namespace
} // namespace tolvane
