// Writes down what this process asks of its cluster.
#ifndef RECORDING_RECORDER_H
#define RECORDING_RECORDER_H

#include "CallData.h"
#include "Interception.h"
#include "Recording.h"
#include "ThreadNumbers.h"

#include "common/Anonymiser.h"
#include "common/Handle.h"

#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>

namespace recording {

class Recorder : public Interceptor {
public:
    // Makes the file, which must not be there, and writes its head. With `header.isAnonymised` names are replaced,
    // those of the header too. Throws common::FileError, and leaves no file then.
    Recorder(const std::wstring& file, Header header);
    ~Recorder() override;

    Slot Answer(const Call& call, const Slot* slots, Invocation invoke) override;
    BOOL StartProcess(const wchar_t* program, wchar_t* commandLine, DWORD flags, STARTUPINFOW* startup,
                      PROCESS_INFORMATION* information) override;
    BOOL ExitCodeOf(HANDLE process, DWORD* exitCode) override;
    bool TakesChangesByName() const override {
        return !m_allowsChanges;
    }

    // Writes the last line, with the exit code or null. The Win32 code of the first write that failed, since when
    // nothing is written.
    DWORD Finish(const common::Json& exitCode);

    // A name as the file has it.
    std::string Shown(const std::string& name);

private:
    struct Begin {
        LONGLONG ticks;
        unsigned thread;
    };
    Begin Now();
    double MillisecondsSince(LONGLONG ticks) const;
    std::uint64_t NumberOf(Slot handle);
    std::uint64_t NumberOpened(Slot handle);
    void Write(const std::string& line);
    void Lose(DWORD code);
    void WriteCall(RecordedCall& call, const Begin& begin);
    void WriteTool(const std::wstring& commandLine, RecordedTool& tool, const Begin& begin);

    std::mutex m_mutex;
    common::Handle m_file;
    DWORD m_writeError = 0;
    bool m_allowsChanges;
    std::unique_ptr<common::Anonymiser> m_anonymiser;
    Rename m_rename;
    std::unordered_map<Slot, std::uint64_t> m_handles;
    std::uint64_t m_lastHandle = 0;
    ThreadNumbers m_threads;
    std::uint64_t m_calls = 0;
    std::uint64_t m_tools = 0;
    LONGLONG m_begun = 0;
    LONGLONG m_frequency = 0;
};

} // namespace recording

#endif
