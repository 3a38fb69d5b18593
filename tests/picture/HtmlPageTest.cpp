#include "PictureBuilder.h"

#include "picture/HtmlPage.h"

#include <gtest/gtest.h>

using namespace picture;

namespace {

const char Script[] = "<script>alert(1)</script>";

PageContent ContentOf(const ClusterPicture& cluster) {
    PageContent content;
    content.cluster = cluster;
    content.health = HealthOf(cluster, true);
    return content;
}

bool Holds(const std::string& text, const std::string& piece) {
    return text.find(piece) != std::string::npos;
}

} // namespace

TEST(HtmlPage, NoTextOfAnywhereBecomesMarkup) {
    PictureBuilder built;
    built.AddGroup(Script).Add(Script, {"\"><img src=x onerror=alert(1)>"}, Role::Store);
    ClusterPicture& cluster = built.Cluster();
    cluster.name = Script;
    cluster.nodes = {{Script, Script, false}};
    cluster.resources.back().type = Script;
    cluster.resources.back().state = Script;
    cluster.groups.back().node = Script;
    PageContent content = ContentOf(cluster);
    content.computer = content.simulated = content.madeAt = content.madeBy = Script;
    content.warnings = {Script};
    content.tables = {{Script, Script, {Script}, {{Script}}}, {Script, Script, {}, {}}};
    const std::string page = HtmlPage(content);
    EXPECT_FALSE(Holds(page, "<script>alert"));
    EXPECT_FALSE(Holds(page, "<img"));
    EXPECT_TRUE(Holds(page, "<td>&lt;script&gt;alert(1)&lt;/script&gt;</td>"));
}

TEST(HtmlPage, HasAPictureOfEachVirtualServer) {
    PictureBuilder built;
    built.Add("Store", {}, Role::Store).AddGroup("H").Add("Other").AddGroup("I").Add("Store 2", {}, Role::Store);
    const std::string page = HtmlPage(ContentOf(built.Cluster()));
    std::size_t pictures = 0;
    for (std::size_t at = page.find("<svg "); at != std::string::npos; at = page.find("<svg ", at + 1)) {
        ++pictures;
    }
    EXPECT_EQ(pictures, 2U);
    EXPECT_FALSE(Holds(page, "<?xml"));
}

TEST(HtmlPage, WithoutAClusterTellsTheSettings) {
    PageContent content;
    content.tables = {{"Settings", "", {"Setting", "Value"}, {{"Deployment", "plain-server"}}}};
    const std::string page = HtmlPage(content);
    EXPECT_TRUE(Holds(page, "<h1>No cluster</h1>"));
    EXPECT_TRUE(Holds(page, "<td>plain-server</td>"));
    EXPECT_FALSE(Holds(page, "All resources"));
}
