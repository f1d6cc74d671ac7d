#include "platform/wide_text.h"

#include <windows.h>

#include <cstring>

#include "platform/file_io.h"
#include "platform/handles.h"
#include "text/code_page.h"

namespace tolvane {

std::wstring Wide(std::string_view text, unsigned codePage) {
    const int size = static_cast<int>(text.size());
    const int n = size ? MultiByteToWideChar(codePage, 0, text.data(), size, nullptr, 0) : 0;
    std::wstring wide(static_cast<size_t>(n > 0 ? n : 0), L'\0');
    if (n > 0)
        MultiByteToWideChar(codePage, 0, text.data(), size, wide.data(), n);
    return wide;
}

std::string Narrow(std::wstring_view text, unsigned codePage) {
    const int size = static_cast<int>(text.size());
    const int n =
        size ? WideCharToMultiByte(codePage, 0, text.data(), size, nullptr, 0, nullptr, nullptr)
             : 0;
    std::string out(static_cast<size_t>(n > 0 ? n : 0), '\0');
    if (n > 0)
        WideCharToMultiByte(codePage, 0, text.data(), size, out.data(), n, nullptr, nullptr);
    return out;
}

unsigned LegacyCodePage() {
    unsigned codePage = 0;
    // The number itself, not its digits: LOCALE_RETURN_NUMBER fills a DWORD.
    if (!GetLocaleInfoA(LOCALE_SYSTEM_DEFAULT, LOCALE_IDEFAULTANSICODEPAGE | LOCALE_RETURN_NUMBER,
                        reinterpret_cast<char*>(&codePage), sizeof codePage / sizeof(char)) ||
        codePage == 0 || codePage == CP_UTF8)
        codePage = 1252; // a system without a legacy code page: Western European, as Windows
    return codePage;
}

std::string TextOfFile(std::string bytes) {
    std::string_view text = WithoutUtf8Mark(bytes);
    const unsigned from = IsUtf8(text) ? CP_UTF8 : LegacyCodePage();
    const unsigned to = GetACP();
    if (from == to)
        return text.size() == bytes.size() ? std::move(bytes) : std::string(text);
    return Narrow(Wide(text, from), to);
}

std::optional<std::string> ReadTextFile(const std::string& path) {
    std::optional<std::string> bytes = ReadFileBytes(path);
    if (bytes)
        *bytes = TextOfFile(std::move(*bytes));
    return bytes;
}

bool CopyToClipboard(HWND owner, std::string_view text) {
    const std::wstring wide = Wide(text);
    const size_t bytes = (wide.size() + 1) * sizeof(wchar_t);
    UniqueGlobal memory(GlobalAlloc(GMEM_MOVEABLE, bytes));
    if (!memory)
        return false;
    void* data = GlobalLock(memory.get());
    if (!data)
        return false;
    std::memcpy(data, wide.c_str(), bytes);
    GlobalUnlock(memory.get());
    if (!OpenClipboard(owner))
        return false;
    const bool placed = EmptyClipboard() && SetClipboardData(CF_UNICODETEXT, memory.get());
    if (placed)
        memory.release(); // the clipboard's now
    CloseClipboard();
    return placed;
}

} // namespace tolvane
