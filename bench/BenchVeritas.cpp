#include "BenchVeritas.h"

#include "BareSupport.h"
#include "Measurement.h"
#include "PrivateFolder.h"
#include "ThreadClock.h"
#include "ToolRuns.h"

#include "clus_VeritasCluster.h"

#include <atomic>
#include <cstdio>
#include <cwchar>
#include <string>
#include <thread>
#include <vector>

namespace bench {

namespace {

const std::size_t ListColumns = 2;
const std::size_t SystemsPerResource = 2;
const std::size_t ResourcesPerServiceGroup = 10;
const std::size_t GoalRows = 100000; // goals are set for so many rows
const double Nano = 1e9;
const double Milli = 1e3;

// The list of resources as the tool prints it: each one once per system, names padded to one width.
std::string ResourceList(std::size_t rows) {
    std::string text;
    char line[80];
    for (std::size_t row = 0; row < rows; ++row) {
        std::snprintf(line, sizeof(line), "EVS%04u-Resource%-8u\t\tNODE%u\r\n",
                      static_cast<unsigned>(row / SystemsPerResource / ResourcesPerServiceGroup),
                      static_cast<unsigned>(row / SystemsPerResource),
                      static_cast<unsigned>(row % SystemsPerResource + 1));
        text += line;
    }
    return text;
}

std::wstring WithoutCarriageReturns(const std::string& output) {
    std::wstring text;
    for (const char byte : output) {
        if (byte != '\r') {
            text += static_cast<wchar_t>(byte);
        }
    }
    return text;
}

// Splits the text with wcstok and gives each token to `use`. wcstok cuts the text up: it is copied into `scratch`,
// whose room is kept.
template <class Use> void BareSplit(const std::wstring& text, std::vector<wchar_t>& scratch, const Use& use) {
    scratch.assign(text.c_str(), text.c_str() + text.size() + 1);
#if defined(__MINGW32__) && !defined(_UCRT)
    for (wchar_t* token = std::wcstok(scratch.data(), L" \t\n"); token; token = std::wcstok(nullptr, L" \t\n")) {
#else
    wchar_t* rest = nullptr;
    for (wchar_t* token = std::wcstok(scratch.data(), L" \t\n", &rest); token;
         token = std::wcstok(nullptr, L" \t\n", &rest)) {
#endif
        use(token);
    }
}

// Rows as the tool prints them, and what splitting them takes.
void MeasureList(Report& report, std::size_t rows, double& last, double& lastOfList) {
    const std::string output = ResourceList(rows);
    const std::wstring text = WithoutCarriageReturns(output);
    std::vector<wchar_t> scratch;
    std::vector<std::wstring> expected;
    const ToolReplacement tool = ToolReplacement::Write(output);
    Require(CVeritasCluster().EnumResourceNamesW(expected) && expected.size() == rows / SystemsPerResource,
            "EnumResourceNamesW failed");
    const Comparison times =
        Compare({{"library",
                  [&]() {
                      std::vector<std::wstring> names;
                      Require(CVeritasCluster().EnumResourceNamesW(names) && names.size() == expected.size(),
                              "EnumResourceNamesW failed");
                  }},
                 {"wcstok",
                  [&]() {
                      std::size_t count = 0;
                      BareSplit(text, scratch, [&count](const wchar_t*) { ++count; });
                      Require(count == rows * ListColumns, "wcstok finds another number of tokens");
                  }},
                 {"list", [&]() {
                      std::vector<std::wstring> names;
                      names.insert(names.end(), expected.begin(), expected.end());
                      Require(names.size() == expected.size(), "a list of another length");
                  }}});
    const auto goal = [rows](double value) { return rows >= GoalRows ? value : 0; };
    const double tokens = static_cast<double>(rows * ListColumns);
    report.Add({rows, "library / wcstok", times.Ratio("library", "wcstok"), "", goal(3.0)});
    report.Add({rows, "library", times.Seconds("library") * Nano / static_cast<double>(rows), "ns per row", goal(330)});
    report.Add({rows, "wcstok", times.Seconds("wcstok") * Nano / static_cast<double>(rows), "ns per row"});
    if (times.Allocations("library") != 0) {
        report.Add({rows, "peak memory", static_cast<double>(times.PeakBytes("library")) / tokens, "bytes per token",
                    goal(45)});
        report.Add(
            {rows, "allocations", static_cast<double>(times.Allocations("library")) / tokens, "per token", goal(0.25)});
    }
    if (last != 0) {
        const double most = times.Seconds("list") / lastOfList;
        report.Add({rows, "growth of the result list alone", most, "times a tenth"});
        report.Add({rows, "growth", times.Seconds("library") / last, "times a tenth", goal(most)});
    }
    last = times.Seconds("library");
    lastOfList = times.Seconds("list");
}

void RequireTwoSystems() {
    std::vector<std::wstring> systems;
    Require(CVeritasCluster().EnumSystemNames(systems) && systems.size() == 2, "EnumSystemNames failed");
}

void MeasureRun(Report& report) {
    report.Begin(
        "A run of a VCS tool",
        "EnumSystemNames, against starting, waiting for and reading the same small program with the platform's "
        "calls alone. Most of it happens in other processes, so it is the time on the wall.",
        "runs");
    const std::wstring tool = BenchToolPath();
    const ToolReplacement replacement = ToolReplacement::Start(tool);
    const Comparison times = Compare(
        {{"library", &RequireTwoSystems},
         {"bare",
          [&]() { Require(OutputOfProcess(tool, L"").size() == BenchToolBytes, "the bare run reads another text"); }}},
        4);
    report.Add(
        {1, "library, own processor time beyond the bare calls'", times.Difference("library", "bare") * Milli, "ms"});
    report.Add({1, "library", times.WallSeconds("library") * Milli, "ms"});
    report.Add({1, "bare calls", times.WallSeconds("bare") * Milli, "ms"});

    const std::size_t threads = 64;
    std::atomic<std::size_t> failures{0};
    const double started = WallSeconds();
    std::vector<std::thread> runs;
    for (std::size_t i = 0; i < threads; ++i) {
        runs.emplace_back([&failures]() {
            try {
                RequireTwoSystems();
            } catch (const std::exception&) {
                ++failures;
            }
        });
    }
    for (std::thread& run : runs) {
        run.join();
    }
    Require(failures == 0, "a run among many at once failed");
    report.Add({threads, "library, at once, each", (WallSeconds() - started) * Milli / threads, "ms"});
}

} // namespace

void MeasureVeritas(Report& report, Scale scale) {
    const harness::PrivateFolder folder; // the library writes its capture files into the current directory
    MeasureRun(report);
    report.Begin(
        "EnumResourceNamesW",
        "Each resource in two rows; the output is written by no process. wcstok splits the same text in memory "
        "and keeps nothing. Bytes and allocations are those of one call, by the tokens printed.",
        "rows");
    double last = 0;
    double lastOfList = 0;
    for (const std::size_t rows : RowCounts(scale)) {
        MeasureList(report, rows, last, lastOfList);
    }
}

} // namespace bench
