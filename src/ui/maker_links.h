// The maker's pages and support address, as the Help > Online menu and the about box open them.
#pragma once

namespace tolvane {

inline constexpr const char* kForumsAddress = "https://www.hexmoor.com/tolvane/forum/";
inline constexpr const char* kMainPageAddress = "https://www.hexmoor.com/tolvane/";
inline constexpr const char* kSupportMailAddress = "mailto:support@hexmoor.com?subject=Tolvane%202";

} // namespace tolvane
