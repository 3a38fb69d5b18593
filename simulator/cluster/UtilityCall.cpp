#include "UtilityCall.h"

#include "Call.h"

using namespace clussim;

void* ClusSimBeginUtilityCall(UtilityCallName name, const void* resource, const wchar_t* text,
                              unsigned long* faultCode) {
    // Here, because the journal keeps the address, and resutils.dll may be unloaded.
    static const char* const names[] = {"ResUtilFindDwordProperty", "ResUtilFindSzProperty",
                                        "ResUtilGetResourceDependency", "ResUtilGetResourceDependencyByClass",
                                        "ResUtilResourceTypesEqual"};
    Call* call = name == UtilityFindDwordProperty || name == UtilityFindSzProperty
                     ? new Call(names[name], {Arg("name", text)})
                 : name == UtilityGetResourceDependencyByClass
                     ? new Call(names[name], {Arg("resource", resource)})
                     : new Call(names[name], {Arg("resource", resource), Arg("type", text)});
    const Fault* fault = call->HitHandle(resource, text);
    *faultCode = fault ? fault->code : ERROR_SUCCESS;
    return call;
}

void ClusSimEndUtilityCall(void* handleOfCall, UtilityResult kind, void* handle, unsigned long code) {
    const std::unique_ptr<Call> call(static_cast<Call*>(handleOfCall));
    switch (kind) {
    case UtilityResultCode:
        call->Return(code);
        break;
    case UtilityResultHandle:
        call->ReturnHandle(handle, code);
        break;
    case UtilityResultBool:
        call->ReturnTruth(code != 0);
        break;
    }
}
