#include "models/tray_menu.h"

#include <algorithm>

#include "text/code_page.h"
#include "text/strings.h"

namespace tolvane {

namespace {

using Kind = TrayMenuEntry::Kind;

TrayMenuEntry Entry(Kind kind, int number, std::string caption = std::string()) {
    TrayMenuEntry e;
    e.Type = kind;
    e.Number = number;
    e.Caption = std::move(caption);
    return e;
}

// Shown as itself: a single "&" would underline the next letter instead.
std::string Literal(std::string_view text) {
    return ReplaceAll(text, "&", "&&");
}

} // namespace

std::string ProgramCaption(const std::string& path) {
    const size_t slash = FindLastCharacterOf(path, "\\");
    std::string name = Trim(slash == std::string::npos ? path : path.substr(slash + 1));
    return Literal(name.empty() ? path : name);
}

TrayMenu TrayMenu::Build(const TrayMenuSource& source) {
    TrayMenu menu;
    const int k = source.StartupGroupIndex + 1;
    menu.k_ = k;
    auto& entries = menu.entries_;
    if (source.StartupGroupIndex >= 0) {
        TrayMenuEntry group = Entry(Kind::Command, k * 1000, Literal(source.GroupName));
        // A free slot (a program emptied as disallowed, say) gets no entry, but does not hide
        // the programs after it.
        const auto& paths = source.ProgramPaths;
        menu.programNumbers_.assign(paths.size(), 0);
        if (std::any_of(paths.begin(), paths.end(), [](auto& p) { return !p.empty(); })) {
            group.Type = Kind::Submenu;
            group.Entries.push_back(Entry(Kind::Command, k * 1000, source.RunAll));
            group.Entries.push_back(Entry(Kind::Separator, 0));
            for (size_t i = 0; i < paths.size(); ++i) {
                if (paths[i].empty())
                    continue;
                const int number = k * 1000 + 2 + static_cast<int>(i);
                group.Entries.push_back(Entry(Kind::Command, number, ProgramCaption(paths[i])));
                menu.programNumbers_[i] = number;
            }
        }
        entries.push_back(std::move(group));
    }
    entries.push_back(Entry(Kind::Separator, (k + 1) * 1000 + 1));
    TrayMenuEntry stopped = Entry(Kind::Command, (k + 2) * 1000 + 1, source.Stopped);
    const auto& names = source.StoppedNames;
    menu.stoppedNumbers_.assign(names.size(), 0);
    if (std::any_of(names.begin(), names.end(), [](auto& n) { return !n.empty(); })) {
        stopped.Type = Kind::Submenu;
        stopped.Entries.push_back(Entry(Kind::Command, (k + 2) * 1000 + 1, source.RunAll));
        stopped.Entries.push_back(Entry(Kind::Separator, 0));
        for (size_t i = 0; i < names.size(); ++i) {
            if (names[i].empty())
                continue;
            const int number = (k + 2) * 1000 + 3 + static_cast<int>(i);
            stopped.Entries.push_back(Entry(Kind::Command, number, Literal(names[i])));
            menu.stoppedNumbers_[i] = number;
        }
    }
    entries.push_back(std::move(stopped));
    entries.push_back(Entry(Kind::Separator, (k + 3) * 1000));
    entries.push_back(Entry(Kind::Command, (k + 4) * 1000, source.Open));
    entries.push_back(Entry(Kind::Command, (k + 5) * 1000, source.Quit));
    return menu;
}

int TrayMenu::ProgramNumber(size_t i) const {
    return i < programNumbers_.size() ? programNumbers_[i] : 0;
}

TrayChoice TrayMenu::Choice(int number) const {
    using Action = TrayChoice::Action;
    auto in = [](const std::vector<int>& numbers, int n) {
        for (size_t i = 0; i < numbers.size(); ++i)
            if (numbers[i] != 0 && numbers[i] == n)
                return static_cast<int>(i);
        return -1;
    };
    auto any = [](const std::vector<int>& numbers) {
        return std::any_of(numbers.begin(), numbers.end(), [](int n) { return n != 0; });
    };
    if (number < 1)
        return {};
    if (number == k_ * 1000 && any(programNumbers_))
        return {Action::RunGroup, k_ - 1};
    if (int i = in(programNumbers_, number); i >= 0)
        return {Action::RunProgram, i};
    if (number == (k_ + 2) * 1000 + 1 && any(stoppedNumbers_))
        return {Action::RunAllStopped, -1};
    if (int i = in(stoppedNumbers_, number); i >= 0)
        return {Action::RunStopped, i};
    if (number == (k_ + 4) * 1000)
        return {Action::Open, -1};
    if (number == (k_ + 5) * 1000)
        return {Action::Quit, -1};
    return {};
}

} // namespace tolvane
