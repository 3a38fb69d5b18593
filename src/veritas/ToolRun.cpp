// Running a VCS tool: its command line, its output captured, read, logged and split.
#include "veritas/ToolRun.h"

#include "clus_VeritasCluster.h"

#include "core/TextEraser.h"
#include "core/ToolOutput.h"
#include "platform/CaptureFile.h"
#include "platform/FormatText.h"
#include "platform/Log.h"
#include "platform/Owner.h"
#include "platform/ToolProcess.h"
#include "veritas/ToolRunReport.h"

#include <iterator>

CLUS_LOG_PLACE(VeritasCluster, 2);

using clus::FileDeleter;
using clus::LastErrorKeeper;
using clus::NameColumn;
using clus::RunTool;
using clus::TextEraser;
using clus::TextFileReader;
using clus::ToolProcess;
using clus::veritas::IsToolRunReported;
using clus::veritas::ReportToolRun;

namespace {

// A command line as the tool gets it. Nothing of it is left on the stack, whatever happens.
struct CommandLine {
    CommandLine(const wchar_t* command, const wchar_t* arguments) : eraser(text, std::size(text)) {
        CLUS_FORMAT_TEXT(text, L"%s %s", command, arguments);
    }

    wchar_t text[16384] = {}; // terminator included; what is longer is cut
    const TextEraser eraser;
};

// What is wanted of a tool's output; either may be null.
struct Output {
    std::wstring* text; // gets each line, ended by a line feed
    NameColumn* names;  // gets the lines
};

bool ReadOutput(const wchar_t* fileName, const Output& output) {
    TextFileReader file(fileName);
    if (!file) {
        return false;
    }
    if (output.text) {
        // A large output is not kept twice while the text grows.
        output.text->reserve(output.text->size() + file.Size() + 1);
    }
    while (file.ReadLine()) {
        if (output.names) {
            output.names->AddLine(file.Line());
        }
        if (output.text) {
            *output.text += file.Line();
            *output.text += L'\n';
        }
    }
    return true;
}

void LogOutput(const wchar_t* fileName) {
    TextFileReader file(fileName);
    if (!file) {
        return;
    }
    while (file.ReadLine()) {
        LOG_INFO(L"Result: %s", file.Line().data());
    }
}

// Runs a tool and reads what it printed.
bool Run(const wchar_t* command, const wchar_t* arguments, Output output, bool logDetails) {
    LOG_ENTER(L"CVeritasCluster::ExecuteVeritasCommand_");
    wchar_t fileName[MAX_PATH] = {};
    if (GetTempFileNameW(L".", L"ha-", 0, fileName) == 0) {
        if (IsToolRunReported()) {
            ToolProcess process;
            process.startError = GetLastError();
            ReportToolRun(command, CommandLine(command, arguments).text, !logDetails, process, nullptr);
        }
        return false; // without a leaving line
    }
    fileName[MAX_PATH - 1] = L'\0';
    LOG_LEAVE_AT_END(L"CVeritasCluster::ExecuteVeritasCommand_");
    const FileDeleter deleter(fileName);
    CommandLine commandLine(command, arguments);
    LOG_INFO(L"temp file name: %s", fileName);
    if (logDetails) {
        LOG_INFO(L"Command line: %s", commandLine.text);
    } else {
        LOG_INFO(L"Command line is ***");
    }
    // The tool's exit code is no matter: callers judge by what it printed.
    ToolProcess process;
    const bool started = RunTool(commandLine.text, fileName, process);
    const LastErrorKeeper keeper; // the only word on why it could not be started
    const bool isReported = IsToolRunReported();
    std::wstring reportedText;
    if (isReported && !output.text) {
        output.text = &reportedText;
    }
    const bool succeeded = started && ReadOutput(fileName, output);
    if (logDetails) {
        LogOutput(fileName);
    } else {
        LOG_INFO(L"Result: ***");
    }
    if (isReported) {
        // Composed again: starting the tool may have changed the text.
        ReportToolRun(command, CommandLine(command, arguments).text, !logDetails, process,
                      succeeded ? output.text : nullptr);
    }
    return succeeded;
}

} // namespace

CVeritasCluster& CVeritasCluster::operator=(const CVeritasCluster&) {
    return *this;
}

bool CVeritasCluster::ExecuteVeritasCommand_(const wchar_t* command, const wchar_t* arguments, std::wstring& text,
                                             bool logDetails) const {
    return Run(command, arguments, {&text, nullptr}, logDetails);
}

bool CVeritasCluster::ExecuteVeritasCommand_(const wchar_t* command, const wchar_t* arguments,
                                             std::vector<std::wstring>* tokens, bool logDetails) const {
    std::wstring text;
    if (!ExecuteVeritasCommand_(command, arguments, text, logDetails)) {
        return false;
    }
    return !tokens || Parse_(text, *tokens);
}

bool CVeritasCluster::ExecuteVeritasCommand_(const wchar_t* command, bool logDetails) const {
    return ExecuteVeritasCommand_(command, L"", nullptr, logDetails);
}

bool CVeritasCluster::Read_(const wchar_t* fileName, std::wstring& text) const {
    return ReadOutput(fileName, {&text, nullptr});
}

bool CVeritasCluster::Parse_(const std::wstring& text, std::vector<std::wstring>& tokens) const {
    clus::SplitOutput(text, tokens);
    return true;
}

void CVeritasCluster::DumpResult_(const wchar_t* fileName) const {
    LogOutput(fileName);
}

bool CVeritasCluster::IsResultError(const wchar_t* text) const {
    return clus::IsErrorText(text);
}

bool CVeritasCluster::IsResultError(const std::vector<std::wstring>& tokens) const {
    return clus::IsErrorList(tokens);
}

std::wstring CVeritasCluster::ConcatNameValuePair_(const NameValuePairList& pairs) const {
    return clus::Conditions(pairs);
}

bool CVeritasCluster::SwitchToReadWriteMode() const {
    return ExecuteVeritasCommand_(L"haconf -makerw", true);
}

bool CVeritasCluster::SwitchToReadOnlyMode() const {
    return ExecuteVeritasCommand_(L"haconf -dump -makero", true);
}

namespace clus::veritas {

bool RunForNames(const wchar_t* command, const wchar_t* arguments, NameColumn& names) {
    return Run(command, arguments, {nullptr, &names}, true);
}

} // namespace clus::veritas
