// The operations that ask nothing of the platform, with each allocation failing.
#include "FaultSweep.h"
#include "HostFixture.h"

#include "clus_VeritasCluster.h"

using namespace harness;

namespace {

class MemorySweep : public HostTest {
protected:
    void SweepMemory(const std::function<std::string()>& operation, const std::string& good) {
        Sweep sweep;
        sweep.prepare = [] {};
        sweep.body = operation;
        sweep.check = [&](const SweepRun& run) { EXPECT_EQ(run.result, run.threw ? "" : good) << run.fault; };
        sweep.callsNothing = true;
        FaultSweep(*this, sweep);
    }
};

TEST_F(MemorySweep, GetProductRegistryKey) {
    const std::string key = Utf8(CVirtualServerUtil::GetProductRegistryKey()); // read once per process
    SweepMemory([] { return Utf8(CVirtualServerUtil::GetProductRegistryKey()); }, key);
}

TEST_F(MemorySweep, ConcatCCRDataPath) {
    SweepMemory(
        [] {
            std::wstring path;
            CVirtualServerUtil::ConcatCCRDataPath(L"D:\\Data", L"EVS1", path);
            return Utf8(path);
        },
        "D:\\Data\\CCRVSDB\\EVS1");
}

TEST_F(MemorySweep, CVeritasVirtualServerInfo) {
    SweepMemory(
        [] {
            const CVeritasVirtualServerInfo first(L"a resource of MSExchangeIS", L"a group with a long name");
            const CVeritasVirtualServerInfo second(first);
            CVeritasVirtualServerInfo third;
            third = second;
            third.SetGroupAndKOVAResourceName(L"another long name");
            return Utf8(third.sExchangeResName + L", " + second.sGroupName + L", " + third.sQAVMonitorResName);
        },
        "a resource of MSExchangeIS, a group with a long name, another long name-QAV_Monitor");
}

} // namespace
