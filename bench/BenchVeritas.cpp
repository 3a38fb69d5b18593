#include "BenchVeritas.h"

#include "BareSupport.h"
#include "Measurement.h"
#include "PrivateFolder.h"
#include "ToolRuns.h"

#include "core/ToolOutput.h"
#include "core/UniqueNames.h"
#include "clus_VeritasCluster.h"

#include <cstdio>
#include <cwchar>
#include <string>
#include <utility>
#include <vector>

namespace bench {

namespace {

const std::size_t ListColumns = 2;
const std::size_t SystemsPerResource = 2;
const std::size_t ResourcesPerServiceGroup = 10;

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

struct ListResult {
    std::size_t rows;
    Result whole; // the public member
    Result pure;  // splitting and de-duplication of a text in memory
    Result kept;  // wcstok and a list of its tokens, which is what the library's interface asks for
};

ListResult MeasureList(std::size_t rows) {
    const std::string output = ResourceList(rows);
    const std::wstring text = WithoutCarriageReturns(output);
    const std::size_t repetitions = rows < 10000 ? 10 : 1;
    std::vector<wchar_t> scratch;
    const auto bare = [&]() {
        std::size_t count = 0;
        BareSplit(text, scratch, [&count](const wchar_t*) { ++count; });
        Require(count == rows * ListColumns, "wcstok finds another number of tokens");
    };
    const ToolReplacement tool = ToolReplacement::Write(output);
    ListResult result;
    result.rows = rows;
    result.whole = Measure(
        [&]() {
            std::vector<std::wstring> names;
            Require(CVeritasCluster().EnumResourceNamesW(names) && names.size() == rows / SystemsPerResource,
                    "EnumResourceNamesW failed");
        },
        bare, repetitions);
    result.pure = Measure(
        [&]() {
            std::vector<std::wstring> tokens, names;
            clus::SplitOutput(text, tokens);
            clus::UniqueNames unique(names);
            for (std::size_t i = 0; i < tokens.size(); i += ListColumns) {
                unique.Append(std::move(tokens[i]));
            }
            Require(names.size() == rows / SystemsPerResource, "another number of names");
        },
        bare, repetitions);
    result.kept = Measure(
        [&]() {
            std::vector<std::wstring> tokens;
            BareSplit(text, scratch, [&tokens](const wchar_t* token) { tokens.emplace_back(token); });
            Require(tokens.size() == rows * ListColumns, "wcstok finds another number of tokens");
        },
        bare, repetitions);
    return result;
}

void PrintRun(const Result& result) {
    std::printf("\nA tool run: CVeritasCluster::EnumSystemNames, bare CreateProcessW + wait + read\n");
    std::printf("%17s: library %9.4f ms, bare %9.4f ms, ratio %.3f (target 1.05 at most); %u rounds\n", "one run",
                result.library * 1e3, result.bare * 1e3, result.library / result.bare,
                static_cast<unsigned>(result.rounds));
}

void PrintList(const char* measured, std::size_t rows, const Result& result, const Result* smaller) {
    std::printf("%6u rows: %s %9.4f ms, wcstok %9.4f ms, ratio %.3f", static_cast<unsigned>(rows), measured,
                result.library * 1e3, result.bare * 1e3, result.library / result.bare);
    if (smaller) {
        std::printf(", growth x%.2f, wcstok x%.2f", result.library / smaller->library, result.bare / smaller->bare);
    }
    std::printf("; %u rounds\n", static_cast<unsigned>(result.rounds));
    if (result.allocations != 0) {
        std::printf("%17s  peak memory: %.1f bytes per token, %.2f allocations per token\n", "",
                    static_cast<double>(result.peakBytes) / static_cast<double>(rows * ListColumns),
                    static_cast<double>(result.allocations) / static_cast<double>(rows * ListColumns));
    }
}

Result MeasureRun() {
    const std::wstring tool = BenchToolPath();
    const ToolReplacement replacement = ToolReplacement::Start(tool);
    return Measure(
        []() {
            std::vector<std::wstring> systems;
            Require(CVeritasCluster().EnumSystemNames(systems) && systems.size() == 2, "EnumSystemNames failed");
        },
        [&]() { Require(BareToolRun(tool) == BenchToolBytes, "the bare run reads another text"); });
}

} // namespace

void MeasureVeritas() {
    const harness::PrivateFolder folder; // the library writes its capture files into the current directory
    PrintRun(MeasureRun());
    std::vector<ListResult> lists;
    for (const std::size_t rows : {1000u, 10000u, 100000u}) {
        lists.push_back(MeasureList(rows));
    }
    std::printf("\nCVeritasCluster::EnumResourceNamesW, output written by no process, wcstok alone on the same text\n"
                "(targets: ratio 2.0 at most, growth 11 at most)\n");
    for (std::size_t i = 0; i < lists.size(); ++i) {
        PrintList("library", lists[i].rows, lists[i].whole, i ? &lists[i - 1].whole : nullptr);
    }
    std::printf("\nIts splitting and de-duplication, the text in memory\n");
    for (std::size_t i = 0; i < lists.size(); ++i) {
        PrintList("library", lists[i].rows, lists[i].pure, i ? &lists[i - 1].pure : nullptr);
    }
    std::printf("\nFor comparison: wcstok and a list of its tokens, without the library\n");
    for (std::size_t i = 0; i < lists.size(); ++i) {
        PrintList("list", lists[i].rows, lists[i].kept, i ? &lists[i - 1].kept : nullptr);
    }
}

} // namespace bench
