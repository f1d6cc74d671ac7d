// Texts of the language files with places for what is known only when they are shown.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

namespace tolvane {

// Puts the values in place of "%1", "%2" and so on, left to right; a place without a value
// becomes "", and any other "%" stays as it is.
std::string FillIn(std::string_view text, std::initializer_list<std::string_view> values);

} // namespace tolvane
