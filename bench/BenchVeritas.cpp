#include "BenchVeritas.h"

#include "BareSupport.h"
#include "Growth.h"
#include "Measurement.h"
#include "PrivateFolder.h"
#include "ThreadClock.h"
#include "ToolRuns.h"

#include "clus_VeritasCluster.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cwchar>
#include <functional>
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
const std::size_t RunsAtOnce = 64;
const std::size_t SingleRunRounds = 41;
const std::size_t AtOnceRounds = 5;

const std::size_t LongestResource = 40; // characters, terminator included

template <typename Character> Character* PutText(const char* text, Character* out) {
    while (*text != '\0') {
        *out++ = static_cast<Character>(*text++);
    }
    return out;
}

// At least `least` digits.
template <typename Character> Character* PutNumber(std::size_t number, int least, Character* out) {
    int digits = 1;
    for (std::size_t rest = number; rest >= 10; rest /= 10) {
        ++digits;
    }
    Character* const end = out + std::max(digits, least);
    for (Character* digit = end; digit != out; number /= 10) {
        *--digit = static_cast<Character>('0' + number % 10);
    }
    return end;
}

// "EVS0001-Resource12", terminated; its end.
template <typename Character> Character* PutResourceName(std::size_t resource, Character* out) {
    out = PutNumber(resource / ResourcesPerServiceGroup, 4, PutText("EVS", out));
    out = PutNumber(resource, 1, PutText("-Resource", out));
    *out = 0;
    return out;
}

// The list of resources as the tool prints it: each one once per system, names padded to one width.
std::string ResourceList(std::size_t rows) {
    std::string text;
    char name[LongestResource];
    char line[2 * LongestResource];
    for (std::size_t row = 0; row < rows; ++row) {
        PutResourceName(row / SystemsPerResource, name);
        std::snprintf(line, sizeof(line), "%-24s\t\tNODE%u\r\n", name,
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

// The result list and nothing else: its names are made one by one.
std::vector<std::wstring> NamesAlone(std::size_t rows) {
    std::vector<std::wstring> names;
    wchar_t name[LongestResource];
    for (std::size_t resource = 0; resource < rows / SystemsPerResource; ++resource) {
        PutResourceName(resource, name);
        names.emplace_back(name);
    }
    return names;
}

// Rows as the tool prints them, and what splitting them takes.
void MeasureList(Report& report, std::size_t rows, double& last, double& lastOfList) {
    const std::string output = ResourceList(rows);
    const std::wstring text = WithoutCarriageReturns(output);
    std::vector<wchar_t> scratch;
    std::vector<std::wstring> expected;
    const ToolReplacement tool = ToolReplacement::Write(output);
    Require(CVeritasCluster().EnumResourceNamesW(expected) && expected == NamesAlone(rows),
            "EnumResourceNamesW failed");
    const Comparison times =
        Compare({{"library",
                  [&]() {
                      std::vector<std::wstring> names;
                      Require(CVeritasCluster().EnumResourceNamesW(names) && names.size() == expected.size(),
                              "EnumResourceNamesW failed");
                  },
                  [&tool]() { return tool.Written(); }},
                 {"wcstok",
                  [&]() {
                      std::size_t count = 0;
                      BareSplit(text, scratch, [&count](const wchar_t*) { ++count; });
                      Require(count == rows * ListColumns, "wcstok finds another number of tokens");
                  }},
                 {"list", [&]() { Require(NamesAlone(rows).size() == expected.size(), "a list of another length"); }}});
    const auto goal = [rows](double value) { return rows >= GoalRows ? value : 0; };
    const double tokens = static_cast<double>(rows * ListColumns);
    report.Add({rows, "library / wcstok", times.Ratio("library", "wcstok"), "", goal(3.0)});
    report.Add({rows, "library", times.Seconds("library") * Nano / static_cast<double>(rows), "ns per row", goal(330)});
    report.Add(
        {rows, "library, on the wall", times.WallSeconds("library") * Nano / static_cast<double>(rows), "ns per row"});
    report.Add({rows, "wcstok", times.Seconds("wcstok") * Nano / static_cast<double>(rows), "ns per row"});
    if (times.Allocations("library") != 0) {
        report.Add({rows, "peak memory", static_cast<double>(times.PeakBytes("library")) / tokens, "bytes per token",
                    goal(45)});
        report.Add(
            {rows, "allocations", static_cast<double>(times.Allocations("library")) / tokens, "per token", goal(0.25)});
    }
    const double most = AddGrowth(report, rows, "growth of the result list alone", times.Seconds("list"), lastOfList);
    AddGrowth(report, rows, "growth", times.Seconds("library"), last, goal(most));
}

void RequireTwoSystems() {
    std::vector<std::wstring> systems;
    Require(CVeritasCluster().EnumSystemNames(systems) && systems.size() == 2, "EnumSystemNames failed");
}

// Processor time is that of all threads and processes; 0 where the system does not tell that.
RunTime TimeOfAll(const std::function<void()>& run) {
    double before = 0;
    double after = 0;
    DescendantSeconds(before);
    const double ownStarted = ThreadSeconds();
    const double started = WallSeconds();
    run();
    const double wall = WallSeconds() - started;
    const double own = ThreadSeconds() - ownStarted;
    return {DescendantSeconds(after) ? after - before + own : 0, wall};
}

// Threads that all do the same at once.
RunTime TimeAtOnce(const std::function<void()>& run) {
    std::atomic<std::size_t> failures{0};
    const RunTime time = TimeOfAll([&]() {
        std::vector<std::thread> runs;
        for (std::size_t i = 0; i < RunsAtOnce; ++i) {
            runs.emplace_back([&]() {
                try {
                    run();
                } catch (const std::exception&) {
                    ++failures;
                }
            });
        }
        for (std::thread& each : runs) {
            each.join();
        }
    });
    Require(failures == 0, "a run among many at once failed");
    return time;
}

void AddRuns(Report& report, std::size_t count, const Comparison& times) {
    const double each = Milli / static_cast<double>(count);
    report.Add({count, "library / bare calls, on the wall", times.WallRatio("library", "bare"), ""});
    report.Add({count, "library, each, on the wall", times.WallSeconds("library") * each, "ms"});
    report.Add({count, "bare calls, each, on the wall", times.WallSeconds("bare") * each, "ms"});
    if (times.Seconds("bare") != 0) {
        report.Add({count, "library, each, processor time of all", times.Seconds("library") * each, "ms"});
        report.Add({count, "bare calls, each, processor time of all", times.Seconds("bare") * each, "ms"});
    }
}

void MeasureRun(Report& report) {
    report.Begin(
        "A run of a VCS tool",
        "EnumSystemNames, against starting, waiting for and reading the same small program with the platform's "
        "calls alone: one run, and threads that all make one at once. Most of it happens in other processes.",
        "runs");
    const std::wstring tool = BenchToolPath();
    const ToolReplacement replacement = ToolReplacement::Start(tool);
    const auto bare = [&]() {
        Require(OutputOfProcess(tool, L"").size() == BenchToolBytes, "the bare run reads another text");
    };
    const Comparison own = Compare({{"library", &RequireTwoSystems}, {"bare", bare}}, 1);
    report.Add(
        {1, "library, own processor time beyond the bare calls'", own.Difference("library", "bare") * Milli, "ms"});
    AddRuns(report, 1,
            CompareTimed({{"library", []() { return TimeOfAll(&RequireTwoSystems); }},
                          {"bare", [&]() { return TimeOfAll(bare); }}},
                         SingleRunRounds));
    AddRuns(report, RunsAtOnce,
            CompareTimed({{"library", []() { return TimeAtOnce(&RequireTwoSystems); }},
                          {"bare", [&]() { return TimeAtOnce(bare); }}},
                         AtOnceRounds));
}

} // namespace

void MeasureVeritas(Report& report, Scale scale) {
    const harness::PrivateFolder folder; // the library writes its capture files into the current directory
    MeasureRun(report);
    report.Begin(
        "EnumResourceNamesW",
        "Each resource in two rows; the output is written by no process, and its writing does not count. wcstok splits "
        "the same text in memory and keeps nothing. The result list is that of the names, made one by one, and nothing "
        "else. Bytes and "
        "allocations are those of one call, by the tokens printed.",
        "rows");
    double last = 0;
    double lastOfList = 0;
    for (const std::size_t rows : RowCounts(scale)) {
        MeasureList(report, rows, last, lastOfList);
    }
}

} // namespace bench
