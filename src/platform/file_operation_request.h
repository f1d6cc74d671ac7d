// What one shell file operation asks for, worked out without the platform so that the rules
// are tested natively: when a request is made at all, the NUL-separated path lists the shell
// reads, the progress title, and the folder that a move must find in place.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "text/code_page.h"

namespace tolvane {

// The shell's operation codes.
enum class FileOperation : uint32_t { Move = 1, Copy = 2, Delete = 3, Rename = 4 };

// The shell's operation flags, 16 bits wide.
using FileOperationFlags = uint16_t;
inline constexpr FileOperationFlags kFofSilent = 0x0004;         // no progress window
inline constexpr FileOperationFlags kFofNoConfirmation = 0x0010; // "yes" to every question
inline constexpr FileOperationFlags kFofNoConfirmMkdir = 0x0200; // make missing folders quietly
// What the startup-item moves pass. The undo flag is never among them: a delete removes the
// file for good instead of putting it into the recycle bin.
inline constexpr FileOperationFlags kQuietFileOperation = kFofSilent | kFofNoConfirmation;
inline constexpr FileOperationFlags kQuietFileOperationMakeFolder =
    kQuietFileOperation | kFofNoConfirmMkdir;

struct FileOperationRequest {
    FileOperation function = FileOperation::Move;
    // Each list is the path and two NULs, both inside the string: the shell reads a list of
    // paths that ends with an empty one.
    std::string sourceList;
    std::string targetList; // "" for a delete, which has no target
    std::string title;
    FileOperationFlags flags = 0;
};

std::string_view DefaultProgressTitle(FileOperation function);

// The request for one operation, or nothing when the source, or for every operation but a
// delete the target, is empty: then the shell is not asked at all.
std::optional<FileOperationRequest>
MakeFileOperationRequest(FileOperation function, std::string_view source, std::string_view target,
                         std::string_view title, FileOperationFlags flags);

// The folder that is to hold a target path: everything before its last "\", with repeated
// separators made one (a network path's leading pair stays) and no trailing one. A target that
// ends with "\" names that folder itself. "" when there is no folder worth making: a bare name
// or a drive's root.
std::string TargetFolder(std::string_view target, unsigned codePage = ActiveCodePage());

} // namespace tolvane
