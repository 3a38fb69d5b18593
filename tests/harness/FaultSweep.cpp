#include "FaultSweep.h"

#include <cstdio>
#include <cstring>
#include <new>

namespace harness {

namespace {

// What calls on open handles give then.
DWORD CodeAfter(const SweepEvent& event) {
    const std::string name = event.event;
    return name == ServiceStops.event     ? RPC_S_SERVER_UNAVAILABLE
           : name == HandlesGoStale.event ? ERROR_INVALID_HANDLE
                                          : ERROR_SUCCESS;
}

} // namespace

const std::vector<SweepEvent> SweepEvents = {ServiceStops, HandlesGoStale, {"move", "EVS1", "NODE-B"}};

const std::vector<DWORD>& CodesOfFailingCalls() {
    static const std::vector<DWORD> codes = {ERROR_ACCESS_DENIED, ERROR_NOT_ENOUGH_MEMORY, RPC_S_SERVER_UNAVAILABLE,
                                             ERROR_DISK_FULL};
    return codes;
}

bool IsWholeSweep() {
    return GetEnvironmentVariableW(L"CLUSUTIL_SWEEP", nullptr, 0) != 0;
}

void TellSwept(unsigned long runs, unsigned long failures) {
    if (IsWholeSweep()) {
        std::printf("swept: %lu runs, %lu failures\n", runs, failures);
        std::fflush(stdout);
    }
}

void SweepRuns::Operate(const Sweep& sweep, SweepRun& run, const std::function<std::string(SweepRun&)>& describe) {
    HeapTap& heap = m_test.Heap();
    run.threw = false;
    run.isEvent = false;
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
    const std::string described = describe(run);
    run.log = m_test.Log().TakeLog();
    run.journal = m_test.Platform().TakeJournal();
    m_test.Platform().FailNthCall(0, FaultMode::Once, 0);
    heap.FailAllocation(0, FaultMode::Once);

    const ::testing::ScopedTrace trace(__FILE__, __LINE__,
                                       described + "\nlog:\n" + run.log + "journal:\n" + run.journal);
    EXPECT_EQ(foreignException, "");
    if (!described.empty()) {
        EXPECT_EQ(heap.LiveAllocations(), 0u) << "C++ blocks kept";
    }
    m_test.Audit();
    sweep.check(run);
}

bool SweepRuns::RunOnce(const Sweep& sweep, What what, unsigned n, FaultMode mode, DWORD code) {
    PlatformTap& platform = m_test.Platform();
    HeapTap& heap = m_test.Heap();

    sweep.prepare();
    m_test.Forget();
    platform.FailNthCall(what == What::Call ? n : 0, mode, code);
    heap.FailAllocation(what == What::Allocation ? n : 0, mode);

    SweepRun done;
    Operate(sweep, done, [&](SweepRun& run) {
        run.faulted = what == What::Call ? platform.Fired() : heap.Fired();
        run.fault = !run.faulted ? "nothing" : what == What::Call ? platform.FiredCall() : std::string(heap.FiredIn());
        run.code = what == What::Call ? code : ERROR_SUCCESS;
        EXPECT_TRUE(!run.threw || what == What::Allocation) << "an exception without a failing allocation";
        return n == 0 ? std::string()
                      : "failing " + std::string(what == What::Call ? "call " : "allocation ") + std::to_string(n) +
                            (mode == FaultMode::Once ? "" : " and all after it") + ": " + run.fault +
                            (what == What::Call ? ", code " + std::to_string(code) : "");
    });
    ++m_runs;
    m_failures += done.faulted ? 1 : 0;
    return done.faulted;
}

void SweepRuns::RunUntilNothingFails(const Sweep& sweep, What what, FaultMode mode, const std::vector<DWORD>& codes) {
    const unsigned step = IsWholeSweep() ? 1 : sweep.step;
    std::size_t turn = 0;
    for (unsigned n = 1; n <= sweep.limit; n += step) {
        if (!RunOnce(sweep, what, n, mode, codes[turn++ % codes.size()])) {
            // An operation may do without memory.
            EXPECT_TRUE(what == What::Allocation || (n > 1) != sweep.callsNothing)
                << (n > 1 ? "the operation made a call" : "the operation made no call that could fail");
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
        if (IsWholeSweep()) {
            for (const DWORD code : CodesOfFailingCalls()) {
                RunUntilNothingFails(sweep, What::Call, mode, {code});
            }
        } else {
            RunUntilNothingFails(sweep, What::Call, mode, CodesOfFailingCalls());
        }
        RunUntilNothingFails(sweep, What::Allocation, mode, {ERROR_SUCCESS});
    }
}

void SweepRuns::Run(ClusterTest& test, const Sweep& sweep, const SweepEvent& event) {
    sweep.prepare();
    char error[256] = "";
    const unsigned long code = test.Cluster().Happen(event.event, event.name, event.node, error, sizeof(error));
    ASSERT_TRUE(code == ERROR_SUCCESS || code == ERROR_IO_PENDING) << event.event << ": " << code << " " << error;

    std::string text = std::string(event.event) + " " + event.name + " " + event.node;
    text.erase(text.find_last_not_of(' ') + 1);
    unsigned step = 0;
    Run(test, sweep,
        {text, CodeAfter(event),
         [&](unsigned n) {
             step = n;
             test.AddFault("*#" + std::to_string(n) + "=event:\"" + text + "\"");
         },
         [&] {
             const bool happened = test.Cluster().Journal().find("\"event\": ") != std::string::npos;
             EXPECT_EQ(happened, test.Cluster().CallCount(nullptr) >= step);
             return happened;
         }});
}

void SweepRuns::Run(LibraryTest& test, const Sweep& sweep, const Befalling& befalling) {
    SweepRuns runs(test);
    bool happened = true;
    for (unsigned n = 1; happened && !::testing::Test::HasFailure(); ++n) {
        ASSERT_LE(n, sweep.limit);
        sweep.prepare();
        befalling.before(n);
        test.Forget();
        SweepRun done;
        ++runs.m_runs;
        runs.Operate(sweep, done, [&](SweepRun& run) {
            happened = befalling.hasHappened();
            run.faulted = happened;
            run.isEvent = happened;
            run.fault = happened ? befalling.what : "nothing";
            run.code = happened ? befalling.code : ERROR_SUCCESS;
            EXPECT_FALSE(run.threw);
            return befalling.what + " before step " + std::to_string(n);
        });
        runs.m_failures += happened ? 1 : 0;
    }
}

} // namespace harness
