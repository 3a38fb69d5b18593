// The disk paths, with each platform call and allocation failing on the way to them.
#include "DiskFixture.h"
#include "FaultSweep.h"

using namespace harness;

namespace {

const char* const Devices[] = {"F:", "Disk1Partition2", "nothing", "Disk0Partition9"};

// Callers of functions with C linkage know no exceptions: one that comes out is a result that no sweep expects.
template <typename Call> std::string WithoutException(const Call& call) {
    bool result = false;
    try {
        result = call();
    } catch (...) {
        return "exception";
    }
    return result ? "true" : "false";
}

class DiskSweep : public ClusterTest {
protected:
    DiskSweep() : volumes(Platform()) {
        AddKnownVolumes(volumes);
    }

    // Sweeps an operation on the opened disk. With a fault the result is one of `faulted`, or the good one.
    void SweepDisk(const std::function<std::string(HRESOURCE)>& operation, const std::string& good,
                   std::vector<std::string> faulted) {
        faulted.push_back("not open");
        faulted.push_back(good);
        Sweep sweep;
        sweep.prepare = [this] {
            Load(GivenCluster()
                     .Node("NODE-A")
                     .Node("NODE-B")
                     .Group("EVS1", "NODE-A")
                     .Disk("Disk", std::vector<std::string>(std::begin(Devices), std::end(Devices))));
        };
        sweep.body = [&] {
            CCluster cluster;
            CClusterResource disk;
            if (!cluster.OpenByLPC() || !cluster.OpenResourceByName(disk, L"Disk")) {
                return std::string("not open");
            }
            return operation(disk.GetResourceHandle());
        };
        sweep.check = [&](const SweepRun& run) {
            EXPECT_EQ(volumes.LibrariesHeld(), 0) << run.fault;
            if (!run.faulted) {
                EXPECT_EQ(run.result, good);
            } else if (!run.threw) { // in the test's own code
                EXPECT_THAT(faulted, ::testing::Contains(run.result)) << run.fault;
            }
        };
        FaultSweep(*this, sweep);
        EventSweep(*this, sweep);
    }

    VolumeManager volumes;
};

TEST_F(DiskSweep, GetDiskLettersFromResource) {
    SweepDisk(
        [](HRESOURCE disk) {
            Paths paths{L"before"};
            const std::string result = WithoutException([&] { return ::GetDiskLettersFromResource(disk, paths); });
            return result + Spaced(paths);
        },
        "true before F:\\ G:\\ H:\\Data\\",
        {"false before", "true before F:\\", "true before F:\\ G:\\", "true before F:\\ H:\\Data\\"});
}

TEST_F(DiskSweep, GetDiskLetterFromResource) {
    SweepDisk(
        [](HRESOURCE disk) {
            Guarded<wchar_t, 8> path;
            const std::string result =
                WithoutException([&] { return ::GetDiskLetterFromResource(disk, path.get(), 8); });
            if (!path.GuardsIntact()) {
                return std::string("overrun");
            }
            if (result == "true") {
                return Utf8(path.get());
            }
            return path.Untouched(0) && path.Untouched(7) ? result : std::string("half");
        },
        "F:\\", {"false"});
}

} // namespace
