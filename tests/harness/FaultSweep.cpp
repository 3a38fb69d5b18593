#include "FaultSweep.h"

#include <cstring>
#include <new>

namespace harness {

namespace {

// What failing calls give: access is denied, memory or disk is full, the cluster does not answer.
const DWORD Codes[] = {ERROR_ACCESS_DENIED, ERROR_NOT_ENOUGH_MEMORY, ERROR_DISK_FULL, RPC_S_SERVER_UNAVAILABLE};

bool IsEverySweep() {
    return GetEnvironmentVariableW(L"CLUSUTIL_SWEEP", nullptr, 0) != 0;
}

} // namespace

bool SweepRuns::RunOnce(const Sweep& sweep, What what, unsigned n, FaultMode mode, DWORD code) {
    LogRecorder& log = m_test.Log();
    PlatformTap& platform = m_test.Platform();
    HeapTap& heap = m_test.Heap();

    sweep.prepare();
    log.TakeLog();
    platform.TakeJournal();
    platform.FailNthCall(what == What::Call ? n : 0, mode, code);
    heap.FailAllocation(what == What::Allocation ? n : 0, mode);

    SweepRun run;
    run.threw = false;
    std::string foreignException;
    {
        heap.StartOperation();
        try {
            const std::string result = sweep.body();
            const HarnessScope scope;
            run.result = result;
        } catch (const std::bad_alloc&) {
            const HarnessScope scope;
            run.threw = true;
        } catch (const std::exception& exception) {
            const HarnessScope scope;
            foreignException = exception.what();
        }
        heap.EndOperation();
    }
    run.faulted = what == What::Call ? platform.Fired() : heap.Fired();
    run.fault = !run.faulted ? "nothing" : what == What::Call ? platform.FiredCall() : std::string(heap.FiredIn());
    run.code = what == What::Call ? code : ERROR_SUCCESS;
    run.log = log.TakeLog();
    run.journal = platform.TakeJournal();
    platform.FailNthCall(0, FaultMode::Once, 0);
    heap.FailAllocation(0, FaultMode::Once);

    const ::testing::ScopedTrace trace(__FILE__, __LINE__,
                                       "failing " + std::string(what == What::Call ? "call " : "allocation ") +
                                           std::to_string(n) + (mode == FaultMode::Once ? "" : " and all after it") +
                                           ": " + run.fault +
                                           (what == What::Call ? ", code " + std::to_string(code) : "") + "\nlog:\n" +
                                           run.log + "journal:\n" + run.journal);
    EXPECT_EQ(foreignException, "");
    EXPECT_TRUE(!run.threw || what == What::Allocation) << "an exception without a failing allocation";
    if (n != 0) {
        EXPECT_EQ(heap.LiveAllocations(), 0u) << "C++ blocks kept";
    }
    m_test.Audit();
    sweep.check(run);
    return run.faulted;
}

void SweepRuns::RunUntilNothingFails(const Sweep& sweep, What what, FaultMode mode, DWORD code) {
    const unsigned step = IsEverySweep() ? 1 : sweep.step;
    for (unsigned n = 1; n <= sweep.limit; n += step) {
        if (!RunOnce(sweep, what, n, mode, code)) {
            // An operation may do without memory, but not without the platform.
            EXPECT_TRUE(n > 1 || what == What::Allocation) << "the operation made no call that could fail";
            return;
        }
        if (::testing::Test::HasFailure()) {
            return; // the first failing run tells enough
        }
    }
    ADD_FAILURE() << "still failing at n = " << sweep.limit;
}

void SweepRuns::Run(const Sweep& sweep) {
    RunOnce(sweep, What::Call, 0, FaultMode::Once, 0); // what is made once per process is made here
    if (::testing::Test::HasFailure()) {
        return;
    }
    for (const FaultMode mode : {FaultMode::Once, FaultMode::FromThenOn}) {
        for (const DWORD code : Codes) {
            RunUntilNothingFails(sweep, What::Call, mode, code);
            if (!IsEverySweep()) {
                break;
            }
        }
        RunUntilNothingFails(sweep, What::Allocation, mode, 0);
    }
}

} // namespace harness
