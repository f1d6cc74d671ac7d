#include "support/test_support.h"

#include <algorithm>
#include <fstream>
#include <functional>
#include <iterator>
#include <sstream>

#include <gtest/gtest.h>

#include "config/program_group_file.h"
#include "text/language.h"
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
    std::replace(path.begin(), path.end(), '/', '\\');
    return path;
}

std::string AccessKey(std::string_view caption) {
    for (size_t i = 0; i + 1 < caption.size(); ++i) {
        if (caption[i] != '&' || caption[++i] == '&')
            continue;
        size_t n = 1; // the rest of a UTF-8 character
        while (i + n < caption.size() && (caption[i + n] & 0xC0) == 0x80)
            ++n;
        return ToLower(caption.substr(i, n));
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
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void WriteFileBytes(const std::string& path, std::string_view bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    ASSERT_TRUE(out) << "cannot write " << path;
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

std::vector<std::string> ReadLines(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return SplitTextLines(std::string(std::istreambuf_iterator<char>(in), {}));
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

void FillWriterModel(ProgramModel& model, int variant, int programs) {
    SetDefaultModel(model);
    model.MainStartupDelay = variant ? 45.5f : 30;
    auto& startup = model.ProgramGroups[0].Programs;
    startup.clear();
    for (int i = 0; i < programs; ++i) {
        std::string n = std::to_string(i);
        startup.push_back({"C:\\Program Files\\Vendor " + n + "\\tool" + n + ".exe",
                           variant ? "--variant b" : "/a", i % 2 ? "ExecuteReg" : "Execute",
                           static_cast<float>(i % 60), "Value " + n});
    }
    model.StoppedPrograms = {variant ? "_STPCU_B.lnk" : "_STPCU_A.lnk"};
}

std::vector<std::string> GroupNames(const ProgramModel& model) {
    std::vector<std::string> names;
    for (const ProgramGroup& g : model.ProgramGroups)
        names.push_back(g.Name);
    return names;
}

std::string Outline(const TreeModel& tree) {
    std::function<std::string(const std::vector<int>&)> list = [&](const std::vector<int>& nodes) {
        std::string out;
        for (int node : nodes) {
            const TreeNode& n = tree.Node(node);
            out += (out.empty() ? "" : ", ") + n.Text;
            if (!n.Children.empty())
                out += "[" + list(n.Children) + "]";
        }
        return out;
    };
    return list(tree.Roots());
}

} // namespace tolvane::test
