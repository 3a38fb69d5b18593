#include "BenchRehearsals.h"

#include "BareSupport.h"
#include "BenchCluster.h"
#include "ProcessRuns.h"

#include <cstdio>
#include <cstring>

namespace bench {

namespace {

const double Milli = 1e3;
const std::size_t Rounds = 15;
const wchar_t RecordingFile[] = L"servers.rec";

void AddTimes(Report& report, std::size_t resources, const std::string& measure, const Comparison& times,
              const char* contestant, double wallGoal = 0) {
    report.Add({resources, measure + ", on the wall", times.WallSeconds(contestant) * Milli, "ms", wallGoal});
    report.Add({resources, measure, times.Seconds(contestant) * Milli, "ms"});
}

// A cluster whose first server has no resource of the product.
void WriteModelWithoutProduct(std::size_t resources) {
    std::string text = ClusterText(resources);
    const std::string product = R"("Product 0", "type": "clusRDLL")";
    const std::size_t at = text.find(product);
    Require(at != std::string::npos, "the model");
    WriteText(ModelFile, text.replace(at, product.size(), R"("Product 0", "type": "Generic Service")"));
    Sleep(100); // as above
}

// The lines of a file that hold the text.
std::size_t LinesWith(const wchar_t* path, const char* text) {
    std::FILE* file = _wfopen(path, L"rb");
    Require(file != nullptr, "_wfopen");
    std::size_t count = 0;
    char line[4096];
    while (std::fgets(line, sizeof(line), file) != nullptr) {
        count += std::strstr(line, text) != nullptr ? 1 : 0;
    }
    std::fclose(file);
    return count;
}

const wchar_t Creation[] = L"resource create EXVS0 --name Created --mode single-copy --data-path F:\\data";

} // namespace

// A run is made once more while it is recorded, and then from the recording.
void MeasureRecording(Report& report) {
    const std::size_t resources = 1000;
    report.Begin("Probe, recording and replay",
                 "On a model file. The plain run of \"clusctl servers\", the recorded one, the replayed one and the "
                 "probe take turns.",
                 "resources");
    WriteModelFile(ClusterText(resources));
    const std::wstring file = RecordingFile;
    const std::wstring record = Clusctl(L"record " + file + L" -- servers");
    TimeOfRun(record); // for the first replay
    const Comparison times = CompareTimed(
        {Program("plain", Clusctl(L"servers")), Program("recorded", record, []() { DeleteFileW(RecordingFile); }),
         Program("replayed", Clusctl(L"--model " + file + L" servers")), Program("probe", Clusctl(L"probe"))},
        RoundsOfStarts);
    report.Add({resources, "recorded / plain, on the wall", times.WallRatio("recorded", "plain"), "x", 1.3});
    report.Add({resources, "replayed / plain, on the wall", times.WallRatio("replayed", "plain"), "x", 1});
    report.Add({resources, "recorded / plain", times.Ratio("recorded", "plain"), "x"});
    report.Add({resources, "replayed / plain", times.Ratio("replayed", "plain"), "x"});
    AddTimes(report, resources, "clusctl servers", times, "plain");
    AddTimes(report, resources, "recorded", times, "recorded");
    AddTimes(report, resources, "replayed", times, "replayed");
    AddTimes(report, resources, "clusctl probe", times, "probe", 10000);
    DeleteFileW(RecordingFile);
}

void MeasureRehearsals(Report& report) {
    report.Begin("Rehearsals",
                 "\"resource create\" on a model file and its rehearsal on a copy take turns; then one rehearsal for "
                 "each call of the cluster that it makes, with that one failing.",
                 "resources");
    const std::size_t resources = 1000;
    const std::wstring rehearse = L"rehearse -- ";
    const auto model = []() { WriteModelWithoutProduct(resources); };
    const Comparison times = CompareTimed(
        {Program("creation", Clusctl(Creation), model), Program("rehearsal", Clusctl(rehearse + Creation), model)},
        Rounds);
    report.Add({resources, "rehearsal / creation, on the wall", times.WallRatio("rehearsal", "creation"), "x", 3});
    report.Add({resources, "rehearsal / creation", times.Ratio("rehearsal", "creation"), "x"});
    AddTimes(report, resources, "clusctl resource create", times, "creation");
    AddTimes(report, resources, "its rehearsal", times, "rehearsal");

    const std::size_t few = 10;
    const wchar_t journal[] = L"journal.txt";
    const auto fewModel = []() { WriteModelWithoutProduct(few); };
    fewModel();
    const RunTime sweep = TimeOfRun(Clusctl(std::wstring(L"rehearse --each-call-fails -- ") + Creation));
    const Comparison single = CompareTimed({Program("creation", Clusctl(Creation), fewModel)}, Rounds);
    fewModel();
    SetEnvironmentVariableW(L"CLUSSIM_JOURNAL", journal);
    TimeOfRun(Clusctl(Creation));
    SetEnvironmentVariableW(L"CLUSSIM_JOURNAL", nullptr);
    const auto calls = static_cast<double>(LinesWith(journal, "\"args\""));
    DeleteFileW(journal);
    report.Add({few, "its calls of the cluster", calls, ""});
    report.Add({few, "each of them failing in turn / (calls x command), on the wall",
                sweep.wallSeconds / (calls * single.WallSeconds("creation")), "x", 1});
    report.Add({few, "each of them failing in turn, on the wall", sweep.wallSeconds * Milli, "ms"});
    report.Add({few, "each of them failing in turn", sweep.seconds * Milli, "ms"});
    AddTimes(report, few, "clusctl resource create", single, "creation");
}

} // namespace bench
