#include "items/item_program.h"

#include "text/placeholders.h"
#include "text/strings.h"

namespace tolvane {

ItemProgram ProgramOfItem(const StartupItem& item, const ProgramLookups& lookups) {
    ItemProgram p;
    if (item.Registry()) {
        p.Path = item.File;
        p.Expandable = item.Expandable;
        p.Missing = lookups.ProgramThere && !lookups.ProgramThere(item.File, item.Expandable);
        return p;
    }
    const std::string target = lookups.ShortcutTarget && EndsWith(ToLower(item.Name), ".lnk")
                                   ? lookups.ShortcutTarget(item.File)
                                   : std::string();
    p.Path = target.empty() ? item.File : target;
    // An active shortcut is in its Startup folder, where the listing found it; a kept one is
    // missing when the file is gone from the items folder. Either is missing when its target is.
    if (lookups.FileThere)
        p.Missing = (item.State != ItemState::Active && !lookups.FileThere(item.File)) ||
                    (p.Path != item.File && !lookups.FileThere(p.Path));
    return p;
}

std::optional<ProgramFacts> FactsOfItem(const ItemProgram& program, const ProgramLookups& lookups) {
    if (!lookups.Facts)
        return std::nullopt;
    if (program.Missing)
        return ProgramFacts{{}, {}, SignatureState::Missing};
    return lookups.Facts(program.Path, program.Expandable);
}

std::string FactsTipLine(const ProgramFacts& facts, const FactsTexts& texts) {
    std::string who = facts.Publisher;
    if (!facts.Description.empty())
        who = who.empty() || facts.Description == who ? facts.Description
                                                      : facts.Description + ", " + who;
    auto said = [&](const std::string& named, const std::string& alone) {
        return who.empty() ? alone : FillIn(named, {who});
    };
    switch (facts.Signature) {
    case SignatureState::Trusted:
        return said(texts.Signed, texts.SignedAlone);
    case SignatureState::Untrusted:
        return said(texts.Untrusted, texts.UntrustedAlone);
    case SignatureState::Unsigned:
        return said(texts.Unsigned, texts.UnsignedAlone);
    case SignatureState::Missing:
        return texts.Missing;
    }
    return {};
}

} // namespace tolvane
