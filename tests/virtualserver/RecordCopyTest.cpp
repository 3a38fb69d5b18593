// Both enumerations copy whole records, so that nothing of the caller's memory is left in them.
#include "RecordText.h"
#include "ServerFixture.h"

using namespace harness;

namespace {

using RecordCopy = ServerTest;

// The records of this node, in memory that was poison before.
void Enumerate(Guarded<Info, 2>& records, int expected) {
    Util util;
    int count = 2;
    ASSERT_EQ(util.EnumServersOnCurrentNode(records.get(), &count), Util::ENUM_VS_RESULT_SUCCESS);
    ASSERT_EQ(count, expected);
    EXPECT_TRUE(records.GuardsIntact());
}

void ExpectZerosWhereNothingWasSet(const Info& info) {
    const auto* ids = reinterpret_cast<const unsigned char*>(info.m_dwSmtpInstanceIds);
    static_assert(sizeof(info.m_dwSmtpInstanceIds) == 512, "all numbers of the record");
    EXPECT_TRUE(std::all_of(ids, ids + 512, [](unsigned char byte) { return byte == 0; }));
    EXPECT_TRUE(TailIsZero(info.m_wsServerIP));
    EXPECT_TRUE(TailIsZero(info.m_wsServerName));
    EXPECT_TRUE(TailIsZero(info.m_wsDataPath));
    EXPECT_TRUE(TailIsZero(info.m_wsServerGUID));
}
TEST_F(RecordCopy, OfVirtualServersIsWhole) {
    ClusterOf(ThreeServers());
    Guarded<Info, 2> records;
    ASSERT_NO_FATAL_FAILURE(Enumerate(records, 2));
    for (std::size_t i = 0; i < 2; ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(Text(records[i].m_wsServerName), i == 0 ? L"EVS1" : L"EVS2");
        EXPECT_EQ(records[i].m_nSmtpInstanceCount, -1);
        ExpectZerosWhereNothingWasSet(records[i]);
    }
}

TEST_F(RecordCopy, OfThePlainServerIsWhole) {
    PlainServer();
    Guarded<Info, 2> records;
    ASSERT_NO_FATAL_FAILURE(Enumerate(records, 1));
    EXPECT_EQ(Text(records[0].m_wsServerName), L"NODE-A");
    EXPECT_EQ(records[0].m_nSmtpInstanceCount, -1);
    ExpectZerosWhereNothingWasSet(records[0]);
    EXPECT_TRUE(records.Untouched(1));
}

TEST_F(RecordCopy, OfAPlainServerThatCouldNotBeReadIsWhole) {
    Registry().SetNumber(ProductKey, L"IsCluster", 0);
    Guarded<Info, 2> records;
    ASSERT_NO_FATAL_FAILURE(Enumerate(records, 1));
    EXPECT_FALSE(records[0].m_bIsOnline);
    EXPECT_EQ(Text(records[0].m_wsServerName), L"");
    ExpectZerosWhereNothingWasSet(records[0]);
}

} // namespace
