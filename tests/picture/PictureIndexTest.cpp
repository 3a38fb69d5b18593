#include "PictureBuilder.h"

#include "picture/PictureIndex.h"

#include <gtest/gtest.h>

using namespace picture;

TEST(PictureIndex, FindsByNameLetterForLetter) {
    PictureBuilder built;
    built.Add("Store", {"Disk"}).Add("Disk");
    const PictureIndex index(built.Cluster());
    EXPECT_EQ(index.ResourceNamed("Disk"), &built.Cluster().resources[1]);
    EXPECT_EQ(index.ResourceNamed("disk"), nullptr);
    EXPECT_EQ(index.GroupNamed("G"), &built.Cluster().groups.front());
    EXPECT_EQ(index.GroupNamed("g"), nullptr);
}

TEST(PictureIndex, OfTwoResourcesOfOneNameTheFirstIsFound) {
    PictureBuilder built;
    built.Add("Disk").Add("Disk", {"Other"});
    EXPECT_EQ(PictureIndex(built.Cluster()).ResourceNamed("Disk"), &built.Cluster().resources[0]);
}

TEST(PictureIndex, MembersAndDependantsComeInTheClustersOrder) {
    PictureBuilder built;
    built.Add("Store", {"Disk"}).Add("Disk").Add("Gate", {"Store", "Disk"});
    const PictureIndex index(built.Cluster());
    const std::vector<const Resource*>& members = index.MembersOf("G");
    ASSERT_EQ(members.size(), 3U);
    EXPECT_EQ(members[0]->name + members[1]->name + members[2]->name, "StoreDiskGate");
    EXPECT_TRUE(index.MembersOf("Other").empty());
    EXPECT_EQ(index.Dependants("Disk"), (std::vector<std::string>{"Store", "Gate"}));
    EXPECT_TRUE(index.Dependants("Gate").empty());
}
