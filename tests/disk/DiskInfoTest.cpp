// Reading a disk's information, whatever its bytes look like.
#include "DiskFixture.h"

using namespace harness;

namespace {

// What the resource answers to the request for the size and to the one for the data.
struct DiskAnswer {
    DWORD probeCode = ERROR_MORE_DATA;
    DWORD probeSize = 0;
    DWORD code = ERROR_SUCCESS;
    DWORD size = 0;
    Bytes bytes;
};

struct DiskAnswerTag;

class DiskInfo : public ClusterTest {
protected:
    // Calls the function with a disk of the given answers; `calls` counts them.
    bool LettersOf(const DiskAnswer& answer, Paths& paths) {
        disk.Load({});
        calls = 0;
        const ImportPatch<DWORD(HRESOURCE, HNODE, DWORD, LPVOID, DWORD, LPVOID, DWORD, LPDWORD), DiskAnswerTag> patch(
            FindImports(LibraryModule(), "clusapi.dll", "ClusterResourceControl"),
            [&](HRESOURCE resource, HNODE node, DWORD control, LPVOID in, DWORD cbIn, LPVOID out, DWORD cbOut,
                LPDWORD cb) -> DWORD {
                EXPECT_EQ(resource, disk.GetResourceHandle());
                EXPECT_EQ(node, nullptr);
                EXPECT_EQ(control, 0x01000191u);
                EXPECT_EQ(in, nullptr);
                EXPECT_EQ(cbIn, 0u);
                if (++calls == 1) {
                    EXPECT_EQ(cbOut, 0u);
                    *cb = answer.probeSize;
                    return answer.probeCode;
                }
                EXPECT_EQ(cbOut, answer.probeSize);
                std::copy_n(answer.bytes.begin(), std::min<size_t>(answer.bytes.size(), cbOut),
                            static_cast<unsigned char*>(out));
                *cb = answer.size;
                return answer.code;
            });
        return disk.letters(disk.GetResourceHandle(), paths);
    }

    Paths PathsIn(const Bytes& bytes) {
        DiskAnswer answer;
        answer.bytes = bytes;
        answer.probeSize = answer.size = static_cast<DWORD>(bytes.size());
        Paths paths;
        EXPECT_TRUE(LettersOf(answer, paths));
        EXPECT_EQ(calls, 2);
        return paths;
    }

    ClusterDisk disk{*this};
    int calls = 0;
};

Bytes EndMark() {
    return NumberBytes(0);
}

std::vector<std::string> LogOf(const std::vector<std::string>& devices) {
    std::vector<std::string> log{EnterLetters};
    for (const std::string& device : devices) {
        log.insert(log.end(), {"I ParseDeviceNamefromPartitionInfo_(), got device name: " + device, EnterTranslation,
                               "I sDeviceName " + device + "\\ is a valid path, skip translation.", LeaveTranslation,
                               "I device name translted to: " + device + "\\"});
    }
    log.push_back(LeaveLetters);
    return log;
}

// The requests
// -----------------------------------------------------------------------------------------------------------------

TEST_F(DiskInfo, AProbeThatSucceedsIsAnEmptyDisk) {
    DiskAnswer answer;
    answer.probeCode = ERROR_SUCCESS;
    answer.probeSize = 16;
    Paths paths;
    EXPECT_TRUE(LettersOf(answer, paths));
    EXPECT_EQ(paths, Paths{});
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(TakeLog(), Lines({EnterLetters, "W ClusterResourceControl, ERROR_MORE_DATA, but got 0", LeaveLetters}));
}

TEST_F(DiskInfo, AProbeThatFailsIsLoggedTwice) {
    DiskAnswer answer;
    answer.probeCode = ERROR_INVALID_FUNCTION;
    Paths paths{L"before"};
    EXPECT_FALSE(LettersOf(answer, paths));
    EXPECT_EQ(paths, Paths{L"before"});
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(TakeLog(), Lines({EnterLetters, "W ClusterResourceControl, ERROR_MORE_DATA, but got 1",
                                "W ClusterResourceControlEx_ error, code: 1", LeaveLetters}));
}

TEST_F(DiskInfo, ASecondRequestThatFailsIsLoggedOnce) {
    for (const DWORD code : {ERROR_ACCESS_DENIED, ERROR_MORE_DATA}) {
        DiskAnswer answer;
        answer.bytes = Concat({PartitionEntry(L"F:"), EndMark()});
        answer.probeSize = answer.size = static_cast<DWORD>(answer.bytes.size());
        answer.code = code;
        Paths paths{L"before"};
        EXPECT_FALSE(LettersOf(answer, paths));
        EXPECT_EQ(paths, Paths{L"before"});
        EXPECT_EQ(calls, 2);
        EXPECT_EQ(TakeLog(), Lines({EnterLetters, "W ClusterResourceControlEx_ error, code: " + std::to_string(code),
                                    LeaveLetters}));
    }
}

TEST_F(DiskInfo, NothingOfAnEmptyAnswerIsRead) {
    EXPECT_EQ(PathsIn({}), Paths{});
    EXPECT_EQ(TakeLog(), Lines(LogOf({})));
}

TEST_F(DiskInfo, OnlyTheBytesOfTheAnswerCount) {
    DiskAnswer answer;
    answer.bytes = Concat({PartitionEntry(L"F:"), PartitionEntry(L"G:"), EndMark()});
    answer.probeSize = static_cast<DWORD>(answer.bytes.size());
    answer.size = 1128; // the disk has lost a partition since
    Paths paths;
    EXPECT_TRUE(LettersOf(answer, paths));
    EXPECT_EQ(paths, Paths{L"F:\\"});
    EXPECT_EQ(TakeLog(), Lines(LogOf({"F:"})));
}

TEST_F(DiskInfo, ASizeBeyondTheBufferIsNotBelieved) {
    DiskAnswer answer;
    answer.bytes = PartitionEntry(L"F:");
    answer.probeSize = static_cast<DWORD>(answer.bytes.size());
    answer.size = 0x7fffffff;
    Paths paths;
    EXPECT_TRUE(LettersOf(answer, paths));
    EXPECT_EQ(paths, Paths{L"F:\\"});
    EXPECT_EQ(TakeLog(), Lines(LogOf({"F:"})));
}

TEST_F(DiskInfo, ASizeOfTheLongestAnswerIsAskedFor) {
    DiskAnswer answer;
    answer.bytes = Concat({PartitionEntry(L"F:"), EndMark()});
    answer.probeSize = answer.size = 0x01000000;
    Paths paths;
    EXPECT_TRUE(LettersOf(answer, paths));
    EXPECT_EQ(paths, Paths{L"F:\\"});
    EXPECT_EQ(calls, 2);
}

TEST_F(DiskInfo, ASizeBeyondTheLongestAnswerIsNotAskedFor) {
    for (const DWORD size : {0x01000001u, 0x7fffffffu, 0xffffffffu}) {
        DiskAnswer answer;
        answer.probeSize = size;
        Paths paths{L"before"};
        EXPECT_FALSE(LettersOf(answer, paths));
        EXPECT_EQ(paths, Paths{L"before"});
        EXPECT_EQ(calls, 1);
        EXPECT_EQ(TakeLog(), Lines({EnterLetters, "W ClusterResourceControlEx_ error, code: 234", LeaveLetters}));
    }
}

TEST_F(DiskInfo, TheRequestsGoToTheClusterTwice) {
    disk.Load({"F:"});
    Paths paths;
    EXPECT_TRUE(disk.letters(disk.GetResourceHandle(), paths));
    EXPECT_EQ(Cluster().CallCount("ClusterResourceControl"), 2u);
    EXPECT_EQ(TakeJournal(), Lines({"ClusterResourceControl(Disk,STORAGE_GET_DISK_INFO,0)=234",
                                    "ClusterResourceControl(Disk,STORAGE_GET_DISK_INFO,1168)"}));
}

// The list
// ---------------------------------------------------------------------------------------------------------------------

TEST_F(DiskInfo, EveryPartitionGivesAPathInOrder) {
    Paths paths{L"before"};
    disk.Load({"G:", "Disk12Partition1", "F:"});
    EXPECT_TRUE(disk.letters(disk.GetResourceHandle(), paths));
    EXPECT_EQ(paths, (Paths{L"before", L"G:\\", L"F:\\"}));
    EXPECT_EQ(TakeLog(),
              Lines({EnterLetters, "I ParseDeviceNamefromPartitionInfo_(), got device name: G:", EnterTranslation,
                     "I sDeviceName G:\\ is a valid path, skip translation.", LeaveTranslation,
                     "I device name translted to: G:\\",
                     "I ParseDeviceNamefromPartitionInfo_(), got device name: Disk12Partition1", EnterTranslation,
                     "I Translating device name Disk12Partition1\\.", LeaveTranslation, "W translation fail, skip disk",
                     "I ParseDeviceNamefromPartitionInfo_(), got device name: F:", EnterTranslation,
                     "I sDeviceName F:\\ is a valid path, skip translation.", LeaveTranslation,
                     "I device name translted to: F:\\", LeaveLetters}));
}

TEST_F(DiskInfo, PathsAreAppendedAgainAtEveryCall) {
    disk.Load({"F:"});
    Paths paths;
    EXPECT_TRUE(disk.letters(disk.GetResourceHandle(), paths));
    EXPECT_TRUE(disk.letters(disk.GetResourceHandle(), paths));
    EXPECT_EQ(paths, (Paths{L"F:\\", L"F:\\"}));
}

TEST_F(DiskInfo, OtherEntriesAreSkipped) {
    const Bytes odd = Entry(0x00080002, Bytes{'a', 'b', 'c', 'd', 'e'}); // padded
    EXPECT_EQ(PathsIn(Concat({odd, Entry(0x00050002, Bytes(4, 1)), PartitionEntry(L"F:"), Entry(0x00050002, Bytes{}),
                              PartitionEntry(L"G:"), EndMark()})),
              (Paths{L"F:\\", L"G:\\"}));
    EXPECT_EQ(TakeLog(), Lines(LogOf({"F:", "G:"})));
}

TEST_F(DiskInfo, TheListEndsAtItsEndMark) {
    EXPECT_EQ(PathsIn(Concat({PartitionEntry(L"F:"), EndMark(), EndMark(), PartitionEntry(L"G:")})), Paths{L"F:\\"});
    EXPECT_EQ(TakeLog(), Lines(LogOf({"F:"})));
}

TEST_F(DiskInfo, AListWithoutEndMarkEndsWithItsBytes) {
    EXPECT_EQ(PathsIn(Concat({PartitionEntry(L"F:"), PartitionEntry(L"G:")})), (Paths{L"F:\\", L"G:\\"}));
    EXPECT_EQ(TakeLog(), Lines(LogOf({"F:", "G:"})));
}

TEST_F(DiskInfo, ALengthBeyondTheBytesEndsTheList) {
    for (const DWORD length : {2248u, 0x7fffffffu, 0xfffffff0u, 0xffffffffu}) {
        Bytes first = PartitionEntry(L"F:");
        for (int i = 0; i < 4; ++i) {
            first[4 + i] = static_cast<unsigned char>(length >> 8 * i);
        }
        EXPECT_EQ(PathsIn(Concat({first, PartitionEntry(L"G:"), EndMark()})), Paths{L"F:\\"}) << length;
        EXPECT_EQ(TakeLog(), Lines(LogOf({"F:"})));
    }
}

// Cut behind any of its first bytes, an entry gives the name as far as it is there, or nothing.
TEST_F(DiskInfo, AnEntryCutShortGivesWhatIsThere) {
    Bytes whole = PartitionEntry(L"F:");
    for (size_t size = 0; size <= 20; ++size) {
        EXPECT_EQ(PathsIn(Bytes(whole.begin(), whole.begin() + size)), size < 16 ? Paths{} : Paths{L"F:\\"}) << size;
        const std::string name = size < 14 ? "" : "F";
        if (size < 8) {
            EXPECT_EQ(TakeLog(), Lines(LogOf({}))) << size;
        } else if (size < 16) {
            EXPECT_EQ(TakeLog(),
                      Lines({EnterLetters, "I ParseDeviceNamefromPartitionInfo_(), got device name: " + name,
                             EnterTranslation, "I Translating device name " + name + (name.empty() ? "" : "\\") + ".",
                             LeaveTranslation, "W translation fail, skip disk", LeaveLetters}))
                << size;
        } else {
            EXPECT_EQ(TakeLog(), Lines(LogOf({"F:"}))) << size;
        }
    }
}

TEST_F(DiskInfo, ANameMayUseItsWholeEntry) {
    const std::wstring folder = L"F:\\" + std::wstring(255, L'm');
    EXPECT_EQ(PathsIn(Concat({PartitionEntry(folder), PartitionEntry(L"G:"), EndMark()})),
              (Paths{folder + L"\\", L"G:\\"}));
}

TEST_F(DiskInfo, WantOfMemoryTakesBackThePathsAppendedBefore) {
    disk.Load({"F:", "G:"});
    bool isSecondReached = false;
    for (unsigned n = 1;; ++n) {
        Paths paths{L"before"};
        Heap().FailAllocation(n, FaultMode::Once);
        Heap().StartOperation();
        const bool succeeded = disk.letters(disk.GetResourceHandle(), paths);
        Heap().EndOperation();
        const bool fired = Heap().Fired();
        Heap().FailAllocation(0, FaultMode::Once);
        const std::string log = TakeLog();
        if (!fired) {
            EXPECT_EQ(paths, (Paths{L"before", L"F:\\", L"G:\\"}));
            break;
        }
        EXPECT_FALSE(succeeded) << n;
        EXPECT_EQ(paths, Paths{L"before"}) << n;
        isSecondReached |= log.find("got device name: G:") != std::string::npos;
    }
    EXPECT_TRUE(isSecondReached);
}

TEST_F(DiskInfo, LinesCarryTheirLevelsAndTheSourceTagOfTheDiskPaths) {
    disk.Load({"F:", "x"});
    Guarded<wchar_t, 8> buffer;
    ASSERT_EQ(Log().Entries().size(), 0u);
    EXPECT_TRUE(disk.letter(disk.GetResourceHandle(), buffer.get(), 8));
    std::vector<unsigned> levels;
    for (const LogLine& line : Log().Entries()) {
        levels.push_back(line.level);
        EXPECT_EQ(line.sourceTag, ".\\clus_GetClusterDiskPaths.cpp") << line.text;
        EXPECT_GT(line.line, 0);
    }
    EXPECT_THAT(levels, ::testing::ElementsAre(0x110, 0x110, 0x102, 0x110, 0x102, 0x111, 0x102, // "F:"
                                               0x102, 0x110, 0x102, 0x111, 0x1003,              // "x"
                                               0x111, 0x102));
}

} // namespace
