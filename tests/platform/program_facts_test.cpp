// What a program file says of itself, read from the build's copies of a small program whose
// version resource names its company: signed by a chain of the test root (trusted here), by a
// certificate nobody trusts (SHA-1 and SHA-256), not signed, changed after signing, and not there;
// found as the items name programs (a path without ".exe", a variable); one without a version
// resource goes by its signer's name while the signature holds; a file read again once it
// changed.
#include <gtest/gtest.h>

#include "items/item_program.h"
#include "platform/program_facts.h"
#include "support/win_test_support.h"

namespace tolvane {
namespace {

TEST(ProgramFacts, EachSignatureStateWithTheResourcesOwnTexts) {
    ASSERT_TRUE(test::TrustTestRoot());
    test::TempFolder folder("facts");
    // A byte of the code changed after signing: the signature no longer holds.
    std::string tampered = test::ReadFileBytes(test::SignedCopy("trusted.exe"));
    tampered[0x400] = static_cast<char>(tampered[0x400] ^ 0x55);
    test::WriteFileBytes(folder / "tampered.exe", tampered);
    SetEnvironmentVariableA("TOLVANE_FACTS", test::SignedCopy("").c_str());
    ProgramFactsCache cache;
    const ProgramLookups lookups = MachineProgramLookups(cache);
    const struct {
        std::string program;
        bool expandable;
        ProgramFacts facts;
    } cases[] = {
        {test::SignedCopy("trusted.exe"),
         false,
         {"Hexmoor Ltd", "Hexmoor Clock", SignatureState::Trusted}},
        {"%TOLVANE_FACTS%untrusted.exe",
         true,
         {"Hexmoor Ltd", "Hexmoor Clock", SignatureState::Untrusted}},
        {test::SignedCopy("sha256.exe"),
         false,
         {"Hexmoor Ltd", "Hexmoor Clock", SignatureState::Untrusted}},
        {test::SignedCopy("unsigned"),
         false,
         {"Hexmoor Ltd", "Hexmoor Clock", SignatureState::Unsigned}},
        {folder / "tampered.exe",
         false,
         {"Hexmoor Ltd", "Hexmoor Clock", SignatureState::Untrusted}},
        {folder / "gone.exe", false, {"", "", SignatureState::Missing}},
        // Without a version resource: known by its signer, when the signature holds.
        {test::SignedCopy("bare-trusted.exe"),
         false,
         {"Hexmoor Signing", "", SignatureState::Trusted}},
        {test::SignedCopy("bare-untrusted.exe"), false, {"", "", SignatureState::Untrusted}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(lookups.Facts(c.program, c.expandable), c.facts) << c.program;
}

TEST(ProgramFacts, AnUnchangedFileIsNeverReadAgainAChangedOneIs) {
    test::TempFolder folder("facts");
    const std::string program = folder / "p.exe";
    test::WriteFileBytes(program, test::ReadFileBytes(test::SignedCopy("unsigned.exe")));
    ProgramFactsCache cache;
    ASSERT_EQ(CachedProgramFacts(cache, program).Signature, SignatureState::Unsigned);
    // What the cache holds is what comes back while the file stays as it was.
    const ProgramFacts planted{"Planted", "", SignatureState::Trusted};
    cache.Keep(program, *StampOf(program), planted);
    EXPECT_EQ(CachedProgramFacts(cache, program), planted);
    test::WriteFileBytes(program, test::ReadFileBytes(test::SignedCopy("untrusted.exe")));
    EXPECT_EQ(CachedProgramFacts(cache, program).Signature, SignatureState::Untrusted);
}

} // namespace
} // namespace tolvane
