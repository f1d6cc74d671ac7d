#include "platform/file_io.h"

#include <windows.h>

#include <utility>

#include "platform/handles.h"
#include "platform/wide_text.h"
#include "text/code_page.h"

namespace tolvane {

std::string SystemErrorText(unsigned long code) {
    char* buffer = nullptr;
    DWORD n = FormatMessageA(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM |
                                 FORMAT_MESSAGE_IGNORE_INSERTS,
                             nullptr, code, 0, reinterpret_cast<char*>(&buffer), 0, nullptr);
    std::string text = n && buffer ? std::string(buffer, n) : "error " + std::to_string(code);
    if (buffer)
        LocalFree(buffer);
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r' || text.back() == ' '))
        text.pop_back();
    return text;
}

namespace {

[[noreturn]] void Fail(const std::string& what, const std::string& path) {
    throw FileError(what + " \"" + path + "\": " + SystemErrorText(GetLastError()));
}

} // namespace

std::string FileIdentity(const std::string& path) {
    // Room for the longest path Windows knows.
    constexpr DWORD kRoom = 32768;
    std::string full(kRoom, '\0');
    DWORD n = GetFullPathNameA(path.c_str(), kRoom, full.data(), nullptr);
    full.resize(n < kRoom ? n : 0);
    // The folder's long name: the file itself may not be there yet, and is named by its own.
    const size_t cut = FindLastCharacterOf(full, "\\");
    if (cut != std::string::npos) {
        std::string folder(kRoom, '\0');
        n = GetLongPathNameA(full.substr(0, cut).c_str(), folder.data(), kRoom);
        if (n > 0 && n < kRoom)
            full.replace(0, cut, folder.c_str(), n);
    }
    // Upper case as Windows compares file names, letter by letter in UTF-16: a letter's capital
    // may take another number of bytes in UTF-8.
    std::wstring wide = Wide(full);
    CharUpperBuffW(wide.data(), static_cast<DWORD>(wide.size()));
    return Narrow(wide);
}

std::optional<std::string> ReadFileBytes(const std::string& path) {
    // Shared for deleting too: a writer may replace the file meanwhile, and this reader keeps
    // what it opened.
    UniqueFile file(CreateFileA(path.c_str(), GENERIC_READ,
                                FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file)
        return std::nullopt;
    LARGE_INTEGER size{};
    if (!GetFileSizeEx(file.get(), &size) || size.QuadPart > (1LL << 31))
        return std::nullopt;
    std::string bytes(static_cast<size_t>(size.QuadPart), '\0');
    size_t done = 0;
    while (done < bytes.size()) {
        DWORD got = 0;
        if (!ReadFile(file.get(), bytes.data() + done, static_cast<DWORD>(bytes.size() - done),
                      &got, nullptr))
            return std::nullopt;
        if (got == 0)
            break;
        done += got;
    }
    bytes.resize(done);
    return bytes;
}

bool IsFile(const std::string& path) {
    DWORD attributes = GetFileAttributesA(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_DIRECTORY);
}

std::optional<uint64_t> FileSize(const std::string& path) {
    WIN32_FILE_ATTRIBUTE_DATA data{};
    if (!GetFileAttributesExA(path.c_str(), GetFileExInfoStandard, &data) ||
        (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY))
        return std::nullopt;
    return (static_cast<uint64_t>(data.nFileSizeHigh) << 32) | data.nFileSizeLow;
}

AtomicFileWriter::AtomicFileWriter(std::string path)
    : path_(std::move(path)), temp_(path_ + ".new"), file_(INVALID_HANDLE_VALUE) {
    // One fixed name beside the file: a write that was cut short leaves at most this one file,
    // which the next write replaces; a second writer at the same moment cannot open it and
    // fails instead of mixing its bytes in.
    file_ = CreateFileA(temp_.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                        FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file_ == INVALID_HANDLE_VALUE)
        Fail("Cannot create", temp_);
}

AtomicFileWriter::~AtomicFileWriter() {
    if (file_ != INVALID_HANDLE_VALUE) {
        CloseHandle(file_);
        DeleteFileA(temp_.c_str());
    }
}

void AtomicFileWriter::Write(std::string_view bytes) {
    while (!bytes.empty()) {
        DWORD wrote = 0;
        DWORD chunk = static_cast<DWORD>(std::min<size_t>(bytes.size(), 1u << 24));
        if (!WriteFile(file_, bytes.data(), chunk, &wrote, nullptr) || !wrote)
            Fail("Cannot write", temp_);
        bytes.remove_prefix(wrote);
    }
}

void AtomicFileWriter::Commit() {
    if (!FlushFileBuffers(file_))
        Fail("Cannot write", temp_);
    CloseHandle(std::exchange(file_, INVALID_HANDLE_VALUE));
    // Another process reading the file for a moment (a refresh, tolvanec's list) keeps it from
    // being replaced: tried again for up to a second before the write counts as failed.
    bool replaced = false;
    for (int attempt = 0; attempt < 50 && !replaced; ++attempt) {
        replaced = MoveFileExA(temp_.c_str(), path_.c_str(),
                               MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0;
        const DWORD error = replaced ? 0 : GetLastError();
        if (!replaced && error != ERROR_SHARING_VIOLATION && error != ERROR_ACCESS_DENIED)
            break;
        if (!replaced)
            Sleep(20);
    }
    if (!replaced) {
        DWORD error = GetLastError();
        DeleteFileA(temp_.c_str());
        SetLastError(error);
        Fail("Cannot replace", path_);
    }
}

} // namespace tolvane
