#include "Player.h"

#include "ToolText.h"

#include "common/Text.h"

#include <algorithm>
#include <utility>

namespace recording {

namespace {

// What stands for the handles of a recording: addresses at which nothing can be.
const Slot FirstHandle = 0x1000;
const Slot HandleStep = 0x10;

std::uint64_t NumberOf(Slot handle) {
    if (handle == 0) {
        return 0;
    }
    const bool isOurs = handle > FirstHandle && (handle - FirstHandle) % HandleStep == 0;
    return isOurs ? (handle - FirstHandle) / HandleStep : static_cast<std::uint64_t>(-1);
}

} // namespace

Player::Player(Recording recording) : m_recording(std::move(recording)) {
    for (std::size_t i = 0; i < m_recording.calls.size(); ++i) {
        const RecordedCall& call = m_recording.calls[i];
        m_calls[call.thread][{call.name, call.in}].indexes.push_back(i);
    }
    for (std::size_t i = 0; i < m_recording.tools.size(); ++i) {
        const RecordedTool& tool = m_recording.tools[i];
        m_tools[tool.thread][{tool.commandLine, {}}].indexes.push_back(i);
    }
}

std::string Player::Shown(const Question& question) {
    std::string shown(question.what);
    return question.in.empty() ? shown : shown.append(" ").append(question.in);
}

std::size_t Player::Next(std::map<unsigned, Book>& books, const Question& question) {
    Book& book = books[m_threads.Own()];
    const auto found = book.find(question);
    m_hasAnswered = true;
    if (found == book.end() || found->second.given == found->second.indexes.size()) {
        const std::string shown = Shown(question);
        m_missing = m_missing.empty() ? shown : m_missing;
        throw NotRecorded("the recording holds no answer to " + shown);
    }
    return found->second.indexes[found->second.given++];
}

Slot Player::HandleOf(std::int64_t number) {
    return number == 0 ? 0 : FirstHandle + static_cast<Slot>(number) * HandleStep;
}

// What is closed at the end of a scope cannot throw.
Slot Player::Missed(const Call& call) {
    return call.result == Result::Truth ? 1 : 0;
}

Slot Player::Answer(const Call& call, const Slot* slots, Invocation) {
    const DWORD lastError = GetLastError();
    const std::lock_guard<std::mutex> lock(m_mutex);
    const std::string in = Inputs(call, slots, NumberOf, nullptr);
    std::size_t index = 0;
    try {
        index = Next(m_calls, {call.name, in});
    } catch (const NotRecorded&) {
        if (call.effect != Effect::Closes) {
            throw;
        }
        SetLastError(lastError);
        return Missed(call);
    }
    const RecordedCall& recorded = m_recording.calls[index];
    try {
        WriteOutputs(recorded, call, slots);
    } catch (const common::JsonError& error) {
        const std::string shown = Shown({call.name, in});
        m_missing = m_missing.empty() ? shown : m_missing;
        throw NotRecorded("the recording holds an answer to " + shown + " that cannot be given: " + error.what());
    }
    SetLastError(recorded.lastError ? *recorded.lastError : lastError);
    return call.result == Result::Handle ? HandleOf(recorded.result) : static_cast<Slot>(recorded.result);
}

BOOL Player::StartProcess(const wchar_t*, wchar_t* commandLine, DWORD, STARTUPINFOW* startup,
                          PROCESS_INFORMATION* information) {
    const DWORD lastError = GetLastError();
    const std::lock_guard<std::mutex> lock(m_mutex);
    const std::string command = common::ToUtf8(MaskedCommand(commandLine));
    const RecordedTool& tool = m_recording.tools[Next(m_tools, {command, {}})];
    if (tool.startError != ERROR_SUCCESS) {
        SetLastError(tool.startError);
        return FALSE;
    }
    if ((startup->dwFlags & STARTF_USESTDHANDLES) != 0) {
        for (const Printed& printed : tool.output) {
            const std::string bytes = BytesOfText(ReplayedOutput(commandLine, printed.text));
            DWORD written = 0;
            const HANDLE file = printed.isError ? startup->hStdError : startup->hStdOutput;
            WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
        }
    }
    // Objects that can be waited for and closed as a process that has ended.
    *information = {};
    information->hProcess = CreateEventW(nullptr, TRUE, TRUE, nullptr);
    information->hThread = CreateEventW(nullptr, TRUE, TRUE, nullptr);
    m_exitCodes[information->hProcess] = tool.exitCode;
    SetLastError(lastError);
    return TRUE;
}

BOOL Player::ExitCodeOf(HANDLE process, DWORD* exitCode) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto known = m_exitCodes.find(process);
    if (known == m_exitCodes.end()) {
        return GetExitCodeProcess(process, exitCode);
    }
    *exitCode = known->second;
    m_exitCodes.erase(known);
    return TRUE;
}

std::wstring Player::ComputerName() const {
    return common::ToUtf16(m_recording.header.computer);
}

std::string Player::Missing() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_missing;
}

bool Player::HasRunOf(const std::string& tool) const {
    return std::any_of(m_recording.tools.begin(), m_recording.tools.end(),
                       [&](const RecordedTool& run) { return run.commandLine.rfind(tool + ' ', 0) == 0; });
}

bool Player::HasAnswered() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_hasAnswered;
}

} // namespace recording
