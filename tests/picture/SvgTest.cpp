#include "PictureBuilder.h"

#include "picture/Svg.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace picture;

namespace {

std::size_t CountOf(const std::string& text, const std::string& piece) {
    std::size_t count = 0;
    for (std::size_t at = text.find(piece); at != std::string::npos; at = text.find(piece, at + 1)) {
        ++count;
    }
    return count;
}

std::string FileOf(const ClusterPicture& cluster) {
    return SvgPicture(DrawCluster(PictureIndex(cluster)), SvgForm::File);
}

} // namespace

TEST(Svg, TheProductAndItsBaseStandOut) {
    PictureBuilder built;
    built.Add("Gate", {"Disk"}, Role::Product).Add("Disk").Add("Other", {"Disk"});
    const std::string svg = FileOf(built.Cluster());
    EXPECT_EQ(CountOf(svg, "<g class=\"cp-product cp-online\">"), 1U);
    EXPECT_EQ(CountOf(svg, "<g class=\"cp-base cp-online\">"), 1U);
    EXPECT_EQ(CountOf(svg, "<g class=\"cp-plain cp-online\">"), 1U);
    EXPECT_EQ(CountOf(svg, "class=\"cp-line cp-line-product\""), 1U);
    EXPECT_EQ(CountOf(svg, "class=\"cp-line\""), 1U);
}

TEST(Svg, NamesOfAnyCharactersAreShown) {
    PictureBuilder built;
    built.Add("<script>\x01</script>").Add("]]>&amp;\"'").Add("\xFF");
    const std::string svg = FileOf(built.Cluster());
    EXPECT_EQ(CountOf(svg, "<script"), 0U);
    EXPECT_EQ(CountOf(svg, "&lt;script&gt;\\x01&lt;/script&gt;</text>"), 1U);
    EXPECT_EQ(CountOf(svg, "]]&gt;&amp;amp;&quot;&#39;</text>"), 1U);
    EXPECT_TRUE(
        std::none_of(svg.begin(), svg.end(), [](char c) { return (c >= 0 && c < 0x20 && c != '\n') || c == '\xFF'; }));
}

TEST(Svg, ALongNameHasTwoLinesPartedInTheMiddle) {
    PictureBuilder built;
    built.Add("Exchange Information Store (EXVS-MAIL1)").Add("EVS1-OXASAService-OfTheArchive").Add("IP Address 1");
    const std::string svg = FileOf(built.Cluster());
    EXPECT_EQ(CountOf(svg, ">Exchange Information</text>"), 1U);
    EXPECT_EQ(CountOf(svg, ">Store (EXVS-MAIL1)</text>"), 1U);
    EXPECT_EQ(CountOf(svg, ">EVS1-OXASAService-</text>"), 1U);
    EXPECT_EQ(CountOf(svg, ">OfTheArchive</text>"), 1U);
    EXPECT_EQ(CountOf(svg, ">IP Address 1</text>"), 1U);
}

TEST(Svg, ALongNameIsShortenedAndToldWhole) {
    PictureBuilder built;
    const std::string name(200, 'M');
    built.Add(name);
    const std::string svg = FileOf(built.Cluster());
    EXPECT_EQ(CountOf(svg, "<title>" + name + "\n"), 1U);
    EXPECT_EQ(CountOf(svg, ">" + name + "</text>"), 0U);
    EXPECT_EQ(CountOf(svg, "M...M"), 1U);
}

TEST(Svg, HowLongANameIsDoesNotShowInItsShortForm) {
    const auto shortFormOf = [](std::size_t length) {
        PictureBuilder built;
        built.Add(std::string(length, 'M'));
        const std::string svg = FileOf(built.Cluster());
        const std::size_t dots = svg.find("M...M");
        const std::size_t begin = svg.rfind('>', dots) + 1;
        return svg.substr(begin, svg.find('<', dots) - begin);
    };
    const std::string some = shortFormOf(60);
    EXPECT_EQ(CountOf(some, "M") + 3, some.size());
    EXPECT_LT(some.size(), 40U);
    EXPECT_EQ(shortFormOf(200), some);
    EXPECT_EQ(shortFormOf(100000), some); // at once: not one character after the other is left out
}

TEST(Svg, AGroupWithoutResourcesSaysSo) {
    EXPECT_EQ(CountOf(FileOf(PictureBuilder().Cluster()), ">no resources</text>"), 1U);
}

TEST(Svg, InAPageItBringsNoRules) {
    PictureBuilder built;
    built.Add("One");
    const std::string svg = SvgPicture(DrawCluster(PictureIndex(built.Cluster())), SvgForm::Inline);
    EXPECT_EQ(CountOf(svg, "<style>"), 0U);
    EXPECT_EQ(svg.find("<svg "), 0U);
    EXPECT_EQ(FileOf(built.Cluster()).find("<?xml "), 0U);
}

TEST(Svg, ThreeHundredResourcesHaveABoxEach) {
    PictureBuilder built;
    for (int i = 0; i < 300; ++i) {
        std::vector<std::string> base;
        if (i % 6 != 0) {
            base.push_back("Resource " + std::to_string(i - 1));
        }
        built.Add("Resource " + std::to_string(i), base);
    }
    EXPECT_EQ(CountOf(FileOf(built.Cluster()), "<rect class=\"cp-box\""), 300U);
}
