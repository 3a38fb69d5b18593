#include "VcsToolProcess.h"

#include "Replay.h"
#include "ToolRuns.h"
#include "VcsFolder.h"
#include "VcsToolFiles.h"

#include "common/Files.h"
#include "common/Handle.h"
#include "common/Text.h"

#include <winsock2.h>
#include <windows.h>

#include <Interception.h>

#include <algorithm>
#include <cstdint>

namespace {

// A file of the current folder that a tool writes to, gone with the object. Throws FileError.
class Capture {
public:
    explicit Capture(const wchar_t* name) : m_name(name) {
        SECURITY_ATTRIBUTES inheritable = {sizeof(inheritable), nullptr, TRUE};
        m_file = common::Handle(CreateFileW(name, GENERIC_READ | GENERIC_WRITE | DELETE, 0, &inheritable, CREATE_ALWAYS,
                                            FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr));
        if (!m_file) {
            throw common::FileError(name, "created", GetLastError());
        }
    }

    HANDLE get() const {
        return m_file.get();
    }

    // In bytes.
    std::uint64_t Size() const {
        LARGE_INTEGER size;
        if (!GetFileSizeEx(m_file.get(), &size)) {
            throw common::FileError(m_name, "read", GetLastError());
        }
        return static_cast<std::uint64_t>(size.QuadPart);
    }

    std::string Read() const {
        if (SetFilePointer(m_file.get(), 0, nullptr, FILE_BEGIN) == INVALID_SET_FILE_POINTER) {
            throw common::FileError(m_name, "read", GetLastError());
        }
        return common::ReadToEnd(m_file, m_name);
    }

private:
    const wchar_t* m_name;
    common::Handle m_file;
};

// False when it could not be started; the run says why.
bool Start(const std::wstring& path, std::wstring commandLine, const Capture& output, const Capture& errors,
           CVeritasToolRun& run) {
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES | STARTF_USESHOWWINDOW;
    startup.wShowWindow = SW_HIDE;
    startup.hStdOutput = output.get();
    startup.hStdError = errors.get();
    PROCESS_INFORMATION information = {};
    run.started = recording::StartTool(path.c_str(), &commandLine[0], 0, &startup, &information) != FALSE;
    if (!run.started) {
        run.startError = GetLastError();
        return false;
    }
    const common::Handle thread(information.hThread);
    const common::Handle process(information.hProcess);
    WaitForSingleObject(process.get(), INFINITE);
    run.exitCodeKnown = recording::ExitCodeOfTool(process.get(), &run.exitCode) != FALSE;
    return true;
}

std::string WithoutReturns(std::string text) {
    text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
    return text;
}

// What the run is judged by: a message, if there is one. One character per byte.
std::wstring FirstLine(const std::string& text) {
    const size_t begin = std::min(text.find_first_not_of(" \t\n"), text.size());
    const std::string line = text.substr(begin, text.find('\n', begin) - begin);
    std::wstring wide;
    for (const char c : line) {
        wide += static_cast<wchar_t>(static_cast<unsigned char>(c));
    }
    return wide;
}

} // namespace

ToolOutput RunVcsTool(const std::wstring& tool, const std::wstring& arguments) {
    const std::wstring commandLine = tool + L" " + arguments;
    CVeritasToolRun run = {};
    run.commandLine = commandLine.c_str();
    ToolOutput result;
    std::wstring told;
    DWORD roomError = ERROR_SUCCESS;
    const std::wstring path = IsReplaying() ? tool : FindVcsTool(tool);
    if (path.empty()) {
        run.startError = ERROR_FILE_NOT_FOUND;
    } else {
        try {
            const Capture output(L"output.tmp");
            const Capture errors(L"errors.tmp");
            const bool isStarted = Start(path, commandLine, output, errors, run);
            const std::uint64_t size = isStarted ? output.Size() + errors.Size() : 0;
            if (size > LongestToolOutput) {
                run.cchOutput = static_cast<std::size_t>(size);
            } else if (isStarted) {
                result.raw = output.Read();
                result.output = WithoutReturns(result.raw);
                result.errors = WithoutReturns(errors.Read());
                told = FirstLine(result.errors.empty() ? result.output : result.errors);
                run.output = told.c_str();
                run.cchOutput = told.size();
                roomError = ProbeCurrentFolder(); // gone with the files is what may have been too little
            }
        } catch (const common::FileError& error) {
            run.started = true; // or would have been: what it says is lost
            run.captureError = error.Code();
        }
    }
    result.exitCode = run.exitCode;
    ToolRuns::Tell(run, roomError);
    return result;
}

bool HasVcsTool(const std::wstring& tool) {
    return IsReplaying() ? IsToolRecorded(common::ToUtf8(tool)) : !FindVcsTool(tool).empty();
}
