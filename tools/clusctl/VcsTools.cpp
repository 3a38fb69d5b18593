#include "VcsTools.h"

#include "Report.h"
#include "Text.h"
#include "VcsToolFiles.h"

#include "common/Text.h"

#include "core/ToolSecrets.h"

#include <algorithm>

namespace {

const char EngineDownNumber[] = "10600";
const char ReadOnlyNumber[] = "11309";
const char FaultedNumber[] = "10284"; // of a notice: cannot online a faulted resource
const size_t MostLines = 8;
const size_t LongestCommand = 120;
const size_t LongestLine = 200;
const size_t LongestProgress = 60; // has to fit into a narrow terminal

bool IsLetterOrDigit(wchar_t c) {
    return (c >= L'0' && c <= L'9') || (c >= L'A' && c <= L'Z') || (c >= L'a' && c <= L'z');
}

std::string ToolOf(const ToolRun& run) {
    return run.command.substr(0, run.command.find(' '));
}

// Whether it writes the configuration to disk and makes it read-only.
bool IsClosing(const ToolRun& run) {
    return ToolOf(run) == "haconf" && run.command.find(" -makero") != std::string::npos;
}

// "10600" of "VCS ERROR V-16-1-10600 Cannot connect to VCS engine"; empty when the line is no message of VCS.
std::string NumberOf(const std::string& line) {
    const std::string lower = Lower(line);
    if (!StartsWith(lower, "vcs error") && !StartsWith(lower, "vcs warning") && !StartsWith(lower, "vcs notice")) {
        return std::string();
    }
    const size_t mark = lower.find("v-16-");
    const size_t number = mark == std::string::npos ? mark : lower.find('-', mark + 5);
    return number == std::string::npos
               ? "0"
               : lower.substr(number + 1, lower.find_first_not_of("0123456789", number + 1) - number - 1);
}

// Messages that come also when all is well.
bool IsHarmless(const std::string& number) {
    static const char* const harmless[] = {
        "10267", // a resource to be cleared is not faulted
        "10364", // writable already
        "10369", // not writable already
        "50031", // no groups
        "50034", // no dependencies of resources
        "50035", // nor of groups
    };
    return std::any_of(std::begin(harmless), std::end(harmless),
                       [&number](const char* candidate) { return number == candidate; });
}

bool FindProblem(const ToolRun& run, ToolProblem& problem) {
    problem.command = run.command;
    if (!run.isStarted) {
        const bool isThere = !FindVcsTool(common::ToUtf16(ToolOf(run))).empty();
        problem.kind = isThere ? ToolProblem::Kind::NotStarted : ToolProblem::Kind::Missing;
        problem.message = isThere ? "the tool cannot be started" : "the tool is not on the search path";
        problem.code = isThere ? run.startError : 0;
        return true;
    }
    if (run.isTooLong) {
        problem.kind = ToolProblem::Kind::Lost;
        problem.message = "what the tool said is more than the " + std::to_string(LongestToolOutput >> 20) +
                          " MB that are taken of an answer";
        return true;
    }
    if (run.captureError != 0 || !run.isRead) {
        problem.kind = ToolProblem::Kind::Lost;
        problem.message = "the tool ran, but what it said is lost";
        problem.code = run.captureError;
        return true;
    }
    if (run.roomError != 0) {
        problem.kind = ToolProblem::Kind::Lost;
        problem.message = "what the tool said may have been cut";
        problem.code = run.roomError;
        return true;
    }
    const std::string number = NumberOf(run.firstLine);
    const bool isNotice = StartsWith(Lower(run.firstLine), "vcs notice") && number != FaultedNumber;
    problem.message = run.firstLine;
    if (!number.empty() && !isNotice) {
        problem.kind = number == EngineDownNumber ? ToolProblem::Kind::EngineDown
                       : number == ReadOnlyNumber ? ToolProblem::Kind::ReadOnly
                                                  : ToolProblem::Kind::Message;
        return !IsHarmless(number);
    }
    problem.kind = ToolProblem::Kind::Ended;
    problem.message = "exit code " + std::to_string(static_cast<int>(run.exitCode)) +
                      (run.firstLine.empty() ? "" : ", " + Quoted(run.firstLine));
    return run.exitCode != 0;
}

std::string TitledList(const std::string& title, const Json& lines) {
    std::string text = title;
    for (const Json& line : lines) {
        text += "\n  " + line.get<std::string>();
    }
    return lines.empty() ? text + "\n  none" : text;
}

// In the order in which one cause hides the others.
const ToolProblem& CauseOf(const std::vector<ToolProblem>& problems) {
    return *std::min_element(problems.begin(), problems.end(),
                             [](const ToolProblem& one, const ToolProblem& other) { return one.kind < other.kind; });
}

std::string LineOf(const ToolProblem& problem) {
    return "\n  " + Shortened(problem.command, LongestCommand) + ": " + Shortened(problem.message, LongestLine);
}

// The messages, each once, with the first command that gave it. That of `last`, if it is given, is left out.
std::string Lines(const std::vector<ToolProblem>& problems, const ToolProblem* last = nullptr) {
    std::vector<std::string> messages;
    std::string text;
    for (const ToolProblem& problem : problems) {
        const std::string message =
            problem.message + (problem.code == 0 ? std::string() : ": " + ErrorText(problem.code));
        const bool isLast = last != nullptr && problem.code == last->code && problem.message == last->message;
        if (isLast || std::find(messages.begin(), messages.end(), message) != messages.end()) {
            continue;
        }
        messages.push_back(message);
        if (messages.size() <= MostLines) {
            text += LineOf(problem) + message.substr(problem.message.size());
        }
    }
    return messages.size() <= MostLines
               ? text
               : text + "\n  and " + std::to_string(messages.size() - MostLines) + " more messages";
}

// With the code of the cause, whose line comes last. Of a tool or a folder that is gone nothing is "not found" that the
// user has named.
Failure FailureOfCode(const ToolProblem& cause, const std::string& what, const std::vector<ToolProblem>& problems) {
    Failure failure = Failure::OfCode(what + Lines(problems, &cause) + LineOf(cause), cause.code);
    return failure.Kind().exitCode == ExitNotFound ? failure.As(Errors::Failed) : failure;
}

Failure FailureOf(const ToolProblem& cause, const std::string& what, const std::vector<ToolProblem>& problems) {
    const std::string tool = Quoted(cause.command.substr(0, cause.command.find(' ')));
    const std::string lines = Lines(problems);
    switch (cause.kind) {
    case ToolProblem::Kind::Missing:
        return Failure(Errors::ToolMissing,
                       what + ": the VCS tool " + tool + " is missing from the search path (PATH)" + lines);
    case ToolProblem::Kind::NotStarted:
    case ToolProblem::Kind::Lost: {
        const std::string sentence = what + (cause.kind == ToolProblem::Kind::NotStarted
                                                 ? ": the VCS tool " + tool + " cannot be started"
                                                 : ": what the VCS tool " + tool + " said is lost, or a part of it");
        return cause.code == 0 ? Failure(sentence + lines) : FailureOfCode(cause, sentence, problems);
    }
    case ToolProblem::Kind::EngineDown:
        return Failure(Errors::EngineDown, what + ": the VCS engine is not running" + lines);
    case ToolProblem::Kind::ReadOnly:
        return Failure(Errors::ReadOnly,
                       what + ": the configuration is read-only: open it with 'clusctl vcs mode rw', or give --rw" +
                           lines);
    case ToolProblem::Kind::Message:
        return Failure(Errors::Refused, what + ": VCS reports a problem" + lines);
    default:
        return Failure(what + ": the VCS tool " + tool + " failed" + lines);
    }
}

} // namespace

ToolWatch::ToolWatch(const LogCapture& log) : m_log(log), m_first(log.Tools().Count()) {
}

std::vector<ToolRun> ToolWatch::Runs() const {
    return m_log.Tools().Since(m_first);
}

std::vector<ToolProblem> ToolWatch::Problems() const {
    return ProblemsOf(false);
}

std::vector<ToolProblem> ToolWatch::ClosingProblems() const {
    return ProblemsOf(true);
}

std::vector<ToolProblem> ToolWatch::ProblemsOf(bool areClosings) const {
    std::vector<ToolProblem> problems;
    for (const ToolRun& run : Runs()) {
        ToolProblem problem;
        if (IsClosing(run) == areClosings && FindProblem(run, problem)) {
            problems.push_back(problem);
        }
    }
    return problems;
}

bool ToolWatch::IsRefused() const {
    const std::vector<ToolProblem> problems = Problems();
    return !problems.empty() && std::all_of(problems.begin(), problems.end(), [](const ToolProblem& problem) {
        return problem.kind == ToolProblem::Kind::Message;
    });
}

bool ToolWatch::HasMessage(const std::string& number) const {
    const std::vector<ToolRun> runs = Runs();
    return std::any_of(runs.begin(), runs.end(),
                       [&number](const ToolRun& run) { return NumberOf(run.firstLine) == number; });
}

bool ToolWatch::HasOpened() const {
    const std::vector<ToolRun> runs = Runs();
    return std::any_of(runs.begin(), runs.end(), [](const ToolRun& run) {
        ToolProblem problem;
        return run.isStarted && ToolOf(run) == "haconf" && run.command.find(" -makerw") != std::string::npos &&
               (!FindProblem(run, problem) || problem.kind == ToolProblem::Kind::Lost);
    });
}

void ToolWatch::Require(bool succeeded, const std::string& what) const {
    const std::vector<ToolProblem> problems = Problems();
    if (!problems.empty()) {
        throw ToolFailure(what, problems);
    }
    if (succeeded) {
        return;
    }
    throw Failure(what);
}

Failure ToolFailure(const std::string& what, const std::vector<ToolProblem>& problems) {
    return FailureOf(CauseOf(problems), what, problems);
}

void ToolWatch::RequireNames(const VcsNames& names, const std::string& what) const {
    const bool isMessage = std::any_of(names.begin(), names.end(),
                                       [](const std::wstring& name) { return name.compare(0, 5, L"V-16-") == 0; });
    if (isMessage) {
        throw Failure(Errors::Refused, what + ": VCS answered with a message instead of names");
    }
    for (const std::wstring& name : names) {
        if (std::any_of(name.begin(), name.end(), [](wchar_t c) { return c <= 0x20 || c >= 0x7F; })) {
            throw Failure(what + ": the answer of VCS is no list of names: " + Quoted(name));
        }
    }
}

FailureWithReport InterruptedFailure(const LogCapture& log, const Report& shown) {
    Report report = shown;
    const std::vector<ToolRun> runs = log.Tools().Since(0);
    const ToolRun* lastMode = nullptr;
    Json commands = Json::array();
    Json doubtful = Json::array();
    for (const ToolRun& run : runs) {
        if (!run.IsQuestion() && run.isStarted) {
            (run.isInterrupted ? doubtful : commands).push_back(run.command);
            lastMode = ToolOf(run) == "haconf" ? &run : lastMode;
        }
    }
    if (commands.empty() && doubtful.empty()) {
        return FailureWithReport(Failure(Errors::Interrupted, "interrupted before anything was changed"), report);
    }
    report.AddSentence("commands", commands, TitledList("Commands that were run:", commands));
    report.AddSentence("interruptedCommands", doubtful, TitledList("Interrupted, perhaps without effect:", doubtful));
    const std::string what = "interrupted: what is not shown was not done";
    ToolProblem problem;
    if (lastMode == nullptr) {
        return FailureWithReport(Failure(Errors::Interrupted, what), report);
    }
    if (IsClosing(*lastMode) && !FindProblem(*lastMode, problem)) {
        return FailureWithReport(
            Failure(Errors::Interrupted, what + "; the configuration is written to disk and read-only"), report);
    }
    Failure failure(Errors::Interrupted, what + "; the configuration may be open for writing");
    failure.Hint("'clusctl vcs mode ro' writes it to disk and closes it.");
    return FailureWithReport(failure, report);
}

std::wstring EncryptForVcs(const LogCapture& log, const Password& password) {
    const std::string what = "cannot encrypt the password";
    std::wstring encrypted;
    const ToolWatch watch(log);
    const bool isDone = CVeritasCluster().EncryptVeritasPassword(password.Text(), encrypted);
    watch.Require(isDone, what);
    if (encrypted.empty() || _wcsicmp(encrypted.c_str(), L"VCS") == 0) {
        throw Failure(what + (encrypted.empty() ? ": the VCS tool \"vcsencrypt\" printed nothing"
                                                : ": VCS answered with a message"));
    }
    // The library gives the first word of whatever the tool printed.
    if (watch.Runs().back().Output() != clus::SecretMask ||
        !std::all_of(encrypted.begin(), encrypted.end(), IsLetterOrDigit)) {
        throw Failure(what + ": the VCS tool \"vcsencrypt\" printed more than that, such as a prompt")
            .Hint("A password that was set of that would not be the one that was meant, so nothing was changed.");
    }
    return encrypted;
}

std::function<std::string()> DescribeProgress(const LogCapture& log) {
    return [&log]() { return Shortened(log.Tools().Last(), LongestProgress); };
}
