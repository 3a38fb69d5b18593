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

    // The fault that hits this call, going by any of these names; null when there is none.
    const Fault* Hit(const std::vector<std::wstring>& objects) {
        return m_service.Hit(m_name, objects);
    }

    // The same for a call on a resource; `other` is a further name.
    const Fault* HitResource(const void* handle, const std::wstring& other = std::wstring());

    // The resource a handle stands for, or the code that says why not.
    Code ResourceOf(Model* model, const void* handle, Resource*& resource);

    // End the call. A successful call, and a failing one whose result is the code itself, leaves a misleading
    // last-error value behind while a test drives the model: nobody may look at it.
    DWORD Return(Code code);
    void* ReturnHandle(void* handle, Code code); // null: the code is the last-error value
    BOOL ReturnBool(Code code);
    int ReturnState(int state, Code code);

private:
    void Finish(const std::string& result, Code lastError, bool isSet);

    Service& m_service;
    std::unique_lock<std::recursive_mutex> m_lock;
    const char* m_name;
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

} // namespace clussim

#endif
