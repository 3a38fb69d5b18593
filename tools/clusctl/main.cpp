// clusctl: the library's own caller for administrators; see docs/clusctl.md.
#include "ClusterCommands.h"
#include "CommandLine.h"
#include "DiskCommand.h"
#include "HostCommands.h"
#include "LogCapture.h"
#include "Password.h"
#include "ProductResourceCommands.h"
#include "ServerCommands.h"
#include "SmtpCommands.h"
#include "SnapshotCommand.h"
#include "Stream.h"
#include "Text.h"
#include "VcsCommands.h"

#include <exception>
#include <memory>
#include <string>
#include <vector>

namespace {

enum ExitCode {
    ExitDone = 0,
    ExitFailed = 1,
    ExitUsage = 2
};

int PrintOutput(const Stream& output, const Stream& errors, const std::string& text) {
    const DWORD code = output.Write(text);
    if (code != ERROR_SUCCESS) {
        errors.Write("clusctl: cannot write the output: " + ErrorText(code) + "\n");
        return ExitFailed;
    }
    return ExitDone;
}

// The log library ignores a file that it cannot use; who named one wants to know.
void RequireWritable(const std::string& logFile) {
    const HANDLE file =
        CreateFileW(ToUtf16(logFile).c_str(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        throw Failure("cannot open the log file " + Quoted(logFile) + ": " + ErrorText(GetLastError()));
    }
    CloseHandle(file);
}

void PrintProblems(const Stream& errors, const LogCapture& log, bool isVerbose, const char* lead) {
    if (isVerbose) {
        return; // each of them has been shown
    }
    for (const std::string& problem : log.Problems()) {
        errors.Write(lead + problem + "\n");
    }
}

int Execute(const CommandLine& commandLine, const Stream& output, const Stream& errors) {
    const SharedOptions& shared = commandLine.Shared();
    std::unique_ptr<LogCapture> log;
    try {
        if (!shared.logFile.empty()) {
            RequireWritable(shared.logFile);
        }
        log = std::make_unique<LogCapture>(shared.verbose ? &errors : nullptr, shared.logFile);
        if (shared.verbose && !log->IsAvailable()) {
            errors.Write(
                "clusctl: warning: the DebugLog.dll in use does not hand out its lines; --verbose shows nothing\n");
        }
        const Report report = commandLine.Chosen()(*log);
        PrintProblems(errors, *log, shared.verbose, "clusctl: warning: ");
        return PrintOutput(output, errors, shared.json ? report.ToJson() : report.ToText());
    } catch (const WrongUsage& wrong) {
        errors.Write(commandLine.UsageText(wrong.what()));
        return ExitUsage;
    } catch (const Failure& failure) {
        if (const auto* halfway = dynamic_cast<const FailureWithReport*>(&failure)) {
            PrintOutput(output, errors, shared.json ? halfway->Shown().ToJson() : halfway->Shown().ToText());
        }
        errors.Write(std::string("clusctl: ") + failure.what() + "\n");
        if (log != nullptr) {
            PrintProblems(errors, *log, shared.verbose, "  ");
            if (!log->IsAvailable()) {
                errors.Write("  The DebugLog.dll in use does not hand out the reason.\n");
            }
        }
        return ExitFailed;
    }
}

} // namespace

int wmain(int argumentCount, wchar_t** arguments) {
    const Stream output(STD_OUTPUT_HANDLE);
    const Stream errors(STD_ERROR_HANDLE);
    try {
        TakePasswordFromEnvironment();
        CommandLine commandLine;
        AddServerCommands(commandLine);
        AddHostCommands(commandLine);
        AddClusterCommands(commandLine);
        AddDiskCommand(commandLine);
        AddProductResourceCommands(commandLine);
        AddSmtpCommands(commandLine);
        AddSnapshotCommand(commandLine);
        AddVcsCommands(commandLine);

        std::vector<std::string> texts;
        for (int i = 1; i < argumentCount; ++i) {
            texts.push_back(ToUtf8(arguments[i]));
        }
        switch (commandLine.Parse(texts)) {
        case CommandLine::Result::Help:
            return PrintOutput(output, errors, commandLine.Text());
        case CommandLine::Result::Usage:
            errors.Write(commandLine.Text());
            return ExitUsage;
        default:
            return Execute(commandLine, output, errors);
        }
    } catch (const std::exception& error) {
        errors.Write(std::string("clusctl: ") + error.what() + "\n");
        return ExitFailed;
    }
}
