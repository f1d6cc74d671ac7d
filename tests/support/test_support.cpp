#include "support/test_support.h"

#include <algorithm>
#include <fstream>
#include <functional>
#include <sstream>

#include <gtest/gtest.h>

#include "text/strings.h"

namespace tolvane::test {

int AsciiNameOrder(std::string_view a, std::string_view b) {
    const std::string x = ToLower(a), y = ToLower(b);
    return x < y ? -1 : x == y ? 0 : 1;
}

std::string LongText(size_t n, char first) {
    std::string s;
    for (size_t i = 0; i < n; ++i)
        s.push_back(static_cast<char>(first + i % 26));
    return s;
}

std::string WinePathOfUnixPath(std::string_view unixPath) {
    std::string path = "Z:" + std::string(unixPath);
    for (char& c : path)
        if (c == '/')
            c = '\\';
    return path;
}

std::string AccessKey(std::string_view caption) {
    for (size_t i = 0; i + 1 < caption.size(); ++i) {
        if (caption[i] != '&' || caption[++i] == '&')
            continue;
        size_t n = 1; // the rest of a UTF-8 character
        while (i + n < caption.size() && (caption[i + n] & 0xC0) == 0x80)
            ++n;
        std::string key(caption.substr(i, n));
        if (key[0] >= 'A' && key[0] <= 'Z')
            key[0] = static_cast<char>(key[0] - 'A' + 'a');
        return key;
    }
    return "";
}

std::string TestDataPath(std::string_view relative) {
    const std::string path = std::string(TOLVANE_TESTS_DIR) + "/" + std::string(relative);
#ifdef _WIN32
    return WinePathOfUnixPath(path);
#else
    return path;
#endif
}

std::string ReadFileBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    EXPECT_TRUE(in) << "cannot read " << path;
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

void WriteFileBytes(const std::string& path, std::string_view bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    ASSERT_TRUE(out) << "cannot write " << path;
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

std::vector<std::string> ReadLines(const std::string& path) {
    std::vector<std::string> lines;
    std::ifstream in(path, std::ios::binary);
    for (std::string line; std::getline(in, line); lines.push_back(line))
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
    return lines;
}

std::vector<std::string> ProgramLines(const ProgramGroup& group) {
    std::vector<std::string> lines;
    for (const GroupProgram& p : group.Programs) {
        std::ostringstream line;
        line << p.Command << '|' << p.Path << '|' << p.Parameters << '|' << p.Delay << '|'
             << p.RegistryKeyName;
        lines.push_back(line.str());
    }
    return lines;
}

std::vector<std::string> GroupNames(const ProgramModel& model) {
    std::vector<std::string> names;
    for (const ProgramGroup& g : model.ProgramGroups)
        names.push_back(g.Name);
    return names;
}

std::string Outline(const TreeModel& tree, bool sorted) {
    std::function<std::string(const std::vector<int>&)> list = [&](const std::vector<int>& nodes) {
        std::vector<std::string> siblings;
        for (int node : nodes) {
            const TreeNode& n = tree.Node(node);
            siblings.push_back(n.Children.empty() ? n.Text : n.Text + "[" + list(n.Children) + "]");
        }
        if (sorted)
            std::sort(siblings.begin(), siblings.end());
        std::string out;
        for (const std::string& sibling : siblings)
            out += (out.empty() ? "" : ", ") + sibling;
        return out;
    };
    return list(tree.Roots());
}

} // namespace tolvane::test
