#include "platform/file_functions.h"

#include <shellapi.h>
#include <shlobj.h>

#include <string>

#include "platform/dir_struct.h"

namespace tolvane {

namespace {

// A request that may make folders must find the target's folder in place: Wine's shell moves
// into a missing folder fail instead of making it, as Windows does. The folder is made only
// when there is something to move, so that a failing request leaves no trace on either system.
void PrepareTargetFolder(const std::string& source, std::string_view target) {
    if (GetFileAttributesA(source.c_str()) == INVALID_FILE_ATTRIBUTES)
        return;
    const std::string folder = TargetFolder(target);
    if (folder.empty() || GetFileAttributesA(folder.c_str()) != INVALID_FILE_ATTRIBUTES)
        return;
    SHCreateDirectoryExA(nullptr, folder.c_str(), nullptr);
}

} // namespace

int32_t CFileFunctions::Run(FileOperation function, std::string_view source,
                            std::string_view target, HWND owner, std::string_view title,
                            FileOperationFlags flags) {
    std::optional<FileOperationRequest> request =
        MakeFileOperationRequest(function, source, target, title, flags);
    if (!request)
        return 0;
    if ((flags & kFofNoConfirmMkdir) &&
        (function == FileOperation::Move || function == FileOperation::Copy))
        PrepareTargetFolder(std::string(source), target);

    SHFILEOPSTRUCTA op{};
    op.hwnd = owner;
    op.wFunc = static_cast<UINT>(function);
    op.pFrom = request->sourceList.c_str();
    op.pTo = request->targetList.empty() ? nullptr : request->targetList.c_str();
    op.fFlags = request->flags;
    op.lpszProgressTitle = request->title.c_str();
    return SHFileOperationA(&op);
}

int32_t CFileFunctions::MoveFile(std::string_view source, std::string_view target, HWND owner,
                                 std::string_view title, FileOperationFlags flags) {
    return Run(FileOperation::Move, source, target, owner, title, flags);
}

} // namespace tolvane
