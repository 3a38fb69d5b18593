// clusutil_bench [PART...] [--scale brief|normal|large] [--json FILE|-]: what the library costs on top of the platform
// calls it needs. Parts are cluster, veritas, loading and clusctl; without one, all of them.
#include "BenchCommands.h"
#include "BenchLoading.h"
#include "BenchMembers.h"
#include "BenchVeritas.h"
#include "ProcessClock.h"
#include "Report.h"
#include "Scale.h"
#include "ThreadClock.h"

#include <winsock2.h>
#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

const char Usage[] = "usage: clusutil_bench [cluster] [veritas] [loading] [clusctl] [--scale brief|normal|large] "
                     "[--json FILE|-]\n";

struct Options {
    std::vector<std::string> parts;
    bench::Scale scale = bench::Scale::Normal;
    std::string jsonFile; // "-": standard output, and nothing else there

    bool Has(const char* part) const {
        return parts.empty() || std::find(parts.begin(), parts.end(), part) != parts.end();
    }
};

// False for a wrong command line.
bool ReadOptions(const std::vector<std::string>& arguments, Options& options) {
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        const std::string value = i + 1 < arguments.size() ? arguments[i + 1] : "";
        if (argument == "cluster" || argument == "veritas" || argument == "loading" || argument == "clusctl") {
            options.parts.push_back(argument);
            continue;
        }
        if (argument == "--json" && !value.empty()) {
            options.jsonFile = value;
        } else if (argument == "--scale" && value == "brief") {
            options.scale = bench::Scale::Brief;
        } else if (argument == "--scale" && value == "normal") {
            options.scale = bench::Scale::Normal;
        } else if (argument == "--scale" && value == "large") {
            options.scale = bench::Scale::Large;
        } else {
            return false;
        }
        ++i;
    }
    return true;
}

const char* NameOf(bench::Scale scale) {
    return scale == bench::Scale::Brief ? "brief" : scale == bench::Scale::Normal ? "normal" : "large";
}

void Write(const std::string& file, const std::string& text) {
    std::FILE* const out = file == "-" ? stdout : std::fopen(file.c_str(), "wb");
    if (!out || std::fwrite(text.data(), 1, text.size(), out) != text.size() || std::fflush(out) != 0) {
        throw std::runtime_error("cannot write to " + file);
    }
    if (out != stdout) {
        std::fclose(out);
    }
}

void Run(const Options& options) {
    bench::Report report(options.jsonFile == "-");
    if (options.jsonFile != "-") {
        std::printf("Version %s. Medians of rounds in which all that is compared takes turns; log off. Times are "
                    "processor times (%s;\nof processes %s) unless said otherwise. Memory is what malloc of the C++ "
                    "runtime and the library's LocalAlloc hand out.\n",
                    CLUSUTIL_BENCH_VERSION, bench::ThreadClockName().c_str(), bench::ProcessClockName().c_str());
    }
    if (options.Has("cluster")) {
        bench::MeasureMembers(report, options.scale);
    }
    if (options.Has("veritas")) {
        bench::MeasureVeritas(report, options.scale);
    }
    if (options.Has("loading")) {
        bench::MeasureLoading(report);
    }
    if (options.Has("clusctl")) {
        bench::MeasureCommands(report, options.scale);
    }
    if (!options.jsonFile.empty()) {
        common::Json document = report.Document();
        document["parts"] = options.parts.empty() ? common::Json("all") : common::Json(options.parts);
        document["scale"] = NameOf(options.scale);
        Write(options.jsonFile, common::DumpJson(document));
    }
}

} // namespace

int main(int argumentCount, char** arguments) {
    const std::vector<std::string> given(arguments + 1, arguments + argumentCount);
    const bool isBare = given.size() == 2 && given[0] == "bare"; // a process of the last part
    Options options;
    if (!isBare && !ReadOptions(given, options)) {
        std::fputs(Usage, stderr);
        return 2;
    }
    SetEnvironmentVariableW(L"CLUSUTIL_LOG_LEVEL", L"off"); // read with the first log line
    SetEnvironmentVariableW(L"CLUSUTIL_LOG_FILE", nullptr);
    try {
        if (isBare) {
            bench::RunBareCommand(given[1]);
        } else {
            Run(options);
        }
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "clusutil_bench: %s\n", error.what());
        return 1;
    }
}
