// Texts that the platform leaves without a terminator, and lengths that it makes up: nothing is read or written behind
// a block's end. The local heap's blocks end at a page that faults.
#include "ClusterFixture.h"
#include "ControlAnswer.h"
#include "GuardedHeap.h"
#include "ProductNames.h"

#include "clus_VirtualServerUtil.h"

#include <algorithm>

using namespace harness;

namespace {

const DWORD EveryLength = 0xFFFFFFFF;

struct HostSettings : CVirtualServerUtil {
    using CVirtualServerUtil::GetHomeDir;
};

class UnterminatedText : public OpenClusterTest {
protected:
    UnterminatedText() : heap(std::make_unique<GuardedHeap>()) {
        AtEnd([this] {
            EXPECT_EQ(heap->Live(), 0u);
            heap.reset();
        });
    }

    // An enumerator with one entry, which fills the room it is given to its last character.
    DWORD OneFullEntry(DWORD index, LPWSTR text, LPDWORD cch) {
        if (index > 0) {
            return ERROR_NO_MORE_ITEMS;
        }
        std::fill_n(text, *cch, L'x');
        given = *cch;
        *cch = EveryLength;
        return ERROR_SUCCESS;
    }

    std::unique_ptr<GuardedHeap> heap;
    DWORD given = 0;
};

TEST_F(UnterminatedText, OfAnObjectOfTheClusterEndsWithItsRoom) {
    const auto patch =
        PatchImport(clusapi, ClusterEnum, [&](HCLUSENUM, DWORD index, LPDWORD, LPWSTR text, LPDWORD cch) -> DWORD {
            return OneFullEntry(index, text, cch);
        });
    for (const auto kind :
         {CCluster::CCLUSTER_OBJ_RESOURCE, CCluster::CCLUSTER_OBJ_NODE, CCluster::CCLUSTER_OBJ_GROUP}) {
        NameList names;
        EXPECT_TRUE(cluster.EnumNames(kind, names));
        EXPECT_EQ(names, NameList{std::wstring(255, L'x')});
        EXPECT_EQ(given, 256u);
    }
}

TEST_F(UnterminatedText, OfANameThatTheBufferGrewForEndsWithItsRoom) {
    int calls = 0;
    const auto patch =
        PatchImport(clusapi, ClusterEnum, [&](HCLUSENUM, DWORD index, LPDWORD, LPWSTR text, LPDWORD cch) -> DWORD {
            if (++calls == 1) {
                *cch = 3000;
                return ERROR_MORE_DATA;
            }
            return OneFullEntry(index, text, cch);
        });
    NameList names;
    EXPECT_TRUE(cluster.EnumNames(CCluster::CCLUSTER_OBJ_RESOURCE, names));
    EXPECT_EQ(names, NameList{std::wstring(3000, L'x')});
}

TEST_F(UnterminatedText, OfADependencyEndsWithItsRoom) {
    CClusterResource resource;
    cluster.Open(resource, L"EVS1 Name");
    const auto patch = PatchImport(clusapi, ClusterResourceEnum,
                                   [&](HRESENUM, DWORD index, LPDWORD, LPWSTR text, LPDWORD cch) -> DWORD {
                                       return OneFullEntry(index, text, cch);
                                   });
    NameList names;
    EXPECT_TRUE(resource.EnumNames(CLUSTER_RESOURCE_ENUM_DEPENDS, names));
    EXPECT_EQ(names, NameList{std::wstring(255, L'x')});
}

TEST_F(UnterminatedText, OfAResourceInAGroupEndsWithItsRoom) {
    CClusterGroup group;
    cluster.Open(group, L"EVS1");
    const auto patch = PatchImport(clusapi, ClusterGroupEnum,
                                   [&](HGROUPENUM, DWORD index, LPDWORD, LPWSTR text, LPDWORD cch) -> DWORD {
                                       return OneFullEntry(index, text, cch);
                                   });
    NameList names;
    EXPECT_TRUE(group.EnumResourceNamesInGroup(names));
    EXPECT_EQ(names, NameList{std::wstring(7, L'x')});
}

TEST_F(UnterminatedText, OfAResourceThatAWalkVisitsEndsWithItsRoom) {
    CClusterGroup group;
    cluster.Open(group, L"EVS1");
    const auto patch = PatchImport(clusapi, ClusterGroupEnum,
                                   [&](HGROUPENUM, DWORD index, LPDWORD, LPWSTR text, LPDWORD cch) -> DWORD {
                                       return OneFullEntry(index, text, cch);
                                   });
    const auto open = PatchImport(clusapi, OpenClusterResource, [&](HCLUSTER h, LPCWSTR name) -> HRESOURCE {
        EXPECT_EQ(std::wcslen(name), 2047u);
        return ::OpenClusterResource(h, L"EVS1 Disk");
    });
    std::size_t visited = 0;
    EXPECT_TRUE(group.EnumResourceInGroup(
        cluster.GetHandle(),
        [](HCLUSTER, HGROUP, HRESOURCE, const wchar_t* name, void* context) -> DWORD {
            *static_cast<std::size_t*>(context) = std::wcslen(name);
            return 0;
        },
        &visited));
    EXPECT_EQ(visited, 2047u);
    EXPECT_EQ(given, 2048u);
}

TEST_F(UnterminatedText, OfTheClustersNameEndsWithItsRoom) {
    const auto patch =
        PatchImport(clusapi, GetClusterInformation, [](HCLUSTER, LPWSTR text, LPDWORD cch, LPCLUSTERVERSIONINFO) {
            std::fill_n(text, *cch, L'x');
            *cch = EveryLength;
            return static_cast<DWORD>(ERROR_SUCCESS);
        });
    std::wstring name;
    EXPECT_TRUE(cluster.GetClusterName(name));
    EXPECT_EQ(name, std::wstring(15, L'x'));
}

TEST_F(UnterminatedText, OfAStatesNodeAndGroupEndsWithItsRoom) {
    CClusterResource resource;
    cluster.Open(resource, L"EVS1 Disk");
    const auto patch = PatchImport(
        clusapi, GetClusterResourceState,
        [](HRESOURCE, LPWSTR node, LPDWORD cchNode, LPWSTR group, LPDWORD cchGroup) -> CLUSTER_RESOURCE_STATE {
            std::fill_n(node, *cchNode, L'n');
            std::fill_n(group, *cchGroup, L'g');
            *cchNode = *cchGroup = EveryLength;
            return ClusterResourceOnline;
        });
    std::wstring node;
    std::wstring group;
    EXPECT_EQ(resource.GetResourceState(&node, &group), CClusterResource::RES_STATE_ONLINE);
    EXPECT_EQ(node, std::wstring(15, L'n'));
    EXPECT_EQ(group, std::wstring(255, L'g'));
}

// Fills what it is given, says that it wrote more, and terminates nothing.
DWORD FullAnswer(HRESOURCE, HNODE, DWORD, LPVOID, DWORD, LPVOID out, DWORD cbOut, LPDWORD cb) {
    std::fill_n(static_cast<wchar_t*>(out), cbOut / sizeof(wchar_t), L'x');
    *cb = EveryLength;
    return ERROR_SUCCESS;
}

TEST_F(UnterminatedText, OfAPropertyEndsWithTheAnswer) {
    CClusterResource resource;
    cluster.Open(resource, L"EVS1 Disk");
    const auto patch = PatchImport(clusapi, ClusterResourceControl, FullAnswer);
    for (int id = CClusterResource::RES_PROP_NAME; id <= CClusterResource::RES_PROP_GUID; ++id) {
        const wchar_t* const text =
            resource.GetSystemStringProperty(static_cast<CClusterResource::RES_PROPERTY_ID>(id), false);
        ASSERT_NE(text, nullptr) << id;
        EXPECT_EQ(std::wstring(text), std::wstring(64, L'x')) << id;
    }
}

TEST_F(UnterminatedText, OfAPrivatePropertyEndsWithItsBlock) {
    CClusterResource resource;
    cluster.Open(resource, L"EVS1 IP");
    const auto patch = PatchImport(resutils, ResUtilFindSzProperty, [&](LPVOID, DWORD, LPCWSTR, LPWSTR* text) -> DWORD {
        *text = static_cast<wchar_t*>(heap->Allocate(5 * sizeof(wchar_t)));
        std::fill_n(*text, 5, L'x');
        return ERROR_SUCCESS;
    });
    std::wstring value;
    EXPECT_TRUE(resource.GetPrivateStringProperty(L"Address", value));
    EXPECT_EQ(value, L"xxxxx");
}

TEST_F(UnterminatedText, OfAPrivatePropertyThatIsNotThereIsAFailure) {
    CClusterResource resource;
    cluster.Open(resource, L"EVS1 IP");
    const auto patch = PatchImport(resutils, ResUtilFindSzProperty, [](LPVOID, DWORD, LPCWSTR, LPWSTR* text) -> DWORD {
        *text = nullptr;
        return ERROR_SUCCESS;
    });
    std::wstring value = L"before";
    EXPECT_FALSE(resource.GetPrivateStringProperty(L"Address", value));
    EXPECT_EQ(value, L"before");
}

TEST_F(UnterminatedText, OfTheRegistryEndsWithItsRoom) {
    Registry().CreateKey(ProductKey);
    const auto patch = PatchImport(advapi32, RegQueryValueExW,
                                   [](HKEY, LPCWSTR, LPDWORD, LPDWORD type, LPBYTE data, LPDWORD cb) -> LSTATUS {
                                       std::fill_n(reinterpret_cast<wchar_t*>(data), *cb / sizeof(wchar_t), L'x');
                                       *type = REG_SZ;
                                       *cb = EveryLength;
                                       return ERROR_SUCCESS;
                                   });
    EXPECT_EQ(CVirtualServerUtil::GetDataRootPath(), std::wstring(2047, L'x'));
    std::wstring homeDir;
    EXPECT_TRUE(HostSettings::GetHomeDir(homeDir));
    EXPECT_EQ(homeDir, std::wstring(1024, L'x')); // as many bytes as may be filled
}

TEST_F(UnterminatedText, OfThisComputersNameEndsWithItsRoom) {
    CClusterResource resource;
    cluster.Open(resource, L"EVS1 Disk");
    const auto patch = PatchImport(kernel32, GetComputerNameW, [](LPWSTR text, LPDWORD cch) -> BOOL {
        std::fill_n(text, *cch, L'x');
        return TRUE;
    });
    EXPECT_FALSE(resource.IsOnlineOnCurrentNode(nullptr));
    EXPECT_THAT(TakeLog(), ::testing::HasSubstr("I Local node name:" + std::string(15, 'x') + "\n"));
}

// A length that the library would have to find memory for
// ---------------------------------------------------------------------------------------------------------------------

TEST_F(UnterminatedText, APropertyBeyondTheLongestAnswerIsNotAskedForAgain) {
    CClusterResource resource;
    cluster.Open(resource, L"EVS1 Disk");
    for (const DWORD size : {0x01000001u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
        int calls = 0;
        const auto patch = PatchImport(clusapi, ClusterResourceControl,
                                       [&](HRESOURCE, HNODE, DWORD, LPVOID, DWORD, LPVOID, DWORD, LPDWORD cb) -> DWORD {
                                           ++calls;
                                           *cb = size;
                                           return ERROR_MORE_DATA;
                                       });
        EXPECT_EQ(resource.GetSystemStringProperty(CClusterResource::RES_PROP_NAME, true), nullptr);
        EXPECT_EQ(calls, 1) << size;
        EXPECT_EQ(TakeLog(), Lines({"E Calling ClusterResourceControl returns error, code:234", "E 0 == dwSize"}));
    }
}

TEST_F(UnterminatedText, APropertyAsLongAsTheLongestAnswerIsAskedForAgain) {
    CClusterResource resource;
    cluster.Open(resource, L"EVS1 Disk");
    std::vector<DWORD> room;
    const auto patch =
        PatchImport(clusapi, ClusterResourceControl,
                    [&](HRESOURCE, HNODE, DWORD, LPVOID, DWORD, LPVOID out, DWORD cbOut, LPDWORD cb) -> DWORD {
                        room.push_back(cbOut);
                        *cb = 0x01000000;
                        if (cbOut < *cb) {
                            return ERROR_MORE_DATA;
                        }
                        std::memcpy(out, L"x", 4);
                        return ERROR_SUCCESS;
                    });
    EXPECT_STREQ(resource.GetSystemStringProperty(CClusterResource::RES_PROP_NAME, true), L"x");
    EXPECT_EQ(room, (std::vector<DWORD>{128, 0x01000000}));
}

} // namespace
