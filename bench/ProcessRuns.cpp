#include "ProcessRuns.h"

#include "BareSupport.h"
#include "ThreadClock.h"
#include "ToolRuns.h"

#include "common/Text.h"

#include <cstdio>
#include <stdexcept>

namespace bench {

namespace {

// The doctor has done its work when it finds a warning or an error, too.
bool IsDone(DWORD exitCode) {
    const DWORD worstIsWarning = 11;
    const DWORD worstIsError = 12;
    return exitCode == 0 || exitCode == worstIsWarning || exitCode == worstIsError;
}

} // namespace

std::wstring Quoted(const std::wstring& program) {
    return L"\"" + program + L"\"";
}

std::wstring Clusctl(const std::wstring& arguments) {
    return Quoted(BenchFolder() + L"clusctl.exe") + L" " + arguments;
}

std::wstring Bare(const std::wstring& command) {
    return Quoted(BenchFolder() + L"clusutil_bench.exe") + L" bare " + command;
}

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
    const ProcessTimer timer;
    const double begin = WallSeconds();
    Require(CreateProcessW(nullptr, &line[0], nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &process),
            "CreateProcessW");
    WaitForSingleObject(process.hProcess, INFINITE);
    const double wall = WallSeconds() - begin;
    DWORD code = 0;
    GetExitCodeProcess(process.hProcess, &code);
    const RunTime time = {timer.Seconds(process), wall};
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    CloseHandle(nothing);
    if (!IsDone(code)) {
        throw std::runtime_error("exit code " + std::to_string(code) + ": " + common::ToUtf8(commandLine));
    }
    return time;
}

TimedContestant Program(const std::string& name, const std::wstring& commandLine,
                        const std::function<void()>& prepare) {
    return {name, [commandLine, prepare]() {
                if (prepare) {
                    prepare();
                }
                return TimeOfRun(commandLine);
            }};
}

void WriteText(const wchar_t* path, const std::string& text) {
    std::FILE* file = _wfopen(path, L"wb");
    Require(file != nullptr, "_wfopen");
    const bool isWritten = std::fwrite(text.data(), 1, text.size(), file) == text.size();
    Require(std::fclose(file) == 0 && isWritten, "fwrite");
}

void WriteModelFile(const std::string& text) {
    WriteText(ModelFile, text);
    Sleep(100); // until nobody takes it for one that is just being written
}

} // namespace bench
