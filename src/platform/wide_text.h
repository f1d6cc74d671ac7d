// Text between the program's code page (UTF-8 where Windows honours the manifest) and UTF-16,
// for the calls and files that take the wide form.
#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <string_view>

namespace tolvane {

// From text of the code page (the process's own unless named) to UTF-16, and back. Characters
// that the target cannot hold become its replacement character.
std::wstring Wide(std::string_view text, unsigned codePage = 0);
std::string Narrow(std::wstring_view text, unsigned codePage = 0);

// The code page in which earlier versions and other editors wrote the program's text files: the
// system locale's ANSI code page, which GetACP gave before the program declared UTF-8.
unsigned LegacyCodePage();

// The text of a file that a person or an earlier version may have written: UTF-8 (a byte-order
// mark is dropped) or, when the bytes are not UTF-8, the legacy code page; in the program's
// code page. Nullopt when there is no such file or it cannot be read.
std::optional<std::string> ReadTextFile(const std::string& path);
// The same for bytes already read.
std::string TextOfFile(std::string bytes);

// Puts the text on the clipboard as Unicode text, for the owner window; false when it could not.
[[nodiscard]] bool CopyToClipboard(HWND owner, std::string_view text);

} // namespace tolvane
