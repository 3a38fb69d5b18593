// The IIS site that serves the home directory, with a stand-in for the web-server utility library's class.
#include "HostFixture.h"
#include "WebServerStandIn.h"

using namespace harness;

namespace {

class WebSiteId : public HostTest {
protected:
    const std::string Enter = "> CVirtualServerUtil::CheckIsClusterByRegKey()";
    const std::string Leave = "< CVirtualServerUtil::CheckIsClusterByRegKey()";

    int serverType = 0;
    int siteId = 1;

private:
    WebServerStandIn m_webServer{Platform(), serverType, siteId};
};

TEST_F(WebSiteId, SiteOfTheHomeDirectoryIsAsked) {
    SetText(L"HomeDir", L"D:\\Product");
    for (const int number : {1, 0, 77, -1}) {
        siteId = number;
        EXPECT_EQ(CVirtualServerUtil::QueryIISSiteID(), number);
        EXPECT_EQ(TakeLog(), Lines({Enter, "I Got IIS web site id: " + std::to_string(number), Leave}));
        EXPECT_EQ(TakeJournal(), Lines({"RegOpenKeyExW(" + ProductKeyText + ")", "RegQueryValueExW(HomeDir)",
                                        "CWebServer(D:\\Product)", "GetServerType()", "GetIISSiteID()", "~CWebServer()",
                                        "RegCloseKey()"}));
    }
}

TEST_F(WebSiteId, OtherServersHaveNoSite) {
    SetText(L"HomeDir", L"D:\\Product");
    for (const int type : {1, 2, -1}) {
        serverType = type;
        EXPECT_EQ(CVirtualServerUtil::QueryIISSiteID(), -1);
        EXPECT_EQ(TakeLog(), Lines({Enter, Leave}));
        EXPECT_EQ(TakeJournal(),
                  Lines({"RegOpenKeyExW(" + ProductKeyText + ")", "RegQueryValueExW(HomeDir)",
                         "CWebServer(D:\\Product)", "GetServerType()", "~CWebServer()", "RegCloseKey()"}));
    }
}

TEST_F(WebSiteId, AbsentHomeDirectoryIsAnError) {
    Registry().CreateKey(ProductKey);
    EXPECT_EQ(CVirtualServerUtil::QueryIISSiteID(), -1);
    EXPECT_EQ(TakeLog(), Lines({Enter, "E Cannot get home directory", Leave}));
    EXPECT_EQ(TakeJournal(),
              Lines({"RegOpenKeyExW(" + ProductKeyText + ")", "RegQueryValueExW(HomeDir)=2", "RegCloseKey()"}));
}

TEST_F(WebSiteId, HomeDirectoryMayHave1023Characters) {
    const std::wstring homeDir(1023, L'h');
    SetText(L"HomeDir", homeDir);
    EXPECT_EQ(CVirtualServerUtil::QueryIISSiteID(), 1);
    EXPECT_NE(TakeJournal().find("CWebServer(" + Utf8(homeDir) + ")"), std::string::npos);
    SetText(L"HomeDir", homeDir + L"h");
    EXPECT_EQ(CVirtualServerUtil::QueryIISSiteID(), -1);
    EXPECT_EQ(TakeJournal().find("CWebServer"), std::string::npos);
}

TEST_F(WebSiteId, MissingKeyHasNoSiteAndNoError) {
    EXPECT_EQ(CVirtualServerUtil::QueryIISSiteID(), -1);
    EXPECT_EQ(TakeLog(), Lines({Enter, Leave}));
    EXPECT_EQ(TakeJournal(), Lines({"RegOpenKeyExW(" + ProductKeyText + ")=2"}));
    const std::vector<OpenedKey> keys = TakeOpenedKeys();
    ASSERT_EQ(keys.size(), 1u);
    EXPECT_EQ(keys[0].access, static_cast<REGSAM>(KEY_READ));
}

// The default implementation of that library, on this machine without a web server.
using WebSiteIdOfThisMachine = HostTest;

TEST_F(WebSiteIdOfThisMachine, HomeDirectoryThatNoSiteServesHasNoSite) {
    SetText(L"HomeDir", L"Q:\\no such folder");
    EXPECT_EQ(CVirtualServerUtil::QueryIISSiteID(), -1);
}

} // namespace
