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
#include <string>
#include <vector>

namespace harness {

// What a failing call gives.
enum class FailureForm {
    Null,        // null pointer or 0 or FALSE, the code in the last-error value
    Code,        // the code itself
    MinusOne,    // -1, the code in the last-error value
    Answer,      // no failure in itself: any result is journalled; made to fail it gives 0
    CloseFalse,  // closes, then gives FALSE and the code in the last-error value
    CloseCode,   // closes, then gives the code
    Enumeration, // the code; but from then on only as long as there are entries: a loop over them has to end
    Never
};

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

    // Sleep returns at once; its durations are collected and passed to `onSleep`.
    std::vector<DWORD> sleeps;
    std::function<void(DWORD)> onSleep;
    // When set, keys below HKEY_LOCAL_MACHINE are opened below this one instead.
    HKEY localMachine = nullptr;

    // For the table of calls.
    void Install(std::unique_ptr<class TappedCallBase> call);
    bool ShouldFail(const char* function, const std::string& text, DWORD* code, FaultMode* mode);
    void Record(const std::string& line);
    void Label(const void* handle, const std::string& name);
    std::string LabelOf(const void* handle) const;
    void CountKey(int step) {
        m_openKeys += step;
    }
    void CountWinsock(int step) {
        m_winsockStarts += step;
    }

private:
    struct Fault {
        std::string call;
        DWORD code;
        unsigned occurrence;
        FaultMode mode;
        unsigned seen;
    };

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
};

class TappedCallBase {
public:
    virtual ~TappedCallBase() = default;
};

// Fills the tap with every import of clusutil.dll that it knows.
void InstallTapTable(PlatformTap& tap);

} // namespace harness

#endif
