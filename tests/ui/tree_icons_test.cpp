#include <gtest/gtest.h>

#include <windows.h>

#include <cstdlib>
#include <set>

#include "platform/handles.h"
#include "resource_ids.h"
#include "support/win_test_support.h"

namespace tolvane {
namespace {

TEST(TreeIcons, EachIsInTheProgramAtEverySize) {
    const char* bin = std::getenv("TOLVANE_BIN_DIR");
    ASSERT_NE(bin, nullptr);
    const std::string exe = test::WinePathOfUnixPath(bin) + "\\Tolvane.exe";
    UniqueModule program(LoadLibraryExA(exe.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE));
    ASSERT_TRUE(program) << exe;
    for (int id = IDI_TREE_USER; id <= IDI_TREE_STOPPED; ++id) {
        // The icon group's directory: a count at byte 4, then 14-byte entries, width first.
        HRSRC group = FindResourceA(program.get(), MAKEINTRESOURCEA(id), MAKEINTRESOURCEA(14));
        ASSERT_NE(group, nullptr) << id;
        const auto* dir =
            static_cast<const BYTE*>(LockResource(LoadResource(program.get(), group)));
        std::set<int> sizes;
        for (int i = 0; i < (dir[4] | dir[5] << 8); ++i)
            sizes.insert(dir[6 + 14 * i]);
        EXPECT_EQ(sizes, (std::set<int>{16, 24, 32, 48})) << id;
        UniqueIcon icon(static_cast<HICON>(
            LoadImageA(program.get(), MAKEINTRESOURCEA(id), IMAGE_ICON, 16, 16, 0)));
        EXPECT_TRUE(icon) << id;
    }
}

} // namespace
} // namespace tolvane
