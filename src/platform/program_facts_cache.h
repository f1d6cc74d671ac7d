// What a program file says of itself (its publisher, its description, its signature), and the
// facts already read in this process, so that an unchanged file is never read twice.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace tolvane {

enum class SignatureState {
    Trusted,   // signed, by a chain this machine trusts, and unchanged since
    Untrusted, // signed, but the signature or its chain does not hold
    Unsigned,
    Missing, // the program file is not there
};

struct ProgramFacts {
    std::string Publisher;   // the version resource's company, or who signed it
    std::string Description; // the version resource's file description
    SignatureState Signature = SignatureState::Unsigned;
    bool operator==(const ProgramFacts&) const = default;
};

// A file as it was when read: a new size or write time means new contents.
struct FileStamp {
    uint64_t Size = 0;
    uint64_t Written = 0;
    bool operator==(const FileStamp&) const = default;
};

class ProgramFactsCache {
public:
    // The facts of the file as it was read before; nullopt when it was not, or has changed.
    std::optional<ProgramFacts> Find(const std::string& path, const FileStamp& stamp) const;
    void Keep(const std::string& path, const FileStamp& stamp, const ProgramFacts& facts);
    size_t Count() const { return entries_.size(); }

private:
    struct Entry {
        FileStamp Stamp;
        ProgramFacts Facts;
    };
    // By the path in lower case: Windows names one file in any letter case.
    std::map<std::string, Entry, std::less<>> entries_;
};

} // namespace tolvane
