// What every export does around its own work: lock, count, journal, faults, last-error value.
#ifndef CLUSSIM_CALL_H
#define CLUSSIM_CALL_H

#include "Service.h"

#include <initializer_list>

namespace clussim {

class Call {
public:
    Call(const char* name, std::initializer_list<JournalValue> arguments);
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

    Service& service() {
        return m_service;
    }

    // The fault that hits this call; null when there is none, or one that has only delayed it. Other threads' calls go
    // on meanwhile, so what was found of model and handles before has to be found anew. `object` is the name that the
    // call goes by.
    const Fault* Hit(const wchar_t* object = nullptr) {
        return m_service.HasFaults() ? HitAnyOf({object ? object : L""}) : nullptr;
    }

    // The same for a call on a handle, which goes by the name of the handle's object, or by `other`.
    const Fault* HitHandle(const void* handle, const wchar_t* other = nullptr);

    // Lets other threads' calls go on for so long. What was found of model and handles before has to be found anew.
    void Wait(DWORD milliseconds);

    // Closes the handle. A fault is reported, and the handle closed all the same.
    Code Close(const void* handle, HandleKind kind);

    // The resource a handle stands for, or the code that says why not.
    Code ResourceOf(Model* model, const void* handle, Resource*& resource);

    // End the call. The last-error value is set by a failing call that does not return the code itself. Otherwise it is
    // the caller's own again, or, while a test drives the model, a misleading one: nobody may look at it.
    DWORD Return(Code code);
    BOOL ReturnBool(Code code);
    void ReturnTruth(bool isTrue); // false is no failure
    int ReturnState(int state, Code code = 0);
    template <typename Handle> Handle Opened(HandleEntry entry) {
        return static_cast<Handle>(ReturnHandle(m_service.handles.Open(std::move(entry)), 0));
    }
    template <typename Handle> Handle NotOpened(Code code) {
        return static_cast<Handle>(ReturnHandle(nullptr, code));
    }
    void* ReturnHandle(void* handle, Code code);

private:
    const Fault* HitAnyOf(const std::vector<std::wstring>& objects);
    void Finish(const std::string& result, Code lastError, bool isSet);
    std::string Failure(const char* result, Code code) const;

    Service& m_service;
    std::unique_lock<std::recursive_mutex> m_lock;
    const char* m_name;
    const DWORD m_lastErrorBefore;
    std::string m_arguments;
};

inline JournalValue Arg(const char* name, const wchar_t* text) {
    return JournalValue::Of(name, text);
}
inline JournalValue Arg(const char* name, long long number) {
    return JournalValue::Of(name, number);
}
inline JournalValue Arg(const char* name, const void* handle) {
    return JournalValue::Of(name, static_cast<long long>(reinterpret_cast<std::uintptr_t>(handle)));
}

// The owner's name as the cluster tells it.
inline const std::wstring& OwnerName(const Group& group) {
    return group.ownerAs.empty() ? group.owner->name : group.ownerAs;
}

// Writes the name and its terminator, nothing more: a caller may claim more room than it has. `cch` as the cluster API
// has it: room with the terminator in, length without it out. Without a buffer it tells the length.
Code CopyName(const std::wstring& text, LPWSTR buffer, LPDWORD cch);

} // namespace clussim

#endif
