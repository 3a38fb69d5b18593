// Loops over resources ask all of them with one buffer: what one resource answers must not show at the next.
#include "Bytes.h"
#include "ClusterFixture.h"

#include <algorithm>
#include <cstring>

using namespace harness;

namespace {

// What a resource answers for its type.
struct TypeAnswer {
    Bytes bytes;     // what it writes when the room suffices
    DWORD told = 0;  // the count it tells, if not that of the bytes
    DWORD again = 0; // the same at the second call
};

Bytes Characters(const std::wstring& text) {
    Bytes bytes;
    bytes.resize(text.size() * sizeof(wchar_t));
    std::memcpy(bytes.data(), text.data(), bytes.size());
    return bytes;
}

Bytes Terminated(const std::wstring& text) {
    return Characters(text + L'\0');
}

class ControlReplies : public OpenClusterTest {
protected:
    // The names of the type, out of three resources with these answers; the cluster asks nobody else.
    NameList NamesOfType(const wchar_t* type, const std::vector<TypeAnswer>& answers) {
        cluster.Load(GivenCluster()
                         .Node("NODE-A")
                         .Group("G", "NODE-A")
                         .IpAddress("1", "10.0.0.1")
                         .IpAddress("2", "10.0.0.2")
                         .IpAddress("3", "10.0.0.3"));
        std::size_t opened = 0;
        DWORD calls = 0;
        const auto open = PatchImport(clusapi, OpenClusterResource, [&](HCLUSTER h, LPCWSTR name) {
            ++opened;
            calls = 0;
            return ::OpenClusterResource(h, name);
        });
        const auto control =
            PatchImport(clusapi, ClusterResourceControl,
                        [&](HRESOURCE, HNODE, DWORD, LPVOID, DWORD, LPVOID out, DWORD cbOut, LPDWORD cb) -> DWORD {
                            const TypeAnswer& answer = answers.at(opened - 1);
                            const DWORD size = static_cast<DWORD>(answer.bytes.size());
                            offered.push_back(cbOut);
                            *cb = ++calls == 2 && answer.again ? answer.again : answer.told ? answer.told : size;
                            if (cbOut < size || (calls == 1 && answer.again)) {
                                return ERROR_MORE_DATA;
                            }
                            if (size != 0) {
                                std::memcpy(out, answer.bytes.data(), size);
                            }
                            return ERROR_SUCCESS;
                        });
        NameList names;
        EXPECT_TRUE(cluster.EnumResourceNamesByType(type, names));
        return names;
    }

    std::vector<DWORD> offered;
};

TEST_F(ControlReplies, AShortTextAfterALongOneIsReadAlone) {
    const std::wstring longType(100, L'T');
    EXPECT_EQ(NamesOfType(L"TT", {{Terminated(longType)}, {Terminated(L"TT")}, {Terminated(L"TTT")}}), NameList{L"2"});
    EXPECT_EQ(offered, (std::vector<DWORD>{128, 202, 128, 128}));
    offered.clear();
    EXPECT_EQ(NamesOfType(longType.c_str(), {{Terminated(longType)}, {Terminated(L"TT")}, {Terminated(longType)}}),
              (NameList{L"1", L"3"}));
    EXPECT_EQ(offered, (std::vector<DWORD>{128, 202, 128, 128, 202}));
}

TEST_F(ControlReplies, ATextWithoutATerminatorEndsWithItsAnswer) {
    EXPECT_EQ(NamesOfType(L"AB", {{Terminated(L"ABCDEF")}, {Characters(L"AB")}, {Characters(L"ABC")}}), NameList{L"2"});
    const std::wstring full(64, L'x'); // all that is offered first
    EXPECT_EQ(NamesOfType(full.c_str(), {{Characters(full)}, {Characters(full + L"y")}, {Characters(full)}}),
              (NameList{L"1", L"3"}));
}

TEST_F(ControlReplies, HalfACharacterAtTheEndDoesNotCount) {
    Bytes odd = Characters(L"ABC");
    odd.resize(odd.size() - 1);
    EXPECT_EQ(NamesOfType(L"AB", {{odd}, {Terminated(L"ABC")}, {odd}}), (NameList{L"1", L"3"}));
}

TEST_F(ControlReplies, ATextEndsAtItsFirstNullCharacter) {
    EXPECT_EQ(NamesOfType(L"AB", {{Terminated(std::wstring(L"AB\0CD", 5))},
                                  {Terminated(std::wstring(L"\0AB", 3))},
                                  {Terminated(L"ABC")}}),
              NameList{L"1"});
}

TEST_F(ControlReplies, WhatAResourceTellsOfAndDoesNotWriteIsZero) {
    EXPECT_EQ(NamesOfType(L"AB", {{Terminated(L"AB")}, {Bytes(), 6}, {Characters(L"A"), 6}}), NameList{L"1"});
    // A count for which the buffer grew already: the second answer is cut to what it tells the second time.
    const std::wstring longType(100, L'T');
    Forget();
    EXPECT_EQ(NamesOfType(longType.c_str(), {{Terminated(longType)}, {Bytes(), 202, 2}, {Bytes(), 202, 202}}),
              NameList{L"1"});
    EXPECT_EQ(TakeLog(), Lines({"E dwSizeCheck != dwSize", "< CCluster::EnumResourceNamesByType()"}));
}

TEST_F(ControlReplies, WhatTheSecondAnswerDoesNotCountIsZero) {
    cluster.Load(GivenCluster().Node("NODE-A").Group("G", "NODE-A").IpAddress("1", "10.0.0.1"));
    DWORD calls = 0;
    const auto control =
        PatchImport(clusapi, ClusterResourceControl,
                    [&](HRESOURCE, HNODE, DWORD, LPVOID, DWORD, LPVOID out, DWORD, LPDWORD cb) -> DWORD {
                        if (++calls == 1) {
                            *cb = 202;
                            return ERROR_MORE_DATA;
                        }
                        std::memcpy(out, L"A", 2 * sizeof(wchar_t)); // and leaves the count as it is
                        return ERROR_SUCCESS;
                    });
    NameList names;
    EXPECT_TRUE(cluster.EnumResourceNamesByType(L"A", names));
    EXPECT_EQ(names, NameList());
    EXPECT_EQ(calls, 2u);
}

TEST_F(ControlReplies, AFailureLeavesTheNextAnswerAlone) {
    Platform().FailCall("ClusterResourceControl(EVS1 Disk,GET_RESOURCE_TYPE,128)", 1726);
    NameList names;
    EXPECT_TRUE(cluster.EnumResourceNamesByType(L"IP Address", names));
    EXPECT_EQ(names, (NameList{L"Cluster IP", L"EVS1 IP"}));
}

TEST_F(ControlReplies, OneBlockServesAllResourcesOfALoop) {
    Heap().FailLocalAlloc(3); // the first block is for the names, the second for the answers
    NameList names;
    EXPECT_TRUE(cluster.EnumResourceNamesByType(L"IP Address", names));
    EXPECT_FALSE(Heap().Fired());
    EXPECT_EQ(names.size(), 2u);
}

TEST_F(ControlReplies, MemoryThatIsShortForOneResourceIsAskedForAgainAtTheNext) {
    Heap().FailLocalAlloc(2); // the first one is for the names
    NameList names;
    EXPECT_TRUE(cluster.EnumResourceNamesByType(L"IP Address", names));
    EXPECT_TRUE(Heap().Fired());
    EXPECT_EQ(names, (NameList{L"Cluster IP", L"EVS1 IP"}));
    EXPECT_THAT(TakeJournal(), ::testing::HasSubstr(Lines({"ClusterResourceControl(Cluster IP,GET_RESOURCE_TYPE,0)=234",
                                                           "ClusterResourceControl(Cluster IP,GET_RESOURCE_TYPE,22)",
                                                           "CloseClusterResource(Cluster IP)"})));
    // The room of 22 bytes is not what the next one is offered.
    cluster.EnumResourceNamesByType(L"IP Address", names);
    EXPECT_THAT(TakeJournal(), ::testing::HasSubstr("ClusterResourceControl(Cluster Name,GET_RESOURCE_TYPE,128)\n"));
}

TEST_F(ControlReplies, MemoryThatCannotGrowLeavesOutThatResourceAlone) {
    const std::wstring longType(100, L'T');
    Heap().FailLocalReAlloc(1);
    EXPECT_EQ(NamesOfType(L"TT", {{Terminated(longType)}, {Terminated(L"TT")}, {Terminated(L"TT")}}),
              (NameList{L"2", L"3"}));
    EXPECT_TRUE(Heap().Fired());
    EXPECT_EQ(TakeLog(), Lines({"E Calling ClusterResourceControl returns error, code:234", "E 0 == dwSize",
                                "< CCluster::EnumResourceNamesByType()"}));
}

} // namespace
