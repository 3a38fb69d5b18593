// How resutils.dll has its own calls counted, journalled and hit by faults: by clusapi.dll, which exports these two.
#ifndef CLUSSIM_UTILITYCALL_H
#define CLUSSIM_UTILITYCALL_H

enum UtilityCallName {
    UtilityFindDwordProperty,
    UtilityFindSzProperty,
    UtilityGetResourceDependency,
    UtilityGetResourceDependencyByClass,
    UtilityResourceTypesEqual
};

enum UtilityResult {
    UtilityResultCode,
    UtilityResultHandle, // null: `code` becomes the last-error value
    UtilityResultBool    // `code` is 0 or 1; the last-error value means nothing
};

extern "C" {

// Begins a call on this thread. `faultCode` is 0 or that of the fault that hits it. Ended by ClusSimEndUtilityCall.
void* ClusSimBeginUtilityCall(UtilityCallName name, const void* resource, const wchar_t* text,
                              unsigned long* faultCode);
void ClusSimEndUtilityCall(void* call, UtilityResult kind, void* handle, unsigned long code);
}

#endif
