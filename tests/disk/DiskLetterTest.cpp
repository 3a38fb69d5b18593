// The first path of a disk in a caller's buffer.
#include "DiskFixture.h"

using namespace harness;

namespace {

class DiskLetter : public ClusterTest {
protected:
    bool Letter(Guarded<wchar_t, 8>& buffer, DWORD cch) {
        const bool result = disk.letter(disk.GetResourceHandle(), buffer.get(), cch);
        EXPECT_TRUE(buffer.GuardsIntact());
        for (DWORD i = cch; i < 8; ++i) {
            EXPECT_TRUE(buffer.Untouched(i)) << i;
        }
        return result;
    }

    ClusterDisk disk{*this};
};

const wchar_t Poison = 0xcccc;

TEST(DiskPathExports, StandUnderTheirPlainNames) {
    EXPECT_NE(PlainExport<GetDiskLetters>("GetDiskLettersFromResource"), nullptr);
    EXPECT_NE(PlainExport<GetDiskLetter>("GetDiskLetterFromResource"), nullptr);
    EXPECT_EQ(PlainExport<GetDiskLetter>("GetDiskLettersFromResources"), nullptr);
    EXPECT_EQ(PlainExport<GetDiskLetters>("GetDiskLettersFromResource"), &::GetDiskLettersFromResource);
    EXPECT_EQ(PlainExport<GetDiskLetter>("GetDiskLetterFromResource"), &::GetDiskLetterFromResource);
}

TEST_F(DiskLetter, IsTheFirstPath) {
    disk.Load({"F:", "G:"});
    Guarded<wchar_t, 8> buffer;
    EXPECT_TRUE(Letter(buffer, 8));
    EXPECT_STREQ(buffer.get(), L"F:\\");
    EXPECT_EQ(buffer[7], L'\0');
    EXPECT_EQ(TakeLog(), Lines({"> GetDiskLetterFromResource", EnterLetters,
                                "I ParseDeviceNamefromPartitionInfo_(), got device name: F:", EnterTranslation,
                                "I sDeviceName F:\\ is a valid path, skip translation.", LeaveTranslation,
                                "I device name translted to: F:\\",
                                "I ParseDeviceNamefromPartitionInfo_(), got device name: G:", EnterTranslation,
                                "I sDeviceName G:\\ is a valid path, skip translation.", LeaveTranslation,
                                "I device name translted to: G:\\", LeaveLetters,
                                "I GetDiskLettersFromResource, got disk letter F:\\"}));
    EXPECT_EQ(TakeJournal(), Lines({"ClusterResourceControl(Disk,STORAGE_GET_DISK_INFO,0)=234",
                                    "ClusterResourceControl(Disk,STORAGE_GET_DISK_INFO,2296)"}));
}

TEST_F(DiskLetter, IsTheFirstPathThatCouldBeTranslated) {
    disk.Load({"Disk12Partition1", "Disk1Partition2", "F:"});
    Guarded<wchar_t, 8> buffer;
    EXPECT_TRUE(Letter(buffer, 8));
    EXPECT_STREQ(buffer.get(), L"G:\\");
}

TEST_F(DiskLetter, FitsExactly) {
    disk.Load({"F:"});
    Guarded<wchar_t, 8> buffer;
    EXPECT_TRUE(Letter(buffer, 4));
    EXPECT_STREQ(buffer.get(), L"F:\\");
}

TEST_F(DiskLetter, IsCutWhenTheBufferIsShort) {
    disk.Load({"F:"});
    const std::vector<std::wstring> cut{L"", L"F", L"F:"};
    for (DWORD cch = 1; cch <= 3; ++cch) {
        Guarded<wchar_t, 8> buffer;
        Forget();
        EXPECT_TRUE(Letter(buffer, cch)) << cch;
        EXPECT_STREQ(buffer.get(), cut[cch - 1].c_str());
        EXPECT_EQ(TakeLog(), Lines({"> GetDiskLetterFromResource", EnterLetters,
                                    "I ParseDeviceNamefromPartitionInfo_(), got device name: F:", EnterTranslation,
                                    "I sDeviceName F:\\ is a valid path, skip translation.", LeaveTranslation,
                                    "I device name translted to: F:\\", LeaveLetters,
                                    "I GetDiskLettersFromResource, got disk letter " + Utf8(cut[cch - 1])}));
    }
}

TEST_F(DiskLetter, ABufferWithoutRoomStaysAsItIs) {
    disk.Load({"F:"});
    Guarded<wchar_t, 8> buffer;
    EXPECT_FALSE(Letter(buffer, 0));
    EXPECT_FALSE(disk.letter(disk.GetResourceHandle(), nullptr, 0));
}

TEST_F(DiskLetter, ADiskWithoutTranslatablePartitionGivesNone) {
    disk.Load({"Disk12Partition1"});
    Guarded<wchar_t, 8> buffer;
    EXPECT_FALSE(Letter(buffer, 8));
    EXPECT_EQ(buffer[0], Poison);
    EXPECT_TRUE(buffer.Untouched(0) && buffer.Untouched(7));
    EXPECT_EQ(TakeLog(), Lines({"> GetDiskLetterFromResource", EnterLetters,
                                "I ParseDeviceNamefromPartitionInfo_(), got device name: Disk12Partition1",
                                EnterTranslation, "I Translating device name Disk12Partition1\\.", LeaveTranslation,
                                "W translation fail, skip disk", LeaveLetters, "< GetDiskLetterFromResource"}));
}

TEST_F(DiskLetter, ADiskWithoutPartitionGivesNone) {
    disk.Load({});
    Guarded<wchar_t, 8> buffer;
    EXPECT_FALSE(Letter(buffer, 8));
    EXPECT_TRUE(buffer.Untouched(0) && buffer.Untouched(7));
    EXPECT_EQ(TakeLog(),
              Lines({"> GetDiskLetterFromResource", EnterLetters, LeaveLetters, "< GetDiskLetterFromResource"}));
}

TEST_F(DiskLetter, AFailingDiskLeavesTheBufferAsItIs) {
    disk.Load({"F:"});
    Platform().FailCall("ClusterResourceControl", ERROR_NOT_READY);
    Guarded<wchar_t, 8> buffer;
    EXPECT_FALSE(Letter(buffer, 8));
    EXPECT_TRUE(buffer.Untouched(0) && buffer.Untouched(7));
    EXPECT_EQ(
        TakeLog(),
        Lines({"> GetDiskLetterFromResource", EnterLetters, "W ClusterResourceControl, ERROR_MORE_DATA, but got 21",
               "W ClusterResourceControlEx_ error, code: 21", LeaveLetters, "< GetDiskLetterFromResource"}));
}

} // namespace
