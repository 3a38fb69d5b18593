#include "CapturedRun.h"

#include "common/Handle.h"
#include "common/Text.h"

#include <algorithm>
#include <atomic>
#include <string>

namespace recording {

namespace {

const DWORD PipeSize = 65536;
const std::uint64_t MostKept = std::uint64_t{64} << 20; // bytes of a run
const DWORD Patience = 200; // milliseconds: for what others hold open behind the end of the tool

// The reading end of a pipe whose other end a tool prints to.
class Stream {
public:
    explicit Stream(bool isError) : m_isError(isError) {
    }
    ~Stream() {
        if (m_isReading) {
            DWORD ignored = 0;
            CancelIo(m_reader.get());
            GetOverlappedResult(m_reader.get(), &m_overlapped, &ignored, TRUE);
        }
    }
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;

    // False with the last-error value.
    bool Open() {
        static std::atomic<unsigned> count(0);
        const std::wstring name =
            L"\\\\.\\pipe\\clusrecord-" + std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(++count);
        SECURITY_ATTRIBUTES inheritable = {sizeof(inheritable), nullptr, TRUE};
        m_event = common::Handle(CreateEventW(nullptr, TRUE, FALSE, nullptr));
        m_reader = common::Handle(
            CreateNamedPipeW(name.c_str(), PIPE_ACCESS_INBOUND | FILE_FLAG_OVERLAPPED | FILE_FLAG_FIRST_PIPE_INSTANCE,
                             PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT, 1, PipeSize, PipeSize, 0, nullptr));
        if (!m_event || !m_reader) {
            return false;
        }
        m_writer = common::Handle(CreateFileW(name.c_str(), GENERIC_WRITE, 0, &inheritable, OPEN_EXISTING, 0, nullptr));
        return static_cast<bool>(m_writer);
    }
    HANDLE Writer() const {
        return m_writer.get();
    }
    void CloseWriter() {
        m_writer.Close();
    }
    HANDLE Event() const {
        return m_event.get();
    }
    bool IsOpen() const {
        return m_isOpen;
    }
    bool IsError() const {
        return m_isError;
    }

    void Read() {
        m_overlapped = {};
        m_overlapped.hEvent = m_event.get();
        m_isReading = ReadFile(m_reader.get(), m_buffer, sizeof(m_buffer), nullptr, &m_overlapped) ||
                      GetLastError() == ERROR_IO_PENDING;
        m_isOpen = m_isReading;
    }

    // What has arrived in whole lines, or at all when nothing follows. To be called when the event is set.
    std::string Take() {
        DWORD count = 0;
        m_isReading = false;
        if (GetOverlappedResult(m_reader.get(), &m_overlapped, &count, TRUE)) {
            m_text.append(m_buffer, count);
            Read();
        } else {
            m_isOpen = false;
        }
        return m_isOpen ? TakeUpTo(m_text.rfind('\n') + 1) : Rest();
    }
    std::string Rest() {
        return TakeUpTo(m_text.size());
    }

private:
    std::string TakeUpTo(std::size_t end) {
        std::string taken = m_text.substr(0, end);
        m_text.erase(0, end);
        return taken;
    }

    bool m_isError;
    common::Handle m_event;
    common::Handle m_reader;
    common::Handle m_writer;
    OVERLAPPED m_overlapped = {};
    bool m_isReading = false;
    bool m_isOpen = true;
    std::string m_text;
    char m_buffer[4096];
};

// One character per byte.
std::string Utf8OfBytes(const std::string& bytes) {
    std::wstring text;
    for (const char byte : bytes) {
        text += static_cast<wchar_t>(static_cast<unsigned char>(byte));
    }
    return common::ToUtf8(text);
}

class Capture {
public:
    Capture(const STARTUPINFOW& startup, RecordedTool& tool)
        : m_output(startup.hStdOutput), m_errors(startup.hStdError), m_tool(tool) {
    }

    void Add(const Stream& stream, const std::string& bytes) {
        if (bytes.empty()) {
            return;
        }
        DWORD written = 0;
        WriteFile(stream.IsError() ? m_errors : m_output, bytes.data(), static_cast<DWORD>(bytes.size()), &written,
                  nullptr); // as the tool would have
        m_size += bytes.size();
        if (m_size > MostKept) {
            m_tool.isTooLong = true;
            return;
        }
        const std::string text = Utf8OfBytes(bytes);
        if (!m_tool.output.empty() && m_tool.output.back().isError == stream.IsError()) {
            m_tool.output.back().text += text;
        } else {
            m_tool.output.push_back({stream.IsError(), text});
        }
    }

private:
    HANDLE m_output;
    HANDLE m_errors;
    std::uint64_t m_size = 0;
    RecordedTool& m_tool;
};

void ReadAll(Stream& errors, Stream& output, HANDLE process, Capture& capture) {
    bool hasEnded = false;
    while (errors.IsOpen() || output.IsOpen()) {
        HANDLE handles[3];
        Stream* streams[3] = {};
        DWORD count = 0;
        for (Stream* const stream : {&errors, &output}) { // errors first: they are not kept back until the end
            if (stream->IsOpen()) {
                streams[count] = stream;
                handles[count++] = stream->Event();
            }
        }
        if (!hasEnded) {
            handles[count++] = process;
        }
        const DWORD which = WaitForMultipleObjects(count, handles, FALSE, hasEnded ? Patience : INFINITE);
        if (which >= count) {
            break; // what still has the outputs open is not the tool
        }
        if (streams[which] == nullptr) {
            hasEnded = true;
        } else {
            capture.Add(*streams[which], streams[which]->Take());
        }
    }
    capture.Add(errors, errors.Rest());
    capture.Add(output, output.Rest());
}

} // namespace

BOOL RunCaptured(const wchar_t* program, wchar_t* commandLine, DWORD flags, STARTUPINFOW* startup,
                 PROCESS_INFORMATION* information, RecordedTool& tool) {
    const bool isRedirected = (startup->dwFlags & STARTF_USESTDHANDLES) != 0;
    Stream errors(true);
    Stream output(false);
    if (isRedirected) {
        if (!errors.Open() || !output.Open()) {
            tool.startError = GetLastError();
            return FALSE;
        }
        SetHandleInformation(startup->hStdOutput, HANDLE_FLAG_INHERIT, 0);
        SetHandleInformation(startup->hStdError, HANDLE_FLAG_INHERIT, 0);
    }
    STARTUPINFOW own = *startup;
    if (isRedirected) {
        own.hStdOutput = output.Writer();
        own.hStdError = errors.Writer();
    }
    if (!CreateProcessW(program, commandLine, nullptr, nullptr, TRUE, flags, nullptr, nullptr, &own, information)) {
        tool.startError = GetLastError();
        return FALSE;
    }
    const DWORD lastError = GetLastError();
    if (isRedirected) {
        errors.CloseWriter();
        output.CloseWriter();
        errors.Read();
        output.Read();
        Capture capture(*startup, tool);
        ReadAll(errors, output, information->hProcess, capture);
    }
    WaitForSingleObject(information->hProcess, INFINITE);
    DWORD exitCode = 0;
    GetExitCodeProcess(information->hProcess, &exitCode);
    tool.exitCode = exitCode;
    SetLastError(lastError);
    return TRUE;
}

} // namespace recording
