#include "PictureBuilder.h"

#include "picture/Tree.h"

#include <gtest/gtest.h>

using namespace picture;

namespace {

typedef std::vector<std::string> Texts;

// "├── name", with "..." behind a name whose children stand further up, and "?" behind one that is not there.
Texts Drawn(const ClusterPicture& cluster, const Texts& roots, Direction direction = Direction::DependsOn) {
    Texts lines;
    for (const TreeLine& line : TreeOf(PictureIndex(cluster), roots, direction)) {
        lines.push_back(line.branches + line.name + (line.isRepeated ? "..." : "") +
                        (line.resource == nullptr ? "?" : ""));
    }
    return lines;
}

} // namespace

TEST(Tree, BelowAResourceStandsWhatItDependsOn) {
    PictureBuilder built;
    built.Add("Store", {"Name", "Disk"}).Add("Name", {"Address"}).Add("Address").Add("Disk");
    EXPECT_EQ(Drawn(built.Cluster(), {"Store"}), (Texts{"Store", "├── Name", "│   └── Address", "└── Disk"}));
}

TEST(Tree, OrWhatNeedsIt) {
    PictureBuilder built;
    built.Add("Store", {"Name"}).Add("Gate", {"Name", "Store"}).Add("Name");
    EXPECT_EQ(Drawn(built.Cluster(), {"Name"}, Direction::NeededBy),
              (Texts{"Name", "├── Store", "│   └── Gate", "└── Gate"}));
}

TEST(Tree, WhatStandsTwiceHasItsDependenciesOnce) {
    PictureBuilder built;
    built.Add("One", {"Name"}).Add("Other", {"Name"}).Add("Name", {"Address"}).Add("Address");
    EXPECT_EQ(Drawn(built.Cluster(), {"One", "Other"}),
              (Texts{"One", "└── Name", "    └── Address", "Other", "└── Name..."}));
}

TEST(Tree, ACircleEndsWhereItBegan) {
    PictureBuilder built;
    built.Add("One", {"Other"}).Add("Other", {"One"});
    EXPECT_EQ(Drawn(built.Cluster(), RootsOf(PictureIndex(built.Cluster()), "G")),
              (Texts{"One", "└── Other", "    └── One..."}));
}

TEST(Tree, AResourceThatIsNotThereIsALineOfItsOwn) {
    PictureBuilder built;
    built.Add("One", {"Gone"});
    EXPECT_EQ(Drawn(built.Cluster(), {"One"}), (Texts{"One", "└── Gone?"}));
}

TEST(Tree, AChainMayBeLong) {
    PictureBuilder built;
    const int length = 3000; // deeper than a recursion would like under a sanitizer; the margins grow with its square
    for (int i = 0; i < length; ++i) {
        built.Add("R" + std::to_string(i), {"R" + std::to_string(i + 1)});
    }
    EXPECT_EQ(TreeOf(PictureIndex(built.Cluster()), {"R0"}, Direction::DependsOn).size(), length + 1U);
}

TEST(ProductBase, IsFoundThroughAnyNumberOfResources) {
    PictureBuilder built;
    const int length = 100000;
    for (int i = 0; i < length; ++i) {
        built.Add("R" + std::to_string(i), {"R" + std::to_string(i + 1)});
    }
    EXPECT_EQ(PictureIndex(built.Cluster()).BaseOf(built.Cluster().resources.front()).size(),
              static_cast<std::size_t>(length));
}

TEST(Tree, TheProductComesFirstAndWhatDependsOnNothingLast) {
    PictureBuilder built;
    built.Add("Alone").Add("Store", {"Disk"}).Add("Gate", {"Disk"}, Role::Product).Add("Disk");
    EXPECT_EQ(RootsOf(PictureIndex(built.Cluster()), "G"), (Texts{"Gate", "Store", "Alone"}));
}

TEST(ProductBase, IsAllThatTheProductRestsOn) {
    PictureBuilder built;
    built.Add("Gate", {"Store"}, Role::Product).Add("Store", {"Disk"}).Add("Disk").Add("Other", {"Disk"});
    EXPECT_EQ(PictureIndex(built.Cluster()).BaseOfProduct(), (std::set<std::string>{"Store", "Disk"}));
}
