#include "ToolRuns.h"

#include "BareSupport.h"
#include "ProcessClock.h"
#include "ThreadClock.h"

#include "ImportPatch.h"

#include <functional>
#include <vector>

namespace bench {

std::wstring BenchFolder() {
    wchar_t path[MAX_PATH] = L"";
    GetModuleFileNameW(nullptr, path, MAX_PATH - 1);
    const std::wstring self = path;
    return self.substr(0, self.rfind(L'\\') + 1);
}

std::wstring BenchToolPath() {
    return BenchFolder() + L"clusutil_bench_tool.exe";
}

std::string OutputOfProcess(const std::wstring& program, const std::wstring& arguments, double* processorTime) {
    wchar_t fileName[MAX_PATH] = L"";
    Require(GetTempFileNameW(L".", L"ha-", 0, fileName) != 0, "GetTempFileNameW");
    SECURITY_ATTRIBUTES inheritable = {sizeof(inheritable), nullptr, TRUE};
    HANDLE file = CreateFileW(fileName, GENERIC_READ | GENERIC_WRITE, 0, &inheritable, CREATE_ALWAYS, 0, nullptr);
    Require(file != INVALID_HANDLE_VALUE, "CreateFileW");
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES | STARTF_USESHOWWINDOW;
    startup.hStdInput = reinterpret_cast<HANDLE>(static_cast<ULONG_PTR>(STD_INPUT_HANDLE)); // as the library does
    startup.hStdOutput = file;
    startup.hStdError = file;
    PROCESS_INFORMATION process = {};
    std::wstring commandLine = L"tool " + arguments;
    const ProcessTimer timer;
    Require(CreateProcessW(program.c_str(), &commandLine[0], nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup,
                           &process),
            "CreateProcessW");
    WaitForSingleObject(process.hProcess, INFINITE);
    if (processorTime) {
        *processorTime = timer.Seconds(process);
    }
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    char text[LargeReplyBytes];
    DWORD cb = 0;
    SetFilePointer(file, 0, nullptr, FILE_BEGIN);
    Require(ReadFile(file, text, sizeof(text), &cb, nullptr), "ReadFile");
    CloseHandle(file);
    DeleteFileW(fileName);
    return std::string(text, cb);
}

namespace {

typedef BOOL CreateProcessFunction(LPCWSTR, LPWSTR, LPSECURITY_ATTRIBUTES, LPSECURITY_ATTRIBUTES, BOOL, DWORD, LPVOID,
                                   LPCWSTR, LPSTARTUPINFOW, LPPROCESS_INFORMATION);
struct ToolPatchTag;
typedef harness::ImportPatch<CreateProcessFunction, ToolPatchTag> CreateProcessPatch;

BOOL WriteOutput(const std::string& output, const STARTUPINFOW& startup, PROCESS_INFORMATION& process) {
    DWORD written = 0;
    if (!WriteFile(startup.hStdOutput, output.data(), static_cast<DWORD>(output.size()), &written, nullptr)) {
        return FALSE;
    }
    // Two objects to be closed, the first one waited for.
    process.hProcess = CreateEventW(nullptr, TRUE, TRUE, nullptr);
    process.hThread = CreateEventW(nullptr, TRUE, TRUE, nullptr);
    return TRUE;
}

} // namespace

struct ToolReplacement::Patch {
    explicit Patch(std::function<CreateProcessFunction> replacement)
        : createProcess(harness::FindImports(harness::LibraryModule(), "kernel32.dll", "CreateProcessW"),
                        std::move(replacement)) {
    }
    CreateProcessPatch createProcess;
    std::shared_ptr<RunTime> written = std::make_shared<RunTime>(RunTime{0, 0}); // nothing, where tools are started
};

ToolReplacement::ToolReplacement(std::unique_ptr<Patch> patch) : m_patch(std::move(patch)) {
}
ToolReplacement::ToolReplacement(ToolReplacement&& other) noexcept = default;
ToolReplacement::~ToolReplacement() = default;

ToolReplacement ToolReplacement::Start(const std::wstring& tool) {
    return ToolReplacement(
        std::make_unique<Patch>([tool](LPCWSTR, LPWSTR commandLine, LPSECURITY_ATTRIBUTES forProcess,
                                       LPSECURITY_ATTRIBUTES forThread, BOOL inherit, DWORD flags, LPVOID environment,
                                       LPCWSTR folder, LPSTARTUPINFOW startup, LPPROCESS_INFORMATION process) {
            return CreateProcessW(tool.c_str(), commandLine, forProcess, forThread, inherit, flags, environment, folder,
                                  startup, process);
        }));
}

ToolReplacement ToolReplacement::Write(const std::string& output) {
    auto written = std::make_shared<RunTime>(RunTime{0, 0});
    auto patch = std::make_unique<Patch>([&output, written](LPCWSTR, LPWSTR, LPSECURITY_ATTRIBUTES,
                                                            LPSECURITY_ATTRIBUTES, BOOL, DWORD, LPVOID, LPCWSTR,
                                                            LPSTARTUPINFOW startup, LPPROCESS_INFORMATION process) {
        const double wallStarted = WallSeconds();
        const double started = ThreadSeconds();
        const BOOL isWritten = WriteOutput(output, *startup, *process);
        written->seconds += ThreadSeconds() - started;
        written->wallSeconds += WallSeconds() - wallStarted;
        return isWritten;
    });
    patch->written = written;
    return ToolReplacement(std::move(patch));
}

RunTime ToolReplacement::Written() const {
    return *m_patch->written;
}

} // namespace bench
