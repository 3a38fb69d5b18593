#include "FaultSweep.h"

#include <cstring>
#include <new>

namespace harness {

bool SweepRuns::RunOnce(const Sweep& sweep, What what, unsigned n, FaultMode mode) {
    LogRecorder& log = m_test.Log();
    PlatformTap& platform = m_test.Platform();
    HeapTap& heap = m_test.Heap();

    sweep.prepare();
    log.TakeLog();
    platform.TakeJournal();
    platform.FailNthCall(what == What::Call ? n : 0, mode, sweep.code);
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
    run.log = log.TakeLog();
    run.journal = platform.TakeJournal();
    platform.FailNthCall(0, FaultMode::Once, 0);
    heap.FailAllocation(0, FaultMode::Once);

    const ::testing::ScopedTrace trace(__FILE__, __LINE__,
                                       "failing " + std::string(what == What::Call ? "call " : "allocation ") +
                                           std::to_string(n) + (mode == FaultMode::Once ? "" : " and all after it") +
                                           ": " + run.fault + "\nlog:\n" + run.log + "journal:\n" + run.journal);
    EXPECT_EQ(foreignException, "");
    EXPECT_TRUE(!run.threw || what == What::Allocation) << "an exception without a failing allocation";
    if (n != 0) {
        EXPECT_EQ(heap.LiveAllocations(), 0u) << "C++ blocks kept";
    }
    m_test.Audit();
    sweep.check(run);
    return run.faulted;
}

void SweepRuns::RunUntilNothingFails(const Sweep& sweep, What what, FaultMode mode) {
    for (unsigned n = 1; n <= sweep.limit; n += sweep.step) {
        if (!RunOnce(sweep, what, n, mode)) {
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
    RunOnce(sweep, What::Call, 0, FaultMode::Once); // what is made once per process is made here
    if (::testing::Test::HasFailure()) {
        return;
    }
    for (const What what : {What::Call, What::Allocation}) {
        for (const FaultMode mode : {FaultMode::Once, FaultMode::FromThenOn}) {
            RunUntilNothingFails(sweep, what, mode);
        }
    }
}

} // namespace harness
