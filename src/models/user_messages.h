// Message boxes and the file dialog that code outside the windows asks for go through this
// interface, so that a test can capture them instead of blocking on a dialog.
#pragma once

#include <string>
#include <string_view>

namespace tolvane {

// Styles and answers carry the platform's message-box values.
enum : unsigned {
    kMbOk = 0x0,
    kMbYesNo = 0x4,
    kMbIconCritical = 0x10,
    kMbIconQuestion = 0x20,
    kMbIconExclamation = 0x30,
    kMbIconInformation = 0x40,
    kMbDefButton2 = 0x100,
};
enum : int { kIdOk = 1, kIdYes = 6, kIdNo = 7 };

class UserMessages {
public:
    virtual ~UserMessages() = default;
    // Shows the message and returns the button the user chose.
    virtual int ShowMessage(std::string_view text, std::string_view title, unsigned style) = 0;
    // Shows the file dialog for one existing file, starting in the folder, with the filter
    // ("Description|*.a;*.b|"); the chosen path, or "" when the user cancels.
    virtual std::string ChooseFile(std::string_view title, std::string_view filter,
                                   std::string_view folder) {
        return {};
    }
};

} // namespace tolvane
