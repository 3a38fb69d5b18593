// Which device names of partitions give paths.
#include "DiskFixture.h"

using namespace harness;

namespace {

using DiskDeviceName = DiskTest;

TEST_F(DiskDeviceName, ADriveBecomesItsRoot) {
    EXPECT_EQ(disk.PathsOf({"F:"}), Paths{L"F:\\"});
    EXPECT_EQ(TakeLog(), Lines({EnterLetters, "I ParseDeviceNamefromPartitionInfo_(), got device name: F:",
                                EnterTranslation, "I sDeviceName F:\\ is a valid path, skip translation.",
                                LeaveTranslation, "I device name translted to: F:\\", LeaveLetters}));
    EXPECT_EQ(TakeJournal(), Lines({"ClusterResourceControl(Disk,STORAGE_GET_DISK_INFO,0)=234",
                                    "ClusterResourceControl(Disk,STORAGE_GET_DISK_INFO,1168)"}));
}

TEST_F(DiskDeviceName, ADriveRootStaysAsItIs) {
    EXPECT_EQ(disk.PathsOf({"F:\\"}), Paths{L"F:\\"});
    EXPECT_EQ(TakeLog(), Lines({EnterLetters, "I ParseDeviceNamefromPartitionInfo_(), got device name: F:\\",
                                EnterTranslation, "I sDeviceName F:\\ is a valid path, skip translation.",
                                LeaveTranslation, "I device name translted to: F:\\", LeaveLetters}));
}

TEST_F(DiskDeviceName, AMountFolderIsAPath) {
    EXPECT_EQ(disk.PathsOf({"F:\\Mail Data"}), Paths{L"F:\\Mail Data\\"});
    EXPECT_EQ(disk.PathsOf({"F:\\Mail Data\\"}), Paths{L"F:\\Mail Data\\"});
    EXPECT_EQ(disk.volumes.Loads(), 0);
}

TEST_F(DiskDeviceName, DiskAndPartitionLeadToTheFirstMountPathOfTheVolume) {
    EXPECT_EQ(disk.PathsOf({"Disk1Partition2"}), Paths{L"G:\\"});
    EXPECT_EQ(TakeLog(),
              Lines({EnterLetters, "I ParseDeviceNamefromPartitionInfo_(), got device name: Disk1Partition2",
                     EnterTranslation, "I Translating device name Disk1Partition2\\.",
                     "I device name Disk1Partition2\\ is Disk?Partition? format.", "I VolumeName: \\\\?\\Volume{12}\\",
                     LeaveTranslation, "I device name translted to: G:\\", LeaveLetters}));
    EXPECT_EQ(TakeJournal(), Lines({"ClusterResourceControl(Disk,STORAGE_GET_DISK_INFO,0)=234",
                                    "ClusterResourceControl(Disk,STORAGE_GET_DISK_INFO,1168)",
                                    "GetVolumeNameForVolumeMountPointW(\\\\?\\GLOBALROOT\\device\\Harddisk1\\"
                                    "Partition2\\)",
                                    "LoadLibraryW(kernel32.dll)", "GetProcAddress(GetVolumePathNamesForVolumeNameW)",
                                    "GetVolumePathNamesForVolumeNameW(\\\\?\\Volume{12}\\)", "FreeLibrary()"}));
}

TEST_F(DiskDeviceName, DiskAndPartitionMayEndInABackslash) {
    EXPECT_EQ(disk.PathsOf({"Disk1Partition2\\"}), Paths{L"G:\\"});
    EXPECT_EQ(TakeLog(),
              Lines({EnterLetters, "I ParseDeviceNamefromPartitionInfo_(), got device name: Disk1Partition2\\",
                     EnterTranslation, "I Translating device name Disk1Partition2\\.",
                     "I device name Disk1Partition2\\ is Disk?Partition? format.", "I VolumeName: \\\\?\\Volume{12}\\",
                     LeaveTranslation, "I device name translted to: G:\\", LeaveLetters}));
}

TEST_F(DiskDeviceName, EveryDigitIsPutInItsPlace) {
    for (char d = '0'; d <= '9'; ++d) {
        for (char p = '0'; p <= '9'; ++p) {
            const std::wstring path{wchar_t(L'A' + (d - '0')), L':', L'\\', wchar_t(p), L'\\'};
            disk.volumes.Add(std::wstring(L"\\\\?\\GLOBALROOT\\device\\Harddisk") + wchar_t(d) + L"\\Partition" +
                                 wchar_t(p) + L"\\",
                             std::wstring(L"\\\\?\\Volume{") + wchar_t(d) + wchar_t(p) + L"}\\", {path});
            EXPECT_EQ(disk.PathsOf({std::string("Disk") + d + "Partition" + p}), Paths{path}) << d << p;
        }
    }
}

// All names that are neither a path nor a partition end the same way, without the volume manager being asked.
TEST_F(DiskDeviceName, AnyOtherNameIsSkipped) {
    for (const std::string name : {"Disk12Partition1",
                                   "Disk1Partition12",
                                   "DiskPartition1",
                                   "Disk1Partition",
                                   "disk1partition1",
                                   "DISK1PARTITION1",
                                   "Disk1partition1",
                                   " Disk1Partition1",
                                   "Disk1Partition1 ",
                                   "XDisk1Partition1",
                                   "Disk1Partition1\\\\",
                                   "Disk1Partition1\\Data",
                                   "Disk1Partition1\\Data\\",
                                   "DiskAPartition1",
                                   "Disk1PartitionA",
                                   "Disk1 Partition1",
                                   "Disk-1Partition1",
                                   "\\Device\\Harddisk1\\Partition1",
                                   "F",
                                   "1:",
                                   "\\\\?\\GLOBALROOT\\device\\Harddisk1\\Partition1",
                                   "Harddisk1Partition1"}) {
        EXPECT_EQ(disk.PathsOf({name}), Paths{}) << name;
        const std::string withBackslash = name.back() == '\\' ? name : name + "\\";
        EXPECT_EQ(TakeLog(), Lines({EnterLetters, "I ParseDeviceNamefromPartitionInfo_(), got device name: " + name,
                                    EnterTranslation, "I Translating device name " + withBackslash + ".",
                                    LeaveTranslation, "W translation fail, skip disk", LeaveLetters}));
        EXPECT_EQ(TakeJournal(), Lines({"ClusterResourceControl(Disk,STORAGE_GET_DISK_INFO,0)=234",
                                        "ClusterResourceControl(Disk,STORAGE_GET_DISK_INFO,1168)"}));
    }
}

TEST_F(DiskDeviceName, AnEmptyNameIsSkippedWithoutABackslash) {
    EXPECT_EQ(disk.PathsOf({""}), Paths{});
    EXPECT_EQ(TakeLog(),
              Lines({EnterLetters, "I ParseDeviceNamefromPartitionInfo_(), got device name: ", EnterTranslation,
                     "I Translating device name .", LeaveTranslation, "W translation fail, skip disk", LeaveLetters}));
}

TEST_F(DiskDeviceName, FormatCharactersAreText) {
    EXPECT_EQ(disk.PathsOf({"F:\\100%s%n"}), Paths{L"F:\\100%s%n\\"});
    EXPECT_EQ(TakeLog(), Lines({EnterLetters, "I ParseDeviceNamefromPartitionInfo_(), got device name: F:\\100%s%n",
                                EnterTranslation, "I sDeviceName F:\\100%s%n\\ is a valid path, skip translation.",
                                LeaveTranslation, "I device name translted to: F:\\100%s%n\\", LeaveLetters}));
}

} // namespace
