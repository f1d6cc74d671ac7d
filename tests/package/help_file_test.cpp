// The compiled help as a CHM reader sees it: chmlib lists what Tolvane.chm holds, and every
// page, contents entry, index entry and link of the sources must be found there.
#include <gtest/gtest.h>

#include "support/test_support.h"

#include <cstdio>
#include <filesystem>
#include <regex>
#include <set>
#include <string>

namespace {

namespace fs = std::filesystem;

std::string Source(const fs::path& name) {
    return tolvane::test::ReadFileBytes((fs::path(TOLVANE_HELP_SOURCE) / name).string());
}

// The first group that took part in each match of the pattern.
std::vector<std::string> Matches(const std::string& text, const std::regex& pattern) {
    std::vector<std::string> found;
    for (auto m = std::sregex_iterator(text.begin(), text.end(), pattern);
         m != std::sregex_iterator(); ++m)
        found.push_back((*m)[1].matched ? (*m)[1].str() : (*m)[2].str());
    return found;
}

// The ordinary files that the CHM holds, by their names inside it ("/start.html").
std::set<std::string> ChmFiles() {
    const std::string command = std::string(TOLVANE_ENUM_CHM) + " '" + TOLVANE_HELP_FILE + "'";
    FILE* pipe = popen(command.c_str(), "r");
    std::string listing;
    for (int c; pipe && (c = fgetc(pipe)) != EOF;)
        listing += static_cast<char>(c);
    EXPECT_TRUE(pipe && pclose(pipe) == 0) << command;
    const auto files = Matches(listing, std::regex(R"(normal file.*\t([^\t\r\n]+))"));
    return {files.begin(), files.end()};
}

// The value of a line "key=value" of the project file.
std::string Option(const std::string& project, const std::string& key) {
    std::smatch m;
    return std::regex_search(project, m, std::regex("\n" + key + "=([^\r\n]*)")) ? m[1].str() : "";
}

// Links of a page, a contents file or an index: href, src and the sitemaps' "Local" values.
const std::regex
    kLink(R"((?:href|src)\s*=\s*"([^"]*)\"|name\s*=\s*"Local"\s+value\s*=\s*"([^"]*)\")",
          std::regex::icase);

TEST(HelpFile, TheChmHoldsEveryPageAndEveryLinkFindsItsTarget) {
    const std::set<std::string> chm = ChmFiles();
    ASSERT_FALSE(chm.empty()) << "chmlib lists nothing in " << TOLVANE_HELP_FILE;
    const std::string project = Source("tolvane.hhp");
    for (const char* option : {"Contents file", "Index file", "Default topic"})
        EXPECT_TRUE(chm.count("/" + Option(project, option))) << option;

    const std::string contents = Source(Option(project, "Contents file"));
    size_t pages = 0;
    for (const auto& entry : fs::directory_iterator(TOLVANE_HELP_SOURCE)) {
        const std::string name = entry.path().filename().string();
        const std::string ext = entry.path().extension().string();
        if (ext != ".html" && ext != ".hhc" && ext != ".hhk")
            continue;
        if (ext == ".html") {
            ++pages;
            EXPECT_TRUE(chm.count("/" + name)) << name << " is not in the CHM";
            EXPECT_NE(contents.find("\"" + name + "\""), std::string::npos)
                << name << " cannot be reached from the contents";
        }
        for (const std::string& link : Matches(Source(name), kLink)) {
            if (std::regex_search(link, std::regex("^(https?|mailto):")))
                continue;
            const size_t hash = link.find('#');
            const std::string target = hash == 0 ? name : link.substr(0, hash);
            EXPECT_TRUE(chm.count("/" + target)) << name << " links to " << link;
            if (hash != std::string::npos && fs::exists(fs::path(TOLVANE_HELP_SOURCE) / target)) {
                const std::string anchor = link.substr(hash + 1), page = Source(target);
                EXPECT_TRUE(page.find("id=\"" + anchor + "\"") != std::string::npos ||
                            page.find("name=\"" + anchor + "\"") != std::string::npos)
                    << name << " links to " << link << ", which has no such anchor";
            }
        }
    }
    EXPECT_GE(pages, 12u);
}

} // namespace
