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

void GivenMountPaths(ClusterDisk& disk, const Paths& paths) {
    disk.volumes.Add(L"\\\\?\\GLOBALROOT\\device\\Harddisk1\\Partition2\\", L"\\\\?\\Volume{12}\\", paths);
}

// Partitions that are skipped
// ---------------------------------------------------------------------------------------------------------------------

// What is missing on the way from partition 2 of disk 1 to a path: the lines between the volume's name and the end of
// the translation, and the calls.
struct LostVolume {
    const char* name;
    const char* failingCall; // empty: none fails
    DWORD code;
    Paths mountPaths;
    Texts lines;
    Texts calls;
    bool haveVolume = true;
    bool hasPathNames = true;

    friend void PrintTo(const LostVolume& row, std::ostream* out) {
        *out << row.name;
    }
};

const Texts AllCalls = {Probe, Read, AskVolume, LoadKernel, FindFunction, AskPaths, FreeKernel};

const LostVolume LostVolumes[] = {
    {"APartitionWithoutAVolumeIsSkippedInSilence",
     "GetVolumeNameForVolumeMountPointW",
     ERROR_INVALID_NAME,
     {L"G:\\"},
     {},
     {Probe, Read, std::string(AskVolume) + "=123"},
     false},
    {"ALibraryThatDoesNotLoadIsLogged",
     "LoadLibraryW",
     ERROR_MOD_NOT_FOUND,
     {L"G:\\"},
     {"W Load kernel32.dll failed."},
     {Probe, Read, AskVolume, std::string(LoadKernel) + "=126"}},
    {"ASystemWithoutTheFunctionIsLogged",
     "",
     0,
     {L"G:\\"},
     {"W GetProcAddress GetVolumePathNamesForVolumeNameW failed. The system doesn't support this function"},
     {Probe, Read, AskVolume, LoadKernel, std::string(FindFunction) + "=127", FreeKernel},
     true,
     false},
    {"AFailingFunctionIsLoggedWithItsCode",
     "GetVolumePathNamesForVolumeNameW",
     ERROR_NOT_READY,
     {L"G:\\"},
     {"W GetVolumePathNamesForVolumeName Error, code:21"},
     {Probe, Read, AskVolume, LoadKernel, FindFunction, std::string(AskPaths) + "=21", FreeKernel}},
    {"AVolumeWithoutMountPathsIsLogged", "", 0, {}, {"W CheckPathFormat for path  fail, return false."}, AllCalls},
    {"AMountPathThatIsNoneIsLogged",
     "",
     0,
     {L"no path %d", L"G:\\"},
     {"W CheckPathFormat for path no path %d fail, return false."},
     AllCalls},
    {"MountPathsBeyondTheBufferAreAFailure",
     "",
     0,
     {L"C:\\" + std::wstring(251, L'm') + L"\\"},
     {"W GetVolumePathNamesForVolumeName Error, code:234"},
     {Probe, Read, AskVolume, LoadKernel, FindFunction, std::string(AskPaths) + "=234", FreeKernel}}};

class DiskLostVolume : public ClusterTest, public ::testing::WithParamInterface<LostVolume> {
protected:
    ClusterDisk disk{*this};
};

TEST_P(DiskLostVolume, SkipsThePartition) {
    const LostVolume& row = GetParam();
    GivenMountPaths(disk, row.mountPaths);
    disk.volumes.hasPathNames = row.hasPathNames;
    if (*row.failingCall) {
        Platform().FailCall(row.failingCall, row.code);
    }
    EXPECT_EQ(disk.PathsOf({"Disk1Partition2"}), Paths{});
    const Texts start = {EnterLetters, "I ParseDeviceNamefromPartitionInfo_(), got device name: Disk1Partition2",
                         EnterTranslation, "I Translating device name Disk1Partition2\\.",
                         "I device name Disk1Partition2\\ is Disk?Partition? format."};
    const Texts volume = row.haveVolume ? Texts{"I VolumeName: \\\\?\\Volume{12}\\"} : Texts();
    EXPECT_EQ(TakeLog(), Lines(start + volume + row.lines +
                               Texts{LeaveTranslation, "W translation fail, skip disk", LeaveLetters}));
    EXPECT_EQ(TakeJournal(), Lines(row.calls));
}

INSTANTIATE_TEST_SUITE_P(Without, DiskLostVolume, ::testing::ValuesIn(LostVolumes), RowName());

// Partitions that have a path
// ---------------------------------------------------------------------------------------------------------------------

using DiskVolume = DiskTest;

TEST_F(DiskVolume, OnlyTheFirstMountPathCounts) {
    GivenMountPaths(disk, {L"C:\\Mount\\Store\\", L"G:\\", L"no path"});
    EXPECT_EQ(disk.PathsOf({"Disk1Partition2"}), Paths{L"C:\\Mount\\Store\\"});
}

// The list of 256 characters, both terminators included, is the longest that fits.
TEST_F(DiskVolume, MountPathsFillTheBuffer) {
    const std::wstring path = L"C:\\" + std::wstring(250, L'm') + L"\\";
    ASSERT_EQ(path.size(), 254u);
    GivenMountPaths(disk, {path});
    EXPECT_EQ(disk.PathsOf({"Disk1Partition2"}), Paths{path});
}

TEST_F(DiskVolume, EveryTranslationLoadsAndFreesTheLibrary) {
    EXPECT_EQ(disk.PathsOf({"Disk1Partition2", "Disk0Partition9", "Disk1Partition2"}),
              (Paths{L"G:\\", L"H:\\Data\\", L"G:\\"}));
    EXPECT_EQ(disk.volumes.Loads(), 3);
    EXPECT_EQ(disk.volumes.LibrariesHeld(), 0);
}

TEST_F(DiskVolume, TheTranslationIsLeftWhenItsLibraryIsFree) {
    std::function<BOOL(HMODULE)> next;
    std::string log;
    const auto patch = PatchImport(kernel32, FreeLibrary, [&](HMODULE module) -> BOOL {
        log = TakeLog();
        return next(module);
    });
    next = [&](HMODULE module) { return patch.Next(module); };
    EXPECT_EQ(disk.PathsOf({"Disk1Partition2"}), Paths{L"G:\\"});
    EXPECT_THAT(log, ::testing::EndsWith("I VolumeName: \\\\?\\Volume{12}\\\n"));
    EXPECT_EQ(TakeLog(), Lines({LeaveTranslation, "I device name translted to: G:\\", LeaveLetters}));
}

TEST_F(DiskVolume, APathNeedsNoLibrary) {
    EXPECT_EQ(disk.PathsOf({"F:", "G:\\Store"}), (Paths{L"F:\\", L"G:\\Store\\"}));
    EXPECT_EQ(disk.volumes.Loads(), 0);
}

// Texts without terminator
// ---------------------------------------------------------------------------------------------------------------------

TEST_F(DiskTest, AVolumeNameWithoutTerminatorEndsWithItsRoom) {
    const auto patch = PatchImport(kernel32, GetVolumeNameForVolumeMountPointW, [](LPCWSTR, LPWSTR volume, DWORD cch) {
        std::fill_n(volume, cch, L'x');
        return TRUE;
    });
    EXPECT_EQ(disk.PathsOf({"Disk1Partition2"}), Paths{});
    EXPECT_THAT(TakeLog(), ::testing::HasSubstr("I VolumeName: " + std::string(255, 'x') + "\n"));
}

TEST_F(DiskTest, AMountPathWithoutTerminatorEndsWithItsRoom) {
    const auto patch = PatchImport(kernel32, GetProcAddress, [](HMODULE, LPCSTR) {
        BOOL(WINAPI* const fill)
        (LPCWSTR, LPWCH, DWORD, PDWORD) = [](LPCWSTR, LPWCH paths, DWORD cch, PDWORD) {
            std::fill_n(paths, cch, L'x');
            return TRUE;
        };
        return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(fill));
    });
    EXPECT_EQ(disk.PathsOf({"Disk1Partition2"}), Paths{});
    EXPECT_THAT(TakeLog(), ::testing::HasSubstr("W CheckPathFormat for path " + std::string(255, 'x') + " fail"));
}

} // namespace
