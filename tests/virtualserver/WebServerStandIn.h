// Stands in for the web-server utility library's class, as clusutil.dll calls it; each call goes into the journal.
#ifndef WEBSERVERSTANDIN_H
#define WEBSERVERSTANDIN_H

#include "HeapTap.h"
#include "ImportPatch.h"
#include "PlatformTap.h"
#include "Text.h"

namespace harness {

#if defined(__MINGW32__)
const char WebServerConstructor[] = "_ZN10CWebServerC1EPKw";
const char WebServerDestructor[] = "_ZN10CWebServerD1Ev";
const char WebServerServerType[] = "_ZN10CWebServer13GetServerTypeEv";
const char WebServerSiteId[] = "_ZN10CWebServer12GetIISSiteIDEv";
#else
const char WebServerConstructor[] = "??0CWebServer@@QEAA@PEB_W@Z";
const char WebServerDestructor[] = "??1CWebServer@@QEAA@XZ";
const char WebServerServerType[] = "?GetServerType@CWebServer@@QEAAHXZ";
const char WebServerSiteId[] = "?GetIISSiteID@CWebServer@@QEAAHXZ";
#endif

inline std::vector<void**> WebServerImports(const char* name) {
    return FindImports(LibraryModule(), "WebServerUtil.dll", name);
}

class WebServerStandIn {
public:
    // Answers with what the two numbers are at the time.
    WebServerStandIn(PlatformTap& tap, const int& serverType, const int& siteId)
        : m_tap(tap), m_serverTypeNumber(serverType), m_siteIdNumber(siteId) {
    }

private:
    PlatformTap& m_tap;
    const int& m_serverTypeNumber;
    const int& m_siteIdNumber;
    ImportPatch<void*(void*, const wchar_t*), struct WebServerConstructorTag> m_constructor{
        WebServerImports(WebServerConstructor), [this](void* self, const wchar_t* homeDir) {
            const HarnessScope scope;
            m_tap.Record("CWebServer(" + Utf8(homeDir) + ")");
            return self;
        }};
    ImportPatch<void(void*), struct WebServerDestructorTag> m_destructor{WebServerImports(WebServerDestructor),
                                                                         [this](void*) {
                                                                             const HarnessScope scope;
                                                                             m_tap.Record("~CWebServer()");
                                                                         }};
    ImportPatch<int(void*), struct WebServerServerTypeTag> m_serverType{WebServerImports(WebServerServerType),
                                                                        [this](void*) {
                                                                            const HarnessScope scope;
                                                                            m_tap.Record("GetServerType()");
                                                                            return m_serverTypeNumber;
                                                                        }};
    ImportPatch<int(void*), struct WebServerSiteIdTag> m_siteId{WebServerImports(WebServerSiteId), [this](void*) {
                                                                    const HarnessScope scope;
                                                                    m_tap.Record("GetIISSiteID()");
                                                                    return m_siteIdNumber;
                                                                }};
};

} // namespace harness

#endif
