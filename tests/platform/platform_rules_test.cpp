#include <gtest/gtest.h>

#include "platform/file_operation_request.h"
#include "platform/min_size.h"
#include "platform/path_rules.h"
#include "platform/program_facts_cache.h"
#include "platform/unique_any.h"

namespace tolvane {
namespace {

using namespace std::string_literals;

TEST(PathRules, SearchPathsJoinWithOneSeparator) {
    EXPECT_EQ(JoinSearchPath("C:\\a", "b.lnk"), "C:\\a\\b.lnk");
    EXPECT_EQ(JoinSearchPath("C:\\a\\\\", "b.lnk"), "C:\\a\\b.lnk");
    EXPECT_EQ(JoinSearchPath("C:\\a\\\\\\", "b"), "C:\\a\\\\b"); // left to right: three become two
    // A network path keeps its two leading separators.
    EXPECT_EQ(JoinSearchPath("\\\\server\\share", "x.lnk"), "\\\\server\\share\\x.lnk");
    EXPECT_EQ(JoinSearchPath("\\\\server\\\\share", "x"), "\\\\server\\share\\x");
    EXPECT_EQ(WithTrailingBackslash("C:\\a\\"), "C:\\a\\");
    EXPECT_EQ(PathLastPart("C:\\a\\b.lnk"), "b.lnk");
    EXPECT_EQ(PathLastPart("C:b.lnk"), "b.lnk");
    EXPECT_EQ(PathLastPart("b.lnk"), "b.lnk");
    // Names of locks that every copy shares: as earlier versions made them, in any letter case.
    EXPECT_EQ(PathHashText(""), "14650fb0739d0383");
    EXPECT_EQ(PathHashText("C:\\Tolvane"), PathHashText("c:\\tolvane"));
    EXPECT_NE(PathHashText("C:\\Tolvane"), PathHashText("C:\\Tolvane2"));
}

// A program's facts hold while its file keeps its size and write time, under any letter case.
TEST(ProgramFactsCache, FactsHoldUntilTheFileChanges) {
    ProgramFactsCache cache;
    const ProgramFacts facts{"Hexmoor Ltd", "Clock", SignatureState::Trusted};
    cache.Keep("C:\\P\\Clock.exe", {100, 7}, facts);
    EXPECT_EQ(cache.Find("c:\\p\\CLOCK.EXE", {100, 7}), facts);
    for (const FileStamp changed : {FileStamp{101, 7}, FileStamp{100, 8}})
        EXPECT_FALSE(cache.Find("C:\\P\\Clock.exe", changed));
    EXPECT_FALSE(cache.Find("C:\\P\\Clock2.exe", {100, 7}));
    cache.Keep("C:\\P\\CLOCK.exe", {101, 7}, {});
    EXPECT_EQ(cache.Find("C:\\P\\Clock.exe", {101, 7}), ProgramFacts{});
    EXPECT_EQ(cache.Count(), 1u);
}

TEST(FileOperationRequest, TargetFolderIsWhatHoldsTheTarget) {
    EXPECT_EQ(TargetFolder("C:\\Items\\Current User\\\\Tool.lnk"), "C:\\Items\\Current User");
    EXPECT_EQ(TargetFolder("C:\\Items\\"), "C:\\Items"); // a trailing "\" names the folder
    EXPECT_EQ(TargetFolder("C:\\a\\\\\\b\\x"), "C:\\a\\b");
    EXPECT_EQ(TargetFolder("\\a\\\\b\\x"), "\\a\\b"); // in the root of the drive
    EXPECT_EQ(TargetFolder("\\\\server\\share\\\\x.lnk"), "\\\\server\\share");
    for (const char* none : {"C:\\x.lnk", "x.lnk", "\\\\x", ""})
        EXPECT_EQ(TargetFolder(none), "") << none;
}

// A folder whose last character ends in the byte of "\": 83 5C in Shift-JIS and in GBK alike.
TEST(PathRules, DoubleByteCharactersKeepTheirTrailBytes) {
    const std::string folder = "C:\\\x83\x5C";
    for (unsigned codePage : {932u, 936u}) {
        SCOPED_TRACE(codePage);
        EXPECT_EQ(WithTrailingBackslash(folder, codePage), folder + "\\");
        EXPECT_EQ(JoinSearchPath(folder, "a.lnk", codePage), folder + "\\a.lnk");
        EXPECT_EQ(JoinSearchPath(folder + "\\", "b", codePage), folder + "\\b");
        EXPECT_EQ(JoinSearchPath("\\\\srv\\\x81\x5C", "x", codePage), "\\\\srv\\\x81\x5C\\x");
        EXPECT_EQ(PathLastPart(folder + "\\\x81\x5C.lnk", codePage), "\x81\x5C.lnk");
        EXPECT_EQ(TargetFolder(folder + "\\x.lnk", codePage), folder);
        EXPECT_EQ(TargetFolder(folder + "\\\\\x83\x5C\\x", codePage), folder + "\\\x83\x5C");
        EXPECT_EQ(TargetFolder(folder, codePage), ""); // in the root of C:
    }
    // The same bytes in a single-byte code page are two characters and a "\".
    EXPECT_EQ(JoinSearchPath(folder, "a.lnk", 1252), folder + "a.lnk");
    EXPECT_EQ(TargetFolder(folder, 1252), "C:\\\x83");
}

TEST(FileOperationRequest, ListsEndInTwoNulsAndEmptyPathsAskNothing) {
    auto move = MakeFileOperationRequest(FileOperation::Move, "C:\\a\\x.lnk", "D:\\b\\\\x.lnk", "",
                                         kQuietFileOperationMakeFolder);
    ASSERT_TRUE(move);
    EXPECT_EQ(move->sourceList, "C:\\a\\x.lnk\0\0"s);
    EXPECT_EQ(move->targetList, "D:\\b\\\\x.lnk\0\0"s); // the shell reads "\\" as one
    EXPECT_EQ(move->title, "Moving...");
    auto del = MakeFileOperationRequest(FileOperation::Delete, "C:\\a\\x.lnk", "ignored", "", 0);
    ASSERT_TRUE(del);
    EXPECT_EQ(del->targetList, ""); // a delete has no target list at all
    EXPECT_EQ(MakeFileOperationRequest(FileOperation::Rename, "a", "b", "", 0)->title,
              "Renaming...");

    EXPECT_FALSE(MakeFileOperationRequest(FileOperation::Move, "C:\\a", "", "", 0));
    EXPECT_FALSE(MakeFileOperationRequest(FileOperation::Move, "", "C:\\b", "", 0));
    EXPECT_FALSE(MakeFileOperationRequest(FileOperation::Delete, "", "", "Deleting", 0));
}

struct CountingTraits {
    using Type = int;
    static int Invalid() { return 0; }
    static void Close(int h) { closed.push_back(h); }
    static inline std::vector<int> closed;
};

TEST(MinimumSize, TheHeldEdgeStopsAtTheMinimumAndTheOppositeOneStays) {
    auto sized = [](unsigned edge, SizingRect r) {
        CorrectSizing(r, edge, 715, 419);
        return std::to_string(r.left) + "," + std::to_string(r.top) + "," +
               std::to_string(r.right) + "," + std::to_string(r.bottom);
    };
    // 300 x 200: the held edges move, the width for left and right, the height for top and
    // bottom, both (independently) for a corner.
    const SizingRect small{100, 100, 400, 300};
    EXPECT_EQ(sized(1, small), "-315,100,400,300");
    EXPECT_EQ(sized(2, small), "100,100,815,300");
    EXPECT_EQ(sized(3, small), "100,-119,400,300");
    EXPECT_EQ(sized(6, small), "100,100,400,519");
    EXPECT_EQ(sized(4, small), "-315,-119,400,300");
    EXPECT_EQ(sized(8, small), "100,100,815,519");
    // What is large enough already stays.
    EXPECT_EQ(sized(7, {100, 100, 400, 700}), "-315,100,400,700");
    EXPECT_EQ(sized(8, {0, 0, 900, 500}), "0,0,900,500");
    // 10725 x 6285 twips are 715 x 419 pixels at 96 dpi, 1073 x 629 at 144 dpi (150 %).
    EXPECT_EQ(TwipsToPixels(10725, 96), 715);
    EXPECT_EQ(TwipsToPixels(6285, 96), 419);
    EXPECT_EQ(TwipsToPixels(10725, 144), 1073);
    EXPECT_EQ(TwipsToPixels(6285, 144), 629);
}

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
