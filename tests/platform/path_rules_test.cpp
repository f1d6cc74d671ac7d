#include <gtest/gtest.h>

#include "platform/path_rules.h"
#include "platform/unique_any.h"

namespace tolvane {
namespace {

TEST(PathRules, SearchPathsJoinWithOneSeparator) {
    EXPECT_EQ(JoinSearchPath("C:\\a", "b.lnk"), "C:\\a\\b.lnk");
    EXPECT_EQ(JoinSearchPath("C:\\a\\", "b.lnk"), "C:\\a\\b.lnk");
    EXPECT_EQ(JoinSearchPath("C:\\a\\\\", "b.lnk"), "C:\\a\\b.lnk");
    EXPECT_EQ(JoinSearchPath("C:\\a\\\\\\", "b"), "C:\\a\\\\b"); // left to right: three become two
    EXPECT_EQ(JoinSearchPath("C:\\Items\\Current User\\", "*.*"), "C:\\Items\\Current User\\*.*");
    // A network path keeps its two leading separators.
    EXPECT_EQ(JoinSearchPath("\\\\server\\share", "x.lnk"), "\\\\server\\share\\x.lnk");
    EXPECT_EQ(JoinSearchPath("\\\\server\\\\share", "x"), "\\\\server\\share\\x");
    EXPECT_EQ(WithTrailingBackslash("C:\\a"), "C:\\a\\");
    EXPECT_EQ(WithTrailingBackslash("C:\\a\\"), "C:\\a\\");
}

struct CountingTraits {
    using Type = int;
    static int Invalid() { return 0; }
    static void Close(int h) { closed.push_back(h); }
    static inline std::vector<int> closed;
};

TEST(UniqueAny, EachHandleIsClosedExactlyOnce) {
    CountingTraits::closed.clear();
    {
        UniqueAny<CountingTraits> a(1);
        UniqueAny<CountingTraits> b(std::move(a)); // ownership moves, nothing closes
        EXPECT_FALSE(a);
        EXPECT_TRUE(b);
        UniqueAny<CountingTraits> c(2);
        c = std::move(b); // 2 closes, 1 moves on
        EXPECT_EQ(CountingTraits::closed, std::vector<int>{2});
        *c.put() = 3; // put closes 1 before the new handle arrives
        EXPECT_EQ(CountingTraits::closed, (std::vector<int>{2, 1}));
        UniqueAny<CountingTraits> d(4);
        EXPECT_EQ(d.release(), 4); // released: the caller owns it now
        c = std::move(c);          // self-move keeps the handle
        EXPECT_EQ(c.get(), 3);
    }
    EXPECT_EQ(CountingTraits::closed, (std::vector<int>{2, 1, 3}));
}

} // namespace
} // namespace tolvane
