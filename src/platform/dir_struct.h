// The questions the program asks of folders: is this exact name there, make a folder, list a
// folder, remove an empty one. Stateless; failures show only in the results.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tolvane {

class CDirStruct {
public:
    // A subfolder of exactly that name; when missing and create is set, makes it (the last
    // level only) and returns whether that worked.
    bool DirectoryExists(std::string_view name, std::string_view folder, bool create);
    // The folder's entries in the platform's order, subfolders and hidden entries included,
    // without ".", ".." and "desktop.ini"; one "" when there are none or the folder is missing.
    bool ReturnFiles(std::string_view folder, std::vector<std::string>& out);

    // A plain lookup of an ordinary file: no folders, no hidden or system files.
    static bool OrdinaryFileExists(std::string_view path);
    // An entry stands at the path (absolute, or relative to the current folder) whose own name
    // is the path's last part, in any letter case as Windows compares file names. A wildcard
    // matches nothing, and neither does an entry's short 8.3 alias, which the platform's own
    // lookup would also take.
    static bool NamedFileExists(std::string_view path);
    // Two names of files or values are the same to Windows: equal but for letter case, for
    // every letter the system folds (ordinal comparison, as the file system and the registry
    // compare names).
    static bool SameName(std::string_view a, std::string_view b);
    // Their order in that comparison: below, equal to or above 0. What the Win32-free code is
    // handed as its NameOrder.
    static int CompareNames(std::string_view a, std::string_view b);

private:
    bool FindEntry(std::string_view name, std::string_view folder, bool foldersOnly);
};

} // namespace tolvane
