#include "config/system_command_line.h"

#include <windows.h>

#include "platform/environment.h"
#include "platform/path_rules.h"
#include "platform/registry.h"

namespace tolvane {

namespace {

bool IsFile(const char* path) {
    const DWORD attributes = GetFileAttributesA(path);
    return attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_DIRECTORY);
}

class MachineCommandLine : public CommandLineSystem {
public:
    bool FileExists(const std::string& path) const override {
        if (path.empty())
            return false;
        if (PathLastPart(path).size() != path.size())
            return IsFile(path.c_str());
        std::string found(MAX_PATH, '\0');
        for (int attempt = 0; attempt < 2; ++attempt) {
            const DWORD n = SearchPathA(nullptr, path.c_str(), nullptr,
                                        static_cast<DWORD>(found.size()), found.data(), nullptr);
            if (n == 0)
                break;
            if (n < found.size()) {
                found.resize(n);
                if (IsFile(found.c_str()))
                    return true;
                break;
            }
            found.assign(n + 1, '\0');
        }
        const std::string key =
            std::string("Software\\Microsoft\\Windows\\CurrentVersion\\App Paths\\") + path;
        CRegistry registry;
        return registry.GetValue(RegistryRoot::CurrentUser, key, "").has_value() ||
               registry.GetValue(RegistryRoot::LocalMachine, key, "").has_value();
    }
    std::string Expand(const std::string& text) const override { return ExpandEnvironment(text); }
};

} // namespace

const CommandLineSystem& SystemCommandLine() {
    static const MachineCommandLine system;
    return system;
}

} // namespace tolvane
