#include "ui/tips/tip_model.h"

#include <algorithm>

#include "text/language.h"
#include "text/text_tables.h"

namespace tolvane {

std::vector<std::string> BuiltInTipTexts() {
    static const char kTexts[] = "&Next Tip\0"
                                 "Sorry, no tips are available: the tip file could not be read.\0"
                                 "Did you know...\0"
                                 "&Show tips at startup\0"
                                 "Tip of the Day\0";
    return UnpackTexts(kTexts, sizeof kTexts);
}

bool TipOfDay::LoadTips(const std::optional<std::string>& fileText) {
    if (!fileText)
        return false;
    tips_ = SplitTextLines(*fileText);
    ShowRandomTip();
    return true;
}

void TipOfDay::ShowRandomTip() {
    const int count = static_cast<int>(tips_.size());
    // A draw of exactly 1, which a generator may round to, still names the last tip.
    current_ = std::min(static_cast<int>(random_() * count + 1), count);
}

std::string TipOfDay::Shown(const std::vector<std::string>& texts) const {
    if (current_ >= 1 && current_ <= static_cast<int>(tips_.size()))
        return tips_[static_cast<size_t>(current_ - 1)];
    // An empty file gives no tip to show either: the user is told, not shown a blank box.
    return TextTables::Entry(texts, kTipNoTips);
}

std::optional<int> TipOfDay::ShowTipsOnClose(bool ticked, int stored) {
    // Any non-zero setting is "on" to every reader, so only a real change is written.
    if (ticked == (stored != 0))
        return std::nullopt;
    return ticked ? 1 : 0;
}

} // namespace tolvane
