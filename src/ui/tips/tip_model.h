// The tip of the day, without a window: the tips of the language's tip file, one drawn at
// random, and what closing the window writes back of its check box.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tolvane {

// The tip window's own texts, by the lines of its language file.
enum TipText : size_t {
    kTipNextTip = 0,
    kTipNoTips = 1,
    kTipDidYouKnow = 2,
    kTipShowAtStartup = 3,
    kTipCaption = 4,
};
std::vector<std::string> BuiltInTipTexts();

class TipOfDay {
public:
    // random gives a uniform number in [0, 1).
    explicit TipOfDay(std::function<double()> random) : random_(std::move(random)) {}

    // The tip file's text, every line one tip (empty lines too); nullopt when there is no file.
    // True when it was read; a tip is then drawn.
    bool LoadTips(const std::optional<std::string>& fileText);
    // Draws a tip; the same one may come twice in a row.
    void ShowRandomTip();
    // What the tip label shows: the current tip, or the table's "no tips" text when the file
    // gave none.
    std::string Shown(const std::vector<std::string>& texts) const;

    const std::vector<std::string>& Tips() const { return tips_; }
    int Current() const { return current_; } // 1 to the number of tips; 0 before the first draw

    // The setting to write when the window closes with its box ticked or not, or nullopt when
    // the stored setting already says the same (-1 and 1 both say "on").
    static std::optional<int> ShowTipsOnClose(bool ticked, int stored);

private:
    std::function<double()> random_;
    std::vector<std::string> tips_;
    int current_ = 0;
};

} // namespace tolvane
