// A simulated cluster of which this computer is NODE-A, for members that are called on many threads at once. The taps
// of the other fixtures are for one thread.
#ifndef THREADEDCLUSTER_H
#define THREADEDCLUSTER_H

#include "AtOnce.h"
#include "ServerFixture.h"
#include "ThreadedRegistry.h"

namespace harness {

class ThreadedCluster : public ::testing::Test {
protected:
    explicit ThreadedCluster(const ModelBuilder& model) {
        m_simulator.LoadModel(model.Json());
        m_registry.SetNumber(ProductKey, L"IsCluster", 1);
    }
    ~ThreadedCluster() override { // no handle is left open, none was used that was not
        for (const char* kind : {"cluster", "resource", "group", "node", "enum"}) {
            EXPECT_EQ(m_simulator.OpenHandles(kind), 0u) << kind;
        }
        EXPECT_EQ(m_simulator.BadHandleCalls(), 0u);
    }

    Simulator m_simulator;
    ThreadedRegistry m_registry;
    LogCounter m_log;

private:
    ImportPatch<BOOL(LPWSTR, LPDWORD), struct ThreadedClusterNameTag> m_name{
        FindImports(LibraryModule(), "kernel32.dll", "GetComputerNameW"), [](LPWSTR text, LPDWORD cch) -> BOOL {
            lstrcpyW(text, L"NODE-A");
            *cch = 6;
            return TRUE;
        }};
};

} // namespace harness

#endif
