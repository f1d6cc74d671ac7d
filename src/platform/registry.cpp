#include "platform/registry.h"

#include <windows.h>

#include "platform/handles.h"
#include "platform/registry_keys.h"
#include "platform/wide_text.h"
#include "text/code_page.h"

namespace tolvane {

namespace {

HKEY RootKey(RegistryRoot root) {
    switch (root) {
    case RegistryRoot::ClassesRoot:
        return HKEY_CLASSES_ROOT;
    case RegistryRoot::CurrentUser:
        return HKEY_CURRENT_USER;
    case RegistryRoot::LocalMachine:
    case RegistryRoot::LocalMachine32:
    case RegistryRoot::LocalMachine64:
        return HKEY_LOCAL_MACHINE;
    }
    return HKEY_CURRENT_USER;
}

// The view a root asks for: the 32-bit one for LocalMachine32, the 64-bit one for
// LocalMachine64, the process's own otherwise.
REGSAM ViewOf(RegistryRoot root) {
    return root == RegistryRoot::LocalMachine32   ? KEY_WOW64_32KEY
           : root == RegistryRoot::LocalMachine64 ? KEY_WOW64_64KEY
                                                  : 0;
}

// With or without a trailing "\" the path names the same key.
std::string KeyPath(std::string_view path) {
    while (EndsWithCharacter(path, '\\'))
        path.remove_suffix(1);
    return std::string(path);
}

UniqueHKey OpenKey(RegistryRoot root, std::string_view path, REGSAM access,
                   LONG* status = nullptr) {
    UniqueHKey key;
    LONG rc =
        RegOpenKeyExA(RootKey(root), KeyPath(path).c_str(), 0, access | ViewOf(root), key.put());
    if (status)
        *status = rc;
    if (rc != ERROR_SUCCESS)
        key.release();
    return key;
}

UniqueHKey CreateOpenKey(RegistryRoot root, std::string_view path, REGSAM access) {
    UniqueHKey key;
    LONG rc = RegCreateKeyExA(RootKey(root), KeyPath(path).c_str(), 0, nullptr, 0,
                              access | ViewOf(root), nullptr, key.put(), nullptr);
    if (rc != ERROR_SUCCESS)
        key.release();
    return key;
}

// The value's type and bytes, asked again with a bigger buffer while it grows meanwhile.
std::optional<RegistryValue> QueryValue(HKEY key, std::string_view name) {
    std::string valueName(name);
    for (int attempt = 0; attempt < 8; ++attempt) {
        DWORD type = 0, size = 0;
        if (RegQueryValueExA(key, valueName.c_str(), nullptr, &type, nullptr, &size) !=
            ERROR_SUCCESS)
            return std::nullopt;
        RegistryValue value;
        value.Data.assign(size, ' ');
        DWORD got = size;
        LONG rc = RegQueryValueExA(key, valueName.c_str(), nullptr, &type,
                                   value.Data.empty() ? nullptr : value.Data.data(), &got);
        if (rc == ERROR_MORE_DATA)
            continue;
        if (rc != ERROR_SUCCESS)
            return std::nullopt;
        value.Type = type;
        value.Data.resize(std::min<DWORD>(got, size));
        return value;
    }
    return std::nullopt;
}

bool WriteValue(RegistryRoot root, std::string_view path, std::string_view name, DWORD type,
                const void* data, size_t size) {
    UniqueHKey key = CreateOpenKey(root, path, KEY_SET_VALUE);
    if (!key)
        return false;
    return RegSetValueExA(key.get(), std::string(name).c_str(), 0, type,
                          static_cast<const BYTE*>(data),
                          static_cast<DWORD>(size)) == ERROR_SUCCESS;
}

// Every value of the key through the wide entry point: the stored bytes untouched, as GetValue
// reads them, the name in the code page.
std::vector<std::pair<std::string, RegistryValue>> EnumWide(HKEY key) {
    std::vector<std::pair<std::string, RegistryValue>> values;
    DWORD maxName = 0, maxData = 0;
    if (RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                         &maxName, &maxData, nullptr, nullptr) != ERROR_SUCCESS)
        return values;
    std::vector<wchar_t> name(maxName + 2);
    std::vector<BYTE> data(maxData + 2);
    for (DWORD index = 0;; ++index) {
        DWORD nameLength = static_cast<DWORD>(name.size());
        DWORD dataLength = static_cast<DWORD>(data.size());
        DWORD type = 0;
        const LONG rc = RegEnumValueW(key, index, name.data(), &nameLength, nullptr, &type,
                                      data.data(), &dataLength);
        if (rc == ERROR_MORE_DATA) { // a value grew meanwhile
            if (name.size() > (1u << 20) || data.size() > (64u << 20))
                return values;
            name.resize(name.size() * 2);
            data.resize(data.size() * 2);
            --index;
            continue;
        }
        if (rc != ERROR_SUCCESS)
            return values;
        values.emplace_back(
            Narrow(std::wstring_view(name.data(), std::min<size_t>(nameLength, name.size()))),
            RegistryValue{
                type,
                ByteArray(data.data(), data.data() + std::min<size_t>(dataLength, data.size()))});
    }
}

} // namespace

bool CRegistry::DeleteValue(RegistryRoot root, std::string_view path, std::string_view name) {
    LONG status = 0;
    UniqueHKey key = OpenKey(root, path, KEY_SET_VALUE, &status);
    if (!key)
        return status == ERROR_FILE_NOT_FOUND;
    LONG rc = RegDeleteValueA(key.get(), std::string(name).c_str());
    return rc == ERROR_SUCCESS || rc == ERROR_FILE_NOT_FOUND;
}

std::string CRegistry::GetSettingString(RegistryRoot root, std::string_view path,
                                        std::string_view name, std::string_view defaultValue) {
    UniqueHKey key = OpenKey(root, path, KEY_QUERY_VALUE);
    if (!key)
        return std::string(defaultValue);
    auto value = QueryValue(key.get(), name);
    if (!value || value->Type != REG_SZ)
        return std::string(defaultValue);
    std::string text(value->Data.begin(), value->Data.end());
    size_t nul = text.find('\0');
    if (nul != std::string::npos)
        text.resize(nul);
    return text;
}

bool CRegistry::SaveSettingString(RegistryRoot root, std::string_view path, std::string_view name,
                                  std::string_view value) {
    return WriteValue(root, path, name, REG_SZ, value.data(), value.size());
}

// Typed values go through the wide entry points: they hand over the stored bytes untouched,
// where the ANSI ones convert text (losing what the code page cannot hold) and may add a NUL.
std::optional<RegistryValue> CRegistry::GetValue(RegistryRoot root, std::string_view path,
                                                 std::string_view name) {
    UniqueHKey key = OpenKey(root, path, KEY_QUERY_VALUE);
    if (!key)
        return std::nullopt;
    const std::wstring wideName = Wide(name);
    for (int attempt = 0; attempt < 8; ++attempt) {
        DWORD type = 0, size = 0;
        if (RegQueryValueExW(key.get(), wideName.c_str(), nullptr, &type, nullptr, &size) !=
            ERROR_SUCCESS)
            return std::nullopt;
        RegistryValue value;
        value.Data.resize(size);
        DWORD got = size;
        LONG rc = RegQueryValueExW(key.get(), wideName.c_str(), nullptr, &type,
                                   value.Data.empty() ? nullptr : value.Data.data(), &got);
        if (rc == ERROR_MORE_DATA)
            continue;
        if (rc != ERROR_SUCCESS)
            return std::nullopt;
        value.Type = type;
        value.Data.resize(std::min<DWORD>(got, size));
        return value;
    }
    return std::nullopt;
}

std::vector<std::pair<std::string, RegistryValue>> CRegistry::EnumValues(RegistryRoot root,
                                                                         std::string_view path) {
    if (UniqueHKey key = OpenKey(root, path, KEY_QUERY_VALUE))
        return EnumWide(key.get());
    return {};
}

bool CRegistry::SetValue(RegistryRoot root, std::string_view path, std::string_view name,
                         const RegistryValue& value) {
    UniqueHKey key = CreateOpenKey(root, path, KEY_SET_VALUE);
    if (!key)
        return false;
    return RegSetValueExW(key.get(), Wide(name).c_str(), 0, value.Type, value.Data.data(),
                          static_cast<DWORD>(value.Data.size())) == ERROR_SUCCESS;
}

std::optional<uint64_t> CRegistry::LastWriteTime(RegistryRoot root, std::string_view path) {
    UniqueHKey key = OpenKey(root, path, KEY_QUERY_VALUE);
    FILETIME written{};
    if (!key || RegQueryInfoKeyA(key.get(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                 nullptr, nullptr, nullptr, nullptr, &written) != ERROR_SUCCESS)
        return std::nullopt;
    return (static_cast<uint64_t>(written.dwHighDateTime) << 32) | written.dwLowDateTime;
}

UniqueHKey OpenKeyToWatch(RegistryRoot root, std::string_view path) {
    return OpenKey(root, path, KEY_NOTIFY);
}

std::string ValueText(const RegistryValue& value) {
    if (value.Type != REG_SZ && value.Type != REG_EXPAND_SZ)
        return std::string();
    size_t bytes = value.Data.size() & ~size_t(1);
    while (bytes >= 2 && value.Data[bytes - 1] == 0 && value.Data[bytes - 2] == 0)
        bytes -= 2;
    std::string text =
        Narrow(std::wstring_view(reinterpret_cast<const wchar_t*>(value.Data.data()), bytes / 2));
    while (!text.empty() && text.back() == '\0')
        text.pop_back();
    return text;
}

} // namespace tolvane
