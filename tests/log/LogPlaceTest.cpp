// Support goes from a log line to the code: its tag and number lead to the statement that logged it.
#include "ClusterTest.h"
#include "LoggedPlace.h"
#include "VeritasTest.h"

#include "clus_Cluster.h"
#include "clus_VeritasCluster.h"
#include "clus_VirtualServerUtil.h"
#include "platform/ClusterApi.h"

#include <gmock/gmock.h>

using namespace harness;
using testing::IsSupersetOf;

namespace {

typedef std::set<std::string> Files;

// Of EVS1 on this node, with the product if `productType` is given.
ModelBuilder Server(const char* productType, const char* state) {
    ModelBuilder model = GivenCluster()
                             .Node("NODE-A")
                             .Node("NODE-B")
                             .Group("EVS1", "NODE-A")
                             .IpAddress("EVS1 IP", "192.168.1.10")
                             .NetworkName("EVS1 Name", "EVS1")
                             .DependsOn("EVS1 IP")
                             .Disk("EVS1 Disk", "F:")
                             .Resource("EVS1 SMTP", "Microsoft Exchange SMTP Server Instance")
                             .Private("ProtocolInstanceId", 1u)
                             .Resource("EVS1 SA", "Microsoft Exchange System Attendant")
                             .DependsOn("EVS1 Name")
                             .DependsOn("EVS1 Disk")
                             .PossibleOwner("NODE-A")
                             .Resource("EVS1 Store", "Microsoft Exchange Information Store")
                             .DependsOn("EVS1 SA");
    if (productType) {
        model.Resource("KOVA", productType).DependsOn("EVS1 Name").Private("KOVA_DATA_PATH", "F:\\Data").State(state);
    }
    return model;
}

template <typename Fixture> class LoggingTest : public Fixture {
protected:
    // Every line logged since the last call; true when there was one.
    bool EveryLineLeadsToItsStatement() {
        const bool any = !this->Log().Entries().empty();
        for (const LogLine& line : this->Log().Entries()) {
            EXPECT_EQ(places.Misled(line), "");
        }
        this->TakeLog();
        return any;
    }

    LoggedPlaces places{CLUSUTIL_SOURCE_FOLDER};
};

typedef LoggingTest<ClusterTest> LogPlacesOnAFailoverCluster;
typedef LoggingTest<VeritasTest> LogPlacesOnVcs;

TEST_F(LogPlacesOnAFailoverCluster, LeadToTheStatementInWhicheverFileItIs) {
    const wchar_t key[] = L"SOFTWARE\\Plinthcore\\Zyntra Gate\\CurrentVersion";
    Registry().SetNumber(key, L"IsCluster", 1);
    Registry().SetText(key, L"HomeDir", L"C:\\Product");

    Load(Server("clusRDLL", "Online"));
    {
        CVirtualServerUtil util;
        int count = 0;
        EXPECT_EQ(util.EnumServersOnCurrentNode(nullptr, &count), CVirtualServerUtil::ENUM_VS_RESULT_MORE_DATA);
        CClusterVirtualServerLookupRequest request;
        request.m_wsNameOrIP = L"EVS1";
        CClusterVirtualServerInfo info;
        EXPECT_TRUE(util.QueryServerInfo(request, info));
        EXPECT_TRUE(CVirtualServerUtil::GetNormalServerInfo(info));
        EXPECT_TRUE(CVirtualServerUtil::GetSMTPInstanceInfo(L"EVS1", info));
    }
    CVirtualServerUtil::GetClusterQuorumModeByRegKey();
    CVirtualServerUtil::QueryIISSiteID();
    EXPECT_TRUE(CVirtualServerUtil::AtLeastOneExchangeResourceDLLOnlineOnCurrentNode());
    EXPECT_TRUE(EveryLineLeadsToItsStatement());

    // The life of the product's resource, with the failures that each step logs in its own words.
    EXPECT_TRUE(CVirtualServerUtil::TurnOffKOVAResourceOnCurrentNode(L"EVS1", true, 2000));
    EXPECT_TRUE(CVirtualServerUtil::TurnOnKOVAResourceOnCurrentNode(L"EVS1", true, 2000));
    EXPECT_FALSE(CVirtualServerUtil::TurnOnKOVAResourceOnCurrentNode(L"EVS9", true, 2000));
    EXPECT_TRUE(CVirtualServerUtil::DeleteKOVAResurceOnCurrentNode(L"EVS1"));
    EXPECT_TRUE(CVirtualServerUtil::RestartSmtpVirtualServerInstanceResourceOnCurrentNode());
    const auto create = [](const wchar_t* server, int mode) {
        return CVirtualServerUtil::CreateKOVAResource(L"F:\\Root", L"KOVA", L"F:\\Data", server, L"", mode);
    };
    EXPECT_FALSE(create(nullptr, CVirtualServerUtil::CLUSTER_QUORUM_CCR));
    EXPECT_FALSE(create(L"EVS1", 7));
    EXPECT_TRUE(create(L"EVS1", CVirtualServerUtil::CLUSTER_QUORUM_SINGLE_COPY));
    EXPECT_FALSE(create(L"EVS1", CVirtualServerUtil::CLUSTER_QUORUM_SINGLE_COPY));
    EXPECT_TRUE(EveryLineLeadsToItsStatement());

    CCluster cluster;
    ASSERT_TRUE(cluster.OpenByLPC());
    CClusterGroup group;
    ASSERT_TRUE(cluster.OpenGroupByName(group, L"EVS1"));
    std::list<std::wstring> names;
    EXPECT_TRUE(group.EnumStorageResourceNamesInGroup(cluster, names));
    CClusterResource disk;
    ASSERT_TRUE(cluster.OpenResourceByName(disk, L"EVS1 Disk"));
    EXPECT_FALSE(cluster.OpenResourceByName(disk, L"EVS1 Disk"));
    std::vector<std::wstring> paths;
    EXPECT_TRUE(GetDiskLettersFromResource(disk.GetResourceHandle(), paths));
    EXPECT_FALSE(disk.SetDWORDProperty(CLUSCTL_RESOURCE_SET_COMMON_PROPERTIES, nullptr, 1));
    Platform().FailCall("ClusterResourceControl", ERROR_RESOURCE_NOT_AVAILABLE);
    EXPECT_EQ(disk.GetSystemStringProperty(CClusterResource::RES_PROP_NAME, true), nullptr);
    Platform().FailCall("ClusterEnum", RPC_S_SERVER_UNAVAILABLE, 1, FaultMode::FromThenOn);
    EXPECT_FALSE(cluster.EnumResourceNamesByType(L"clusRDLL", names));
    EXPECT_TRUE(EveryLineLeadsToItsStatement());

    EXPECT_THAT(
        places.Reached(),
        IsSupersetOf(Files{
            "cluster/Cluster.cpp",           "cluster/DiskPaths.cpp",          "cluster/Group.cpp",
            "cluster/Resource.cpp",          "cluster/ResourceProperties.cpp", "platform/ControlReply.cpp",
            "platform/NameEnumeration.cpp",  "settings/ProductSettings.cpp",   "virtualserver/Creation.cpp",
            "virtualserver/Deletion.cpp",    "virtualserver/HostSettings.cpp", "virtualserver/Instance.cpp",
            "virtualserver/LookUp.cpp",      "virtualserver/PlainServer.cpp",  "virtualserver/ProductResource.cpp",
            "virtualserver/ServerList.cpp",  "virtualserver/ServerRecord.cpp", "virtualserver/SmtpRestart.cpp",
            "virtualserver/StoreOnline.cpp", "virtualserver/Switching.cpp"}));
}

TEST_F(LogPlacesOnVcs, LeadToTheStatementInWhicheverFileItIs) {
    Registry();
    tools.AllowUnscripted();
    tools.AnswerPrefix(L"hares -list", "EVS1-Lanman   NODE1\r\n");
    tools.AnswerPrefix(L"hares -display", "#Resource   Attribute   System   Value\r\nr   a   global   EVS1\r\n");
    CVeritasVirtualServerInfo info;
    EXPECT_TRUE(cluster.CollectEVSInfo(L"EVS1", info));
    std::vector<std::wstring> names;
    EXPECT_TRUE(cluster.FindMostParentMountVResourceNameInGroup(L"EVS1", names));
    EXPECT_EQ(cluster.GetThirdPartyClusterType(), THIRD_PARTY_CLUSTER_TYPE_NONE);
    EXPECT_TRUE(cluster.CreateKOVAResources(info, true, true, nullptr, nullptr, nullptr));
    EXPECT_TRUE(cluster.CollectKOVAResNames(names));
    // There is no such service to wait for.
    EXPECT_TRUE(cluster.CheckIfGenericServiceResourceExistsAndTurnItOn(L"EVS1", L"NoSuchService", L"NODE1", 1));
    EXPECT_TRUE(EveryLineLeadsToItsStatement());

    EXPECT_THAT(places.Reached(),
                IsSupersetOf(Files{"platform/ToolProcess.cpp", "settings/ProductSettings.cpp", "veritas/ProductSet.cpp",
                                   "veritas/Queries.cpp", "veritas/ResourceOperations.cpp", "veritas/ToolRun.cpp",
                                   "veritas/VirtualServers.cpp"}));
}

TEST(LogPlaces, EveryFileThatLogsIsSampledAbove) {
    EXPECT_EQ(LoggedPlaces(CLUSUTIL_SOURCE_FOLDER).Files(), (Files{"cluster/Cluster.cpp",
                                                                   "cluster/DiskPaths.cpp",
                                                                   "cluster/Group.cpp",
                                                                   "cluster/Resource.cpp",
                                                                   "cluster/ResourceProperties.cpp",
                                                                   "platform/ControlReply.cpp",
                                                                   "platform/NameEnumeration.cpp",
                                                                   "platform/ToolProcess.cpp",
                                                                   "settings/ProductSettings.cpp",
                                                                   "veritas/ProductSet.cpp",
                                                                   "veritas/Queries.cpp",
                                                                   "veritas/ResourceOperations.cpp",
                                                                   "veritas/ToolRun.cpp",
                                                                   "veritas/VirtualServers.cpp",
                                                                   "virtualserver/Creation.cpp",
                                                                   "virtualserver/Deletion.cpp",
                                                                   "virtualserver/HostSettings.cpp",
                                                                   "virtualserver/Instance.cpp",
                                                                   "virtualserver/LookUp.cpp",
                                                                   "virtualserver/PlainServer.cpp",
                                                                   "virtualserver/ProductResource.cpp",
                                                                   "virtualserver/ServerList.cpp",
                                                                   "virtualserver/ServerRecord.cpp",
                                                                   "virtualserver/SmtpRestart.cpp",
                                                                   "virtualserver/StoreOnline.cpp",
                                                                   "virtualserver/Switching.cpp"}));
}

TEST(LogPlaces, AWrongTagNumberOrTextIsSeen) {
    LoggedPlaces places(CLUSUTIL_SOURCE_FOLDER);
    EXPECT_NE(places.Misled({0x102, ".\\clus_Cluster.cpp", 99001, "text"}), "");
    EXPECT_NE(places.Misled({0x102, ".\\clus_VirtualServerUtil.cpp", 1001, "text"}), "");
    EXPECT_TRUE(CanMake("Resource %s, code: %08x.", "Resource A, code: 0000138f."));
    EXPECT_FALSE(CanMake("Resource %s, code: %08x.", "Resource A, code: 0000138f"));
}

} // namespace
