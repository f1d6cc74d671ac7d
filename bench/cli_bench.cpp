// tolvanec list --json with 2,000 items (1,000 Run values, 1,000 shortcuts) against what a
// script would otherwise run to see the same: "reg query" of the Run key and "dir" of the
// Startup folder, in the same invocation, alternated, medians of five. Then apply --check of a
// plan of 200 of those items against the list of all 2,000. Last, the list of 100 items whose
// programs are there, each its own signed file: what verifying the signatures costs.
//   cli_bench <bin folder>
#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "cli/logon_plan.h"
#include "platform/registry.h"
#include "support/win_test_support.h"

using namespace tolvane;

namespace {

constexpr int kEach = 1000, kPlanned = 200, kSigned = 100;

// Runs the command with its output to a file; the milliseconds it took.
double Timed(const std::string& command, const std::string& output) {
    SECURITY_ATTRIBUTES inherit{sizeof inherit, nullptr, TRUE};
    HANDLE out = CreateFileA(output.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                             &inherit, CREATE_ALWAYS, 0, nullptr);
    STARTUPINFOA si{sizeof si};
    si.dwFlags = STARTF_USESTDHANDLES;
    si.hStdOutput = out;
    si.hStdError = out;
    PROCESS_INFORMATION pi{};
    std::string line = command;
    const ULONGLONG t0 = GetTickCount64();
    if (!CreateProcessA(nullptr, line.data(), nullptr, nullptr, TRUE, CREATE_NO_WINDOW, nullptr,
                        nullptr, &si, &pi)) {
        std::fprintf(stderr, "cannot start %s\n", command.c_str());
        std::exit(1);
    }
    WaitForSingleObject(pi.hProcess, INFINITE);
    const double ms = static_cast<double>(GetTickCount64() - t0);
    CloseHandle(pi.hProcess);
    CloseHandle(pi.hThread);
    CloseHandle(out);
    return ms;
}

double Median(std::vector<double> v) {
    std::sort(v.begin(), v.end());
    return v[v.size() / 2];
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: cli_bench <bin>\n");
        return 2;
    }
    const std::string bin = argv[1];
    test::TempFolder folder{"cli-bench"};
    CopyFileA((bin + "\\tolvanec.exe").c_str(), (folder / "tolvanec.exe").c_str(), FALSE);
    test::CopyTree(bin + "\\lang", folder / "lang");
    test::CopyTree(bin + "\\data", folder / "data");
    const test::StartupLocations places;
    places.Clear();
    CRegistry reg;
    for (int i = 0; i < kEach; ++i) {
        const std::string n = std::to_string(i);
        (void)reg.SaveSettingString(RegistryRoot::CurrentUser, kRunKey, "Value" + n,
                                    "\"C:\\Program Files\\Tool " + n + "\\tool.exe\" -min");
        test::CreateShortcut(places.UserFolder + "\\Item " + n + ".lnk", "C:\\windows\\notepad.exe",
                             "-n " + n);
    }
    const std::string tolvanec = "\"" + folder / "tolvanec.exe" + "\" list --json";
    const std::string query =
        "reg.exe query HKCU\\Software\\Microsoft\\Windows\\CurrentVersion\\Run";
    const std::string dir = "cmd.exe /c dir \"" + places.UserFolder + "\"";
    // A plan that delays 100 of the Run values and stops 100 of the shortcuts.
    LogonPlan plan;
    for (int i = 0; i < kPlanned / 2; ++i) {
        const std::string n = std::to_string(i);
        plan.Items.push_back({{kUserRun, false},
                              "Value" + n,
                              "\"C:\\Program Files\\Tool " + n + "\\tool.exe\" -min",
                              ItemState::Delayed,
                              5.0f});
        plan.Items.push_back({{kUserStartup, false},
                              "Item " + n + ".lnk",
                              "C:\\windows\\notepad.exe",
                              ItemState::Stopped});
    }
    test::WriteFileBytes(folder / "plan.json", FormatPlanJson(plan));
    const std::string check =
        "\"" + folder / "tolvanec.exe" + "\" apply \"" + folder / "plan.json" + "\" --check";
    std::vector<double> own, base, checked;
    for (int round = 0; round < 5; ++round) {
        own.push_back(Timed(tolvanec, folder / "own.txt"));
        base.push_back(Timed(query, folder / "reg.txt") + Timed(dir, folder / "dir.txt"));
        checked.push_back(Timed(check, folder / "check.txt"));
    }
    const double ownMs = Median(own), baseMs = Median(base);
    const std::string listed = test::ReadFileBytes(folder / "own.txt");
    size_t records = 0;
    for (size_t at = listed.find("\n  {"); at != std::string::npos;
         at = listed.find("\n  {", at + 1))
        ++records;
    std::printf("tolvanec list --json, %zu of %d items listed: %.0f ms; reg query + dir: %.0f ms; "
                "ratio %.2f "
                "(goal <= 2)\n",
                records, 2 * kEach, ownMs, baseMs, ownMs / baseMs);
    const std::string differences = test::ReadFileBytes(folder / "check.txt");
    const double checkMs = Median(checked);
    std::printf("tolvanec apply --check, a plan of %d items, %zu differences listed: %.0f ms; "
                "against list --json: ratio %.2f (goal <= 1.5)\n",
                kPlanned,
                static_cast<size_t>(std::count(differences.begin(), differences.end(), '\n')),
                checkMs, checkMs / ownMs);
    // Every program there and each its own file, signed: the list verifies each signature once.
    places.Clear();
    const std::string signedProgram = test::ReadFileBytes(test::SignedCopy("trusted.exe"));
    for (int i = 0; i < kSigned; ++i) {
        const std::string program = folder / ("signed" + std::to_string(i) + ".exe");
        test::WriteFileBytes(program, signedProgram);
        (void)reg.SaveSettingString(RegistryRoot::CurrentUser, kRunKey,
                                    "Signed" + std::to_string(i), "\"" + program + "\" -min");
    }
    std::vector<double> signedRuns;
    for (int round = 0; round < 5; ++round)
        signedRuns.push_back(Timed(tolvanec, folder / "signed.txt"));
    std::printf("tolvanec list --json, %d items each with its own signed program of %zu KB: %.0f "
                "ms\n",
                kSigned, signedProgram.size() / 1024, Median(signedRuns));
    places.Clear();
    return 0;
}
