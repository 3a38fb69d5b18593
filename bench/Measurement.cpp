#include "Measurement.h"

#include "MemoryMeter.h"

#include "ClusSimControl.h"

#include <winsock2.h>
#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace bench {

namespace {

const std::size_t MinimumRounds = 15;
const std::size_t MaximumRounds = 201;
const double SecondsPerCase = 6; // more than that only for the minimum of rounds

double Seconds() {
    LARGE_INTEGER count, frequency;
    QueryPerformanceCounter(&count);
    QueryPerformanceFrequency(&frequency);
    return static_cast<double>(count.QuadPart) / static_cast<double>(frequency.QuadPart);
}

double TimeOf(const std::function<void()>& call, std::size_t repetitions) {
    const double started = Seconds();
    for (std::size_t i = 0; i < repetitions; ++i) {
        call();
    }
    return (Seconds() - started) / static_cast<double>(repetitions);
}

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

std::size_t CallsOf(const std::function<void()>& call) {
    ClusSimClearJournal();
    call();
    return ClusSimCallCount(nullptr);
}

} // namespace

Result Measure(const std::function<void()>& library, const std::function<void()>& bare, std::size_t repetitions) {
    Result result;
    result.libraryCalls = CallsOf(library);
    result.bareCalls = CallsOf(bare);

    MemoryMeter meter;
    if (meter.Works()) {
        meter.Start();
        library();
        meter.Stop();
        result.peakBytes = meter.PeakBytes();
        result.allocations = meter.Allocations();
    }

    std::vector<double> libraryTimes, bareTimes;
    const double started = Seconds();
    while (libraryTimes.size() < MinimumRounds ||
           (libraryTimes.size() < MaximumRounds && Seconds() - started < SecondsPerCase)) {
        // Whoever goes first finds colder caches: take turns in that too.
        if (libraryTimes.size() % 2 == 0) {
            libraryTimes.push_back(TimeOf(library, repetitions));
            bareTimes.push_back(TimeOf(bare, repetitions));
        } else {
            bareTimes.push_back(TimeOf(bare, repetitions));
            libraryTimes.push_back(TimeOf(library, repetitions));
        }
    }
    result.rounds = libraryTimes.size();
    result.library = Median(libraryTimes);
    result.bare = Median(bareTimes);
    return result;
}

void Print(std::size_t resources, const Result& result, const Result* smaller, std::size_t parts, const char* partName,
           std::size_t memoryTarget) {
    std::printf("%6u resources: library %9.4f ms, bare %9.4f ms, ratio %.3f (target 1.10 at most), %.3f us more per %s",
                static_cast<unsigned>(resources), result.library * 1e3, result.bare * 1e3, result.library / result.bare,
                (result.library - result.bare) * 1e6 / static_cast<double>(parts), partName);
    if (smaller) {
        std::printf(", growth x%.2f, bare x%.2f (target 11 at most)", result.library / smaller->library,
                    result.bare / smaller->bare);
    }
    std::printf("; %u rounds\n", static_cast<unsigned>(result.rounds));
    std::printf("%17s  cluster calls: library %u, needed %u\n", "", static_cast<unsigned>(result.libraryCalls),
                static_cast<unsigned>(result.bareCalls));
    if (result.allocations == 0) {
        std::printf("%17s  memory: not measured, the C++ runtime is no DLL of its own\n", "");
        return;
    }
    std::printf("%17s  peak memory: %u bytes in %u allocations", "", static_cast<unsigned>(result.peakBytes),
                static_cast<unsigned>(result.allocations));
    if (memoryTarget != 0) {
        std::printf(" (target %u: 4 KiB per server found, 200 bytes per resource)",
                    static_cast<unsigned>(memoryTarget));
    }
    std::printf("\n");
}

} // namespace bench
