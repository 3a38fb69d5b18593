// A Physical Disk resource whose partitions the test chooses, and the two exported functions as callers find them.
#ifndef DISKFIXTURE_H
#define DISKFIXTURE_H

#include "ControlAnswer.h"
#include "VolumeManager.h"

#include <string>
#include <vector>

namespace harness {

typedef std::vector<std::wstring> Paths;
typedef bool (*GetDiskLetters)(HRESOURCE, std::vector<std::wstring>&);
typedef bool (*GetDiskLetter)(HRESOURCE, wchar_t*, DWORD);

// An export of clusutil.dll by its plain name; null when there is none.
template <typename Function> Function PlainExport(const char* name) {
    return reinterpret_cast<Function>(reinterpret_cast<void*>(::GetProcAddress(LibraryModule(), name)));
}

class DiskTest : public OpenClusterTest {
protected:
    DiskTest()
        : volumes(Platform()), letters(PlainExport<GetDiskLetters>("GetDiskLettersFromResource")),
          letter(PlainExport<GetDiskLetter>("GetDiskLetterFromResource")) {
        volumes.Add(L"\\\\?\\GLOBALROOT\\device\\Harddisk1\\Partition2\\", L"\\\\?\\Volume{12}\\", {L"G:\\"});
        volumes.Add(L"\\\\?\\GLOBALROOT\\device\\Harddisk0\\Partition9\\", L"\\\\?\\Volume{09}\\",
                    {L"H:\\Data\\", L"I:\\"});
    }

    // The disk resource of the test, with one partition per device name.
    void GivenDisk(const std::vector<std::string>& devices) {
        disk.Close();
        LoadAndOpen(GivenCluster().Node("NODE-A").Group("EVS1", "NODE-A").Disk("Disk", devices));
        Open(disk, L"Disk");
    }

    // What the disk's paths are appended to is empty.
    Paths PathsOf(const std::vector<std::string>& devices) {
        GivenDisk(devices);
        Paths paths;
        EXPECT_TRUE(letters(disk.GetResourceHandle(), paths));
        return paths;
    }

    void TearDown() override {
        EXPECT_EQ(volumes.LibrariesHeld(), 0);
        disk.Close();
        OpenClusterTest::TearDown();
    }

    VolumeManager volumes;
    GetDiskLetters letters;
    GetDiskLetter letter;
    CClusterResource disk;
};

const char EnterLetters[] = "> GetDiskLettersFromResource";
const char LeaveLetters[] = "< GetDiskLettersFromResource";
const char EnterTranslation[] = "> TranslateDeviceNameToDiskPaths_";
const char LeaveTranslation[] = "< TranslateDeviceNameToDiskPaths_";

} // namespace harness

#endif
