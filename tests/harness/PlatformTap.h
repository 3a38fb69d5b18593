// Listens to what clusutil.dll asks of the platform: every call through its import table that matters to a test goes
// into a journal, can be made to fail, and is counted for fault sweeps.
//
// One journal line per call: `Call(arguments)`, then `=code` when it failed. Handles show as the name of what they
// stand for. Memory calls are not journalled (HeapTap.h).
//
//     OpenCluster()
//     OpenClusterResource(EVS1 Disk)=5007
//     CloseCluster()
#ifndef HARNESS_PLATFORMTAP_H
#define HARNESS_PLATFORMTAP_H

#include "HeapTap.h"
#include "ImportPatch.h"
#include "Text.h"

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace harness {

// What a failing call gives.
enum class FailureForm {
    Null,         // null pointer or 0 or FALSE, the code in the last-error value
    Code,         // the code itself
    MinusOne,     // -1, the code in the last-error value
    Answer,       // no failure in itself: any result is journalled; made to fail it gives 0
    CloseFalse,   // closes, then gives FALSE and the code in the last-error value
    CloseCode,    // closes, or does what else it does, then gives the code
    Invalid,      // -1: an invalid handle, a failed wait, no descriptor; the code in the last-error value
    CloseInvalid, // closes, then gives -1 and the code in the last-error value
    Never
};

struct CreateProcessArguments {
    LPCWSTR application;
    LPWSTR commandLine;
    LPSECURITY_ATTRIBUTES processAttributes;
    LPSECURITY_ATTRIBUTES threadAttributes;
    BOOL inheritHandles;
    DWORD flags;
    LPVOID environment;
    LPCWSTR directory;
    LPSTARTUPINFOW startup;
};

// Takes the place of child processes: see ToolScript.h.
class ProcessStandIn {
public:
    virtual ~ProcessStandIn() = default;
    virtual BOOL Create(const CreateProcessArguments& arguments, LPPROCESS_INFORMATION process) = 0;
    virtual DWORD Wait(HANDLE process, DWORD milliseconds) = 0;
    virtual BOOL ExitCode(HANDLE process, LPDWORD code) = 0;
};

// Several threads of clusutil.dll may call the platform at once; faults and hooks are set before.
class PlatformTap {
public:
    PlatformTap();
    ~PlatformTap();
    PlatformTap(const PlatformTap&) = delete;
    PlatformTap& operator=(const PlatformTap&) = delete;

    // The journal since the last call, one line per call.
    std::string TakeJournal();
    const std::vector<std::string>& Journal() const {
        return m_journal;
    }
    // How many of its lines, line feed included, begin so: "CloseHandle(" counts failing calls too, "CloseHandle()\n"
    // only those that succeeded.
    std::size_t CountCalls(const std::string& beginning) const;

    // Makes a call fail. `call` is a function's name, or a journal line without its result, such as
    // "OpenClusterResource(EVS1 Disk)". The occurrence counts from now on: the n-th only, or all from it on.
    void FailCall(const std::string& call, DWORD code, unsigned occurrence = 1, FaultMode mode = FaultMode::Once);

    // For sweeps: counting starts anew, and call number n (1, 2, ...) fails. 0: none.
    void FailNthCall(unsigned n, FaultMode mode, DWORD code);
    bool Fired() const {
        return !m_fired.empty();
    }
    const std::string& FiredCall() const {
        return m_fired;
    }

    // Registry keys opened and not closed; Winsock starts less stops.
    int OpenKeys() const {
        return m_openKeys;
    }
    int WinsockStarts() const {
        return m_winsockStarts;
    }

    // Handles (files, processes, threads) and C runtime files that were opened and not closed, by name; and closes of
    // what was not open. Empty when all is well. The invalid handle may be closed.
    std::string OpenHandles() const;
    std::string BadCloses() const;
    void ForgetBadCloses();

    // Real child processes that have not ended yet.
    size_t LiveChildren();

    // Sleep returns at once; its durations are collected and passed to `onSleep`.
    std::vector<DWORD> sleeps;
    std::function<void(DWORD)> onSleep;
    // Keys below HKEY_LOCAL_MACHINE are opened below this one instead; without it there are none.
    HKEY localMachine = nullptr;
    // When set, no process is started: this one answers.
    ProcessStandIn* processes = nullptr;

    // For the table of calls.
    void Install(std::unique_ptr<class TappedCallBase> call);
    bool ShouldFail(const char* function, const std::string& text, DWORD* code);
    void Record(const std::string& line);
    void Label(const void* handle, const std::string& name);
    std::string LabelOf(const void* handle) const;
    void CountKey(int step) {
        m_openKeys += step;
    }
    void CountWinsock(int step) {
        m_winsockStarts += step;
    }
    void HandleOpened(HANDLE handle, const std::string& name);
    void HandleClosed(HANDLE handle);
    void FileOpened(int file, const std::string& name);
    void FileClosed(int file);
    void WatchChild(HANDLE process);

private:
    struct Fault {
        std::string call;
        DWORD code;
        unsigned occurrence;
        FaultMode mode;
        unsigned seen;
    };

    mutable std::mutex m_mutex; // over all below
    std::vector<std::unique_ptr<class TappedCallBase>> m_calls;
    std::vector<std::string> m_journal;
    std::map<const void*, std::string> m_labels;
    std::vector<Fault> m_faults;
    unsigned m_sweepCount = 0;
    unsigned m_sweepAt = 0;
    FaultMode m_sweepMode = FaultMode::Once;
    DWORD m_sweepCode = 0;
    std::string m_fired;
    int m_openKeys = 0;
    int m_winsockStarts = 0;
    std::map<HANDLE, std::string> m_openHandles;
    std::map<int, std::string> m_openFiles;
    std::vector<std::string> m_badCloses;
    std::vector<HANDLE> m_children;
};

class TappedCallBase {
public:
    virtual ~TappedCallBase() = default;
};

// Fills the tap with every import of clusutil.dll that it knows.
void InstallTapTable(PlatformTap& tap);
void InstallProcessTapTable(PlatformTap& tap);

} // namespace harness

#endif
