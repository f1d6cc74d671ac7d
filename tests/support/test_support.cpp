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

#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

namespace tolvane::test {

std::string TestDataPath(std::string_view relative) {
    std::string path = std::string(TOLVANE_TESTS_DIR) + "/" + std::string(relative);
#ifdef _WIN32
    // Under Wine the drive Z: is the Unix root.
    for (char& c : path)
        if (c == '/')
            c = '\\';
    path = "Z:" + path;
#endif
    return path;
}

std::string ReadTestFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    EXPECT_TRUE(in) << "cannot read " << path;
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

} // namespace tolvane::test
