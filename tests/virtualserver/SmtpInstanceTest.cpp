// GetSMTPInstanceInfo: the instances of a virtual server's group, up to the room in the record.
#include "ServerFixture.h"

using namespace harness;
using ::testing::Contains;
using ::testing::ElementsAre;

namespace {

class SmtpInstances : public ServerTest {};

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

TEST_F(SmtpInstances, FailAtEachStep) {
    for (const char* call : {"OpenCluster", "ClusterOpenEnum", "OpenClusterResource(EVS1 Name)",
                             "GetClusterResourceState", "OpenClusterGroup", "ClusterGroupOpenEnum"}) {
        SCOPED_TRACE(call);
        ClusterOf(OneServer());
        Platform().FailCall(call, 5);
        Info info;
        EXPECT_FALSE(Util::GetSMTPInstanceInfo(L"EVS1", info));
        EXPECT_EQ(info.m_nSmtpInstanceCount, -1);
        EXPECT_THAT(TakeLog(), ::testing::EndsWith("< CVirtualServerUtil::GetSMTPInstanceInfo()\n"));
    }
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
