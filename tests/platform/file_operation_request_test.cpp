#include <gtest/gtest.h>

#include "platform/file_operation_request.h"

namespace tolvane {
namespace {

using namespace std::string_literals;

TEST(FileOperationRequest, ListsEndInTwoNulsAndTitlesFallBackToTheOperations) {
    auto move = MakeFileOperationRequest(FileOperation::Move, "C:\\a\\x.lnk", "D:\\b\\\\x.lnk", "",
                                         kQuietFileOperationMakeFolder);
    ASSERT_TRUE(move);
    EXPECT_EQ(move->sourceList, "C:\\a\\x.lnk\0\0"s);
    EXPECT_EQ(move->targetList, "D:\\b\\\\x.lnk\0\0"s); // the shell reads "\\" as one
    EXPECT_EQ(move->title, "Moving...");
    EXPECT_EQ(move->flags, 0x214);
    EXPECT_EQ(kQuietFileOperation, 0x14);

    auto del = MakeFileOperationRequest(FileOperation::Delete, "C:\\a\\x.lnk", "ignored", "", 0x14);
    ASSERT_TRUE(del);
    EXPECT_EQ(del->title, "Deleting...");
    EXPECT_EQ(del->targetList, ""); // a delete has no target list at all
    del = MakeFileOperationRequest(FileOperation::Delete, "C:\\a\\x.lnk", "", "Deleting", 0x14);
    ASSERT_TRUE(del);
    EXPECT_EQ(del->title, "Deleting");

    EXPECT_EQ(MakeFileOperationRequest(FileOperation::Copy, "a", "b", "", 0)->title, "Copying...");
    EXPECT_EQ(MakeFileOperationRequest(FileOperation::Rename, "a", "b", "", 0)->title,
              "Renaming...");
}

TEST(FileOperationRequest, NothingIsAskedWithoutSourceOrNeededTarget) {
    EXPECT_FALSE(MakeFileOperationRequest(FileOperation::Move, "C:\\a", "", "", 0x214));
    EXPECT_FALSE(MakeFileOperationRequest(FileOperation::Copy, "C:\\a", "", "", 0x14));
    EXPECT_FALSE(MakeFileOperationRequest(FileOperation::Rename, "C:\\a", "", "", 0x14));
    EXPECT_FALSE(MakeFileOperationRequest(FileOperation::Move, "", "C:\\b", "", 0x14));
    EXPECT_FALSE(MakeFileOperationRequest(FileOperation::Delete, "", "", "Deleting", 0x14));
    EXPECT_TRUE(MakeFileOperationRequest(FileOperation::Delete, "C:\\a", "", "", 0x14));
}

TEST(FileOperationRequest, TargetFolderIsWhatHoldsTheTarget) {
    EXPECT_EQ(TargetFolder("C:\\Items\\Current User\\\\Tool.lnk"), "C:\\Items\\Current User");
    EXPECT_EQ(TargetFolder("C:\\Items\\"), "C:\\Items"); // a trailing "\" names the folder
    EXPECT_EQ(TargetFolder("C:\\a\\\\\\b\\x"), "C:\\a\\b");
    EXPECT_EQ(TargetFolder("\\\\server\\share\\\\x.lnk"), "\\\\server\\share");
    EXPECT_EQ(TargetFolder("C:\\x.lnk"), "");
    EXPECT_EQ(TargetFolder("x.lnk"), "");
    EXPECT_EQ(TargetFolder("\\\\x"), "");
    EXPECT_EQ(TargetFolder(""), "");
}

} // namespace
} // namespace tolvane
