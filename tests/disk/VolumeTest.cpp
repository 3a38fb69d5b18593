// From the volume of a partition to its first mount path, and each way not to get there.
#include "DiskFixture.h"

using namespace harness;

namespace {

const char Probe[] = "ClusterResourceControl(Disk,STORAGE_GET_DISK_INFO,0)=234";
const char Read[] = "ClusterResourceControl(Disk,STORAGE_GET_DISK_INFO,1168)";
const char AskVolume[] = "GetVolumeNameForVolumeMountPointW(\\\\?\\GLOBALROOT\\device\\Harddisk1\\Partition2\\)";
const char AskPaths[] = "GetVolumePathNamesForVolumeNameW(\\\\?\\Volume{12}\\)";
const char LoadKernel[] = "LoadLibraryW(kernel32.dll)";
const char FindFunction[] = "GetProcAddress(GetVolumePathNamesForVolumeNameW)";
const char FreeKernel[] = "FreeLibrary()";

class DiskVolume : public DiskTest {
protected:
    // Partition 2 of disk 1 is translated, with these lines between "VolumeName" and the end of the translation.
    void ExpectSkipped(const std::vector<std::string>& lines, bool haveVolume = true) {
        std::vector<std::string> log{EnterLetters,
                                     "I ParseDeviceNamefromPartitionInfo_(), got device name: Disk1Partition2",
                                     EnterTranslation, "I Translating device name Disk1Partition2\\.",
                                     "I device name Disk1Partition2\\ is Disk?Partition? format."};
        if (haveVolume) {
            log.push_back("I VolumeName: \\\\?\\Volume{12}\\");
        }
        log.insert(log.end(), lines.begin(), lines.end());
        log.insert(log.end(), {LeaveTranslation, "W translation fail, skip disk", LeaveLetters});
        EXPECT_EQ(PathsOf({"Disk1Partition2"}), Paths{});
        EXPECT_EQ(TakeLog(), Lines(log));
    }
    void GivenMountPaths(const Paths& paths) {
        volumes.Add(L"\\\\?\\GLOBALROOT\\device\\Harddisk1\\Partition2\\", L"\\\\?\\Volume{12}\\", paths);
    }
};

TEST_F(DiskVolume, APartitionWithoutAVolumeIsSkippedInSilence) {
    Platform().FailCall("GetVolumeNameForVolumeMountPointW", ERROR_INVALID_NAME);
    ExpectSkipped({}, false);
    EXPECT_EQ(TakeJournal(), Lines({Probe, Read, std::string(AskVolume) + "=123"}));
}

TEST_F(DiskVolume, ALibraryThatDoesNotLoadIsLogged) {
    Platform().FailCall("LoadLibraryW", ERROR_MOD_NOT_FOUND);
    ExpectSkipped({"W Load kernel32.dll failed."});
    EXPECT_EQ(TakeJournal(), Lines({Probe, Read, AskVolume, std::string(LoadKernel) + "=126"}));
}

TEST_F(DiskVolume, ASystemWithoutTheFunctionIsLogged) {
    volumes.hasPathNames = false;
    ExpectSkipped(
        {"W GetProcAddress GetVolumePathNamesForVolumeNameW failed. The system doesn't support this function"});
    EXPECT_EQ(TakeJournal(),
              Lines({Probe, Read, AskVolume, LoadKernel, std::string(FindFunction) + "=127", FreeKernel}));
}

TEST_F(DiskVolume, AFailingFunctionIsLoggedWithItsCode) {
    Platform().FailCall("GetVolumePathNamesForVolumeNameW", ERROR_NOT_READY);
    ExpectSkipped({"W GetVolumePathNamesForVolumeName Error, code:21"});
    EXPECT_EQ(TakeJournal(),
              Lines({Probe, Read, AskVolume, LoadKernel, FindFunction, std::string(AskPaths) + "=21", FreeKernel}));
}

TEST_F(DiskVolume, AVolumeWithoutMountPathsIsLogged) {
    GivenMountPaths({});
    ExpectSkipped({"W CheckPathFormat for path  fail, return false."});
    EXPECT_EQ(TakeJournal(), Lines({Probe, Read, AskVolume, LoadKernel, FindFunction, AskPaths, FreeKernel}));
}

TEST_F(DiskVolume, AMountPathThatIsNoneIsLogged) {
    GivenMountPaths({L"no path %d", L"G:\\"});
    ExpectSkipped({"W CheckPathFormat for path no path %d fail, return false."});
}

TEST_F(DiskVolume, OnlyTheFirstMountPathCounts) {
    GivenMountPaths({L"C:\\Mount\\Store\\", L"G:\\", L"no path"});
    EXPECT_EQ(PathsOf({"Disk1Partition2"}), Paths{L"C:\\Mount\\Store\\"});
}

// The list of 256 characters, both terminators included, is the longest that fits.
TEST_F(DiskVolume, MountPathsFillTheBuffer) {
    const std::wstring path = L"C:\\" + std::wstring(250, L'm') + L"\\";
    ASSERT_EQ(path.size(), 254u);
    GivenMountPaths({path});
    EXPECT_EQ(PathsOf({"Disk1Partition2"}), Paths{path});
}

TEST_F(DiskVolume, MountPathsBeyondTheBufferAreAFailure) {
    GivenMountPaths({L"C:\\" + std::wstring(251, L'm') + L"\\"});
    ExpectSkipped({"W GetVolumePathNamesForVolumeName Error, code:234"});
}

TEST_F(DiskVolume, EveryTranslationLoadsAndFreesTheLibrary) {
    EXPECT_EQ(PathsOf({"Disk1Partition2", "Disk0Partition9", "Disk1Partition2"}),
              (Paths{L"G:\\", L"H:\\Data\\", L"G:\\"}));
    EXPECT_EQ(volumes.Loads(), 3);
    EXPECT_EQ(volumes.LibrariesHeld(), 0);
}

TEST_F(DiskVolume, TheTranslationIsLeftWhenItsLibraryIsFree) {
    std::function<BOOL(HMODULE)> next;
    std::string log;
    const auto patch = PatchImport(kernel32, FreeLibrary, [&](HMODULE module) -> BOOL {
        log = TakeLog();
        return next(module);
    });
    next = [&](HMODULE module) { return patch.Next(module); };
    EXPECT_EQ(PathsOf({"Disk1Partition2"}), Paths{L"G:\\"});
    EXPECT_THAT(log, ::testing::EndsWith("I VolumeName: \\\\?\\Volume{12}\\\n"));
    EXPECT_EQ(TakeLog(), Lines({LeaveTranslation, "I device name translted to: G:\\", LeaveLetters}));
}

TEST_F(DiskVolume, APathNeedsNoLibrary) {
    EXPECT_EQ(PathsOf({"F:", "G:\\Store"}), (Paths{L"F:\\", L"G:\\Store\\"}));
    EXPECT_EQ(volumes.Loads(), 0);
}

} // namespace
