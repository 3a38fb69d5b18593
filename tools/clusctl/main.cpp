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

#include "common/AppendFile.h"
#include "common/Text.h"

#include <exception>
#include <string>
#include <vector>

namespace {

enum ExitCode {
    ExitDone = 0,
    ExitFailed = 1,
    ExitUsage = 2
};

void Print(const Stream& output, const std::string& text) {
    const DWORD code = output.Write(text);
    if (code != ERROR_SUCCESS) {
        throw Failure("cannot write the output: " + ErrorText(code));
    }
}

// The log library ignores a file that it cannot use; who named one wants to know.
void RequireWritable(const std::wstring& logFile) {
    const DWORD code = common::AppendFile(logFile).Open();
    if (code != ERROR_SUCCESS) {
        throw Failure("cannot open the log file " + Quoted(logFile) + ": " + ErrorText(code));
    }
}

// What the library logged, one line each; nothing of it when the lines have been shown as they came.
std::string ProblemLines(const LogCapture& log, const char* lead) {
    std::string lines;
    if (!log.IsShown()) {
        for (const std::string& problem : log.Problems()) {
            lines += lead + problem + "\n";
        }
    }
    return lines;
}

// A failure in the command's words with the reasons that the library gave.
Failure WithReasons(const Failure& failure, const LogCapture& log) {
    std::string text = failure.what() + ("\n" + ProblemLines(log, "  "));
    if (!log.IsAvailable()) {
        text += "  The DebugLog.dll in use does not hand out the reason.\n";
    }
    text.pop_back(); // the last line's end
    return Failure(text);
}

void Execute(const CommandLine& commandLine, const Stream& output, const Stream& errors) {
    const SharedOptions& shared = commandLine.Shared();
    const auto textOf = [&shared](const Report& report) { return shared.json ? report.ToJson() : report.ToText(); };
    if (!shared.logFile.empty()) {
        RequireWritable(shared.logFile);
    }
    const LogCapture log(shared.verbose ? &errors : nullptr, shared.logFile);
    if (shared.verbose && !log.IsAvailable()) {
        errors.Write(
            "clusctl: warning: the DebugLog.dll in use does not hand out its lines; --verbose shows nothing\n");
    }
    Report report;
    try {
        report = commandLine.Chosen()(log);
    } catch (const FailureWithReport& halfway) {
        const Failure failure = WithReasons(halfway, log);
        try {
            Print(output, textOf(halfway.Shown()));
        } catch (const Failure& unwritten) {
            errors.Write(std::string("clusctl: ") + unwritten.what() + "\n");
        }
        throw failure;
    } catch (const Failure& failure) {
        throw WithReasons(failure, log);
    }
    errors.Write(ProblemLines(log, "clusctl: warning: "));
    Print(output, textOf(report));
}

void Run(CommandLine& commandLine, int argumentCount, wchar_t** arguments, const Stream& output, const Stream& errors) {
    TakePasswordFromEnvironment();
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
        texts.push_back(common::ToUtf8(arguments[i]));
    }
    const std::string help = commandLine.Parse(texts);
    if (help.empty()) {
        Execute(commandLine, output, errors);
    } else {
        Print(output, help);
    }
}

} // namespace

// The exit code is picked here and nowhere else: who cannot do what is asked throws.
int wmain(int argumentCount, wchar_t** arguments) {
    const Stream output(STD_OUTPUT_HANDLE);
    const Stream errors(STD_ERROR_HANDLE);
    CommandLine commandLine;
    try {
        Run(commandLine, argumentCount, arguments, output, errors);
        return ExitDone;
    } catch (const WrongUsage& wrong) {
        errors.Write(commandLine.UsageText(wrong.what()));
        return ExitUsage;
    } catch (const std::exception& error) {
        errors.Write(std::string("clusctl: ") + error.what() + "\n");
        return ExitFailed;
    }
}
