#include "text/placeholders.h"

namespace tolvane {

std::string FillIn(std::string_view text, std::initializer_list<std::string_view> values) {
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 1 < text.size() && text[i + 1] >= '1' && text[i + 1] <= '9') {
            const size_t n = static_cast<size_t>(text[i + 1] - '1');
            if (n < values.size())
                out += values.begin()[n];
            ++i;
            continue;
        }
        out += text[i];
    }
    return out;
}

} // namespace tolvane
