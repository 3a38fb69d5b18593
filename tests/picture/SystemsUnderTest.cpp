#include "picture/SystemsUnder.h"

#include <gtest/gtest.h>

using namespace picture;

namespace {

ClusterPicture Systems(Kind kind) {
    ClusterPicture cluster;
    cluster.kind = kind;
    cluster.nodes = {{"NODE1", "running", true}, {"NODE2", "exited", false}, {"NODE3", "leaving", false}};
    return cluster;
}

} // namespace

TEST(SystemsUnder, OnlyOneThatIsRunningRuns) {
    const ClusterPicture cluster = Systems(Kind::Vcs);
    EXPECT_EQ(RunningUnder(cluster, "NODE1"), Running);
    EXPECT_EQ(RunningUnder(cluster, "NODE2"), NotRunning);
    EXPECT_EQ(RunningUnder(cluster, "NODE3"), NotRunning);
}

TEST(SystemsUnder, OfOneThatTheClusterDoesNotListItIsNotKnown) {
    EXPECT_EQ(RunningUnder(Systems(Kind::Vcs), "node1"), RunningUnknown) << "letter case counts";
}

TEST(SystemsUnder, NothingIsSaidOfNoSystemAndOfAFailoverCluster) {
    EXPECT_EQ(RunningUnder(Systems(Kind::Vcs), ""), "");
    EXPECT_EQ(RunningUnder(Systems(Kind::Failover), "NODE2"), "");
}
