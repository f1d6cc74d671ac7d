#include "platform/dir_struct.h"

#include <windows.h>

#include "platform/handles.h"
#include "platform/path_rules.h"
#include "platform/wide_text.h"

namespace tolvane {

namespace {

// Folders are read through the wide calls: a name of 260 characters may take three times as many
// bytes in UTF-8, more than the narrow record holds.
std::string EntryName(const WIN32_FIND_DATAW& data) {
    const wchar_t* name = data.cFileName;
    return Narrow(std::wstring_view(name, wcsnlen(name, MAX_PATH)));
}

HANDLE FindFirst(std::string_view pattern, WIN32_FIND_DATAW* data) {
    return FindFirstFileW(Wide(pattern).c_str(), data);
}

} // namespace

bool CDirStruct::FindEntry(std::string_view name, std::string_view folder, bool foldersOnly) {
    WIN32_FIND_DATAW data{};
    UniqueFind find(FindFirst(JoinSearchPath(folder, name), &data));
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
    } while (FindNextFileW(find.get(), &data));
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
    WIN32_FIND_DATAW data{};
    UniqueFind find(FindFirst(JoinSearchPath(folder, "*.*"), &data));
    if (!find)
        return true;
    do {
        std::string entry = EntryName(data);
        if (entry == "." || entry == ".." || entry == "desktop.ini")
            continue;
        if (!out.back().empty())
            out.emplace_back();
        out.back() = std::move(entry);
    } while (FindNextFileW(find.get(), &data));
    return true;
}

bool CDirStruct::SameName(std::string_view a, std::string_view b) {
    return a == b || CompareNames(a, b) == 0;
}

int CDirStruct::CompareNames(std::string_view a, std::string_view b) {
    const std::wstring wa = Wide(a), wb = Wide(b);
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
    WIN32_FIND_DATAW data{};
    UniqueFind find(FindFirst(path, &data));
    if (!find)
        return false;
    do {
        if (SameName(EntryName(data), name))
            return true;
    } while (FindNextFileW(find.get(), &data));
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
