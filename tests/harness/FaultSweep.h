// Runs an operation again and again, each time with another failure in its way, until a run meets no failure any more:
// the 1st, 2nd, ... platform call fails, once or from then on; and the same for the memory allocations. After each run:
// no exception but std::bad_alloc from a failed allocation, nothing left behind (the fixture's audit), no C++ block
// kept, and `check` holds.
//
// EventSweep does the same with something that befalls the cluster just before the 1st, 2nd, ... call of its API.
//
// Failing calls take turns with several codes. With the environment variable CLUSUTIL_SWEEP, as ./dev sweep sets it,
// every call and allocation fails whatever the step is, each call with every one of the codes, and what was done is
// printed: "swept: RUNS runs, FAILURES failures".
//
//     FaultSweep(*this, {
//         [&] { Load(model); },
//         [&] { CCluster cluster; return std::string(cluster.OpenByLPC() ? "true" : "false"); },
//         [&](const SweepRun& run) { EXPECT_THAT(run.result, run.faulted ? AnyOf("true", "false") : AnyOf("true"));
//         }});
#ifndef HARNESS_FAULTSWEEP_H
#define HARNESS_FAULTSWEEP_H

#include "ClusterTest.h"

#include <functional>
#include <string>
#include <vector>

namespace harness {

struct SweepRun {
    std::string result; // what the operation gave; empty when it threw
    std::string fault;  // what failed, or befell the cluster
    DWORD code;         // that a failing call gives; of a lost cluster that of its open handles
    bool faulted;       // false: nothing failed or happened, only the good result is right
    bool threw;         // std::bad_alloc
    bool isEvent;       // something befell the cluster: states in its model may come from that
    std::string log;
    std::string journal;
};

struct Sweep {
    std::function<void()> prepare;
    // The operation, the making and the end of its objects included. It keeps nothing beyond its return.
    std::function<std::string()> body;
    std::function<void(const SweepRun&)> check;
    unsigned limit = 1000;
    unsigned step = 1; // of long operations only the 1st, (1 + step)th, (1 + 2 * step)th ... call and allocation fails
    bool callsNothing = false; // asks nothing of the platform: only memory can be short
};

// What failing calls give: access is denied, memory or disk is full, the cluster does not answer.
const std::vector<DWORD>& CodesOfFailingCalls();

// Whether all of it is swept.
bool IsWholeSweep();

// For a sweep that runs on its own: in a whole one its runs, and how many of them met a failure, are printed.
void TellSwept(unsigned long runs, unsigned long failures);

// One of ClusSimHappen's events: {"move", "EVS1", "NODE-B"}.
struct SweepEvent {
    const char* event;
    const char* name;
    const char* node;
};

// On every node, and every resource goes offline with it.
const SweepEvent ServiceStops = {"quorum-loss", "", ""};
// It was started anew: those that are open are good for nothing but to be closed.
const SweepEvent HandlesGoStale = {"handles-stale", "", ""};

// What EventSweep brings about by itself: the service stops, the handles go stale, and the group EVS1 moves to NODE-B.
extern const std::vector<SweepEvent> SweepEvents;

// Something that happens while an operation is under way.
struct Befalling {
    std::string what;
    DWORD code = ERROR_SUCCESS; // that open handles give then
    std::function<void(unsigned n)>
        before; // makes it happen just before the n-th step of the next run of the operation
    std::function<bool()> hasHappened;
};

// What FaultSweep does with a fixture.
class SweepRuns {
public:
    explicit SweepRuns(LibraryTest& test) : m_test(test) {
    }
    ~SweepRuns() {
        TellSwept(m_runs, m_failures);
    }
    SweepRuns(const SweepRuns&) = delete;
    SweepRuns& operator=(const SweepRuns&) = delete;
    void Run(const Sweep& sweep);
    static void Run(ClusterTest& test, const Sweep& sweep, const SweepEvent& event);
    // Before the 1st, 2nd, ... step, until the operation has ended before it happens.
    static void Run(LibraryTest& test, const Sweep& sweep, const Befalling& befalling);

private:
    enum class What {
        Call,
        Allocation
    };

    // One run with the n-th call or allocation failing; n 0: none. False when nothing failed.
    bool RunOnce(const Sweep& sweep, What what, unsigned n, FaultMode mode, DWORD code);
    // The operation as it was prepared. `described`: what is in its way, once it is done.
    void Operate(const Sweep& sweep, SweepRun& run, const std::function<std::string(SweepRun&)>& describe);
    // The codes are those of the 1st, 2nd, ... step, from the first one again behind the last one.
    void RunUntilNothingFails(const Sweep& sweep, What what, FaultMode mode, const std::vector<DWORD>& codes);

    LibraryTest& m_test;
    unsigned long m_runs = 0;
    unsigned long m_failures = 0;
};

inline void FaultSweep(LibraryTest& test, const Sweep& sweep) {
    SweepRuns(test).Run(sweep);
}

inline void EventSweep(ClusterTest& test, const Sweep& sweep) {
    for (const SweepEvent& event : SweepEvents) {
        SweepRuns::Run(test, sweep, event);
    }
}

} // namespace harness

#endif
