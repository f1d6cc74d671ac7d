#include "support/test_support.h"

namespace tolvane::test {

std::string LongText(size_t n, char first) {
    std::string s;
    s.reserve(n);
    for (size_t i = 0; i < n; ++i)
        s.push_back(static_cast<char>(first + i % 26));
    return s;
}

} // namespace tolvane::test
