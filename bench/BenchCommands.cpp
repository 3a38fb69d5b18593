#include "BenchCommands.h"

#include "BareSupport.h"
#include "BenchCluster.h"
#include "BenchRehearsals.h"
#include "BenchVcsCommands.h"
#include "Growth.h"
#include "PrivateFolder.h"
#include "ProcessRuns.h"
#include "ThreadClock.h"
#include "ToolRuns.h"

#include "ClusSimControl.h"

#include <winternl.h>

#include <cwchar>
#include <vector>

namespace bench {

namespace {

const double Milli = 1e3;
const std::size_t Rounds = 15;
const std::size_t RoundsAlone = 7;  // of what is compared with nothing
const double MostGrowth = 12;       // on ten times as many: about linear
const std::size_t GoalSize = 10000; // where the start of a process does not matter

void MeasureStart(Report& report) {
    report.Begin("Start of clusctl",
                 "\"clusctl --version\" as a process, in turns with a program that prints two lines.", "starts");
    const Comparison times = CompareTimed(
        {Program("clusctl", Clusctl(L"--version")), Program("program", Quoted(BenchToolPath()))}, RoundsOfStarts);
    report.Add({0, "clusctl / small program, on the wall", times.WallRatio("clusctl", "program"), "x", 1.3});
    report.Add({0, "clusctl --version, on the wall", times.WallSeconds("clusctl") * Milli, "ms"});
    report.Add({0, "small program, on the wall", times.WallSeconds("program") * Milli, "ms"});
    report.Add({0, "clusctl / small program", times.Ratio("clusctl", "program"), "x"});
    report.Add({0, "clusctl --version", times.Seconds("clusctl") * Milli, "ms"});
    report.Add({0, "small program", times.Seconds("program") * Milli, "ms"});
}

struct Command {
    const char* name;
    double goal;  // milliseconds for 10,000 resources; 0: none
    bool hasBare; // a process makes its calls alone
    double former = 0;
};

void MeasureCommand(Report& report, Command& command, const std::string& shownName, std::size_t resources) {
    const std::wstring name(command.name, command.name + std::string(command.name).size());
    std::vector<TimedContestant> contestants = {Program("clusctl", Clusctl(name))};
    if (command.hasBare) {
        contestants.push_back(Program("bare", Bare(name)));
    }
    const Comparison times = CompareTimed(contestants, command.hasBare ? Rounds : RoundsAlone);
    const bool hasGoal = resources == GoalSize;
    report.Add({resources, "clusctl " + shownName, times.Seconds("clusctl") * Milli, "ms", hasGoal ? command.goal : 0});
    report.Add({resources, "clusctl " + shownName + ", on the wall", times.WallSeconds("clusctl") * Milli, "ms"});
    if (command.hasBare) {
        report.Add({resources, shownName + " / bare calls", times.Ratio("clusctl", "bare"), "x", hasGoal ? 1.5 : 0});
    }
    AddGrowth(report, resources, shownName + ", growth", times.Seconds("clusctl"), command.former, MostGrowth);
}

void MeasureModelCommands(Report& report, Scale scale) {
    Command commands[] = {{"servers", 500, true},        {"groups", 0, true},
                          {"resources", 0, true},        {"snapshot", 2000, true},
                          {"groups --detail", 0, false}, {"resources --detail", 0, false},
                          {"status", 0, false},          {"tree", 0, false},
                          {"doctor", 0, false}};
    Command besideDownNode[] = {{"groups", 0, false}, {"resources", 0, false}};
    report.Begin("Commands of clusctl",
                 "On a model file, in turns with a process that makes the needed cluster calls alone. Beside a down "
                 "node: every second group is owned by a node that is down. Growth is what ten times as many resources "
                 "take: 10 when it is linear.",
                 "resources");
    for (const std::size_t size : ResourceCounts(scale)) {
        WriteModelFile(ClusterText(size));
        for (Command& command : commands) {
            MeasureCommand(report, command, command.name, size);
        }
        WriteModelFile(ClusterText(size, OtherNode::Down));
        for (Command& command : besideDownNode) {
            MeasureCommand(report, command, std::string(command.name) + " beside a down node", size);
        }
    }
}

// What of a call on a model file goes to asking whether the file has changed, by the quickest way that Windows has.
double QuestionSeconds(int times) {
    typedef NTSTATUS(NTAPI * Query)(const OBJECT_ATTRIBUTES*, void*);
    const auto query = reinterpret_cast<Query>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "NtQueryFullAttributesFile")));
    wchar_t path[MAX_PATH] = L"\\??\\";
    const DWORD prefix = 4;
    Require(GetFullPathNameW(ModelFile, MAX_PATH - prefix, path + prefix, nullptr) != 0, "GetFullPathNameW");
    UNICODE_STRING name = {};
    name.Buffer = path;
    name.Length = name.MaximumLength = static_cast<USHORT>(std::wcslen(path) * sizeof(wchar_t));
    OBJECT_ATTRIBUTES object;
    InitializeObjectAttributes(&object, &name, OBJ_CASE_INSENSITIVE, nullptr, nullptr);
    const double before = ThreadSeconds();
    for (int i = 0; i < times; ++i) {
        LARGE_INTEGER information[7]; // room for FILE_NETWORK_OPEN_INFORMATION
        Require(query(&object, information) >= 0, "NtQueryFullAttributesFile");
    }
    return ThreadSeconds() - before;
}

// Of a call that comes so long after the last one that it asks for the file's time and size. On the wall.
double SecondsOfLateCall(HRESOURCE resource, int times) {
    std::vector<double> calls;
    for (int i = 0; i < times; ++i) {
        const double last = WallSeconds();
        while (WallSeconds() - last < 25e-6) {
        }
        const double before = WallSeconds();
        GetClusterResourceState(resource, nullptr, nullptr, nullptr, nullptr);
        calls.push_back(WallSeconds() - before);
    }
    return Median(calls);
}

// A call on a model file that does not change.
void MeasureCall(Report& report, std::size_t resources) {
    const int calls = 100000;
    ClusSimReset(); // reads the file with the next call
    const double beforeReading = ThreadSeconds();
    HCLUSTER cluster = OpenCluster(nullptr);
    const double afterReading = ThreadSeconds();
    Require(cluster != nullptr, "OpenCluster");
    report.Add(
        {resources, "reading the file", (afterReading - beforeReading) * 1e3, "ms", resources == 10000 ? 200. : 0});
    HRESOURCE resource = OpenResource(cluster, L"Disk 0");
    const double before = ThreadSeconds();
    for (int i = 0; i < calls; ++i) {
        Require(GetClusterResourceState(resource, nullptr, nullptr, nullptr, nullptr) == ClusterResourceOnline,
                "GetClusterResourceState");
    }
    const double after = ThreadSeconds();
    report.Add({resources, "GetClusterResourceState", (after - before) * 1e6 / calls, "us", 2});
    report.Add({resources, "one that asks for the time and size", SecondsOfLateCall(resource, calls / 10) * 1e6, "us"});
    report.Add({resources, "that question alone", QuestionSeconds(calls) * 1e6 / calls, "us"});
    CloseClusterResource(resource);
    CloseCluster(cluster);
    ClusSimReset();
}

} // namespace

void MeasureCommands(Report& report, Scale wanted) {
    const Scale scale = wanted == Scale::Large ? Scale::Normal : wanted; // many processes, each with the whole model
    const ClusteredRegistry registry;
    const harness::PrivateFolder folder;
    MeasureStart(report);
    SetEnvironmentVariableW(L"CLUSSIM_FILE", ModelFile);
    MeasureModelCommands(report, scale);
    MeasureRecording(report);
    MeasureRehearsals(report);
    report.Begin(
        "A call on a model file that does not change",
        "GetClusterResourceState, again and again; the file is asked for its time and size at most each 20 us.",
        "resources");
    for (const std::size_t size : ResourceCounts(scale)) {
        WriteModelFile(ClusterText(size));
        MeasureCall(report, size);
    }
    SetEnvironmentVariableW(L"CLUSSIM_FILE", nullptr);
    DeleteFileW(ModelFile);
    MeasureVcsCommands(report, scale);
}

} // namespace bench
