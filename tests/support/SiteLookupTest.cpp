#include "../../support/WebServerUtil/SiteLookup.h"

#include <algorithm>
#include <string>

#include <winsock2.h>
#include <windows.h>

#include <gtest/gtest.h>

namespace {

// Sites 1 to 4: a plain site, one with applications and virtual directories, one by an environment variable, one on a
// share.
const char Sites[] = R"(<?xml version="1.0" encoding="UTF-8"?>
<configuration>
  <configSections><section name="sites" /></configSections>
  <system.applicationHost>
    <sites>
      <site name="Default Web Site" id="1" serverAutoStart="true">
        <application path="/"><virtualDirectory path="/" physicalPath="C:\inetpub\wwwroot" /></application>
        <bindings><binding protocol="http" bindingInformation="*:80:" /></bindings>
      </site>
      <site name="Product" id="7">
        <application path="/" applicationPool="P">
          <virtualDirectory path="/" physicalPath="D:\Web" />
          <virtualDirectory path="/tools" physicalPath="D:\Tools\" />
        </application>
        <application path="/gate">
          <virtualDirectory path="/" physicalPath="d:/product/Gate &amp; Co"></virtualDirectory>
        </application>
      </site>
      <site name="System" id="8">
        <application path="/"><virtualDirectory path="/" physicalPath="%SUPPORT_TEST_DRIVE%\Site" /></application>
      </site>
      <site name="Share" id="9">
        <application path="/"><virtualDirectory path="/" physicalPath="\\server\share\web" /></application>
      </site>
      <site name="Nested" id="10">
        <application path="/"><virtualDirectory path="/" physicalPath="D:\Web\Deep\Er" /></application>
        <application path="/twin"><virtualDirectory path="/" physicalPath="C:\inetpub\wwwroot" /></application>
      </site>
      <siteDefaults><logFile directory="C:\logs" /></siteDefaults>
    </sites>
  </system.applicationHost>
</configuration>
)";

const char MetaBase[] = R"(<?xml version ="1.0"?>
<configuration xmlns="urn:microsoft-catalog:XML_Metabase_V64_0">
<MBProperty>
<IIsWebServer	Location ="/LM/W3SVC/1" ServerComment="Default" />
<IIsWebVirtualDir	Location ="/LM/W3SVC/1/ROOT"
		AccessFlags="AccessRead | AccessScript"
		Path="c:\inetpub\wwwroot"
	>
	<Custom Name="UnknownName_2168" ID="2168" Value="" Type="STRING" />
</IIsWebVirtualDir>
<IIsWebVirtualDir	Location ="/lm/w3svc/835236431/Root/gate" Path="D:\Product\Gate" />
<IIsWebVirtualDir	Location ="/LM/W3SVC/2/ROOT" Path="D:\Product" />
<IIsWebVirtualDir	Location ="/LM/W3SVC/3/ROOTED" Path="E:\Rooted" />
<IIsWebVirtualDir	Location ="/LM/MSFTPSVC/4/ROOT" Path="E:\Ftp" />
<IIsWebVirtualDir	Location ="/LM/W3SVC/99999999999/ROOT" Path="E:\Huge" />
<IIsWebVirtualDir	Location ="/LM/W3SVC//ROOT" Path="E:\NoNumber" />
<IIsWebDirectory	Location ="/LM/W3SVC/5/ROOT/dir" Path="E:\Directory" />
</MBProperty>
</configuration>
)";

int SiteOf(const wchar_t* folder, const std::string& bytes = Sites) {
    return FindSiteOfFolder(bytes, SiteFileForm::ApplicationHost, folder);
}

int MetaBaseSiteOf(const wchar_t* folder, const std::string& bytes = MetaBase) {
    return FindSiteOfFolder(bytes, SiteFileForm::MetaBase, folder);
}

std::string Utf16(const std::string& text, bool bigEndian) {
    std::string bytes = bigEndian ? "\xfe\xff" : "\xff\xfe";
    for (const char c : text) {
        bytes += bigEndian ? '\0' : c;
        bytes += bigEndian ? c : '\0';
    }
    return bytes;
}

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
    const size_t at = text.find(from);
    EXPECT_NE(std::string::npos, at) << from;
    return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

} // namespace

TEST(SiteLookup, FindsTheSiteWhosePathIsOrContainsTheFolder) {
    EXPECT_EQ(1, SiteOf(L"C:\\inetpub\\wwwroot"));
    EXPECT_EQ(1, SiteOf(L"C:\\inetpub\\wwwroot\\below\\it"));
    EXPECT_EQ(7, SiteOf(L"D:\\Web"));
    EXPECT_EQ(7, SiteOf(L"D:\\Tools"));
    EXPECT_EQ(7, SiteOf(L"D:\\Product\\Gate & Co\\bin"));
    EXPECT_EQ(9, SiteOf(L"\\\\server\\share\\web\\x"));
}

TEST(SiteLookup, FindsNoneForOtherFolders) {
    for (const wchar_t* folder :
         {L"C:\\", L"C:\\inetpub", L"C:\\inetpub\\wwwroot2", L"D:\\Webx\\y", L"D:\\Product", L"E:\\", L"C:\\logs",
          L"\\\\server\\share", L"\\\\server2\\share\\web", L"", L"Web", L"\\Web", L"D:Web"}) {
        EXPECT_EQ(-1, SiteOf(folder)) << testing::PrintToString(std::wstring(folder));
    }
}

TEST(SiteLookup, ComparesWithoutCaseSlashFormAndTrailingSeparator) {
    for (const wchar_t* folder : {L"c:\\INETPUB\\WwwRoot", L"C:/inetpub/wwwroot/", L"C:\\inetpub\\\\wwwroot\\\\",
                                  L"C:\\inetpub\\other\\..\\wwwroot\\."}) {
        EXPECT_EQ(1, SiteOf(folder)) << testing::PrintToString(std::wstring(folder));
    }
    EXPECT_EQ(7, SiteOf(L"d:/product/gate & co"));
}

TEST(SiteLookup, ExpandsEnvironmentVariablesOnBothSides) {
    SetEnvironmentVariableW(L"SUPPORT_TEST_DRIVE", L"F:");
    EXPECT_EQ(8, SiteOf(L"F:\\Site\\x"));
    EXPECT_EQ(8, SiteOf(L"%SUPPORT_TEST_DRIVE%\\site"));
    SetEnvironmentVariableW(L"SUPPORT_TEST_DRIVE", nullptr);
    EXPECT_EQ(-1, SiteOf(L"F:\\Site\\x"));
}

TEST(SiteLookup, PrefersTheLongestPathAndThenTheFirstSite) {
    EXPECT_EQ(10, SiteOf(L"D:\\Web\\Deep\\Er\\x"));
    EXPECT_EQ(7, SiteOf(L"D:\\Web\\Deep"));
    EXPECT_EQ(1, SiteOf(L"C:\\inetpub\\wwwroot")); // site 10 has the same path
}

TEST(SiteLookup, TakesADriveRootForAllItsFolders) {
    const std::string text = Replaced(Sites, "D:\\Web\"", "D:\\\"");
    EXPECT_EQ(7, SiteOf(L"D:\\", text));
    EXPECT_EQ(7, SiteOf(L"D:\\anything", text));
    EXPECT_EQ(10, SiteOf(L"D:\\Web\\Deep\\Er", text));
}

TEST(SiteLookup, CountsElementsInTheirPlaceOnly) {
    const std::string element = "<virtualDirectory path=\"/\" physicalPath=\"E:\\Data\" />";
    EXPECT_EQ(1,
              SiteOf(L"E:\\Data", Replaced(Sites, "<application path=\"/\">", "<application path=\"/\">" + element)));
    EXPECT_EQ(-1, SiteOf(L"E:\\Data", Replaced(Sites, "<siteDefaults>", "<siteDefaults>" + element)));
    EXPECT_EQ(-1, SiteOf(L"E:\\Data", Replaced(Sites, "<sites>", "<sites>" + element)));
    EXPECT_EQ(-1, SiteOf(L"E:\\Data", Replaced(Sites, "<bindings>", "<bindings>" + element)));
}

TEST(SiteLookup, IsNotConfusedByCommentsAndCharacterData) {
    const std::string site =
        "<site id=\"66\"><application><virtualDirectory physicalPath=\"E:\\Data\" /></application></site>";
    EXPECT_EQ(66, SiteOf(L"E:\\Data", Replaced(Sites, "<sites>", "<sites>" + site)));
    for (const std::string& hidden : {"<!-- " + site + " -->", "<![CDATA[" + site + "]]>", "<?note " + site + "?>"}) {
        const std::string text = Replaced(Sites, "<sites>", "<sites>" + hidden);
        EXPECT_EQ(-1, SiteOf(L"E:\\Data", text)) << hidden;
        EXPECT_EQ(1, SiteOf(L"C:\\inetpub\\wwwroot", text)) << hidden;
    }
}

TEST(SiteLookup, IgnoresASiteWithoutAUsableNumber) {
    for (const char* id : {"", "x", "-1", "0", "1x", "2147483648", "99999999999999999999999999"}) {
        EXPECT_EQ(-1, SiteOf(L"D:\\Web", Replaced(Sites, "id=\"7\"", "id=\"" + std::string(id) + "\""))) << id;
    }
    EXPECT_EQ(2147483647, SiteOf(L"D:\\Web", Replaced(Sites, "id=\"7\"", "id=\"2147483647\"")));
    EXPECT_EQ(-1, SiteOf(L"D:\\Web", Replaced(Sites, "id=\"7\"", "")));
}

TEST(SiteLookup, ReadsEveryEncodingThatWindowsWrites) {
    const std::string wide = Replaced(Sites, "UTF-8", "UTF-16");
    EXPECT_EQ(7, SiteOf(L"D:\\Web", "\xef\xbb\xbf" + std::string(Sites)));
    EXPECT_EQ(7, SiteOf(L"D:\\Web", Utf16(wide, false)));
    EXPECT_EQ(7, SiteOf(L"D:\\Web", Utf16(wide, true)));
    EXPECT_EQ(7, SiteOf(L"D:\\B\u00fccher", Replaced(Sites, "D:\\Web\"",
                                                     "D:\\B\xc3\xbc"
                                                     "cher\"")));
    EXPECT_EQ(7, SiteOf(L"D:\\B\u00dcCHER", Replaced(Sites, "D:\\Web\"", "D:\\B&#xfc;cher\"")));
}

TEST(SiteLookup, FindsNothingInABrokenFile) {
    const std::string whole(Sites);
    const wchar_t* const folder = L"C:\\inetpub\\wwwroot";
    ASSERT_EQ(1, SiteOf(folder, whole));
    EXPECT_EQ(-1, SiteOf(folder, ""));
    EXPECT_EQ(-1, SiteOf(folder, "   "));
    EXPECT_EQ(-1, SiteOf(folder, std::string(1000, '\0')));
    EXPECT_EQ(-1, SiteOf(folder, "no XML at all"));
    EXPECT_EQ(-1, SiteOf(folder, "\xff\xfe<"));
    EXPECT_EQ(-1, SiteOf(folder, Replaced(whole, "</sites>", "</site>")));
    EXPECT_EQ(-1, SiteOf(folder, Replaced(whole, "</sites>", "</sites></sites>")));
    EXPECT_EQ(-1, SiteOf(folder, Replaced(whole, "&amp;", "&unknown;")));
    EXPECT_EQ(-1,
              SiteOf(folder, Replaced(whole, "<configuration>", "<!DOCTYPE x [<!ENTITY a \"b\">]><configuration>")));
    for (size_t length = whole.rfind("</configuration>") + 15; length > 0; length -= std::min<size_t>(length, 23)) {
        EXPECT_EQ(-1, SiteOf(folder, whole.substr(0, length))) << length;
    }
}

TEST(SiteLookup, SurvivesEveryDamagedByte) {
    const std::string whole(Sites);
    for (size_t i = 0; i < whole.size(); ++i) {
        for (const char damage : {'\0', '<', '>', '"', '&', '\xff'}) {
            std::string text = whole;
            text[i] = damage;
            const int site = SiteOf(L"D:\\Web\\x", text);
            EXPECT_TRUE(site == -1 || site == 7) << i;
        }
    }
}

TEST(SiteLookup, LooksThroughThousandsOfSites) {
    std::string text = "<configuration><system.applicationHost><sites>";
    for (int id = 1; id <= 5000; ++id) {
        const std::string number = std::to_string(id);
        text += "<site name=\"Site " + number + "\" id=\"" + number +
                "\"><application path=\"/\"><virtualDirectory path=\"/\" " + "physicalPath=\"E:\\Sites\\" + number +
                "\" /></application></site>\r\n";
    }
    text += "</sites></system.applicationHost></configuration>";
    EXPECT_EQ(5000, SiteOf(L"E:\\Sites\\5000", text));
    EXPECT_EQ(500, SiteOf(L"E:\\Sites\\500\\x", text));
    EXPECT_EQ(-1, SiteOf(L"E:\\Sites", text));
}

TEST(MetaBaseLookup, FindsTheSiteByItsLocation) {
    EXPECT_EQ(1, MetaBaseSiteOf(L"C:\\Inetpub\\wwwroot\\x"));
    EXPECT_EQ(835236431, MetaBaseSiteOf(L"D:\\Product\\Gate"));
    EXPECT_EQ(2, MetaBaseSiteOf(L"D:\\Product\\Gateway"));
}

TEST(MetaBaseLookup, IgnoresOtherLocationsAndElements) {
    for (const wchar_t* folder : {L"E:\\Rooted", L"E:\\Ftp", L"E:\\Huge", L"E:\\NoNumber", L"E:\\Directory", L"D:\\"}) {
        EXPECT_EQ(-1, MetaBaseSiteOf(folder)) << testing::PrintToString(std::wstring(folder));
    }
}

TEST(MetaBaseLookup, FindsNothingInABrokenFile) {
    const std::string whole(MetaBase);
    for (size_t length = whole.rfind("</configuration>") + 15; length > 0; length -= std::min<size_t>(length, 17)) {
        EXPECT_EQ(-1, MetaBaseSiteOf(L"C:\\Inetpub\\wwwroot", whole.substr(0, length))) << length;
    }
}

TEST(MetaBaseLookup, ReadsUtf16) {
    EXPECT_EQ(2, MetaBaseSiteOf(L"D:\\Product", Utf16(MetaBase, false)));
    EXPECT_EQ(2, MetaBaseSiteOf(L"D:\\Product", "\xef\xbb\xbf" + std::string(MetaBase)));
}

TEST(SiteLookup, KeepsTheTwoFormsApart) {
    EXPECT_EQ(-1, SiteOf(L"C:\\inetpub\\wwwroot", MetaBase));
    EXPECT_EQ(-1, MetaBaseSiteOf(L"C:\\inetpub\\wwwroot", Sites));
}
