// Stands in for the web-server utility library's class, as clusutil.dll calls it; each call goes into the journal.
#ifndef WEBSERVERSTANDIN_H
#define WEBSERVERSTANDIN_H

#include "HeapTap.h"
#include "ImportPatch.h"
#include "PlatformTap.h"
#include "Text.h"

namespace harness {

class WebServerStandIn {
public:
    // Answers with what the two numbers are at the time.
    WebServerStandIn(PlatformTap& tap, const int& serverType, const int& siteId)
        : m_tap(tap), m_serverTypeNumber(serverType), m_siteIdNumber(siteId) {
    }

private:
    static std::vector<void**> Imports(const char* itanium, const char* microsoft) {
        return FindImports(LibraryModule(), "WebServerUtil.dll", Decorated(itanium, microsoft));
    }

    PlatformTap& m_tap;
    const int& m_serverTypeNumber;
    const int& m_siteIdNumber;
    ImportPatch<void*(void*, const wchar_t*), struct WebServerConstructorTag> m_constructor{
        Imports("_ZN10CWebServerC1EPKw", "??0CWebServer@@QEAA@PEB_W@Z"), [this](void* self, const wchar_t* homeDir) {
            const HarnessScope scope;
            m_tap.Record("CWebServer(" + Utf8(homeDir) + ")");
            return self;
        }};
    ImportPatch<void(void*), struct WebServerDestructorTag> m_destructor{
        Imports("_ZN10CWebServerD1Ev", "??1CWebServer@@QEAA@XZ"), [this](void*) {
            const HarnessScope scope;
            m_tap.Record("~CWebServer()");
        }};
    ImportPatch<int(void*), struct WebServerServerTypeTag> m_serverType{
        Imports("_ZN10CWebServer13GetServerTypeEv", "?GetServerType@CWebServer@@QEAAHXZ"), [this](void*) {
            const HarnessScope scope;
            m_tap.Record("GetServerType()");
            return m_serverTypeNumber;
        }};
    ImportPatch<int(void*), struct WebServerSiteIdTag> m_siteId{
        Imports("_ZN10CWebServer12GetIISSiteIDEv", "?GetIISSiteID@CWebServer@@QEAAHXZ"), [this](void*) {
            const HarnessScope scope;
            m_tap.Record("GetIISSiteID()");
            return m_siteIdNumber;
        }};
};

} // namespace harness

#endif
