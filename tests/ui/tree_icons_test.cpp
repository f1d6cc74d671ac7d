#include <gtest/gtest.h>

#include <windows.h>

#include <cstdlib>
#include <set>
#include <vector>

#include "platform/handles.h"
#include "resource_ids.h"
#include "support/win_test_support.h"

namespace tolvane {
namespace {

// The pixels of an icon drawn at 16 by 16 on white, as 0x00RRGGBB.
std::vector<uint32_t> DrawnAt16(HICON icon) {
    UniqueDc dc(CreateCompatibleDC(nullptr));
    BITMAPINFO info{};
    info.bmiHeader = {sizeof(BITMAPINFOHEADER), 16, -16, 1, 32, BI_RGB};
    void* bits = nullptr;
    UniqueGdiObject dib(CreateDIBSection(dc.get(), &info, DIB_RGB_COLORS, &bits, nullptr, 0));
    if (!dib)
        return {};
    ScopedSelection selected(dc.get(), dib.get());
    RECT all{0, 0, 16, 16};
    FillRect(dc.get(), &all, static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH)));
    DrawIconEx(dc.get(), 0, 0, icon, 16, 16, 0, nullptr, DI_NORMAL);
    GdiFlush();
    const auto* p = static_cast<const uint32_t*>(bits);
    std::vector<uint32_t> pixels;
    for (int i = 0; i < 256; ++i)
        pixels.push_back(p[i] & 0xffffff);
    return pixels;
}

TEST(TreeIcons, EachIsInTheProgramAtEverySizeAndTheyDiffer) {
    const char* bin = std::getenv("TOLVANE_BIN_DIR");
    ASSERT_NE(bin, nullptr);
    const std::string exe = test::WinePathOfUnixPath(bin) + "\\Tolvane.exe";
    UniqueModule program(LoadLibraryExA(exe.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE));
    ASSERT_TRUE(program) << exe;

    std::set<std::vector<uint32_t>> looks;
    for (int id = IDI_TREE_USER; id <= IDI_TREE_STOPPED; ++id) {
        // The icon group's directory lists one image per size.
        HRSRC group = FindResourceA(program.get(), MAKEINTRESOURCEA(id), MAKEINTRESOURCEA(14));
        ASSERT_NE(group, nullptr) << id;
        const auto* dir =
            static_cast<const BYTE*>(LockResource(LoadResource(program.get(), group)));
        ASSERT_NE(dir, nullptr);
        const int count = dir[4] | dir[5] << 8;
        std::set<int> sizes;
        for (int i = 0; i < count; ++i)
            sizes.insert(dir[6 + 14 * i]); // each entry starts with its width
        EXPECT_EQ(sizes, (std::set<int>{16, 24, 32, 48})) << id;

        UniqueIcon icon(static_cast<HICON>(
            LoadImageA(program.get(), MAKEINTRESOURCEA(id), IMAGE_ICON, 16, 16, 0)));
        ASSERT_TRUE(icon) << id;
        const std::vector<uint32_t> pixels = DrawnAt16(icon.get());
        int drawn = 0;
        for (uint32_t p : pixels)
            drawn += p != 0xffffff;
        EXPECT_GT(drawn, 60) << id; // a picture, not a speck
        looks.insert(pixels);
    }
    EXPECT_EQ(looks.size(), 6u);
}

} // namespace
} // namespace tolvane
