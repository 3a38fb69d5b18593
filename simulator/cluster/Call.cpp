#include "Call.h"

namespace clussim {

namespace {

const DWORD MisleadingSuccess = 0xC0DE;
const DWORD MisleadingFailure = 0xBAD1;

} // namespace

Call::Call(const char* name, std::initializer_list<JournalValue> arguments)
    : m_service(Service::Instance()), m_lock(m_service.lock), m_name(name) {
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

const Fault* Call::HitResource(const void* handle, const std::wstring& other) {
    if (!m_service.HasFaults()) {
        return nullptr;
    }
    const Model* model = m_service.Current();
    const HandleEntry* entry = m_service.handles.Peek(handle);
    const Resource* resource = model && entry ? model->ResourceWithId(entry->object) : nullptr;
    return Hit({resource ? resource->name : std::wstring(), other});
}

Code Call::ResourceOf(Model* model, const void* handle, Resource*& resource) {
    const HandleEntry* entry = m_service.handles.Find(handle, HandleKind::Resource);
    if (!entry) {
        return ERROR_INVALID_HANDLE;
    }
    if (!model) {
        return RPC_S_SERVER_UNAVAILABLE;
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
    if (isSet || misleads) {
        SetLastError(lastError);
    }
}

DWORD Call::Return(Code code) {
    Finish(m_service.journal.WantsLines() ? std::to_string(code) : std::string(),
           code == ERROR_SUCCESS ? MisleadingSuccess : MisleadingFailure, false);
    return code;
}

void* Call::ReturnHandle(void* handle, Code code) {
    Finish(m_service.journal.WantsLines() ? handle ? std::to_string(reinterpret_cast<std::uintptr_t>(handle))
                                                   : "null, \"error\": " + std::to_string(code)
                                          : std::string(),
           handle ? MisleadingSuccess : code, handle == nullptr);
    return handle;
}

BOOL Call::ReturnBool(Code code) {
    Finish(code == ERROR_SUCCESS ? "true" : "false, \"error\": " + std::to_string(code),
           code == ERROR_SUCCESS ? MisleadingSuccess : code, code != ERROR_SUCCESS);
    return code == ERROR_SUCCESS;
}

int Call::ReturnState(int state, Code code) {
    Finish(state != StateUnknown ? std::to_string(state) : "-1, \"error\": " + std::to_string(code),
           state != StateUnknown ? MisleadingSuccess : code, state == StateUnknown);
    return state;
}

} // namespace clussim
