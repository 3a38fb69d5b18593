#include "PictureBuilder.h"

#include "picture/GraphText.h"

#include <gtest/gtest.h>

using namespace picture;

namespace {

std::vector<GroupDrawing> Gate() {
    PictureBuilder built;
    built.Add("Gate", {"Disk \"F\\n\" & <b>"}, Role::Product).Add("Disk \"F\\n\" & <b>");
    return DrawCluster(PictureIndex(built.Cluster()));
}

bool Holds(const std::string& text, const std::string& piece) {
    return text.find(piece) != std::string::npos;
}

} // namespace

TEST(Drawing, ADependencyOutsideTheGroupIsDrawnAsForeign) {
    PictureBuilder built;
    built.Add("Here", {"There", "Gone"}).AddGroup("H").Add("There");
    const std::vector<GroupDrawing> drawings =
        DrawGroups(PictureIndex(built.Cluster()), {&built.Cluster().groups.front()});
    ASSERT_EQ(drawings.size(), 1U);
    ASSERT_EQ(drawings[0].boxes.size(), 3U);
    EXPECT_EQ(drawings[0].boxes[1].look, Look::Foreign);
    EXPECT_EQ(drawings[0].boxes[1].state, "online");
    EXPECT_EQ(drawings[0].boxes[2].state, "unknown");
    EXPECT_EQ(drawings[0].lines.size(), 2U);
}

TEST(Drawing, ResourcesOfUnknownGroupsStandLast) {
    PictureBuilder built;
    built.Add("One");
    built.Cluster().resources.back().group.clear();
    const std::vector<GroupDrawing> drawings = DrawCluster(PictureIndex(built.Cluster()));
    ASSERT_EQ(drawings.size(), 2U);
    EXPECT_EQ(drawings[1].title, "Group not known");
}

TEST(DotText, NamesStandInLabelsWithWhatMeansSomethingEscaped) {
    const std::string text = DotText(Gate());
    EXPECT_TRUE(Holds(text, "g0r1 [label=\"Disk \\\"F\\\\n\\\" &amp; <b>\\nType, online\"")) << text;
    EXPECT_TRUE(Holds(text, "g0r0 -> g0r1;\n")) << text;
    EXPECT_TRUE(Holds(text, "penwidth=3")) << text; // the product
}

TEST(MermaidText, NamesStandInLabelsAsCodes) {
    const std::string text = MermaidText(Gate());
    EXPECT_TRUE(Holds(text, "g0r1[\"Disk #34;F#92;n#34; #38; #60;b#62;<br/>Type, online\"]:::base\n")) << text;
    EXPECT_TRUE(Holds(text, "g0r0[\"Gate<br/>Type, online\"]:::product\n")) << text;
    EXPECT_TRUE(Holds(text, "    g0r0 --> g0r1\n")) << text;
}
