#include "BenchVcsCommands.h"

#include "Growth.h"
#include "ProcessRuns.h"
#include "ToolRuns.h"

namespace bench {

namespace {

const double Milli = 1e3;
const std::size_t Rounds = 15;
const double MostGrowth = 12;       // as of the other commands
const double MostOfRecording = 1.3; // as of failover clusters
const wchar_t MainCfFile[] = L"main.cf";
const wchar_t RecordingFile[] = L"resources.rec";

// Groups of ten resources on two systems.
std::string MainCf(std::size_t resources) {
    std::string text = "cluster Bench (\n\t)\n\nsystem NODE1 (\n\t)\n\nsystem NODE2 (\n\t)\n";
    for (std::size_t resource = 0; resource < resources; ++resource) {
        const std::string number = std::to_string(resource);
        if (resource % 10 == 0) {
            text += "\ngroup Group" + number + " (\n\tSystemList = { NODE1 = 0, NODE2 = 1 }\n\t)\n";
        }
        text += "\n\tIP Address" + number + " (\n\t\tAddress = \"10.0.0.1\"\n\t\t)\n";
    }
    return text;
}

// The simulated tool reads the whole main.cf, which is most of what a run takes.
void MeasureVcsCommand(Report& report, std::size_t resources, double& former) {
    WriteText(MainCfFile, MainCf(resources));
    const std::wstring command = L"vcs resources --allow-writable-tools";
    const Comparison times =
        CompareTimed({Program("clusctl", Clusctl(command)),
                      Program("recorded", Clusctl(std::wstring(L"record ") + RecordingFile + L" -- " + command),
                              []() { DeleteFileW(RecordingFile); }),
                      Program("tool", Quoted(BenchFolder() + L"hares.exe") + L" -list")},
                     Rounds);
    report.Add({resources, "clusctl / the tool alone, on the wall", times.WallRatio("clusctl", "tool"), "x"});
    report.Add({resources, "clusctl / the tool alone", times.Ratio("clusctl", "tool"), "x"});
    report.Add(
        {resources, "recorded / plain, on the wall", times.WallRatio("recorded", "clusctl"), "x", MostOfRecording});
    report.Add({resources, "clusctl vcs resources, on the wall", times.WallSeconds("clusctl") * Milli, "ms"});
    report.Add({resources, "clusctl vcs resources", times.Seconds("clusctl") * Milli, "ms"});
    report.Add({resources, "hares -list alone, on the wall", times.WallSeconds("tool") * Milli, "ms"});
    report.Add({resources, "hares -list alone", times.Seconds("tool") * Milli, "ms"});
    AddGrowth(report, resources, "clusctl vcs resources, growth on the wall", times.WallSeconds("clusctl"), former,
              MostGrowth);
}

} // namespace

void MeasureVcsCommands(Report& report, Scale scale) {
    report.Begin("Commands of clusctl on VCS",
                 "Two systems, so that the tool prints two rows for each resource. clusctl, which runs the tool once, "
                 "the same while it is recorded, and the tool alone take turns. Processor times are those of clusctl "
                 "and the tool together.",
                 "resources");
    SetEnvironmentVariableW(L"VCSSIM_MAIN_CF", MainCfFile);
    SetEnvironmentVariableW(L"PATH", BenchFolder().c_str());
    double former = 0;
    for (const std::size_t size : ResourceCounts(scale)) {
        MeasureVcsCommand(report, size, former);
    }
    SetEnvironmentVariableW(L"VCSSIM_MAIN_CF", nullptr);
    DeleteFileW(MainCfFile);
    DeleteFileW(RecordingFile);
}

} // namespace bench
