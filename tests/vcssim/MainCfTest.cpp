// Reading a main.cf.
#include "CfDocument.h"

#include <gmock/gmock.h>

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using vcssim::CfDocument;
using vcssim::CfError;

namespace {

// The line and the message of the error that reading gives.
std::string ErrorOf(const std::string& text) {
    try {
        const CfDocument document(text);
    } catch (const CfError& error) {
        return std::to_string(error.Line()) + ": " + error.what();
    }
    return "no error";
}

const char* const Mixed = "// a comment ( { \" \n"
                          "include \"types.cf\"\r\n"
                          "cluster C (\n\tUserNames = { admin = cDRp }\n\t)\n"
                          "system A\n"
                          "system B (\n\t)\n"
                          "remotecluster R ( Any thing \"at all\" { ( ) } )\n"
                          "group G (SystemList={A =0; B=1};AutoStartList = { A, }\n"
                          "  requires group H online local firm )\n"
                          "# another comment\n"
                          "T r1 ( X @A = \"a\\\"b\\\\c\" // behind\n X@B = plain\n"
                          " Nested = { k = { x, y = z }, l } )\n"
                          "r1 requires \"r2\"\n"
                          "T r2 ()\n"
                          "group H ( )\n"
                          "requires group G offline global\n";

} // namespace

TEST(MainCf, ReadsSectionsInAnySpacing) {
    const CfDocument document(Mixed);
    EXPECT_THAT(document.Includes(), ElementsAre("types.cf"));
    ASSERT_EQ(document.Systems().size(), 2u);
    EXPECT_EQ(document.Systems()[1].name, "B");
    ASSERT_EQ(document.Groups().size(), 2u);
    EXPECT_EQ(document.Groups()[0].resources.size(), 2u);
    EXPECT_EQ(document.Groups()[1].resources.size(), 0u);
    EXPECT_EQ(document.Clusters()[0].name, "C");
}

TEST(MainCf, ReadsValuesOfEveryKind) {
    const CfDocument document(Mixed);
    const vcssim::CfBlock& resource = *document.ResourceNamed("r1");
    EXPECT_EQ(resource.Find("X", "A")->value.text, "a\"b\\c");
    EXPECT_EQ(resource.Find("X", "B")->value.text, "plain");
    EXPECT_EQ(resource.Find("X", ""), nullptr);
    EXPECT_THAT(resource.Find("Nested", "")->value.Flat(), ElementsAre("k", "x", "y", "z", "l"));
    const vcssim::CfBlock& group = document.GroupNamed("G")->block;
    EXPECT_THAT(group.Find("SystemList", "")->value.Flat(), ElementsAre("A", "0", "B", "1"));
    EXPECT_THAT(group.Find("AutoStartList", "")->value.Flat(), ElementsAre("A"));
}

TEST(MainCf, ReadsDependenciesOfResourcesAndGroups) {
    const CfDocument document(Mixed);
    const vcssim::CfGroup& group = *document.GroupNamed("G");
    ASSERT_EQ(group.links.size(), 1u);
    EXPECT_EQ(group.links[0].parent, "r1");
    EXPECT_EQ(group.links[0].child, "r2");
    ASSERT_EQ(group.requires_.size(), 1u);
    EXPECT_EQ(group.requires_[0].child, "H");
    EXPECT_EQ(group.relationships[0], "online local firm");
    ASSERT_EQ(document.GroupNamed("H")->requires_.size(), 1u);
    EXPECT_EQ(document.GroupNamed("H")->relationships[0], "offline global");
}

TEST(MainCf, KeepsEveryByte) {
    for (const std::string& text :
         {std::string(Mixed), std::string(), std::string("\xEF\xBB\xBFgroup \"\xC3\xA4\xFF\" (\r\n)"),
          std::string("   \r\n\t// only comments"), std::string("system A\n\n\n")}) {
        EXPECT_EQ(CfDocument(text).Text(), text);
    }
}

TEST(MainCf, ReadsEightBitTexts) {
    const CfDocument document("group G ()\nT r ( A = \"\xC3\xA4\xFF\" B = \xE4\xF6 )");
    EXPECT_EQ(document.ResourceNamed("r")->Find("A", "")->value.text, "\xC3\xA4\xFF");
    EXPECT_EQ(document.ResourceNamed("r")->Find("B", "")->value.text, "\xE4\xF6");
}

TEST(MainCf, SaysWhatWasExpectedAndWhere) {
    EXPECT_EQ(ErrorOf("group G\n"), "2: expected '(' after 'G', found the end of the file");
    EXPECT_EQ(ErrorOf("group G (\n\tA 1\n\t)\n"), "2: expected '=' after the attribute 'A', found '1'");
    EXPECT_EQ(ErrorOf("group G (\n\tA = { a b }\n\t)\n"), "2: expected ',' or '}' in the value of 'A', found 'b'");
    EXPECT_EQ(ErrorOf("group G (\n\tA = \"open\n\t)\n"), "2: expected '\"' at the end of a text");
    EXPECT_EQ(ErrorOf("group G (\n\tA =\n\t)\n"), "3: expected the value of 'A', found ')'");
    EXPECT_EQ(ErrorOf("group G ()\nT r (\n"), "3: expected an attribute or ')' of 'r', found the end of the file");
    EXPECT_EQ(ErrorOf("group G ()\n\nfoo\n"),
              "4: expected a name or 'requires' after 'foo', found the end of the file");
    EXPECT_EQ(ErrorOf("odd x ( { )\n"), "1: expected '}' of 'x', found ')'");
    EXPECT_EQ(ErrorOf("system A (\n\x01)\n"), "2: unexpected character 0x01");
}

TEST(MainCf, RefusesThingsThatStandTwiceAndDependenciesOfNothing) {
    EXPECT_EQ(ErrorOf("group G ()\nT r ()\nU r ()"), "3: there is a second resource 'r'");
    EXPECT_EQ(ErrorOf("group G ()\ngroup G ()"), "2: there is a second group 'G'");
    EXPECT_EQ(ErrorOf("system S\nsystem S"), "2: there is a second system 'S'");
    EXPECT_EQ(ErrorOf("group G ()\nT r ( A = 1\nA = 2)"), "3: there is a second attribute 'A' in 'r'");
    EXPECT_EQ(ErrorOf("group G ()\nT r ()\nr requires s"), "3: there is no resource 's' in group 'G'");
    EXPECT_EQ(ErrorOf("group G ()\nT r ()\ngroup H ()\nT s ()\ns requires r"),
              "5: there is no resource 'r' in group 'H'");
    EXPECT_EQ(ErrorOf("group G ()\nrequires\nT r ()"), "3: expected '(' after 'T', found 'r'")
        << "no clause of its own";
}

TEST(MainCf, ClausesThatItDoesNotUnderstandStayAsTheyAre) {
    const std::string text = "group G (\n requires atleast 1 of H I\n X = 1\n )\nT r ()\nT s ()\nT t ()\n"
                             "r requires atleast 1 from s,\n  t\nr requires t\nrequires group H online sometimes\n"
                             "s requires t T u ()\n";
    CfDocument document(text);
    const auto kept = [&document](std::size_t i) {
        const vcssim::CfSpan span = document.Kept().at(i);
        return document.Text().substr(span.begin, span.end - span.begin);
    };
    ASSERT_EQ(document.Kept().size(), 2u);
    EXPECT_EQ(kept(0), "requires atleast 1 of H I");
    EXPECT_EQ(kept(1), "r requires atleast 1 from s,\n  t");
    EXPECT_EQ(document.Groups()[0].links.size(), 2u) << "of r to t, and of s to t";
    EXPECT_NE(document.ResourceNamed("u"), nullptr);
    EXPECT_THAT(document.Groups()[0].relationships, ElementsAre("online sometimes"));

    document.SetGroupAttribute("G", "X", "2");
    document.AddLink("r", "s");
    EXPECT_EQ(kept(0), "requires atleast 1 of H I");
    EXPECT_EQ(kept(1), "r requires atleast 1 from s,\n  t");
}

TEST(MainCf, ErrorsTellLineAndColumn) {
    const auto placeOf = [](const char* text) {
        try {
            const CfDocument document(text);
        } catch (const CfError& error) {
            return std::to_string(error.Line()) + ":" + std::to_string(error.Column());
        }
        return std::string();
    };
    EXPECT_EQ(placeOf("group"), "1:6");
    EXPECT_EQ(placeOf("group G (\n  A 1 )"), "2:5");
    EXPECT_EQ(placeOf("group G ()\n\tT r ()\n\tT r ()\n"), "3:2");
    EXPECT_EQ(placeOf("group G ()\nT r ()\n r requires s"), "3:2");
    EXPECT_EQ(placeOf("group G (\n A = \"b\n"), "2:8");
}

TEST(MainCf, LimitsNesting) {
    EXPECT_THAT(ErrorOf("group G ( A = " + std::string(100000, '{')), HasSubstr("no more than 16 braces"));
}

TEST(MainCf, AnswersEveryTruncationWithADocumentOrAMessage) {
    const std::string text(Mixed);
    std::size_t broken = 0;
    for (std::size_t length = 0; length < text.size(); ++length) {
        try {
            const std::string cut = text.substr(0, length);
            EXPECT_EQ(CfDocument(cut).Text(), cut);
        } catch (const CfError& error) {
            ++broken;
            EXPECT_GE(error.Line(), 1u);
            EXPECT_STRNE(error.what(), "");
        }
    }
    EXPECT_GT(broken, text.size() / 2);
}

TEST(MainCf, WritesNamesBareOnlyIfTheyMayBe) {
    EXPECT_EQ(vcssim::QuotedCf("EVS1-IP_2"), "EVS1-IP_2");
    EXPECT_EQ(vcssim::QuotedCf(""), "\"\"");
    EXPECT_EQ(vcssim::QuotedCf("1a"), "\"1a\"");
    EXPECT_EQ(vcssim::QuotedCf("a\"\\b c"), "\"a\\\"\\\\b c\"");
    EXPECT_TRUE(vcssim::IsCfName("EVS1-IP"));
    EXPECT_FALSE(vcssim::IsCfName("group"));
    EXPECT_FALSE(vcssim::IsCfName("requires"));
    EXPECT_FALSE(vcssim::IsCfName("a b"));
    EXPECT_FALSE(vcssim::IsCfName(""));
}
