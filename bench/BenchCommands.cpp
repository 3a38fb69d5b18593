#include "BenchCommands.h"

#include "BareSupport.h"
#include "BenchCluster.h"
#include "Measurement.h"
#include "PrivateFolder.h"
#include "ThreadClock.h"
#include "ToolRuns.h"

#include "ClusSimControl.h"

#include <winternl.h>

#include <cstdio>
#include <cstring>
#include <cwchar>
#include <numeric>
#include <vector>

namespace bench {

namespace {

const int Rounds = 15;
const double MostGrowth = 12;              // on ten times as many: about linear
const int StartRounds = 41;                // a start is short, and the neighbours' work falls on few of them
const wchar_t ModelFile[] = L"model.json"; // in the current directory
const wchar_t RecordingFile[] = L"servers.rec";
const wchar_t MainCfFile[] = L"main.cf";

double Milliseconds(const FILETIME& kernel, const FILETIME& user) {
    const auto ticks = [](const FILETIME& time) {
        return static_cast<double>(static_cast<unsigned long long>(time.dwHighDateTime) << 32 | time.dwLowDateTime);
    };
    return (ticks(kernel) + ticks(user)) / 1e4;
}

// The processor time of the first thread of an ended process: all of these processes do their work there, and Wine
// tells the times of another process's threads, but not those of the process.
double ProcessorTime(HANDLE thread) {
    FILETIME begin, end, kernel, user;
    Require(GetThreadTimes(thread, &begin, &end, &kernel, &user), "GetThreadTimes");
    return Milliseconds(kernel, user);
}

struct RunTime { // milliseconds
    double processor;
    double wall;
};

// Runs a program without its output.
RunTime TimeOfRun(const std::wstring& commandLine) {
    SECURITY_ATTRIBUTES inheritable = {sizeof(inheritable), nullptr, TRUE};
    HANDLE nothing =
        CreateFileW(L"NUL", GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, &inheritable, OPEN_EXISTING, 0, nullptr);
    Require(nothing != INVALID_HANDLE_VALUE, "CreateFileW");
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = nothing;
    startup.hStdError = nothing;
    PROCESS_INFORMATION process = {};
    std::wstring line = commandLine;
    const double begin = WallSeconds();
    Require(CreateProcessW(nullptr, &line[0], nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &process),
            "CreateProcessW");
    WaitForSingleObject(process.hProcess, INFINITE);
    const double wall = (WallSeconds() - begin) * 1e3;
    DWORD code = 0;
    GetExitCodeProcess(process.hProcess, &code);
    const RunTime time = {ProcessorTime(process.hThread), wall};
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    CloseHandle(nothing);
    Require(code == 0, "a process failed");
    return time;
}

std::wstring Clusctl(const std::wstring& arguments) {
    return L"\"" + BenchFolder() + L"clusctl.exe\" " + arguments;
}

void MeasureStart(Report& report) {
    report.Begin(
        "Start of clusctl",
        "\"clusctl --version\" as a process, in turns with a program that prints two lines. Times on the wall.",
        "starts");
    std::vector<double> clusctl, program, ratios;
    for (int round = 0; round < StartRounds; ++round) {
        clusctl.push_back(TimeOfRun(Clusctl(L"--version")).wall);
        program.push_back(TimeOfRun(L"\"" + BenchToolPath() + L"\"").wall);
        ratios.push_back(clusctl.back() / program.back());
    }
    report.Add({0, "clusctl --version, median", Median(clusctl), "ms"});
    report.Add({0, "small program, median", Median(program), "ms"});
    report.Add({0, "clusctl / small program, median of pairs", Median(ratios), "x", 1.3});
}

// The clock of another process ticks every 10 ms: of short runs only the mean says something.
double Mean(const std::vector<double>& values) {
    return std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(values.size());
}

// What a command takes on ten times as many resources, against a tenth of them. `former` is 0 of the first size.
void AddGrowth(Report& report, const std::string& command, std::size_t resources, double former, double now) {
    if (former != 0) {
        report.Add({resources, command + ", growth", now / former, "times a tenth", MostGrowth});
    }
}

// What the command took, in milliseconds. `former` is what it took on a tenth of the resources, 0 when that is not
// known.
double MeasureCommand(Report& report, const std::string& command, double goal, std::size_t resources, double former) {
    const std::wstring name(command.begin(), command.end());
    std::vector<double> clusctl, bare;
    for (int round = 0; round < Rounds; ++round) {
        clusctl.push_back(TimeOfRun(Clusctl(name)).processor);
        bare.push_back(TimeOfRun(L"\"" + BenchFolder() + L"clusutil_bench.exe\" bare " + name).processor);
    }
    const bool hasGoal = resources == 10000; // where the start of a process does not matter
    report.Add({resources, "clusctl " + command, Mean(clusctl), "ms", hasGoal ? goal : 0});
    report.Add({resources, command + " / bare calls", Mean(clusctl) / Mean(bare), "x", hasGoal ? 1.5 : 0});
    AddGrowth(report, command, resources, former, Mean(clusctl));
    return Mean(clusctl);
}

void WriteText(const wchar_t* path, const std::string& text) {
    std::FILE* file = _wfopen(path, L"wb");
    Require(file != nullptr, "_wfopen");
    const bool isWritten = std::fwrite(text.data(), 1, text.size(), file) == text.size();
    Require(std::fclose(file) == 0 && isWritten, "fwrite");
}

void WriteModelFile(std::size_t resources) {
    WriteText(ModelFile, ClusterText(resources));
    Sleep(100); // until nobody takes it for one that is just being written
}

// A run is made once more while it is recorded, and then from the recording. Times on the wall: for so short runs the
// clock of processor times is too coarse.
void MeasureRecording(Report& report) {
    const std::size_t resources = 1000;
    report.Begin(
        "Probe, recording and replay",
        "On a model file. The plain run of \"clusctl servers\", the recorded one and the replayed one take turns. "
        "Times on the wall.",
        "resources");
    WriteModelFile(resources);
    const std::wstring file = RecordingFile;
    std::vector<double> probe, plain, recorded, replayed, recordedRatios, replayedRatios;
    for (int round = 0; round < StartRounds; ++round) {
        DeleteFileW(RecordingFile);
        plain.push_back(TimeOfRun(Clusctl(L"servers")).wall);
        recorded.push_back(TimeOfRun(Clusctl(L"record " + file + L" -- servers")).wall);
        replayed.push_back(TimeOfRun(Clusctl(L"--model " + file + L" servers")).wall);
        probe.push_back(TimeOfRun(Clusctl(L"probe")).wall);
        recordedRatios.push_back(recorded.back() / plain.back());
        replayedRatios.push_back(replayed.back() / plain.back());
    }
    report.Add({resources, "clusctl probe, median", Median(probe), "ms", 10000});
    report.Add({resources, "clusctl servers, median", Median(plain), "ms"});
    report.Add({resources, "recorded, median", Median(recorded), "ms"});
    report.Add({resources, "replayed, median", Median(replayed), "ms"});
    report.Add({resources, "recorded / plain, median of rounds", Median(recordedRatios), "x", 1.3});
    report.Add({resources, "replayed / plain, median of rounds", Median(replayedRatios), "x", 1});
    DeleteFileW(RecordingFile);
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

void MeasureRehearsals(Report& report) {
    report.Begin(
        "Rehearsals",
        "\"resource create\" on a model file and its rehearsal on a copy take turns; then one rehearsal for each "
        "call of the cluster that it makes, with that one failing. Times on the wall.",
        "resources");
    const std::size_t resources = 1000;
    std::vector<double> creations, rehearsals, ratios;
    for (int round = 0; round < Rounds; ++round) {
        WriteModelWithoutProduct(resources);
        rehearsals.push_back(TimeOfRun(Clusctl(std::wstring(L"rehearse -- ") + Creation)).wall);
        creations.push_back(TimeOfRun(Clusctl(Creation)).wall);
        ratios.push_back(rehearsals.back() / creations.back());
    }
    report.Add({resources, "clusctl resource create, median", Median(creations), "ms"});
    report.Add({resources, "its rehearsal, median", Median(rehearsals), "ms"});
    report.Add({resources, "rehearsal / creation, median of rounds", Median(ratios), "x", 3});

    const std::size_t few = 10;
    const wchar_t journal[] = L"journal.txt";
    WriteModelWithoutProduct(few);
    const double sweep = TimeOfRun(Clusctl(std::wstring(L"rehearse --each-call-fails -- ") + Creation)).wall;
    std::vector<double> single;
    for (int round = 0; round < Rounds; ++round) {
        WriteModelWithoutProduct(few);
        SetEnvironmentVariableW(L"CLUSSIM_JOURNAL", round == 0 ? journal : nullptr);
        single.push_back(TimeOfRun(Clusctl(Creation)).wall);
    }
    const auto calls = static_cast<double>(LinesWith(journal, "\"args\""));
    DeleteFileW(journal);
    report.Add({few, "clusctl resource create, median", Median(single), "ms"});
    report.Add({few, "its calls of the cluster", calls, ""});
    report.Add({few, "each of them failing in turn", sweep, "ms"});
    report.Add({few, "that / (calls x command)", sweep / (calls * Median(single)), "x", 1});
}

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
double MeasureVcsCommand(Report& report, std::size_t resources, double former) {
    WriteText(MainCfFile, MainCf(resources));
    std::vector<double> clusctl, tool, ratios;
    for (int round = 0; round < Rounds; ++round) {
        clusctl.push_back(TimeOfRun(Clusctl(L"vcs resources --allow-writable-tools")).wall);
        tool.push_back(TimeOfRun(L"\"" + BenchFolder() + L"hares.exe\" -list").wall);
        ratios.push_back(clusctl.back() / tool.back());
    }
    report.Add({resources, "clusctl vcs resources, median", Median(clusctl), "ms"});
    report.Add({resources, "hares -list alone, median", Median(tool), "ms"});
    report.Add({resources, "clusctl / the tool alone, median of rounds", Median(ratios), "x"});
    AddGrowth(report, "clusctl vcs resources", resources, former, Median(clusctl));
    return Median(clusctl);
}

void MeasureVcsCommands(Report& report, Scale scale) {
    report.Begin("Commands of clusctl on VCS",
                 "Two systems, so that the tool prints two rows for each resource. clusctl, which runs the tool once, "
                 "and the tool alone take turns. Times on the wall.",
                 "resources");
    SetEnvironmentVariableW(L"VCSSIM_MAIN_CF", MainCfFile);
    SetEnvironmentVariableW(L"PATH", BenchFolder().c_str());
    double former = 0;
    for (const std::size_t size : ResourceCounts(scale)) {
        former = MeasureVcsCommand(report, size, former);
    }
    SetEnvironmentVariableW(L"VCSSIM_MAIN_CF", nullptr);
    DeleteFileW(MainCfFile);
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
        while (WallSeconds() - last < 6e-6) {
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
    struct {
        const char* name;
        double goal; // milliseconds for 10,000 resources; 0: none
        double former = 0;
    } commands[] = {{"servers", 500}, {"groups", 0}, {"resources", 0}, {"snapshot", 2000}};
    report.Begin("Commands of clusctl",
                 "On a model file, in turns with a process that makes the needed cluster calls alone. Processor times "
                 "of the processes' first threads, means of the rounds. Growth is what ten times as many resources "
                 "take: 10 when it is linear.",
                 "resources");
    for (const std::size_t size : ResourceCounts(scale)) {
        WriteModelFile(size);
        for (auto& command : commands) {
            command.former = MeasureCommand(report, command.name, command.goal, size, command.former);
        }
    }
    MeasureRecording(report);
    MeasureRehearsals(report);
    report.Begin("A call on a model file that does not change",
                 "GetClusterResourceState, again and again; the file is asked for its time and size at most each 5 us.",
                 "resources");
    for (const std::size_t size : ResourceCounts(scale)) {
        WriteModelFile(size);
        MeasureCall(report, size);
    }
    SetEnvironmentVariableW(L"CLUSSIM_FILE", nullptr);
    DeleteFileW(ModelFile);
    MeasureVcsCommands(report, scale);
}

} // namespace bench
