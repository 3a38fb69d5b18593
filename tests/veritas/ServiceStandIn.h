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

#if defined(__MINGW32__)
const char ServiceManagerConstructor[] = "_ZN15CServiceManagerC1EPKwS1_";
const char ServiceManagerDestructor[] = "_ZN15CServiceManagerD1Ev";
const char ServiceManagerQuery[] = "_ZN15CServiceManager18QueryServiceStatusEv";
#else
const char ServiceManagerConstructor[] = "??0CServiceManager@@QEAA@PEB_W0@Z";
const char ServiceManagerDestructor[] = "??1CServiceManager@@QEAA@XZ";
const char ServiceManagerQuery[] = "?QueryServiceStatus@CServiceManager@@QEAAKXZ";
#endif

class ServiceStandIn {
public:
    explicit ServiceStandIn(PlatformTap& tap) : m_tap(tap) {
    }

    // The state that the n-th query of a service (1, 2, ...) gives; may throw OS::CException.
    std::function<DWORD(unsigned)> state = [](unsigned) { return SERVICE_RUNNING; };
    // When not 0, no service can be opened.
    DWORD openError = ERROR_SUCCESS;

private:
    PlatformTap& m_tap;
    unsigned m_queries = 0;
    ImportPatch<void*(void*, const wchar_t*, const wchar_t*), struct ServiceManagerConstructorTag> m_constructor{
        FindImports(LibraryModule(), "CommonUtil.dll", ServiceManagerConstructor),
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
        FindImports(LibraryModule(), "CommonUtil.dll", ServiceManagerDestructor), [this](void*) {
            const HarnessScope scope;
            m_tap.Record("~CServiceManager()");
        }};
    ImportPatch<DWORD(void*), struct ServiceManagerQueryTag> m_query{
        FindImports(LibraryModule(), "CommonUtil.dll", ServiceManagerQuery), [this](void*) {
            const HarnessScope scope;
            m_tap.Record("QueryServiceStatus()");
            return state(++m_queries);
        }};
};

} // namespace harness

#endif
