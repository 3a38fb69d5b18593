// Runs an operation again and again, each time with another failure in its way, until a run meets no failure any more:
// the 1st, 2nd, ... platform call fails, once or from then on; and the same for the memory allocations. After each run:
// no exception but std::bad_alloc from a failed allocation, nothing left behind (the fixture's audit), no C++ block
// kept, and `check` holds.
//
// With the environment variable CLUSUTIL_SWEEP, as ./dev sweep sets it, every call and allocation fails whatever the
// step is, and each call with every one of several codes.
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

namespace harness {

struct SweepRun {
    std::string result; // what the operation gave; empty when it threw
    std::string fault;  // what failed
    DWORD code;         // that a failing call gives
    bool faulted;       // false: nothing failed, only the good result is right
    bool threw;         // std::bad_alloc
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
};

// What FaultSweep does with a fixture.
class SweepRuns {
public:
    explicit SweepRuns(LibraryTest& test) : m_test(test) {
    }
    void Run(const Sweep& sweep);

private:
    enum class What {
        Call,
        Allocation
    };

    // One run with the n-th call or allocation failing; n 0: none. False when nothing failed.
    bool RunOnce(const Sweep& sweep, What what, unsigned n, FaultMode mode, DWORD code);
    void RunUntilNothingFails(const Sweep& sweep, What what, FaultMode mode, DWORD code);

    LibraryTest& m_test;
};

inline void FaultSweep(LibraryTest& test, const Sweep& sweep) {
    SweepRuns(test).Run(sweep);
}

} // namespace harness

#endif
