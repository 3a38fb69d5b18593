// Fixtures. LibraryTest watches clusutil.dll: its log, its platform calls, its memory. ClusterTest adds a simulated
// cluster, with this computer as NODE-A and a clock that stands still except while the library sleeps.
//
// After each test both check that nothing is left: handles, registry keys, local heap blocks, Winsock starts.
#ifndef HARNESS_CLUSTERTEST_H
#define HARNESS_CLUSTERTEST_H

#include "Guarded.h"
#include "HeapTap.h"
#include "ImportPatch.h"
#include "IsolatedRegistry.h"
#include "LogRecorder.h"
#include "ModelBuilder.h"
#include "PlatformTap.h"
#include "Rows.h"
#include "Simulator.h"
#include "Text.h"
#include "Texts.h"
#include "Watchdog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace harness {

// Shows up as the last-error value where a test wants to see one kept or replaced.
const DWORD ImpossibleCode = 0x0BADC0DE;

// What the fixtures offer is public: helpers that tests compose get the fixture as an argument.
class LibraryTest : public ::testing::Test {
public:
    // Log and journal since they were taken last.
    std::string TakeLog() {
        return m_log.TakeLog();
    }
    std::string TakeJournal() {
        return m_platform.TakeJournal();
    }
    // Information, warnings and errors of the log since it was taken last; entries and leavings are left out.
    Texts TakeMessages() {
        return m_log.TakeMessages();
    }
    void Forget() {
        TakeLog();
        TakeJournal();
    }

    LogRecorder& Log() {
        return m_log;
    }
    PlatformTap& Platform() {
        return m_platform;
    }
    HeapTap& Heap() {
        return m_heap;
    }

    // What GetComputerNameW gives clusutil.dll; more than 15 characters do not fit its buffer and make the call fail.
    void SetComputerName(const std::wstring& name) {
        m_computerName = name;
    }

    // From now on registry keys below HKEY_LOCAL_MACHINE are those of this object.
    IsolatedRegistry& Registry();

    // That nothing is left behind. Runs at the end of each test, and after each run of a sweep.
    virtual void Audit();

    // Runs at the test's end, before the audit: for helpers that hold something of the library. What came last goes
    // first.
    void AtEnd(std::function<void()> action) {
        m_atEnd.push_back(std::move(action));
    }

protected:
    LibraryTest();
    ~LibraryTest() override;

    void TearDown() override;

private:
    BOOL ComputerName(LPWSTR text, LPDWORD cch) const;

    Watchdog m_watchdog;
    std::wstring m_computerName = L"NODE-A";
    struct GetComputerNameTag;
    ImportPatch<BOOL(LPWSTR, LPDWORD), GetComputerNameTag> m_computerNamePatch;
    HeapTap m_heap;
    PlatformTap m_platform;
    LogRecorder m_log;
    std::unique_ptr<IsolatedRegistry> m_registry;
    std::vector<std::function<void()>> m_atEnd;
};

class ClusterTest : public LibraryTest {
public:
    // Replaces the simulated cluster; log, journal and faults start anew.
    void Load(const ModelBuilder& model);
    void LoadJson(const std::string& json);

    Simulator& Cluster() {
        return m_simulator;
    }

    // A fault of the simulator, for what only a cluster can do; a call that just fails is Platform().FailCall's
    // business.
    void AddFault(const std::string& fault) {
        m_simulator.AddFault(fault);
    }

    // Calls with closed handles that the test makes on purpose; checked exactly.
    void ExpectBadHandleCalls(size_t count) {
        m_badHandleCalls = count;
    }

    void Audit() override;

protected:
    ClusterTest();
    ~ClusterTest() override;

private:
    Simulator m_simulator;
    size_t m_badHandleCalls = 0;
};

} // namespace harness

#endif
