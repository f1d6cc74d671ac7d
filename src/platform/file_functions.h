// Moves files through the shell, which handles moves between volumes and, when asked, missing
// target folders and confirmation questions. Stateless: one
// shell request per call, and failure shows only in the result.
#pragma once

// <windows.h> maps MoveFile to its ANSI name. It is included here
// so that every user of this class sees the members under the same, mapped, names.
#include <windows.h>

#include <cstdint>
#include <string_view>

#include "platform/file_operation_request.h"

namespace tolvane {

class CFileFunctions {
public:
    // Returns what the shell returned, 0 on success, or 0 without asking the shell when the
    // source or the target is empty. An empty title stands for the shell's own ("Moving...").
    int32_t MoveFile(std::string_view source, std::string_view target, HWND owner,
                     std::string_view title, FileOperationFlags flags);

private:
    int32_t Run(FileOperation function, std::string_view source, std::string_view target,
                HWND owner, std::string_view title, FileOperationFlags flags);
};

} // namespace tolvane
