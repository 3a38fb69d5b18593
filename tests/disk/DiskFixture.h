// A Physical Disk resource whose partitions the test chooses, and the two exported functions as callers find them.
#ifndef DISKFIXTURE_H
#define DISKFIXTURE_H

#include "ControlAnswer.h"
#include "VolumeManager.h"

#include <string>
#include <vector>

namespace harness {

typedef Names Paths;
typedef bool (*GetDiskLetters)(HRESOURCE, std::vector<std::wstring>&);
typedef bool (*GetDiskLetter)(HRESOURCE, wchar_t*, DWORD);

// An export of clusutil.dll by its plain name; null when there is none.
template <typename Function> Function PlainExport(const char* name) {
    return reinterpret_cast<Function>(reinterpret_cast<void*>(::GetProcAddress(LibraryModule(), name)));
}

// The volumes of Disk1Partition2 and Disk0Partition9.
inline void AddKnownVolumes(VolumeManager& volumes) {
    volumes.Add(L"\\\\?\\GLOBALROOT\\device\\Harddisk1\\Partition2\\", L"\\\\?\\Volume{12}\\", {L"G:\\"});
    volumes.Add(L"\\\\?\\GLOBALROOT\\device\\Harddisk0\\Partition9\\", L"\\\\?\\Volume{09}\\",
                {L"H:\\Data\\", L"I:\\"});
}

// The disk resource of a test, on a system with the known volumes; closed before the audit.
class ClusterDisk : public CClusterResource {
public:
    explicit ClusterDisk(ClusterTest& test)
        : volumes(test.Platform()), letters(PlainExport<GetDiskLetters>("GetDiskLettersFromResource")),
          letter(PlainExport<GetDiskLetter>("GetDiskLetterFromResource")), m_cluster(test) {
        AddKnownVolumes(volumes);
        test.AtEnd([this] {
            EXPECT_EQ(volumes.LibrariesHeld(), 0);
            Close();
        });
    }

    // From now on it has one partition per device name.
    void Load(const std::vector<std::string>& devices) {
        Close();
        m_cluster.Load(GivenCluster().Node("NODE-A").Group("EVS1", "NODE-A").Disk("Disk", devices));
        m_cluster.Open(*this, L"Disk");
    }

    // The paths of such a disk.
    Paths PathsOf(const std::vector<std::string>& devices) {
        Load(devices);
        Paths paths;
        EXPECT_TRUE(letters(GetResourceHandle(), paths));
        return paths;
    }

    VolumeManager volumes;
    const GetDiskLetters letters;
    const GetDiskLetter letter;

private:
    OpenedCluster m_cluster;
};

class DiskTest : public ClusterTest {
protected:
    ClusterDisk disk{*this};
};

const char EnterLetters[] = "> GetDiskLettersFromResource";
const char LeaveLetters[] = "< GetDiskLettersFromResource";
const char EnterTranslation[] = "> TranslateDeviceNameToDiskPaths_";
const char LeaveTranslation[] = "< TranslateDeviceNameToDiskPaths_";

} // namespace harness

#endif
