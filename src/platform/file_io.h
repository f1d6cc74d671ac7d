// Whole-file reads and crash-safe whole-file writes.
#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace tolvane {

// A file operation failed; the text says which file and why, in the system's words.
class FileError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The file's bytes, or nullopt when there is no such file or it cannot be read.
std::optional<std::string> ReadFileBytes(const std::string& path);

// An ordinary file (not a folder) stands at the path.
bool IsFile(const std::string& path);

std::optional<uint64_t> FileSize(const std::string& path);

// The one name of the file at a path, whatever spelling reached it: the full path without "." or
// "..", with each folder's long name instead of its 8.3 alias, in upper case as Windows compares
// file names. A file that does not exist yet is named by its folder's long path and its own name.
// Two processes that name one file in different ways get the same text.
std::string FileIdentity(const std::string& path);

// Replaces a file's content so that, whatever happens meanwhile (a crash, a kill, a full disk),
// the file holds either its old content or the new one whole: the new bytes go to a temporary
// file in the same folder, reach the disk, and only on Commit take the old file's place.
// Every failure throws FileError and leaves the old file untouched; a writer dropped without
// Commit removes its temporary file.
class AtomicFileWriter {
public:
    explicit AtomicFileWriter(std::string path);
    ~AtomicFileWriter();
    AtomicFileWriter(const AtomicFileWriter&) = delete;
    AtomicFileWriter& operator=(const AtomicFileWriter&) = delete;

    void Write(std::string_view bytes);
    void Commit();

private:
    std::string path_;
    std::string temp_;
    void* file_; // the temporary file's handle
};

// The system's text for an error code, without its trailing line break.
std::string SystemErrorText(unsigned long code);

} // namespace tolvane
