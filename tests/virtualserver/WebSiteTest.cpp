// The IIS site that serves the home directory, with a stand-in for the web-server utility library's class.
#include "HostFixture.h"

using namespace harness;

namespace {

#if defined(__MINGW32__)
const char ConstructorName[] = "_ZN10CWebServerC1EPKw";
const char DestructorName[] = "_ZN10CWebServerD1Ev";
const char ServerTypeName[] = "_ZN10CWebServer13GetServerTypeEv";
const char SiteIdName[] = "_ZN10CWebServer12GetIISSiteIDEv";
#else
const char ConstructorName[] = "??0CWebServer@@QEAA@PEB_W@Z";
const char DestructorName[] = "??1CWebServer@@QEAA@XZ";
const char ServerTypeName[] = "?GetServerType@CWebServer@@QEAAHXZ";
const char SiteIdName[] = "?GetIISSiteID@CWebServer@@QEAAHXZ";
#endif

std::vector<void**> WebServerImports(const char* name) {
    return FindImports(LibraryModule(), "WebServerUtil.dll", name);
}

class WebSiteTest : public HostTest {
protected:
    const std::string Enter = "> CVirtualServerUtil::CheckIsClusterByRegKey()";
    const std::string Leave = "< CVirtualServerUtil::CheckIsClusterByRegKey()";

    int serverType = 0;
    int siteId = 1;

private:
    ImportPatch<void*(void*, const wchar_t*), struct ConstructorTag> m_constructor{
        WebServerImports(ConstructorName), [this](void* self, const wchar_t* homeDir) {
            Platform().Record("CWebServer(" + Utf8(homeDir) + ")");
            return self;
        }};
    ImportPatch<void(void*), struct DestructorTag> m_destructor{WebServerImports(DestructorName),
                                                                [this](void*) { Platform().Record("~CWebServer()"); }};
    ImportPatch<int(void*), struct ServerTypeTag> m_serverType{WebServerImports(ServerTypeName), [this](void*) {
                                                                   Platform().Record("GetServerType()");
                                                                   return serverType;
                                                               }};
    ImportPatch<int(void*), struct SiteIdTag> m_siteId{WebServerImports(SiteIdName), [this](void*) {
                                                           Platform().Record("GetIISSiteID()");
                                                           return siteId;
                                                       }};
};

TEST_F(WebSiteTest, SiteOfTheHomeDirectoryIsAsked) {
    SetText(L"HomeDir", L"D:\\Product");
    for (const int number : {1, 0, 77, -1}) {
        siteId = number;
        EXPECT_EQ(CVirtualServerUtil::QueryIISSiteID(), number);
        EXPECT_EQ(TakeLog(), Lines({Enter, "I Got IIS web site id: " + std::to_string(number), Leave}));
        EXPECT_EQ(TakeJournal(), Lines({"RegOpenKeyExW(" + DefaultKeyText + ")", "RegQueryValueExW(HomeDir)",
                                        "CWebServer(D:\\Product)", "GetServerType()", "GetIISSiteID()", "~CWebServer()",
                                        "RegCloseKey()"}));
    }
}

TEST_F(WebSiteTest, OtherServersHaveNoSite) {
    SetText(L"HomeDir", L"D:\\Product");
    for (const int type : {1, 2, -1}) {
        serverType = type;
        EXPECT_EQ(CVirtualServerUtil::QueryIISSiteID(), -1);
        EXPECT_EQ(TakeLog(), Lines({Enter, Leave}));
        EXPECT_EQ(TakeJournal(),
                  Lines({"RegOpenKeyExW(" + DefaultKeyText + ")", "RegQueryValueExW(HomeDir)",
                         "CWebServer(D:\\Product)", "GetServerType()", "~CWebServer()", "RegCloseKey()"}));
    }
}

TEST_F(WebSiteTest, AbsentHomeDirectoryIsAnError) {
    Registry().CreateKey(DefaultKey);
    EXPECT_EQ(CVirtualServerUtil::QueryIISSiteID(), -1);
    EXPECT_EQ(TakeLog(), Lines({Enter, "E Cannot get home directory", Leave}));
    EXPECT_EQ(TakeJournal(),
              Lines({"RegOpenKeyExW(" + DefaultKeyText + ")", "RegQueryValueExW(HomeDir)=2", "RegCloseKey()"}));
}

TEST_F(WebSiteTest, HomeDirectoryMayHave1023Characters) {
    const std::wstring homeDir(1023, L'h');
    SetText(L"HomeDir", homeDir);
    EXPECT_EQ(CVirtualServerUtil::QueryIISSiteID(), 1);
    EXPECT_NE(TakeJournal().find("CWebServer(" + Utf8(homeDir) + ")"), std::string::npos);
    SetText(L"HomeDir", homeDir + L"h");
    EXPECT_EQ(CVirtualServerUtil::QueryIISSiteID(), -1);
    EXPECT_EQ(TakeJournal().find("CWebServer"), std::string::npos);
}

TEST_F(WebSiteTest, MissingKeyHasNoSiteAndNoError) {
    EXPECT_EQ(CVirtualServerUtil::QueryIISSiteID(), -1);
    EXPECT_EQ(TakeLog(), Lines({Enter, Leave}));
    EXPECT_EQ(TakeJournal(), Lines({"RegOpenKeyExW(" + DefaultKeyText + ")=2"}));
    const std::vector<OpenedKey> keys = TakeOpenedKeys();
    ASSERT_EQ(keys.size(), 1u);
    EXPECT_EQ(keys[0].access, static_cast<REGSAM>(KEY_READ));
}

// The default implementation of that library, on this machine without a web server.
TEST_F(HostTest, HomeDirectoryThatNoSiteServesHasNoSite) {
    SetText(L"HomeDir", L"Q:\\no such folder");
    EXPECT_EQ(CVirtualServerUtil::QueryIISSiteID(), -1);
}

} // namespace
