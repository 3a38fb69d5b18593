// GetSMTPInstanceInfo: the instances of a virtual server's group, up to the room in the record.
#include "ServerFixture.h"

using namespace harness;
using ::testing::Contains;
using ::testing::ElementsAre;

namespace {

Texts operator+(Texts left, const Texts& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

using SmtpInstances = ServerTest;

TEST_F(SmtpInstances, AreThoseOfTheServersGroup) {
    ModelBuilder model = OneServer();
    model.Resource("SMTP 1", SmtpType).Private("ProtocolInstanceId", 1u);
    model.Resource("SMTP 100", SmtpType).Private("ProtocolInstanceId", 100u);
    AddServer(model, "EVS2", "NODE-A", "192.0.2.2");
    model.Resource("SMTP other", SmtpType).Private("ProtocolInstanceId", 5u);
    ClusterOf(model);
    Info info;
    ASSERT_TRUE(Util::GetSMTPInstanceInfo(L"evs1", info));
    EXPECT_EQ(info.m_nSmtpInstanceCount, 2);
    EXPECT_EQ(info.m_dwSmtpInstanceIds[0], 1u);
    EXPECT_EQ(info.m_dwSmtpInstanceIds[1], 100u);
    EXPECT_THAT(TakeLog(), ::testing::EndsWith("< CVirtualServerUtil::GetSMTPInstanceInfo()\n"));
}

TEST_F(SmtpInstances, MayBeNone) {
    ClusterOf(OneServer());
    Info info;
    ASSERT_TRUE(Util::GetSMTPInstanceInfo(L"EVS1", info));
    EXPECT_EQ(info.m_nSmtpInstanceCount, 0);
}

TEST_F(SmtpInstances, FitUpTo128) {
    for (const unsigned count : {128u, 129u}) {
        ModelBuilder model = OneServer();
        for (unsigned i = 0; i < count; ++i) {
            model.Resource("SMTP " + std::to_string(i), SmtpType).Private("ProtocolInstanceId", 1000 + i);
        }
        ClusterOf(model);
        Guarded<Info> info;
        new (info.get()) Info;
        EXPECT_EQ(Util::GetSMTPInstanceInfo(L"EVS1", *info), count == 128);
        EXPECT_TRUE(info.GuardsIntact());
        EXPECT_EQ(info->m_nSmtpInstanceCount, 128);
        EXPECT_EQ(info->m_dwSmtpInstanceIds[127], 1127u);
        EXPECT_STREQ(info->m_wsServerIP, L"");
    }
}

TEST_F(SmtpInstances, ThatCannotBeReadKeepTheOnesBefore) {
    ModelBuilder model = OneServer();
    model.Resource("SMTP 1", SmtpType).Private("ProtocolInstanceId", 1u);
    model.Resource("SMTP 2", SmtpType).Private("ProtocolInstanceId", "two");
    ClusterOf(model);
    Info info;
    EXPECT_FALSE(Util::GetSMTPInstanceInfo(L"EVS1", info));
    EXPECT_EQ(info.m_nSmtpInstanceCount, 1);
    EXPECT_THAT(TakeLog(), ::testing::EndsWith("< CVirtualServerUtil::GetSMTPInstanceInfo()\n"));
}

TEST_F(SmtpInstances, AreNotCollectedOnAPlainServer) {
    Load(OneServer());
    PlainServer();
    Forget();
    Info info;
    info.m_nSmtpInstanceCount = 3;
    EXPECT_TRUE(Util::GetSMTPInstanceInfo(L"EVS1", info));
    EXPECT_EQ(info.m_nSmtpInstanceCount, -1);
    EXPECT_EQ(TakeLog(), Lines({"> CVirtualServerUtil::CheckIsClusterByRegKey()",
                                "< CVirtualServerUtil::CheckIsClusterByRegKey()"}));
}

// What is logged is the search's and the listing's, with nothing of its own but the exit.

const Texts Asked = {"> CVirtualServerUtil::CheckIsClusterByRegKey()",
                     "< CVirtualServerUtil::CheckIsClusterByRegKey()"};
const Texts Opened = Asked + Texts{"> CCluster::OpenByLPC()", "< CCluster::OpenByLPC()"};
const char Left[] = "< CVirtualServerUtil::GetSMTPInstanceInfo()";

// The search for the network name, and the listing of its group.
Texts Searched(const Texts& messages) {
    return Opened + Texts{"> CCluster::FindFirstResourceNameByNetworkName"} + messages +
           Texts{"< CClusterResource::FindFirstResourceNameByNetworkName"};
}
const Texts Found = Searched({"I Network name found: EVS1 Name for res:"});
Texts Listed(const Texts& inner, const Texts& outer) {
    return Found + Texts{"> EnumResourceNamesInGroupByType", "> EnumResourceNamesInGroup"} + inner +
           Texts{"< EnumResourceNamesInGroup"} + outer + Texts{"< EnumResourceNamesInGroupByType"};
}

ModelBuilder TwoInstances() {
    ModelBuilder model = OneServer();
    model.Resource("SMTP 1", SmtpType).Private("ProtocolInstanceId", 1u);
    model.Resource("SMTP 2", SmtpType).Private("ProtocolInstanceId", 2u);
    return model;
}

TEST_F(SmtpInstances, WholeTranscript) {
    ClusterOf(TwoInstances());
    ASSERT_TRUE(Util::CheckIsClusterByRegKey());
    Forget();
    Info info;
    ASSERT_TRUE(Util::GetSMTPInstanceInfo(L"EVS1", info));
    EXPECT_EQ(TakeLog(), Lines(Listed({}, {}) + Texts{Left}));
}

TEST_F(SmtpInstances, WholeTranscriptOfTheFailureOfEachStep) {
    const Texts opening = {"E Open resource failed:SMTP 2, err=5"};
    const struct {
        const char* name;
        const char* call;
        unsigned occurrence;
        int count; // as it is left in the record
        Texts log; // up to the exit
    } cases[] = {
        {"the cluster is not opened", "OpenCluster", 1, -1,
         Asked + Texts{"> CCluster::OpenByLPC()", "< CCluster::OpenByLPC(), err=5", "< CCluster::OpenByLPC()"}},
        {"its resources are not listed", "ClusterOpenEnum", 1, -1,
         Searched({"E calling ClusterOpenEnum failed", "E EnumNames failed"})},
        {"a resource of the search is not opened", "OpenClusterResource(EVS1 Name)", 1, -1,
         Searched({"E Open resource failed:EVS1 Name, err=5", "E Unable to open resource: EVS1 Name"})},
        {"the network name is not opened", "OpenClusterResource(EVS1 Name)", 2, -1,
         Found + Texts{"E Open resource failed:EVS1 Name, err=5"}},
        {"its state is not read", "GetClusterResourceState", 1, -1,
         Found + Texts{"E ClusterResourceStateUnknown == 0"}},
        {"the group is not opened", "OpenClusterGroup", 1, -1, Found + Texts{"E Open group failed, code:5"}},
        {"its resources are not listed by type", "ClusterGroupOpenEnum", 1, -1, Listed({"E NULL == hEnum"}, {})},
        {"an instance is not opened by the listing", "OpenClusterResource(SMTP 2)", 1, -1, Listed({}, opening)},
        {"an instance is not opened", "OpenClusterResource(SMTP 2)", 2, 1, Listed({}, {}) + opening},
        {"its properties are not read", "ClusterResourceControl(SMTP 2,GET_PRIVATE_PROPERTIES,128)", 1, 1,
         Listed({}, {}) + Texts{"E Calling ClusterResourceControl returns error, code:5"}},
        {"its number is not found", "ResUtilFindDwordProperty", 2, 1, Listed({}, {})},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        ClusterOf(TwoInstances());
        ASSERT_TRUE(Util::CheckIsClusterByRegKey());
        Forget();
        Platform().FailCall(c.call, 5, c.occurrence);
        Info info;
        EXPECT_FALSE(Util::GetSMTPInstanceInfo(L"EVS1", info));
        EXPECT_EQ(info.m_nSmtpInstanceCount, c.count);
        EXPECT_EQ(TakeLog(), Lines(c.log + Texts{Left}));
    }
}

TEST_F(SmtpInstances, WholeTranscriptOfAnUnknownServerAndOfTooMany) {
    ModelBuilder model = OneServer();
    for (unsigned i = 0; i < 129; ++i) {
        model.Resource("SMTP " + std::to_string(i), SmtpType).Private("ProtocolInstanceId", i);
    }
    ClusterOf(model);
    ASSERT_TRUE(Util::CheckIsClusterByRegKey());
    Forget();
    Info info;
    EXPECT_FALSE(Util::GetSMTPInstanceInfo(L"EVS9", info));
    EXPECT_EQ(TakeLog(), Lines(Searched({}) + Texts{Left}));
    EXPECT_FALSE(Util::GetSMTPInstanceInfo(L"EVS1", info));
    EXPECT_EQ(TakeLog(), Lines(Listed({}, {}) + Texts{Left}));
}

TEST_F(SmtpInstances, AreAskedForTheirNumberByItsExactName) {
    ClusterOf(TwoInstances());
    Info info;
    ASSERT_TRUE(Util::GetSMTPInstanceInfo(L"EVS1", info));
    EXPECT_EQ(Platform().CountCalls("ResUtilFindDwordProperty("), 2u);
    EXPECT_EQ(Platform().CountCalls("ResUtilFindDwordProperty(ProtocolInstanceId)"), 2u);
}

TEST_F(SmtpInstances, FailWhenAnInstanceCannotBeOpened) {
    ModelBuilder model = OneServer();
    model.Resource("SMTP 1", SmtpType).Private("ProtocolInstanceId", 1u);
    model.Resource("SMTP 2", SmtpType).Private("ProtocolInstanceId", 2u);
    ClusterOf(model);
    Platform().FailCall("OpenClusterResource(SMTP 2)", 5007, 2); // the first opening is the search by type
    Info info;
    EXPECT_FALSE(Util::GetSMTPInstanceInfo(L"EVS1", info));
    EXPECT_EQ(info.m_nSmtpInstanceCount, 1);
    EXPECT_EQ(info.m_dwSmtpInstanceIds[0], 1u);
    EXPECT_THAT(TakeLog(), ::testing::EndsWith("< CVirtualServerUtil::GetSMTPInstanceInfo()\n"));
}

TEST_F(SmtpInstances, MayHaveAnyNumber) {
    ModelBuilder model = OneServer();
    model.Resource("SMTP 1", SmtpType).Private("ProtocolInstanceId", 0xffffffffu);
    model.Resource("SMTP 2", SmtpType).Private("ProtocolInstanceId", 0u);
    ClusterOf(model);
    Info info;
    ASSERT_TRUE(Util::GetSMTPInstanceInfo(L"EVS1", info));
    EXPECT_EQ(info.m_nSmtpInstanceCount, 2);
    EXPECT_EQ(info.m_dwSmtpInstanceIds[0], 0xffffffffu);
    EXPECT_EQ(info.m_dwSmtpInstanceIds[1], 0u);
}

TEST_F(SmtpInstances, OfAnUnknownServerFail) {
    ClusterOf(OneServer());
    Info info;
    EXPECT_FALSE(Util::GetSMTPInstanceInfo(L"EVS9", info));
    EXPECT_EQ(info.m_nSmtpInstanceCount, -1);
    EXPECT_THAT(TakeLog(), ::testing::EndsWith("< CVirtualServerUtil::GetSMTPInstanceInfo()\n"));
}

} // namespace
