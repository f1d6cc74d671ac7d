#include "platform/file_operation_request.h"

#include "text/strings.h"

namespace tolvane {

namespace {

std::string PathList(std::string_view path) {
    std::string list(path);
    list.append(2, '\0');
    return list;
}

} // namespace

std::string_view DefaultProgressTitle(FileOperation function) {
    switch (function) {
    case FileOperation::Move:
        return "Moving...";
    case FileOperation::Copy:
        return "Copying...";
    case FileOperation::Delete:
        return "Deleting...";
    case FileOperation::Rename:
        return "Renaming...";
    }
    return "";
}

std::optional<FileOperationRequest>
MakeFileOperationRequest(FileOperation function, std::string_view source, std::string_view target,
                         std::string_view title, FileOperationFlags flags) {
    const bool hasTarget = function != FileOperation::Delete;
    if (source.empty() || (hasTarget && target.empty()))
        return std::nullopt;
    FileOperationRequest request;
    request.function = function;
    request.sourceList = PathList(source);
    if (hasTarget)
        request.targetList = PathList(target);
    request.title = std::string(title.empty() ? DefaultProgressTitle(function) : title);
    request.flags = flags;
    return request;
}

std::string TargetFolder(std::string_view target, unsigned codePage) {
    const size_t last = FindLastCharacterOf(target, "\\", codePage);
    if (last == std::string_view::npos)
        return std::string();
    const std::string_view folder = target.substr(0, last);
    std::string out;
    out.reserve(folder.size());
    size_t i = 0;
    bool afterSeparator = false;
    if (StartsWith(folder, "\\\\")) {
        out = "\\\\";
        i = 2;
        afterSeparator = true;
    }
    while (i < folder.size()) {
        const size_t n = CharacterLength(folder, i, codePage);
        const bool separator = n == 1 && folder[i] == '\\';
        if (!separator || !afterSeparator)
            out.append(folder.substr(i, n));
        afterSeparator = separator;
        i += n;
    }
    while (out.size() > 2 && EndsWithCharacter(out, '\\', codePage))
        out.pop_back();
    // A drive ("C:") or nothing but separators: the folder is there or cannot be made.
    if (out.empty() || out == "\\\\" || out == "\\" || (out.size() == 2 && out[1] == ':'))
        return std::string();
    return out;
}

} // namespace tolvane
