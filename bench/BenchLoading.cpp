#include "BenchLoading.h"

#include "BareSupport.h"
#include "Measurement.h"
#include "PrivateFolder.h"
#include "ToolRuns.h"

#include <algorithm>
#include <cstdlib>

namespace bench {

namespace {

const int Rounds = 21;
const wchar_t EmptyDll[] = L"lz32.dll"; // of the system, and next to nothing in it

// Loads a DLL in a process of its own; milliseconds.
double TimeOfLoading(const std::wstring& dll) {
    return std::atof(OutputOfProcess(BenchToolPath(), L"load \"" + dll + L"\"").c_str());
}

double Megabytes(const wchar_t* file) {
    WIN32_FILE_ATTRIBUTE_DATA data;
    Require(GetFileAttributesExW((BenchFolder() + file).c_str(), GetFileExInfoStandard, &data),
            "a file of the library is missing");
    return static_cast<double>(data.nFileSizeLow) / 1e6;
}

} // namespace

void MeasureLoading(Report& report) {
    report.Begin("Loading",
                 "LoadLibraryW of clusutil.dll with all that it needs, in a process of its own each time; against a "
                 "small DLL of the system. Times on the wall.",
                 "files");
    const harness::PrivateFolder folder; // for the output of the processes
    std::vector<double> library, empty;
    const std::wstring path = BenchFolder() + L"clusutil.dll";
    for (int round = 0; round < Rounds; ++round) {
        library.push_back(TimeOfLoading(path));
        empty.push_back(TimeOfLoading(EmptyDll));
    }
    report.Add({0, "clusutil.dll, median", Median(library), "ms", 8});
    report.Add({0, "clusutil.dll, fastest", *std::min_element(library.begin(), library.end()), "ms"});
    report.Add({0, "small DLL of the system, median", Median(empty), "ms"});
    for (const wchar_t* file : {L"clusutil.dll", L"DebugLog.dll", L"CommonUtil.dll", L"WebServerUtil.dll"}) {
        const std::wstring name = file;
        report.Add({0, "size of " + std::string(name.begin(), name.end()), Megabytes(file), "MB"});
    }
}

} // namespace bench
