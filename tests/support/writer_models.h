// Two clearly different models of a chosen size, for tests and benchmarks of the file writer.
#pragma once

#include <string>

#include "config/program_group_file.h"

namespace tolvane::test {

inline void FillWriterModel(ProgramModel& model, int variant, int programs) {
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

} // namespace tolvane::test
