#include "items/startup_approved.h"

#include "text/strings.h"

namespace tolvane {

bool SwitchedOff(uint32_t type, const std::vector<uint8_t>& data) {
    return type == kBinaryType && !data.empty() && (data[0] & 1) != 0;
}

std::vector<uint8_t> SwitchedOnFlag(std::vector<uint8_t> data, uint64_t fileTime) {
    if (data.size() < kApprovedFlagSize)
        data.resize(kApprovedFlagSize, 0);
    data[0] = 0x02;
    for (size_t i = 0; i < 8; ++i)
        data[4 + i] = static_cast<uint8_t>(fileTime >> (8 * i));
    return data;
}

SwitchedOffNames::SwitchedOffNames(const std::vector<std::pair<std::string, RegistryValue>>& values,
                                   NameOrder order)
    : names_(Less{order}) {
    for (const auto& [name, value] : values)
        if (SwitchedOff(value.Type, value.Data))
            names_.insert(name);
}

bool SwitchedOffNames::Contains(std::string_view name) const {
    return !names_.empty() && names_.find(name) != names_.end();
}

} // namespace tolvane
