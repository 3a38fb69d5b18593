// The control interface itself.
#include "SimulatorTest.h"

#include "common/Text.h"

#include <algorithm>
#include <cctype>

using testing::HasSubstr;

class ControlInterface : public SimulatorTest {};

TEST_F(ControlInterface, TellsItsVersion) {
    EXPECT_EQ(ClusSimVersion(), 1u);
}

TEST_F(ControlInterface, SettingsAreHandedOutAndKept) {
    const std::string settings = R"({"IsCluster":1,"HomeDir":"C:\\Gate\\","ClusterQuorumMode":4294967295})";
    Load(Replaced(MailCluster, "\"nodes\":", "\"settings\": " + settings + ", \"nodes\":"));
    EXPECT_EQ(ClusSimReadSettings(nullptr, 0), settings.size() + 1);
    std::string text(settings.size() + 1, 'x');
    EXPECT_EQ(ClusSimReadSettings(&text[0], text.size() - 1), text.size());
    EXPECT_EQ(text, std::string(text.size(), 'x')) << "what has no room is not written in part";
    EXPECT_EQ(ClusSimReadSettings(&text[0], text.size()), text.size());
    EXPECT_STREQ(text.c_str(), settings.c_str());
    ASSERT_EQ(LoadError(ReadModel()), "");
    EXPECT_EQ(ClusSimReadSettings(&text[0], text.size()), text.size());
    EXPECT_STREQ(text.c_str(), settings.c_str());
}

TEST_F(ControlInterface, AModelWithoutSettingsHasAnEmptyText) {
    Load();
    char text[2] = "x";
    EXPECT_EQ(ClusSimReadSettings(text, sizeof(text)), 1u);
    EXPECT_STREQ(text, "");
    Load(Replaced(MailCluster, "\"nodes\":", "\"settings\": {}, \"nodes\":"));
    EXPECT_EQ(ClusSimReadSettings(nullptr, 0), 3u) << "none of them are settings, too";
}

TEST_F(ControlInterface, WithoutAModelThereAreNoSettings) {
    EXPECT_EQ(ClusSimReadSettings(nullptr, 0), 0u);
}

namespace {

std::wstring ThisComputerName() {
    wchar_t name[MAX_COMPUTERNAME_LENGTH + 1] = L"";
    DWORD cch = MAX_COMPUTERNAME_LENGTH + 1;
    GetComputerNameW(name, &cch);
    return name;
}

std::wstring OwnerByName(const wchar_t* group) {
    const HCLUSTER cluster = OpenCluster(nullptr);
    const HGROUP handle = OpenClusterGroup(cluster, group);
    wchar_t owner[64] = L"";
    DWORD cch = 64;
    GetClusterGroupState(handle, owner, &cch);
    CloseClusterGroup(handle);
    CloseCluster(cluster);
    return owner;
}

// One group of this computer, one of another node that spells itself otherwise there.
const char TwoOwners[] =
    R"({"cluster": {"name": "C", "coreGroup": "none"}, "nodes": [{"name": "."}, {"name": "NODE-B"}],
"groups": [{"name": "Here", "owner": "."}, {"name": "There", "owner": "node-b"}], "resources": []})";

} // namespace

TEST_F(ControlInterface, SeenFromAnotherNodeTheNamesAreExchanged) {
    Load(TwoOwners);
    const std::wstring here = ThisComputerName();
    ASSERT_EQ(ClusSimSeeFrom("node-b"), 1);
    EXPECT_EQ(OwnerByName(L"There"), here);
    EXPECT_EQ(OwnerByName(L"Here"), L"NODE-B");
    const HCLUSTER cluster = OpenCluster(nullptr);
    const HNODE other = OpenClusterNode(cluster, L"NODE-B");
    EXPECT_NE(other, nullptr) << "it is found by the name that it has now";
    CloseClusterNode(other);
    CloseCluster(cluster);
    ASSERT_EQ(ClusSimSeeFrom(common::ToUtf8(here).c_str()), 1);
    EXPECT_EQ(OwnerByName(L"Here"), here);
    EXPECT_EQ(OwnerByName(L"There"), L"node-b") << "as it was";
}

TEST_F(ControlInterface, SeenFromANodeWhoseServiceRunsTheClusterAnswers) {
    ASSERT_EQ(LoadError(Replaced(TwoOwners, "\"C\"", "\"C\", \"running\": false")), "");
    EXPECT_EQ(OpenCluster(nullptr), nullptr);
    const std::string before = ReadModel();
    ASSERT_EQ(ClusSimSeeFrom("NODE-B"), 1);
    EXPECT_EQ(OwnerByName(L"There"), ThisComputerName());
    ASSERT_EQ(ClusSimSeeFrom(nullptr), 1);
    EXPECT_EQ(ReadModel(), before);
    EXPECT_EQ(OpenCluster(nullptr), nullptr);
}

TEST_F(ControlInterface, AViewLeavesTheSpellingOfThisComputerAsItWas) {
    const std::string here = common::ToUtf8(ThisComputerName());
    std::string spelled = here;
    std::transform(spelled.begin(), spelled.end(), spelled.begin(), [](unsigned char c) { return std::tolower(c); });
    if (spelled == here) {
        std::transform(spelled.begin(), spelled.end(), spelled.begin(),
                       [](unsigned char c) { return std::toupper(c); });
    }
    ASSERT_NE(spelled, here);
    ASSERT_EQ(LoadError(R"({"cluster": {"name": "C", "coreGroup": "none"}, "nodes": [{"name": ")" + spelled +
                        R"("}, {"name": "NODE-B"}], "groups": [{"name": "G", "owner": "NODE-B"}], "resources": []})"),
              "");
    const std::string before = ReadModel();
    ASSERT_EQ(ClusSimSeeFrom("NODE-B"), 1);
    EXPECT_EQ(OwnerByName(L"G"), ThisComputerName());
    ASSERT_EQ(ClusSimSeeFrom(""), 1);
    EXPECT_EQ(ReadModel(), before);
}

TEST_F(ControlInterface, ThereIsNoViewFromANodeThatTheModelLacks) {
    Load(TwoOwners);
    EXPECT_EQ(ClusSimSeeFrom("NODE-C"), 0);
    EXPECT_EQ(OwnerByName(L"Here"), ThisComputerName());
}

TEST_F(ControlInterface, AModelReadBackIsTheSameModel) {
    Load();
    const std::string model = ReadModel();
    ASSERT_EQ(LoadError(model), "");
    EXPECT_EQ(ReadModel(), model);
    EXPECT_THAT(model, HasSubstr("\"label\": \"Mail\""));
}

TEST_F(ControlInterface, EveryMemberSurvivesReadingBack) {
    const std::string text = R"({
  "cluster": {
    "name": "C\u00e4",
    "running": false,
    "coreGroup": "none",
    "behaviour": {
      "enumMaskZero": "empty",
      "deleteOnline": 5023,
      "offlineFailed": 0,
      "protocol": 2008,
      "downOwners": "accepted"
    }
  },
  "nodes": [
    {
      "name": "N",
      "state": "paused"
    }
  ],
  "groups": [
    {
      "name": "G",
      "owner": "N",
      "preferredOwners": [
        "N"
      ]
    }
  ],
  "resources": [
    {
      "name": "R",
      "type": "Physical Disk",
      "id": "1",
      "group": "G",
      "state": "OnlinePending",
      "dueAt": 1,
      "dependsOn": [],
      "possibleOwners": [
        "N"
      ],
      "common": {
        "RestartAction": 1
      },
      "private": {
        "A": "x",
        "B": 1,
        "C": [
          "y"
        ],
        "D": {
          "expandSz": "z"
        },
        "E": {
          "binary": "00ff"
        }
      },
      "disk": {
        "guid": "{g}",
        "number": 3,
        "partitions": [
          {
            "device": "F:",
            "label": "L"
          }
        ]
      },
      "onlineMs": 1,
      "offlineMs": 2,
      "failsOnline": true,
      "staysPending": true
    }
  ],
  "faults": [
    "CloseCluster#2+=5"
  ]
}
)";
    // Due in the far past: the transition has ended by now.
    ASSERT_EQ(LoadError(text), "");
    std::string expected = Replaced(text, "      \"dueAt\": 1,\n", "");
    expected = Replaced(expected, "OnlinePending", "Failed");
    expected = Replaced(expected, "C\\u00e4", "C\xC3\xA4");
    EXPECT_EQ(ReadModel(), expected);
}

TEST_F(ControlInterface, ARefusedModelLeavesTheOldOne) {
    Load();
    EXPECT_NE(LoadError("{}"), "");
    Resource(L"EVS1 IP");
    char error[8];
    EXPECT_EQ(ClusSimLoadModel("{}", error, sizeof(error)), 0);
    EXPECT_EQ(std::string(error).size(), 7u) << "cut to the buffer";
    EXPECT_EQ(ClusSimLoadModel(nullptr, nullptr, 0), 0);
}

TEST_F(ControlInterface, BuffersAreOnlyWrittenWhenTheTextFits) {
    Load();
    const std::size_t cb = ClusSimReadModel(nullptr, 0);
    std::string buffer(cb, '#');
    EXPECT_EQ(ClusSimReadModel(&buffer[0], cb - 1), cb);
    EXPECT_EQ(buffer, std::string(cb, '#'));
    EXPECT_EQ(ClusSimReadModel(&buffer[0], cb), cb);
    EXPECT_EQ(buffer.back(), '\0');
}

TEST_F(ControlInterface, ResetForgetsEverythingButOpenHandles) {
    Load();
    HRESOURCE resource = OpenClusterResource(m_cluster, L"EVS1 IP");
    ASSERT_TRUE(Accepts("OpenCluster=5"));
    ClusSimUseManualClock();
    CloseClusterNode(nullptr);
    ClusSimReset();
    EXPECT_EQ(ClusSimBadHandleCalls(), 0u);
    EXPECT_EQ(ClusSimCallCount(nullptr), 0u);
    EXPECT_EQ(ReadJournal(), "");
    EXPECT_EQ(ReadModel(), "");
    EXPECT_EQ(OnlineClusterResource(resource), static_cast<DWORD>(RPC_S_SERVER_UNAVAILABLE));
    EXPECT_TRUE(CloseClusterResource(resource));
    EXPECT_EQ(OpenCluster(nullptr), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(EPT_S_NOT_REGISTERED)) << "the fault is gone too";
}

TEST_F(ControlInterface, TenThousandResourcesAreNoProblem) {
    std::string json =
        R"({"cluster": {"name": "C", "coreGroup": "none"}, "nodes": [{"name": "N"}], "groups": [{"name": "G", "owner": "N"}],
                           "resources": [)";
    for (int i = 0; i < 10000; ++i) {
        const std::string number = std::to_string(i);
        json += std::string(i ? "," : "") + R"({"name": "R)" + number + R"(", "type": "IP Address", "id": "id)" +
                number + R"(", "group": "G")" + (i ? R"(, "dependsOn": ["R)" + std::to_string(i / 2) + "\"]" : "") +
                "}";
    }
    Load(json + "]}");
    ClusSimRecordJournal(0);
    for (int i = 0; i < 10000; ++i) {
        const ResourceOwner resource(OpenClusterResource(m_cluster, (L"r" + std::to_wstring(i)).c_str()));
        ASSERT_EQ(GetClusterResourceState(resource, nullptr, nullptr, nullptr, nullptr), ClusterResourceOffline);
        const HRESENUM list = ClusterResourceOpenEnum(resource, CLUSTER_RESOURCE_ENUM_PROVIDES);
        ASSERT_EQ(ClusterResourceCloseEnum(list), 0u);
    }
}
