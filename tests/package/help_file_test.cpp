// The compiled help as a CHM reader sees it: chmlib lists what Tolvane.chm holds, and every
// page, contents entry, index entry and link of the sources must be found there.
#include <gtest/gtest.h>

#include "support/test_support.h"

#include <cstdio>
#include <filesystem>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

std::string Read(const fs::path& path) {
    return tolvane::test::ReadFileBytes(path.string());
}

// The ordinary files that the CHM holds, by their names inside it ("/start.html").
std::set<std::string> ChmFiles() {
    std::set<std::string> files;
    const std::string command = std::string(TOLVANE_ENUM_CHM) + " '" + TOLVANE_HELP_FILE + "'";
    FILE* pipe = popen(command.c_str(), "r");
    if (!pipe)
        return files;
    char line[1024];
    while (fgets(line, sizeof line, pipe)) {
        std::string text = line;
        const size_t tab = text.find_last_of('\t');
        if (text.find("normal file") == std::string::npos || tab == std::string::npos)
            continue;
        std::string name = text.substr(tab + 1);
        while (!name.empty() && (name.back() == '\n' || name.back() == '\r'))
            name.pop_back();
        files.insert(name);
    }
    EXPECT_EQ(pclose(pipe), 0) << command;
    return files;
}

// "key=value" of the project file's [OPTIONS], and the lines of its [FILES].
struct Project {
    std::map<std::string, std::string> options;
    std::vector<std::string> files;
};

Project ReadProject() {
    Project project;
    std::istringstream in(Read(fs::path(TOLVANE_HELP_SOURCE) / "tolvane.hhp"));
    std::string section, line;
    while (std::getline(in, line)) {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        if (line.empty() || line[0] == ';')
            continue;
        if (line[0] == '[') {
            section = line;
        } else if (section == "[OPTIONS]" && line.find('=') != std::string::npos) {
            project.options[line.substr(0, line.find('='))] = line.substr(line.find('=') + 1);
        } else if (section == "[FILES]") {
            project.files.push_back(line);
        }
    }
    return project;
}

// Links of a page, a contents file or an index: href, src and the sitemaps' "Local" values.
std::vector<std::string> LinksOf(const std::string& text) {
    static const std::regex link(
        R"((?:href|src)\s*=\s*"([^"]*)\"|name\s*=\s*"Local"\s+value\s*=\s*"([^"]*)\")",
        std::regex::icase);
    std::vector<std::string> links;
    for (auto m = std::sregex_iterator(text.begin(), text.end(), link); m != std::sregex_iterator();
         ++m)
        links.push_back((*m)[1].matched ? (*m)[1].str() : (*m)[2].str());
    return links;
}

bool HasAnchor(const std::string& page, const std::string& anchor) {
    return page.find("id=\"" + anchor + "\"") != std::string::npos ||
           page.find("name=\"" + anchor + "\"") != std::string::npos;
}

TEST(HelpFile, TheChmHoldsEveryPageAndEveryLinkFindsItsTarget) {
    const std::set<std::string> chm = ChmFiles();
    ASSERT_FALSE(chm.empty()) << "chmlib lists nothing in " << TOLVANE_HELP_FILE;
    const Project project = ReadProject();
    for (const char* option : {"Contents file", "Index file", "Default topic"}) {
        ASSERT_TRUE(project.options.count(option)) << option;
        EXPECT_TRUE(chm.count("/" + project.options.at(option))) << project.options.at(option);
    }
    EXPECT_EQ(project.options.at("Compiled file"), "Tolvane.chm");
    for (const std::string& file : project.files)
        EXPECT_TRUE(chm.count("/" + file)) << file << " is not in the CHM";

    const std::string contents =
        Read(fs::path(TOLVANE_HELP_SOURCE) / project.options.at("Contents file"));
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
        const std::string text = Read(entry.path());
        for (const std::string& link : LinksOf(text)) {
            if (link.rfind("http:", 0) == 0 || link.rfind("https:", 0) == 0 ||
                link.rfind("mailto:", 0) == 0)
                continue;
            const size_t hash = link.find('#');
            const std::string file = link.substr(0, hash);
            const std::string anchor = hash == std::string::npos ? "" : link.substr(hash + 1);
            const std::string target = file.empty() ? name : file;
            EXPECT_TRUE(chm.count("/" + target)) << name << " links to " << link;
            if (!anchor.empty() && fs::exists(fs::path(TOLVANE_HELP_SOURCE) / target)) {
                EXPECT_TRUE(HasAnchor(Read(fs::path(TOLVANE_HELP_SOURCE) / target), anchor))
                    << name << " links to " << link << ", which has no such anchor";
            }
        }
    }
    EXPECT_GE(pages, 12u);
}

} // namespace
