#include "BenchCommands.h"

#include "BareSupport.h"
#include "BenchCluster.h"
#include "PrivateFolder.h"
#include "ToolRuns.h"

#include "ClusSimControl.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace bench {

namespace {

const int Rounds = 15;
const wchar_t ModelFile[] = L"model.json"; // in the current directory

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

// Runs a program without its output; the processor time it took, in milliseconds.
double TimeOfRun(const std::wstring& commandLine) {
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
    Require(CreateProcessW(nullptr, &line[0], nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &process),
            "CreateProcessW");
    WaitForSingleObject(process.hProcess, INFINITE);
    DWORD code = 0;
    GetExitCodeProcess(process.hProcess, &code);
    const double time = ProcessorTime(process.hThread);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    CloseHandle(nothing);
    Require(code == 0, "a process failed");
    return time;
}

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

void MeasureCommand(const std::wstring& command, std::size_t resources) {
    const std::wstring clusctl = L"\"" + BenchFolder() + L"clusctl.exe\" " + command;
    const std::wstring bare = L"\"" + BenchFolder() + L"clusutil_bench.exe\" bare " + command;
    std::vector<double> clusctlTimes, bareTimes;
    for (int round = 0; round < Rounds; ++round) {
        clusctlTimes.push_back(TimeOfRun(clusctl));
        bareTimes.push_back(TimeOfRun(bare));
    }
    const double clusctlTime = Median(clusctlTimes);
    const double bareTime = Median(bareTimes);
    std::printf("%6u resources: %-9ls clusctl %7.1f ms, bare %7.1f ms, ratio %.2f%s\n",
                static_cast<unsigned>(resources), command.c_str(), clusctlTime, bareTime, clusctlTime / bareTime,
                resources == 10000 ? " (target 1.50 at most)" : "");
}

// A call on a model file that does not change.
void MeasureCall(std::size_t resources) {
    const int calls = 100000;
    ClusSimReset(); // reads the file with the next call
    HCLUSTER cluster = OpenCluster(nullptr);
    Require(cluster != nullptr, "OpenCluster");
    HRESOURCE resource = OpenResource(cluster, L"Disk 0");
    const double before = ProcessorTime(GetCurrentThread());
    for (int i = 0; i < calls; ++i) {
        Require(GetClusterResourceState(resource, nullptr, nullptr, nullptr, nullptr) == ClusterResourceOnline,
                "GetClusterResourceState");
    }
    const double after = ProcessorTime(GetCurrentThread());
    std::printf("%6u resources: %.2f us per call\n", static_cast<unsigned>(resources), (after - before) * 1e3 / calls);
    CloseClusterResource(resource);
    CloseCluster(cluster);
    ClusSimReset();
}

void WriteModelFile(std::size_t resources) {
    const std::string text = ClusterText(resources);
    std::FILE* file = _wfopen(ModelFile, L"wb");
    Require(file != nullptr, "_wfopen");
    const bool isWritten = std::fwrite(text.data(), 1, text.size(), file) == text.size();
    Require(std::fclose(file) == 0 && isWritten, "fwrite");
    Sleep(100); // until nobody takes it for one that is just being written
}

} // namespace

void MeasureCommands() {
    const ClusteredRegistry registry;
    const harness::PrivateFolder folder;
    SetEnvironmentVariableW(L"CLUSSIM_FILE", ModelFile);
    std::printf("\nclusctl on a model file: processor time of a process's first thread, medians of %d rounds in turns "
                "with one that "
                "makes the needed cluster calls alone\n",
                Rounds);
    const std::size_t sizes[] = {100, 1000, 10000};
    for (const wchar_t* command : {L"servers", L"groups", L"resources", L"snapshot"}) {
        for (const std::size_t size : sizes) {
            WriteModelFile(size);
            MeasureCommand(command, size);
        }
    }
    std::printf("\nGetClusterResourceState on a model file that does not change, processor time\n");
    for (const std::size_t size : sizes) {
        WriteModelFile(size);
        MeasureCall(size);
    }
    SetEnvironmentVariableW(L"CLUSSIM_FILE", nullptr);
    DeleteFileW(ModelFile);
}

} // namespace bench
