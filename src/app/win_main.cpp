// The program's entry.
#include <windows.h>

#include <string>

#include "app/main.h"
#include "models/user_messages.h"

namespace {

class MessageBoxes : public tolvane::UserMessages {
public:
    int ShowMessage(std::string_view text, std::string_view title, unsigned style) override {
        return MessageBoxA(nullptr, std::string(text).c_str(), std::string(title).c_str(),
                           style | MB_SETFOREGROUND);
    }
};

} // namespace

int WINAPI WinMain(HINSTANCE instance, HINSTANCE, LPSTR arguments, int) {
    MessageBoxes messages;
    return tolvane::RunTolvane(instance, arguments ? arguments : "", messages);
}
