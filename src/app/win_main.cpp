// The program's entry.
#include <windows.h>

#include <string>

#include "app/main.h"
#include "models/user_messages.h"
#include "platform/runtime_libraries.h"

namespace {

class MessageBoxes : public tolvane::UserMessages {
public:
    int ShowMessage(std::string_view text, std::string_view title, unsigned style) override {
        // Owned by the window the user works in, so that it stays in front of it.
        return MessageBoxA(GetActiveWindow(), std::string(text).c_str(), std::string(title).c_str(),
                           style | MB_SETFOREGROUND);
    }
    std::string ChooseFile(std::string_view title, std::string_view filter,
                           std::string_view folder) override {
        std::string filters(filter); // "Description|patterns|" as the dialog wants it: NULs
        for (char& c : filters)
            if (c == '|')
                c = '\0';
        // Room for long paths of any script: UTF-8 takes up to three bytes a character.
        char current[MAX_PATH * 3] = {};
        GetCurrentDirectoryA(sizeof current, current);
        const std::string initial = folder.empty() ? current : std::string(folder);
        const std::string caption(title);
        char file[MAX_PATH * 3] = {}, fileTitle[MAX_PATH * 3] = {};
        OPENFILENAMEA dialog{};
        dialog.lStructSize = sizeof dialog;
        dialog.hwndOwner = GetActiveWindow();
        dialog.hInstance = GetModuleHandleA(nullptr);
        dialog.lpstrFilter = filters.c_str();
        dialog.lpstrFile = file;
        dialog.nMaxFile = sizeof file - 1;
        dialog.lpstrFileTitle = fileTitle;
        dialog.nMaxFileTitle = sizeof fileTitle - 1;
        dialog.lpstrInitialDir = initial.c_str();
        dialog.lpstrTitle = caption.c_str();
        dialog.Flags = OFN_FILEMUSTEXIST | OFN_PATHMUSTEXIST | OFN_HIDEREADONLY | OFN_NOCHANGEDIR;
        return tolvane::OpenFileDialog(&dialog) ? std::string(file) : std::string();
    }
};

} // namespace

int WINAPI WinMain(HINSTANCE instance, HINSTANCE, LPSTR arguments, int) {
    MessageBoxes messages;
    return tolvane::RunTolvane(instance, arguments ? arguments : "", messages);
}
