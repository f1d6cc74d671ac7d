#include "platform/program_facts.h"

#include <windows.h>
#include <wincrypt.h>
#include <wintrust.h>
#include <softpub.h>
#include <mscat.h>

#include <cwchar>
#include <vector>

#include "platform/handles.h"
#include "platform/runtime_libraries.h"
#include "platform/wide_text.h"
#include "text/strings.h"

namespace tolvane {

namespace {

// The version, trust and certificate libraries load when facts are first read: the waiting
// log-on process reads none and never holds them.
struct FactsApi {
    decltype(&GetFileVersionInfoSizeW) VersionSize = nullptr;
    decltype(&GetFileVersionInfoW) VersionInfo = nullptr;
    decltype(&VerQueryValueW) Query = nullptr;
    decltype(&WinVerifyTrust) Verify = nullptr;
    decltype(&WTHelperProvDataFromStateData) ProviderData = nullptr;
    decltype(&WTHelperGetProvSignerFromChain) Signer = nullptr;
    decltype(&WTHelperGetProvCertFromChain) SignerCertificate = nullptr;
    decltype(&CertVerifyCertificateChainPolicy) ChainPolicy = nullptr;
    decltype(&CertGetNameStringW) CertificateName = nullptr;
    // The system's catalogs, which sign Windows' own programs.
    decltype(&CryptCATAdminAcquireContext2) CatalogAdmin = nullptr;
    decltype(&CryptCATAdminCalcHashFromFileHandle2) CatalogHash = nullptr;
    decltype(&CryptCATAdminEnumCatalogFromHash) CatalogOfHash = nullptr;
    decltype(&CryptCATCatalogInfoFromContext) CatalogInfo = nullptr;
    decltype(&CryptCATAdminReleaseCatalogContext) ReleaseCatalog = nullptr;
    decltype(&CryptCATAdminReleaseContext) ReleaseAdmin = nullptr;
};

template <class F> void Take(F& to, HMODULE module, const char* name) {
    to = ModuleFunction<F>(module, name);
}

const FactsApi& Api() {
    static const FactsApi api = [] {
        FactsApi a;
        auto load = [](const char* name) {
            return LoadLibraryExA(name, nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
        };
        const HMODULE version = load("version.dll"), trust = load("wintrust.dll"),
                      crypt = load("crypt32.dll");
        Take(a.VersionSize, version, "GetFileVersionInfoSizeW");
        Take(a.VersionInfo, version, "GetFileVersionInfoW");
        Take(a.Query, version, "VerQueryValueW");
        Take(a.Verify, trust, "WinVerifyTrust");
        Take(a.ProviderData, trust, "WTHelperProvDataFromStateData");
        Take(a.Signer, trust, "WTHelperGetProvSignerFromChain");
        Take(a.SignerCertificate, trust, "WTHelperGetProvCertFromChain");
        Take(a.ChainPolicy, crypt, "CertVerifyCertificateChainPolicy");
        Take(a.CertificateName, crypt, "CertGetNameStringW");
        Take(a.CatalogAdmin, trust, "CryptCATAdminAcquireContext2");
        Take(a.CatalogHash, trust, "CryptCATAdminCalcHashFromFileHandle2");
        Take(a.CatalogOfHash, trust, "CryptCATAdminEnumCatalogFromHash");
        Take(a.CatalogInfo, trust, "CryptCATCatalogInfoFromContext");
        Take(a.ReleaseCatalog, trust, "CryptCATAdminReleaseCatalogContext");
        Take(a.ReleaseAdmin, trust, "CryptCATAdminReleaseContext");
        return a;
    }();
    return api;
}

std::wstring Hex4(unsigned value) {
    static const wchar_t digits[] = L"0123456789abcdef";
    std::wstring text(4, L'0');
    for (int i = 3; i >= 0; --i, value >>= 4)
        text[static_cast<size_t>(i)] = digits[value & 15];
    return text;
}

// CompanyName and FileDescription in the resource's own translation: the first it lists, then
// the two that resources without a translation table use.
void ReadVersionTexts(const FactsApi& api, const std::wstring& path, ProgramFacts& facts) {
    if (!api.VersionSize || !api.VersionInfo || !api.Query)
        return;
    DWORD ignored = 0;
    const DWORD size = api.VersionSize(path.c_str(), &ignored);
    if (!size)
        return;
    std::vector<unsigned char> block(size);
    if (!api.VersionInfo(path.c_str(), 0, size, block.data()))
        return;
    struct Translation {
        WORD Language, CodePage;
    };
    std::vector<Translation> translations;
    void* found = nullptr;
    UINT bytes = 0;
    if (api.Query(block.data(), L"\\VarFileInfo\\Translation", &found, &bytes) && found)
        for (UINT i = 0; i + sizeof(Translation) <= bytes; i += sizeof(Translation))
            translations.push_back(
                *reinterpret_cast<const Translation*>(static_cast<const char*>(found) + i));
    translations.push_back({0x0409, 0x04B0});
    translations.push_back({0x0409, 0x04E4});
    auto text = [&](const wchar_t* name) {
        for (const Translation& t : translations) {
            const std::wstring key =
                L"\\StringFileInfo\\" + Hex4(t.Language) + Hex4(t.CodePage) + L"\\" + name;
            void* value = nullptr;
            UINT chars = 0;
            if (api.Query(block.data(), key.c_str(), &value, &chars) && value && chars)
                return Trim(
                    Narrow(std::wstring_view(static_cast<const wchar_t*>(value),
                                             wcsnlen(static_cast<const wchar_t*>(value), chars))));
        }
        return std::string();
    };
    facts.Publisher = text(L"CompanyName");
    facts.Description = text(L"FileDescription");
}

// The trust provider's state, closed on every way out, as the provider asks.
class VerifiedState {
public:
    VerifiedState(const FactsApi& api, GUID action, WINTRUST_DATA& data)
        : api_(api), action_(action), data_(data) {}
    ~VerifiedState() {
        data_.dwStateAction = WTD_STATEACTION_CLOSE;
        api_.Verify(static_cast<HWND>(INVALID_HANDLE_VALUE), &action_, &data_);
    }
    VerifiedState(const VerifiedState&) = delete;
    VerifiedState& operator=(const VerifiedState&) = delete;

private:
    const FactsApi& api_;
    GUID action_;
    WINTRUST_DATA& data_;
};

// Verifies what `data` names; a signature that holds has its signer's chain checked again by
// its own policy, as some providers (Wine's, with a SHA-256 certificate) answer "trusted"
// without having judged the chain. 0 when it holds, and the signer's name then.
LONG Verify(const FactsApi& api, WINTRUST_DATA& data, std::string& signer) {
    data.cbStruct = sizeof data;
    data.dwUIChoice = WTD_UI_NONE;
    data.fdwRevocationChecks = WTD_REVOKE_NONE;
    data.dwStateAction = WTD_STATEACTION_VERIFY;
    data.dwProvFlags = WTD_REVOCATION_CHECK_NONE | WTD_CACHE_ONLY_URL_RETRIEVAL;
    GUID action = WINTRUST_ACTION_GENERIC_VERIFY_V2;
    const LONG result = api.Verify(static_cast<HWND>(INVALID_HANDLE_VALUE), &action, &data);
    const VerifiedState state(api, action, data);
    if (result != ERROR_SUCCESS)
        return result;
    CRYPT_PROVIDER_DATA* provider = api.ProviderData(data.hWVTStateData);
    CRYPT_PROVIDER_SGNR* first = provider ? api.Signer(provider, 0, FALSE, 0) : nullptr;
    if (!first || !first->pChainContext)
        return TRUST_E_NO_SIGNER_CERT;
    CERT_CHAIN_POLICY_PARA para{};
    para.cbSize = sizeof para;
    CERT_CHAIN_POLICY_STATUS status{};
    status.cbSize = sizeof status;
    if (!api.ChainPolicy(CERT_CHAIN_POLICY_AUTHENTICODE, first->pChainContext, &para, &status))
        return CERT_E_CHAINING;
    if (status.dwError != 0)
        return static_cast<LONG>(status.dwError);
    CRYPT_PROVIDER_CERT* certificate =
        api.SignerCertificate ? api.SignerCertificate(first, 0) : nullptr;
    if (certificate && certificate->pCert && api.CertificateName) {
        wchar_t name[256] = {};
        if (api.CertificateName(certificate->pCert, CERT_NAME_SIMPLE_DISPLAY_TYPE, 0, nullptr, name,
                                256) > 1)
            signer = Trim(Narrow(name));
    }
    return ERROR_SUCCESS;
}

// Windows' own programs carry no signature of their own: a catalog of the system holds their
// hash, signed for all of them. The verdict on the catalog's signature for this file; nothing
// when no catalog holds it (or the system has no catalogs to ask).
std::optional<LONG> VerifyByCatalog(const FactsApi& api, const std::wstring& path,
                                    std::string& signer) {
    if (!api.CatalogAdmin || !api.CatalogHash || !api.CatalogOfHash || !api.CatalogInfo ||
        !api.ReleaseCatalog || !api.ReleaseAdmin)
        return std::nullopt;
    UniqueFile file(CreateFileW(path.c_str(), GENERIC_READ,
                                FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                OPEN_EXISTING, 0, nullptr));
    if (!file)
        return std::nullopt;
    // The system's catalogs hash with SHA-256 since Windows 8.
    GUID subsystem = DRIVER_ACTION_VERIFY;
    HCATADMIN admin = nullptr;
    if (!api.CatalogAdmin(&admin, &subsystem, L"SHA256", nullptr, 0) || !admin)
        return std::nullopt;
    std::optional<LONG> verdict;
    BYTE hash[64] = {};
    DWORD hashBytes = sizeof hash;
    if (api.CatalogHash(admin, file.get(), &hashBytes, hash, 0) && hashBytes <= sizeof hash) {
        if (HCATINFO catalog = api.CatalogOfHash(admin, hash, hashBytes, 0, nullptr)) {
            CATALOG_INFO info{};
            info.cbStruct = sizeof info;
            if (api.CatalogInfo(catalog, &info, 0)) {
                // The catalog names its members by their hash in capital hexadecimal.
                static const wchar_t digits[] = L"0123456789ABCDEF";
                std::wstring tag;
                for (DWORD i = 0; i < hashBytes; ++i) {
                    tag += digits[hash[i] >> 4];
                    tag += digits[hash[i] & 15];
                }
                WINTRUST_CATALOG_INFO member{};
                member.cbStruct = sizeof member;
                member.pcwszCatalogFilePath = info.wszCatalogFile;
                member.pcwszMemberTag = tag.c_str();
                member.pcwszMemberFilePath = path.c_str();
                member.hMemberFile = file.get();
                member.pbCalculatedFileHash = hash;
                member.cbCalculatedFileHash = hashBytes;
                member.hCatAdmin = admin;
                WINTRUST_DATA data{};
                data.dwUnionChoice = WTD_CHOICE_CATALOG;
                data.pCatalog = &member;
                verdict = Verify(api, data, signer);
            }
            api.ReleaseCatalog(admin, catalog, 0);
        }
    }
    api.ReleaseAdmin(admin, 0);
    return verdict;
}

// The signature's state, and who signed it when the signature holds.
SignatureState ReadSignature(const FactsApi& api, const std::wstring& path, std::string& signer) {
    // Without the trust provider nothing can show that a signature holds.
    if (!api.Verify || !api.ProviderData || !api.Signer || !api.ChainPolicy)
        return SignatureState::Untrusted;
    WINTRUST_FILE_INFO file{};
    file.cbStruct = sizeof file;
    file.pcwszFilePath = path.c_str();
    WINTRUST_DATA data{};
    data.dwUnionChoice = WTD_CHOICE_FILE;
    data.pFile = &file;
    LONG result = Verify(api, data, signer);
    if (result == TRUST_E_NOSIGNATURE)
        result = VerifyByCatalog(api, path, signer).value_or(result);
    switch (static_cast<DWORD>(result)) {
    case ERROR_SUCCESS:
        return SignatureState::Trusted;
    // No signature, or a kind of file that carries none.
    case static_cast<DWORD>(TRUST_E_NOSIGNATURE):
    case static_cast<DWORD>(TRUST_E_SUBJECT_FORM_UNKNOWN):
    case static_cast<DWORD>(TRUST_E_PROVIDER_UNKNOWN):
        return SignatureState::Unsigned;
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case static_cast<DWORD>(HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND)):
    case static_cast<DWORD>(HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND)):
        return SignatureState::Missing; // gone since it was looked for
    default:
        // A plain system error: the file could not be read as one that carries a signature (too
        // short for a program, say), and so carries none that anyone could check.
        if ((static_cast<DWORD>(result) & 0xFFFF0000) == 0)
            return SignatureState::Unsigned;
        // An untrusted root, a distrusted or expired certificate, contents changed since signing.
        return SignatureState::Untrusted;
    }
}

} // namespace

std::optional<FileStamp> StampOf(const std::string& path) {
    WIN32_FILE_ATTRIBUTE_DATA data{};
    if (path.empty() || !GetFileAttributesExW(Wide(path).c_str(), GetFileExInfoStandard, &data))
        return std::nullopt;
    return FileStamp{(uint64_t{data.nFileSizeHigh} << 32) | data.nFileSizeLow,
                     (uint64_t{data.ftLastWriteTime.dwHighDateTime} << 32) |
                         data.ftLastWriteTime.dwLowDateTime};
}

ProgramFacts ReadProgramFacts(const std::string& path) {
    ProgramFacts facts;
    const std::wstring wide = Wide(path);
    const DWORD attributes = GetFileAttributesW(wide.c_str());
    if (path.empty() || attributes == INVALID_FILE_ATTRIBUTES) {
        facts.Signature = SignatureState::Missing;
        return facts;
    }
    if (attributes & FILE_ATTRIBUTE_DIRECTORY)
        return facts; // a folder: there, but nothing signs it
    const FactsApi& api = Api();
    ReadVersionTexts(api, wide, facts);
    std::string signer;
    facts.Signature = ReadSignature(api, wide, signer);
    // A program whose resource names no company is known by who signed it; only a signature
    // that holds names anyone: an untrusted certificate may claim any name.
    if (facts.Publisher.empty())
        facts.Publisher = signer;
    return facts;
}

ProgramFacts CachedProgramFacts(ProgramFactsCache& cache, const std::string& path) {
    const std::optional<FileStamp> stamp = StampOf(path);
    if (!stamp)
        return {{}, {}, SignatureState::Missing};
    if (std::optional<ProgramFacts> known = cache.Find(path, *stamp))
        return *known;
    ProgramFacts facts = ReadProgramFacts(path);
    // Kept under the stamp read before: a file written meanwhile is read again next time.
    if (facts.Signature != SignatureState::Missing)
        cache.Keep(path, *stamp, facts);
    return facts;
}

} // namespace tolvane
