#include "ToolRuns.h"

#include "Failure.h"
#include "Interruption.h"
#include "Text.h"
#include "VcsFolder.h"

#include "common/Text.h"

#include <ToolText.h>

#include <algorithm>

namespace {

const char CommandMark[] = "Command line: ";
const size_t LongestFirstLine = 1000;
const char SecretCommand[] = "Command line is ***";

ToolRuns* g_receiver = nullptr;

// One blank between words, none at the ends.
std::string Tidy(const std::string& text) {
    std::string result;
    for (const char c : text) {
        if (c != ' ' || (!result.empty() && result.back() != ' ')) {
            result += c;
        }
    }
    while (!result.empty() && result.back() == ' ') {
        result.pop_back();
    }
    return result;
}

// The first line of an output that holds more than blanks, or its beginning.
std::string FirstLine(const std::wstring& text) {
    size_t begin = text.find_first_not_of(L" \t\r\n");
    if (begin == std::wstring::npos) {
        return std::string();
    }
    const size_t end = std::min(text.find(L'\n', begin), begin + LongestFirstLine);
    return Tidy(Printable(text.substr(begin, end - begin)));
}

} // namespace

const std::wstring& ToolRun::Output() const {
    static const std::wstring none;
    return output == nullptr ? none : *output;
}

bool ToolRun::IsQuestion() const {
    return recording::IsQuestion(common::ToUtf16(command));
}

ToolRuns::ToolRuns() {
    g_receiver = this;
    SetVeritasToolRunCallback(&ToolRuns::Receive, this);
}

ToolRuns::~ToolRuns() {
    SetVeritasToolRunCallback(nullptr, nullptr);
    g_receiver = nullptr;
}

void ToolRuns::Tell(const CVeritasToolRun& run, unsigned long roomError) {
    if (g_receiver != nullptr) {
        g_receiver->TakeAndCheck(run, roomError);
    }
}

void ToolRuns::Receive(const CVeritasToolRun& told, void* context) {
    static_cast<ToolRuns*>(context)->TakeAndCheck(told, ProbeCurrentFolder()); // the library still has the output there
}

void ToolRuns::TakeAndCheck(const CVeritasToolRun& told, unsigned long roomError) {
    // All programs of the console get the Ctrl+C; the tool may be faster with it.
    if (told.exitCodeKnown && told.exitCode == static_cast<DWORD>(STATUS_CONTROL_C_EXIT)) {
        Interruption::AwaitPending(); // it becomes known in a moment
    }
    Take(told, roomError);
    // The library closes what the run has open, and goes no further.
    Interruption::Check();
    if (told.cchOutput > LongestToolOutput) {
        throw Failure("the VCS tool " + Quoted(Tidy(Printable(told.commandLine))) + " printed more than the " +
                      std::to_string(LongestToolOutput >> 20) + " MB that are taken of an answer");
    }
}

void ToolRuns::Take(const CVeritasToolRun& told, unsigned long roomError) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    try {
        ToolRun run;
        run.command = Tidy(Printable(told.commandLine));
        run.isStarted = told.started;
        run.startError = told.startError;
        run.captureError = told.captureError;
        run.roomError = roomError;
        run.isExitCodeKnown = told.exitCodeKnown;
        run.exitCode = told.exitCode;
        run.isInterrupted = Interruption::IsPending() && !m_wasInterrupted;
        run.isTooLong = told.cchOutput > LongestToolOutput;
        run.isRead = told.output != nullptr && !run.isTooLong;
        if (run.isRead) {
            run.output = std::make_shared<const std::wstring>(told.output, told.cchOutput);
            run.firstLine = FirstLine(*run.output);
        }
        m_runs.push_back(run);
        m_last = run.command;
    } catch (...) {
        m_isOneLost = true; // for want of memory
    }
    m_wasInterrupted = Interruption::IsPending();
}

size_t ToolRuns::Count() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_runs.size();
}

std::vector<ToolRun> ToolRuns::Since(size_t first) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<ToolRun> runs(m_runs.begin() + static_cast<std::ptrdiff_t>(first), m_runs.end());
    if (m_isOneLost) {
        runs.emplace_back(); // nothing is known of it, so it counts as one that failed
    }
    return runs;
}

void ToolRuns::TakeLine(const std::string& line) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (StartsWith(line, CommandMark) || line == SecretCommand) {
        m_last = line == SecretCommand ? "vcsencrypt -agent ***" : Tidy(line.substr(sizeof(CommandMark) - 1));
    }
}

std::string ToolRuns::Last() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_last;
}
