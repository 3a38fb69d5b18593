// Changing a main.cf.
#include "CfDocument.h"

#include <gmock/gmock.h>

using vcssim::CfDocument;

namespace {

const char* const Dumped = "group G (\n"
                           "\tSystemList = { A = 0 }\n"
                           "\t)\n"
                           "\n"
                           "\tIP r1 (\n"
                           "\t\tAddress = \"1.2.3.4\" // first\n"
                           "\t\t)\n"
                           "\n"
                           "\tNIC r2 (\n"
                           "\t\t)\n"
                           "\n"
                           "\tr1 requires r2\n"
                           "\n"
                           "\n"
                           "\t// resource dependency tree\n"
                           "\n"
                           "group H (\n"
                           "\t)\n";

std::string With(std::string text, const std::string& what, const std::string& by) {
    return text.replace(text.find(what), what.size(), by);
}

} // namespace

TEST(MainCfEdit, WritesANewResourceBehindTheOthersOfItsGroup) {
    CfDocument document(Dumped);
    document.AddResource("G", "MountV", "r3");
    EXPECT_EQ(document.Text(), With(Dumped, "\tNIC r2 (\n\t\t)\n", "\tNIC r2 (\n\t\t)\n\n\tMountV r3 (\n\t\t)\n"));
    EXPECT_EQ(document.GroupOf("r3")->block.name, "G");
}

TEST(MainCfEdit, WritesTheFirstResourceAndTheFirstLinkOfAGroup) {
    CfDocument document(Dumped);
    document.AddResource("H", "MountV", "r3");
    document.AddResource("H", "VMDg", "r4");
    document.AddLink("r3", "r4");
    EXPECT_EQ(document.Text(), With(Dumped, "group H (\n\t)\n",
                                    "group H (\n\t)\n\n\tMountV r3 (\n\t\t)\n\n\tVMDg r4 (\n\t\t)\n\n"
                                    "\tr3 requires r4\n"));
}

TEST(MainCfEdit, WritesALinkBehindTheOthers) {
    CfDocument document(Dumped);
    document.AddResource("G", "MountV", "r3");
    const std::string before = document.Text();
    document.AddLink("r3", "r1");
    EXPECT_EQ(document.Text(), With(before, "\tr1 requires r2\n", "\tr1 requires r2\n\tr3 requires r1\n"));
    document.RemoveLink("r3", "r1");
    EXPECT_EQ(document.Text(), before);
}

TEST(MainCfEdit, ReplacesAValueInItsPlace) {
    CfDocument document(Dumped);
    document.SetAttribute("r1", "Address", "", vcssim::QuotedCf("a\\b"));
    EXPECT_EQ(document.Text(), With(Dumped, "\"1.2.3.4\"", "\"a\\\\b\""));
}

TEST(MainCfEdit, WritesANewAttributeAsTheLastLine) {
    CfDocument document(Dumped);
    document.SetAttribute("r1", "SubNetMask", "", "mask");
    EXPECT_EQ(document.Text(), With(Dumped, "// first\n", "// first\n\t\tSubNetMask = mask\n"));
    document.RemoveAttribute("r1", "SubNetMask");
    EXPECT_EQ(document.Text(), Dumped);
    document.SetAttribute("r2", "Enabled", "", "0");
    EXPECT_EQ(document.Text(), With(Dumped, "NIC r2 (\n", "NIC r2 (\n\t\tEnabled = 0\n"));
}

TEST(MainCfEdit, WritesValuesOfSystemsTogether) {
    CfDocument document("group G ()\n\tIP r (\n\t\tM @A = 1\n\t\tN = 2\n\t\t)\n");
    document.SetAttribute("r", "M", "B", "3");
    EXPECT_EQ(document.Text(), "group G ()\n\tIP r (\n\t\tM @A = 1\n\t\tM @B = 3\n\t\tN = 2\n\t\t)\n");
    document.RemoveAttribute("r", "M");
    EXPECT_EQ(document.Text(), "group G ()\n\tIP r (\n\t\tN = 2\n\t\t)\n");
}

TEST(MainCfEdit, RemovesAResourceWithItsLinksAndNothingElse) {
    CfDocument document(Dumped);
    document.AddResource("G", "MountV", "r3");
    document.AddLink("r1", "r3");
    document.AddLink("r3", "r2");
    document.RemoveResource("r3");
    EXPECT_EQ(document.Text(), Dumped);
    document.RemoveResource("r1");
    EXPECT_EQ(document.ResourceNamed("r1"), nullptr);
    EXPECT_TRUE(document.GroupNamed("G")->links.empty());
}

TEST(MainCfEdit, RemovesAGroupWithAllThatStandsInIt) {
    CfDocument document(std::string(Dumped) + "\ngroup Other (\n\t)\n\n\trequires group G online local "
                                              "firm\n\trequires atleast 1 group G online local firm\n");
    document.RemoveGroup("Other");
    EXPECT_EQ(document.GroupNamed("Other"), nullptr);
    EXPECT_TRUE(document.Kept().empty());
    EXPECT_EQ(document.Text().substr(0, std::string(Dumped).size()), Dumped);
    EXPECT_EQ(document.Text().find_first_not_of(" \t\n", std::string(Dumped).size()), std::string::npos);
}

TEST(MainCfEdit, RemovesAGroupBetweenOthers) {
    CfDocument document("group A (\n\t)\n\ngroup B (\n\t)\n\ngroup C (\n\t)\n\n\tT c (\n\t\t)\n");
    document.RemoveGroup("B");
    EXPECT_EQ(document.Text(), "group A (\n\t)\n\ngroup C (\n\t)\n\n\tT c (\n\t\t)\n");
}

TEST(MainCfEdit, EditsStatementsThatShareALine) {
    CfDocument document("group G(A=1)T r1(X=\"1\"Y=2)T r2()r1 requires r2 r2 requires\"r3\"T r3()");
    document.SetAttribute("r1", "X", "", "5");
    EXPECT_EQ(document.ResourceNamed("r1")->Find("X", "")->value.text, "5");
    EXPECT_EQ(document.ResourceNamed("r1")->Find("Y", "")->value.text, "2");
    document.RemoveLink("r1", "r2");
    EXPECT_EQ(document.GroupNamed("G")->links.size(), 1u);
    document.SetAttribute("r2", "Z", "", "7");
    EXPECT_EQ(document.ResourceNamed("r2")->Find("Z", "")->value.text, "7");
    document.AddResource("G", "T", "r4");
    document.AddLink("r4", "r1");
    EXPECT_EQ(document.GroupNamed("G")->links.size(), 2u);
}

TEST(MainCfEdit, UsesTheLineEndsOfTheFile) {
    CfDocument document("group G (\r\n\t)\r\n");
    document.AddResource("G", "T", "r");
    document.SetAttribute("r", "A", "", "1");
    EXPECT_EQ(document.Text(), "group G (\r\n\t)\r\n\r\n\tT r (\r\n\t\tA = 1\r\n\t\t)\r\n");
}

TEST(MainCfEdit, EndsTheLastLineBeforeWritingBehindIt) {
    CfDocument document("group G ()");
    document.AddResource("G", "T", "r");
    EXPECT_EQ(document.Text(), "group G ()\n\n\tT r (\n\t\t)\n");
}

TEST(MainCfEdit, KeepsTheDocumentWhenAChangeCannotBeRead) {
    CfDocument document(Dumped);
    EXPECT_THROW(document.SetAttribute("r1", "Address", "", "{ open"), vcssim::CfError);
    EXPECT_EQ(document.Text(), Dumped);
    EXPECT_NE(document.ResourceNamed("r1"), nullptr);
}
