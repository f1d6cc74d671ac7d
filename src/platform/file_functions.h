// Moves, copies, renames and deletes files through the shell, which handles moves between
// volumes and, when asked, missing target folders and confirmation questions. Stateless: one
// shell request per call, and failure shows only in the result.
#pragma once

// <windows.h> maps MoveFile, CopyFile and DeleteFile to their ANSI names. It is included here
// so that every user of this class sees the members under the same, mapped, names.
#include <windows.h>

#include <cstdint>
#include <string_view>

#include "platform/file_operation_request.h"

namespace tolvane {

class CFileFunctions {
public:
    // Each returns what the shell returned, 0 on success, or 0 without asking the shell when
    // the source or (but for a delete) the target is empty. An empty title stands for the
    // operation's own ("Moving..." and so on).
    int32_t MoveFile(std::string_view source, std::string_view target, HWND owner,
                     std::string_view title, FileOperationFlags flags);
    int32_t CopyFile(std::string_view source, std::string_view target, HWND owner,
                     std::string_view title, FileOperationFlags flags);
    int32_t RenameFile(std::string_view source, std::string_view target, HWND owner,
                       std::string_view title, FileOperationFlags flags);
    int32_t DeleteFile(std::string_view source, HWND owner, std::string_view title,
                       FileOperationFlags flags);

    // Puts an existing ordinary file (no folder, no hidden or system file) on the shell's list
    // of recent documents; anything else is left alone.
    void AddFileToRecentDocs(std::string_view path);

private:
    int32_t Run(FileOperation function, std::string_view source, std::string_view target,
                HWND owner, std::string_view title, FileOperationFlags flags);
};

} // namespace tolvane
