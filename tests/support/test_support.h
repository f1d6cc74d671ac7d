// Helpers shared by the test groups.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "config/program_model.h"
#include "models/tree_model.h"
#include "models/user_messages.h"

namespace tolvane::test {

// Records every message box and file dialog instead of showing it, and answers as told.
class CapturedMessages : public UserMessages {
public:
    struct Shown {
        std::string Text;
        std::string Title;
        unsigned Style;
        bool operator==(const Shown&) const = default;
    };
    int ShowMessage(std::string_view text, std::string_view title, unsigned style) override {
        shown.push_back({std::string(text), std::string(title), style});
        return answer;
    }
    // The file dialog: its filter is recorded, and the chosen path given back ("" cancels).
    std::string ChooseFile(std::string_view, std::string_view filter, std::string_view) override {
        fileDialogs.push_back(std::string(filter));
        return chosenFile;
    }
    std::vector<Shown> shown;
    int answer = kIdOk;
    std::vector<std::string> fileDialogs;
    std::string chosenFile;
};

// Names in the order of their letters A to Z without regard to case, every other byte as it is:
// what the tests without the platform hand the code as the platform's NameOrder. The tests
// under Wine compare accented names with the platform's own (CDirStruct::CompareNames).
int AsciiNameOrder(std::string_view a, std::string_view b);

// The access key that "&" marks in a caption, its letter lower-cased; "" for none ("&&" shows
// one "&").
std::string AccessKey(std::string_view caption);

// A string of n characters cycling through printable letters, for long names and data.
std::string LongText(size_t n, char first = 'a');

// A Unix path as Windows programs under Wine see it, through drive Z: (the root).
std::string WinePathOfUnixPath(std::string_view unixPath);
// A file below the repository's tests folder, as a path this build can open.
std::string TestDataPath(std::string_view relative);

// The file's bytes; fails the calling test when the file cannot be read.
std::string ReadFileBytes(const std::string& path);
void WriteFileBytes(const std::string& path, std::string_view bytes);
// The lines of a text file (CR LF ends); none when it cannot be read.
std::vector<std::string> ReadLines(const std::string& path);

// A group's programs, one "command|path|parameters|delay|value name" each.
std::vector<std::string> ProgramLines(const ProgramGroup& group);
// Two clearly different models (variant 0 or 1) of a chosen size, for tests of the file writer.
void FillWriterModel(ProgramModel& model, int variant, int programs);
// The model's group names, holes included.
std::vector<std::string> GroupNames(const ProgramModel& model);
// Every text of the tree, a node's children in brackets after it: "A[B[C, D], E], F".
std::string Outline(const TreeModel& tree);

} // namespace tolvane::test
