// The command runner with scripted tools: what is asked of the platform, and what is logged.
#include "VeritasTest.h"

#include "clus_VeritasCluster.h"

using namespace harness;

namespace {

typedef std::vector<std::wstring> Names;

class VeritasRunner : public VeritasTest {
protected:
    CVeritasCluster cluster;
};

TEST_F(VeritasRunner, ACommandWithoutArgumentsEndsInOneBlank) {
    tools.AnswerPrefix(L"", "");
    EXPECT_TRUE(cluster.SwitchToReadWriteMode());
    EXPECT_TRUE(cluster.SwitchToReadOnlyMode());
    EXPECT_EQ(tools.TakeCommandLines(), (CommandList{L"haconf -makerw ", L"haconf -dump -makero "}));
}

} // namespace
