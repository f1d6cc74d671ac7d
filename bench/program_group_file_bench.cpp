// Reading and writing the program-group file at 1k, 10k and 100k programs: time per program,
// growth from 10k to 100k (linear growth gives 10), and the reader against a bare split of the
// same bytes into lines, measured in the same run.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>

#include "config/program_group_file.h"
#include "text/language.h"

using namespace tolvane;
using Clock = std::chrono::steady_clock;

namespace {

const std::vector<LanguageEntry> kLanguages = {{"English", "en"}, {"Deutsch", "de"}};

void Fill(ProgramModel& m, int programs) {
    SetDefaultModel(m);
    auto& startup = m.ProgramGroups[0].Programs;
    startup.clear();
    for (int i = 0; i < programs; ++i) {
        std::string n = std::to_string(i);
        startup.push_back({"\"C:\\Program Files\\Vendor " + n + "\\tool" + n + ".exe\" ",
                           "--background --profile=" + n, i % 2 ? "ExecuteReg" : "ExecuteRegAU",
                           static_cast<float>(i % 60) / 2, "Vendor Tool " + n});
    }
}

// The fastest of a few runs: the least disturbed by the rest of the machine.
template <class F> double BestSeconds(int runs, F f) {
    double best = 1e300;
    for (int r = 0; r < runs; ++r) {
        auto t0 = Clock::now();
        f();
        best = std::min(best, std::chrono::duration<double>(Clock::now() - t0).count());
    }
    return best;
}

struct Result {
    double write, read, split;
};

Result Measure(int programs) {
    ProgramModel model;
    Fill(model, programs);
    const int runs = programs >= 100000 ? 3 : 7;
    std::string bytes;
    Result r{};
    // Written as the program writes it: a chunk at a time into the file (here a sink that
    // takes each chunk's size and first byte, so nothing is optimised away).
    size_t written = 0;
    r.write = BestSeconds(runs, [&] {
        written = 0;
        WriteProgramGroupFile(model, kLanguages, [&](std::string_view chunk) {
            written += chunk.size() + static_cast<unsigned char>(chunk[0]);
        });
    });
    bytes = FormatProgramGroupFile(model, kLanguages);
    if (written < bytes.size())
        std::abort();
    ProgramGroupReadContext context;
    context.Languages = &kLanguages;
    size_t read = 0;
    r.read = BestSeconds(runs, [&] {
        ProgramModel back;
        if (!ReadProgramGroupFile(bytes, back, context).Ok)
            std::abort();
        read = back.ProgramGroups[0].Programs.size();
    });
    if (read != static_cast<size_t>(programs))
        std::abort();
    size_t lines = 0;
    r.split = BestSeconds(runs, [&] { lines = SplitTextLines(bytes).size(); });
    if (lines == 0)
        std::abort();
    return r;
}

} // namespace

int main() {
    const int sizes[] = {1000, 10000, 100000};
    Result results[3];
    std::printf("%9s %14s %14s %16s %16s\n", "programs", "write us/prog", "read us/prog",
                "line split us/p", "read / split");
    for (int i = 0; i < 3; ++i) {
        results[i] = Measure(sizes[i]);
        const double n = sizes[i];
        std::printf("%9d %14.3f %14.3f %16.3f %16.2f\n", sizes[i], results[i].write * 1e6 / n,
                    results[i].read * 1e6 / n, results[i].split * 1e6 / n,
                    results[i].read / results[i].split);
    }
    std::printf("growth 100k/10k: write %.2f, read %.2f (linear: 10, goal: at most 12)\n",
                results[2].write / results[1].write, results[2].read / results[1].read);
    return 0;
}
