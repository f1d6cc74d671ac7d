#include "platform/dir_struct.h"

#include <windows.h>

#include "platform/handles.h"
#include "platform/path_rules.h"

namespace tolvane {

namespace {

std::string EntryName(const WIN32_FIND_DATAA& data) {
    const char* name = data.cFileName;
    return std::string(name, strnlen(name, MAX_PATH));
}

} // namespace

bool CDirStruct::FindEntry(std::string_view name, std::string_view folder, bool foldersOnly) {
    WIN32_FIND_DATAA data{};
    UniqueFind find(FindFirstFileA(JoinSearchPath(folder, name).c_str(), &data));
    if (!find)
        return false;
    do {
        std::string entry = EntryName(data);
        if (entry == "." || entry == "..")
            continue;
        if (entry != name)
            continue;
        if (foldersOnly && !(data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY))
            continue;
        return true;
    } while (FindNextFileA(find.get(), &data));
    return false;
}

bool CDirStruct::DirectoryExists(std::string_view name, std::string_view folder, bool create) {
    if (FindEntry(name, folder, true))
        return true;
    if (!create)
        return false;
    std::string path = WithTrailingBackslash(folder) + std::string(name);
    return CreateDirectoryA(path.c_str(), nullptr) != 0;
}

bool CDirStruct::ReturnFiles(std::string_view folder, std::vector<std::string>& out) {
    out.assign(1, std::string());
    WIN32_FIND_DATAA data{};
    UniqueFind find(FindFirstFileA(JoinSearchPath(folder, "*.*").c_str(), &data));
    if (!find)
        return true;
    do {
        std::string entry = EntryName(data);
        if (entry == "." || entry == ".." || entry == "desktop.ini")
            continue;
        if (!out.back().empty())
            out.emplace_back();
        out.back() = std::move(entry);
    } while (FindNextFileA(find.get(), &data));
    return true;
}

bool CDirStruct::SameName(std::string_view a, std::string_view b) {
    return a == b || CompareNames(a, b) == 0;
}

int CDirStruct::CompareNames(std::string_view a, std::string_view b) {
    auto wide = [](std::string_view s) {
        const int n = MultiByteToWideChar(CP_ACP, 0, s.data(), static_cast<int>(s.size()),
                                          nullptr, 0);
        std::wstring w(static_cast<size_t>(n > 0 ? n : 0), L'\0');
        if (n > 0)
            MultiByteToWideChar(CP_ACP, 0, s.data(), static_cast<int>(s.size()), w.data(), n);
        return w;
    };
    const std::wstring wa = wide(a), wb = wide(b);
    switch (CompareStringOrdinal(wa.data(), static_cast<int>(wa.size()), wb.data(),
                                 static_cast<int>(wb.size()), TRUE)) {
    case CSTR_LESS_THAN:
        return -1;
    case CSTR_EQUAL:
        return 0;
    case CSTR_GREATER_THAN:
        return 1;
    }
    // The comparison failed (it cannot for valid lengths): the bytes decide, so that the order
    // stays an order.
    return a < b ? -1 : a == b ? 0 : 1;
}

bool CDirStruct::NamedFileExists(std::string_view path) {
    if (path.empty() || path.find_first_of("*?") != std::string_view::npos)
        return false;
    const std::string_view name = PathLastPart(path);
    WIN32_FIND_DATAA data{};
    UniqueFind find(FindFirstFileA(std::string(path).c_str(), &data));
    if (!find)
        return false;
    do {
        if (SameName(EntryName(data), name))
            return true;
    } while (FindNextFileA(find.get(), &data));
    return false;
}

bool CDirStruct::OrdinaryFileExists(std::string_view path) {
    DWORD attributes = GetFileAttributesA(std::string(path).c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES)
        return false;
    return !(attributes &
             (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM));
}

} // namespace tolvane
