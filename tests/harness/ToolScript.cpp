#include "ToolScript.h"

namespace harness {

ToolScript::ToolScript(PlatformTap& tap) : m_tap(tap) {
    m_tap.processes = this;
}

ToolScript::~ToolScript() {
    m_tap.processes = nullptr;
}

void ToolScript::Answer(const std::wstring& commandLine, const std::string& output, DWORD exitCode) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_exact[commandLine].push_back({output, exitCode});
}

void ToolScript::AnswerPrefix(const std::wstring& beginning, const std::string& output, DWORD exitCode) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_beginnings[beginning].push_back({output, exitCode});
}

void ToolScript::AnswerNext(const std::string& output, DWORD exitCode) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_queue.push_back({output, exitCode});
}

void ToolScript::FailStart(unsigned n, DWORD code) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_failingStarts[m_runCount + n] = code;
}

void ToolScript::FailStart(const std::wstring& commandLine, DWORD code) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_exact[commandLine].push_back({"", 0, false, code});
}

CommandList ToolScript::Unscripted() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_allowUnscripted ? CommandList() : m_unscripted;
}

CommandList ToolScript::CommandLines() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    CommandList lines;
    for (const ToolRun& run : m_runs) {
        lines.push_back(run.commandLine);
    }
    return lines;
}

CommandList ToolScript::TakeCommandLines() {
    CommandList lines = CommandLines();
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_runs.clear();
    return lines;
}

ToolScript::Reply ToolScript::Next(Replies& replies) {
    Reply reply = replies.front();
    if (replies.size() > 1) {
        replies.pop_front();
    }
    return reply;
}

bool ToolScript::FindReply(const std::wstring& commandLine, Reply& reply) {
    if (!m_queue.empty()) {
        reply = m_queue.front();
        m_queue.pop_front();
        return true;
    }
    const auto exact = m_exact.find(commandLine);
    if (exact != m_exact.end()) {
        reply = Next(exact->second);
        return true;
    }
    Replies* longest = nullptr; // of several beginnings of one text the longer one sorts behind
    for (auto& beginning : m_beginnings) {
        if (commandLine.compare(0, beginning.first.size(), beginning.first) == 0) {
            longest = &beginning.second;
        }
    }
    if (longest) {
        reply = Next(*longest);
    }
    return longest != nullptr;
}

BOOL ToolScript::Create(const CreateProcessArguments& arguments, LPPROCESS_INFORMATION process) {
    ToolRun run;
    run.commandLine = arguments.commandLine ? arguments.commandLine : L"";
    run.arguments = arguments;
    run.startup = *arguments.startup;
    Reply reply;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto failing = m_failingStarts.find(++m_runCount);
        if (failing != m_failingStarts.end()) {
            reply.starts = false;
            reply.startError = failing->second;
        } else if (!FindReply(run.commandLine, reply)) {
            m_unscripted.push_back(run.commandLine);
        }
        run.started = reply.starts;
        if (run.startup.dwFlags & STARTF_USESTDHANDLES) {
            GetHandleInformation(run.startup.hStdOutput, &run.outputFlags);
        }
        m_runs.push_back(run);
    }
    if (!reply.starts) {
        SetLastError(reply.startError);
        return FALSE;
    }
    if (onAnswer) {
        onAnswer(run.commandLine, reply.output, reply.exitCode);
    }
    if (onRun) {
        onRun(run);
    }
    if (run.startup.dwFlags & STARTF_USESTDHANDLES) {
        DWORD written = 0;
        WriteFile(run.startup.hStdOutput, reply.output.data(), static_cast<DWORD>(reply.output.size()), &written,
                  nullptr);
    }
    process->hProcess = CreateEventW(nullptr, TRUE, TRUE, nullptr);
    process->hThread = CreateEventW(nullptr, TRUE, TRUE, nullptr);
    const std::lock_guard<std::mutex> lock(m_mutex);
    process->dwProcessId = 4 * m_runCount;
    process->dwThreadId = 4 * m_runCount + 1;
    m_exitCodes[process->hProcess] = reply.exitCode;
    return TRUE;
}

DWORD ToolScript::Wait(HANDLE process, DWORD milliseconds) {
    return WaitForSingleObject(process, milliseconds);
}

BOOL ToolScript::ExitCode(HANDLE process, LPDWORD code) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_exitCodes.find(process);
    if (found == m_exitCodes.end()) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    *code = found->second;
    return TRUE;
}

} // namespace harness
