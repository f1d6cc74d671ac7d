// Any bytes as a log-on plan: no crash, no hang, no read outside a string; a plan that reads
// reads back from its own file as the same file.
#include <cstdint>
#include <string>

#include "cli/logon_plan.h"

using namespace tolvane;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const PlanParse first =
        ParsePlanJson(std::string_view(reinterpret_cast<const char*>(data), size), nullptr);
    if (!first.Plan)
        return 0;
    const std::string file = FormatPlanJson(*first.Plan);
    const PlanParse again = ParsePlanJson(file, nullptr);
    if (!again.Plan || FormatPlanJson(*again.Plan) != file)
        __builtin_trap();
    return 0;
}
