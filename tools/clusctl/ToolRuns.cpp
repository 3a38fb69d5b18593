#include "ToolRuns.h"

#include "Text.h"

#include <cstdlib>

namespace {

const char CommandMark[] = "Command line: ";
const char SecretCommand[] = "Command line is ***";
const char ExitCodeMark[] = "Process exit code: ";
const char ResultMark[] = "Result: ";
const char LeavingText[] = "CVeritasCluster::ExecuteVeritasCommand_";

// The text behind a mark; false when the line does not begin with it.
bool TakeBehind(const std::string& line, const std::string& mark, std::string& text) {
    if (!StartsWith(line, mark)) {
        return false;
    }
    text = line.substr(mark.size());
    return true;
}

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

} // namespace

void ToolRuns::Take(const std::string& line) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::string text;
    if (TakeBehind(line, CommandMark, text) || line == SecretCommand) {
        ToolRun run;
        run.command = line == SecretCommand ? "vcsencrypt -agent ***" : Tidy(text);
        m_runs.push_back(run);
        return;
    }
    if (m_runs.empty() || m_runs.back().isDone) {
        return;
    }
    ToolRun& run = m_runs.back();
    if (TakeBehind(line, ExitCodeMark, text)) {
        run.isStarted = true;
        run.exitCode = std::atoi(text.c_str());
    } else if (TakeBehind(line, ResultMark, text)) {
        if (run.firstLine.empty()) {
            run.firstLine = Tidy(text);
        }
    } else if (line == LeavingText) {
        run.isDone = true;
    } else if (StartsWith(line, "Cannot get process exit code, e")) {
        run.isStarted = true;
    }
}

size_t ToolRuns::Count() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_runs.size();
}

std::vector<ToolRun> ToolRuns::Since(size_t first) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return std::vector<ToolRun>(m_runs.begin() + static_cast<std::ptrdiff_t>(first), m_runs.end());
}

ToolRun ToolRuns::Last() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_runs.empty() ? ToolRun() : m_runs.back();
}
