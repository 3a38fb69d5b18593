#include "Recorder.h"

#include "CallTable.h"
#include "CapturedRun.h"
#include "ChangingCalls.h"
#include "ToolText.h"

#include "common/Files.h"
#include "common/Text.h"

#include <exception>
#include <iterator>
#include <utility>

namespace recording {

using common::Json;

namespace {

const std::size_t MostSlots = 12;

LONGLONG Ticks() {
    LARGE_INTEGER ticks;
    QueryPerformanceCounter(&ticks);
    return ticks.QuadPart;
}

LONGLONG TicksPerSecond() {
    LARGE_INTEGER frequency;
    QueryPerformanceFrequency(&frequency);
    return frequency.QuadPart;
}

// The same arguments, with a place for a count of bytes that the caller does not ask for.
class OwnSlots {
public:
    OwnSlots(const Call& call, const Slot* slots) {
        std::size_t at = 0;
        for (const Argument& argument : call.arguments) {
            for (std::size_t i = 0; i < SlotsOf(argument.kind) && at < std::size(m_slots); ++i, ++at) {
                m_slots[at] = slots[at];
            }
            if (argument.kind == Kind::BytesOut && m_slots[at - 1] == 0) {
                m_slots[at - 1] = reinterpret_cast<std::uintptr_t>(&m_count);
            }
        }
    }
    const Slot* Get() const {
        return m_slots;
    }

private:
    Slot m_slots[MostSlots] = {};
    DWORD m_count = 0;
};

} // namespace

Recorder::Recorder(const std::wstring& file, Header header)
    : m_file(CreateFileW(file.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL,
                         nullptr)),
      m_allowsChanges(header.allowsChanges), m_begun(Ticks()), m_frequency(TicksPerSecond()) {
    if (!m_file) {
        throw common::FileError(file, "created", GetLastError());
    }
    if (header.isAnonymised) {
        m_anonymiser = std::make_unique<common::Anonymiser>();
        KeepWordsOfVcs(*m_anonymiser);
        m_rename = [this](const std::wstring& name) { return common::ToUtf16(Shown(common::ToUtf8(name))); };
        header.computer = Shown(header.computer);
        if (header.settings.is_object()) {
            for (const auto& setting : header.settings.items()) {
                if (setting.value().is_string()) {
                    setting.value() = Shown(setting.value().get<std::string>());
                }
            }
        }
        header.tools = Json::array();
    }
    Write(LineOf(header));
    if (m_writeError != ERROR_SUCCESS) {
        m_file.Close();
        DeleteFileW(file.c_str());
        throw common::FileError(file, "written", m_writeError);
    }
}

Recorder::~Recorder() = default;

std::string Recorder::Shown(const std::string& name) {
    return m_anonymiser ? m_anonymiser->Name(name) : name;
}

Recorder::Begin Recorder::Now() {
    return {Ticks(), m_threads.Own()};
}

double Recorder::MillisecondsSince(LONGLONG ticks) const {
    return static_cast<double>(Ticks() - ticks) * 1000 / static_cast<double>(m_frequency);
}

// One that was opened before the recording began gets its number when it is first seen.
std::uint64_t Recorder::NumberOf(Slot handle) {
    const bool isNone = handle == 0 || handle == reinterpret_cast<Slot>(INVALID_HANDLE_VALUE);
    if (isNone) {
        return handle;
    }
    const auto known = m_handles.find(handle);
    return known == m_handles.end() ? NumberOpened(handle) : known->second;
}

std::uint64_t Recorder::NumberOpened(Slot handle) {
    return m_handles[handle] = ++m_lastHandle;
}

void Recorder::Write(const std::string& line) {
    DWORD written = 0;
    if (m_writeError == ERROR_SUCCESS &&
        !WriteFile(m_file.get(), line.data(), static_cast<DWORD>(line.size()), &written, nullptr)) {
        m_writeError = GetLastError();
    } else if (m_writeError == ERROR_SUCCESS && written != line.size()) {
        m_writeError = ERROR_DISK_FULL;
    }
}

void Recorder::WriteCall(RecordedCall& call, const Begin& begin) {
    call.thread = begin.thread;
    call.time = static_cast<double>(begin.ticks - m_begun) * 1000 / static_cast<double>(m_frequency);
    ++m_calls;
    Write(LineOf(call));
}

// Without room for it, the call is made all the same.
void Recorder::Lose(DWORD code) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_writeError = m_writeError == ERROR_SUCCESS ? code : m_writeError;
}

Slot Recorder::Answer(const Call& call, const Slot* theirSlots, Invocation invoke) {
    const DWORD lastErrorBefore = GetLastError();
    const OwnSlots own(call, theirSlots);
    const Slot* const slots = own.Get();
    RecordedCall recorded;
    recorded.isRefused = !m_allowsChanges && Changes(call, slots);
    const Counts before(call, slots);
    void* const original = OriginalOf(call);
    Begin begin = Now();
    try {
        recorded.name = call.name;
        const std::lock_guard<std::mutex> lock(m_mutex);
        recorded.in = Inputs(
            call, slots, [this](Slot handle) { return NumberOf(handle); }, m_rename);
    } catch (const std::exception&) {
        Lose(ERROR_NOT_ENOUGH_MEMORY);
    }
    begin.ticks = Ticks();
    SetLastError(lastErrorBefore);
    const Slot result = recorded.isRefused    ? Failed(call, ERROR_ACCESS_DENIED)
                        : original == nullptr ? Failed(call, ERROR_PROC_NOT_FOUND)
                                              : invoke(original, slots);
    const DWORD lastError = GetLastError();
    recorded.took = MillisecondsSince(begin.ticks);
    const std::int64_t code = ResultOf(call, result);
    if (lastError != lastErrorBefore || (!HasSucceeded(call, code) && call.result != Result::Code)) {
        recorded.lastError = lastError;
    }
    try {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const bool isOpened = call.result == Result::Handle && result != 0;
        recorded.result = isOpened ? static_cast<std::int64_t>(NumberOpened(result)) : code;
        if (!recorded.isRefused) {
            recorded.out = Outputs(call, slots, before, code, m_rename);
        }
        WriteCall(recorded, begin);
    } catch (const std::exception&) {
        Lose(ERROR_NOT_ENOUGH_MEMORY);
    }
    SetLastError(lastError);
    return result;
}

void Recorder::WriteTool(const std::wstring& commandLine, RecordedTool& tool, const Begin& begin) {
    tool.commandLine = common::ToUtf8(MaskedCommand(commandLine));
    for (Printed& printed : tool.output) {
        printed.text = common::ToUtf8(MaskedOutput(commandLine, common::ToUtf16(printed.text)));
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_anonymiser) {
        tool.commandLine = AnonymousCommand(tool.commandLine, *m_anonymiser);
        AnonymousPrint print(*m_anonymiser);
        for (Printed& printed : tool.output) {
            printed.text = print.Of(printed);
        }
    }
    tool.thread = begin.thread;
    tool.time = static_cast<double>(begin.ticks - m_begun) * 1000 / static_cast<double>(m_frequency);
    ++m_tools;
    Write(LineOf(tool));
}

BOOL Recorder::StartProcess(const wchar_t* program, wchar_t* commandLine, DWORD flags, STARTUPINFOW* startup,
                            PROCESS_INFORMATION* information) {
    const std::wstring command = commandLine; // starting it may change it
    const Begin begin = Now();
    const LONGLONG start = Ticks();
    RecordedTool tool;
    tool.isRefused = !m_allowsChanges && !IsQuestion(command);
    BOOL hasStarted = FALSE;
    if (tool.isRefused) {
        tool.startError = ERROR_ACCESS_DENIED;
    } else {
        hasStarted = RunCaptured(program, commandLine, flags, startup, information, tool);
    }
    const DWORD lastError = hasStarted ? GetLastError() : tool.startError;
    tool.took = MillisecondsSince(start);
    try {
        if (tool.isTooLong) {
            Lose(ERROR_FILE_TOO_LARGE);
        }
        WriteTool(command, tool, begin);
    } catch (const std::exception&) {
        Lose(ERROR_NOT_ENOUGH_MEMORY);
    }
    SetLastError(lastError);
    return hasStarted;
}

BOOL Recorder::ExitCodeOf(HANDLE process, DWORD* exitCode) {
    return GetExitCodeProcess(process, exitCode);
}

DWORD Recorder::Finish(const Json& exitCode) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    Write(EndLine(m_calls, m_tools, exitCode));
    m_file.Close();
    return m_writeError;
}

} // namespace recording
