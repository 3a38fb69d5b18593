#include "Call.h"

#include "Events.h"

#include <cstring>

namespace clussim {

namespace {

const DWORD MisleadingSuccess = 0xC0DE;
const DWORD MisleadingFailure = 0xBAD1;

} // namespace

Call::Call(const char* name, std::initializer_list<JournalValue> arguments)
    : m_service(Service::Instance()), m_lock(m_service.lock), m_name(name), m_lastErrorBefore(GetLastError()) {
    m_service.LoadConfiguration();
    m_service.journal.Count(name);
    if (!m_service.journal.WantsLines()) {
        return;
    }
    m_arguments = "{";
    for (const JournalValue& argument : arguments) {
        m_arguments += m_arguments.size() > 1 ? ", \"" : "\"";
        m_arguments += argument.name;
        m_arguments += "\": " + Journal::ToJson(argument);
    }
    m_arguments += "}";
}

const Fault* Call::HitAnyOf(const std::vector<std::wstring>& objects) {
    const Fault* fault = m_service.Hit(m_name, objects);
    if (fault && fault->written.event) {
        const std::string event = *fault->written.event;
        if (m_service.journal.WantsLines()) {
            m_service.journal.AddEvent(m_name, event);
        }
        HappenAsWritten(m_service, event);
        return nullptr;
    }
    if (!fault || fault->written.delayMs == 0) {
        return fault;
    }
    const std::uint32_t delay = fault->written.delayMs;
    if (m_service.journal.WantsLines()) {
        m_service.journal.AddDelay(m_name, delay);
    }
    Wait(delay);
    return nullptr;
}

void Call::Wait(DWORD milliseconds) {
    m_lock.unlock();
    Sleep(milliseconds);
    m_lock.lock();
}

const Fault* Call::HitHandle(const void* handle, const wchar_t* other) {
    if (!m_service.HasFaults()) {
        return nullptr;
    }
    const HandleEntry* entry = m_service.handles.Peek(handle);
    std::wstring object = entry ? entry->object : std::wstring();
    if (entry && (entry->kind == HandleKind::Resource || entry->kind == HandleKind::ResourceEnum)) {
        const Model* model = m_service.Current();
        const Resource* resource = model ? model->ResourceWithId(object) : nullptr;
        object = resource ? resource->name : std::wstring();
    }
    return HitAnyOf({object, other ? other : L""});
}

Code Call::Close(const void* handle, HandleKind kind) {
    const Fault* fault = HitHandle(handle);
    const bool closed = m_service.handles.Close(handle, kind);
    return fault ? fault->code : closed ? static_cast<Code>(ERROR_SUCCESS) : static_cast<Code>(ERROR_INVALID_HANDLE);
}

Code Call::ResourceOf(Model* model, const void* handle, Resource*& resource) {
    const HandleEntry* entry = m_service.handles.Find(handle, HandleKind::Resource);
    if (!entry) {
        return ERROR_INVALID_HANDLE;
    }
    if (!model) {
        return m_service.LostCode();
    }
    resource = model->ResourceWithId(entry->object);
    return resource ? static_cast<Code>(ERROR_SUCCESS) : static_cast<Code>(ERROR_RESOURCE_NOT_AVAILABLE);
}

void Call::Finish(const std::string& result, Code lastError, bool isSet) {
    if (m_service.journal.WantsLines()) {
        m_service.journal.Add(m_name, m_arguments, result);
    }
    const bool misleads = m_service.InMemory();
    m_lock.unlock();
    SetLastError(isSet || misleads ? lastError : m_lastErrorBefore);
}

std::string Call::Failure(const char* result, Code code) const {
    return m_service.journal.WantsLines() ? result + (", \"error\": " + std::to_string(code)) : std::string();
}

DWORD Call::Return(Code code) {
    Finish(m_service.journal.WantsLines() ? std::to_string(code) : std::string(),
           code == ERROR_SUCCESS ? MisleadingSuccess : MisleadingFailure, false);
    return code;
}

void* Call::ReturnHandle(void* handle, Code code) {
    if (!handle) {
        Finish(Failure("null", code), code, true);
        return handle;
    }
    Finish(m_service.journal.WantsLines() ? std::to_string(reinterpret_cast<std::uintptr_t>(handle)) : std::string(),
           MisleadingSuccess, false);
    return handle;
}

BOOL Call::ReturnBool(Code code) {
    const bool isGood = code == ERROR_SUCCESS;
    Finish(isGood ? "true" : Failure("false", code), isGood ? MisleadingSuccess : code, !isGood);
    return isGood;
}

void Call::ReturnTruth(bool isTrue) {
    Finish(isTrue ? "true" : "false", isTrue ? MisleadingSuccess : MisleadingFailure, false);
}

int Call::ReturnState(int state, Code code) {
    const bool isGood = state != StateUnknown;
    Finish(isGood ? std::to_string(state) : Failure("-1", code), isGood ? MisleadingSuccess : code, !isGood);
    return state;
}

Code CopyName(const std::wstring& text, LPWSTR buffer, LPDWORD cch) {
    if (!cch) {
        return buffer ? static_cast<Code>(ERROR_INVALID_PARAMETER) : static_cast<Code>(ERROR_SUCCESS);
    }
    const DWORD capacity = *cch;
    *cch = static_cast<DWORD>(text.size());
    if (!buffer) {
        return ERROR_SUCCESS;
    }
    if (capacity <= text.size()) {
        return ERROR_MORE_DATA;
    }
    std::memcpy(buffer, text.c_str(), (text.size() + 1) * sizeof(wchar_t));
    return ERROR_SUCCESS;
}

} // namespace clussim
