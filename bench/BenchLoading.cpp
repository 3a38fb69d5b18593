#include "BenchLoading.h"

#include "BareSupport.h"
#include "Measurement.h"
#include "PrivateFolder.h"
#include "ToolRuns.h"

#include <cstdlib>

namespace bench {

namespace {

const double Milli = 1e3;
const std::size_t Rounds = 21;
const wchar_t EmptyDll[] = L"lz32.dll"; // of the system, and next to nothing in it

// Loads a DLL in a process of its own, which tells what that took on the wall. The processor time is that of the
// whole process.
RunTime TimeOfLoading(const std::wstring& dll) {
    double seconds = 0;
    const std::string milliseconds = OutputOfProcess(BenchToolPath(), L"load \"" + dll + L"\"", &seconds);
    return {seconds, std::atof(milliseconds.c_str()) / Milli};
}

double Megabytes(const wchar_t* file) {
    WIN32_FILE_ATTRIBUTE_DATA data;
    Require(GetFileAttributesExW((BenchFolder() + file).c_str(), GetFileExInfoStandard, &data),
            "a file of the library is missing");
    return static_cast<double>(data.nFileSizeLow) / 1e6;
}

} // namespace

void MeasureLoading(Report& report) {
    report.Begin(
        "Loading",
        "LoadLibraryW of clusutil.dll with all that it needs, in a process of its own each time; in turns with "
        "a small DLL of the system.",
        "files");
    const harness::PrivateFolder folder; // for the output of the processes
    const std::wstring path = BenchFolder() + L"clusutil.dll";
    const Comparison times = CompareTimed(
        {{"library", [&path]() { return TimeOfLoading(path); }}, {"empty", []() { return TimeOfLoading(EmptyDll); }}},
        Rounds);
    report.Add({0, "clusutil.dll, on the wall", times.WallSeconds("library") * Milli, "ms", 8});
    report.Add({0, "small DLL of the system, on the wall", times.WallSeconds("empty") * Milli, "ms"});
    report.Add(
        {0, "clusutil.dll, processor time beyond the small DLL's", times.Difference("library", "empty") * Milli, "ms"});
    for (const wchar_t* file : {L"clusutil.dll", L"DebugLog.dll", L"CommonUtil.dll", L"WebServerUtil.dll"}) {
        const std::wstring name = file;
        report.Add({0, "size of " + std::string(name.begin(), name.end()), Megabytes(file), "MB"});
    }
}

} // namespace bench
