// Stands in for the common utility library's CServiceManager, as clusutil.dll calls it; each call goes into the
// journal.
#ifndef SERVICESTANDIN_H
#define SERVICESTANDIN_H

#include "HeapTap.h"
#include "ImportPatch.h"
#include "PlatformTap.h"
#include "Text.h"

#include "CommonUtil.h"

namespace harness {

class ServiceStandIn {
public:
    explicit ServiceStandIn(PlatformTap& tap) : m_tap(tap) {
    }

    // The state that the n-th query of a service (1, 2, ...) gives; may throw OS::CException.
    std::function<DWORD(unsigned)> state = [](unsigned) { return SERVICE_RUNNING; };
    // When not 0, no service can be opened.
    DWORD openError = ERROR_SUCCESS;

private:
    static std::vector<void**> Imports(const char* itanium, const char* microsoft) {
        return FindImports(LibraryModule(), "CommonUtil.dll", Decorated(itanium, microsoft));
    }

    PlatformTap& m_tap;
    unsigned m_queries = 0;
    ImportPatch<void*(void*, const wchar_t*, const wchar_t*), struct ServiceManagerConstructorTag> m_constructor{
        Imports("_ZN15CServiceManagerC1EPKwS1_", "??0CServiceManager@@QEAA@PEB_W0@Z"),
        [this](void* self, const wchar_t* service, const wchar_t* machine) {
            const HarnessScope scope;
            m_tap.Record("CServiceManager(" + Utf8(service) + "," + Utf8(machine) + ")");
            m_queries = 0;
            if (openError != ERROR_SUCCESS) {
                throw OS::CException(openError);
            }
            return self;
        }};
    ImportPatch<void(void*), struct ServiceManagerDestructorTag> m_destructor{
        Imports("_ZN15CServiceManagerD1Ev", "??1CServiceManager@@QEAA@XZ"), [this](void*) {
            const HarnessScope scope;
            m_tap.Record("~CServiceManager()");
        }};
    ImportPatch<DWORD(void*), struct ServiceManagerQueryTag> m_query{
        Imports("_ZN15CServiceManager18QueryServiceStatusEv", "?QueryServiceStatus@CServiceManager@@QEAAKXZ"),
        [this](void*) {
            const HarnessScope scope;
            m_tap.Record("QueryServiceStatus()");
            return state(++m_queries);
        }};
};

} // namespace harness

#endif
