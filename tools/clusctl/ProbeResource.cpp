#include "ProbeResource.h"

#include "ClusterObjects.h"
#include "ProbeForms.h"
#include "ProbeLists.h"

#include "common/Text.h"
#include "core/ValueList.h"

#if defined(__MINGW32__)
typedef struct CLUSPROP_FILETIME* PCLUSPROP_FILETIME; // named by mingw-w64's resapi.h without a declaration
#endif
#include <resapi.h>

#include <algorithm>
#include <cstring>

namespace {

const std::size_t WholeLists = 10; // are enough: they grow with the number of nodes
const wchar_t NoSuchName[] = L"no such name 7f3c";

DWORD NumberAt(const std::vector<unsigned char>& bytes, size_t at) {
    DWORD number = 0;
    std::memcpy(&number, bytes.data() + at, sizeof(number));
    return number;
}

// Whether a code tells what a control does about a buffer that is missing; others tell that it was not asked.
bool TellsOfRoom(DWORD code) {
    return code == ERROR_SUCCESS || code == ERROR_MORE_DATA || code == ERROR_INSUFFICIENT_BUFFER ||
           code == ERROR_INVALID_PARAMETER || code == ERROR_BUFFER_OVERFLOW;
}

} // namespace

DWORD ResourceProbe::Ask(HRESOURCE resource, DWORD control, Bytes& answer) {
    DWORD code = 0;
    QueryResource(resource, control, answer, code);
    return code;
}

std::wstring ResourceProbe::TextOf(HRESOURCE resource, DWORD control) {
    Bytes answer;
    return Ask(resource, control, answer) == ERROR_SUCCESS ? clus::TextInBuffer(answer.data(), answer.size(), 0)
                                                           : std::wstring();
}

DWORD ResourceProbe::SizeCode(HRESOURCE resource, DWORD control, DWORD& size) {
    size = 0;
    return ClusterResourceControl(resource, nullptr, control, nullptr, 0, nullptr, 0, &size);
}

void ResourceProbe::LookAt(const std::wstring& name) {
    const ResourceHandle handle(OpenClusterResource(m_cluster, name.c_str()));
    if (!handle) {
        m_lacksFlags = true;
        return; // it is gone meanwhile
    }
    const Object resource = {handle.get(), name, TextOf(handle.get(), CLUSCTL_RESOURCE_GET_RESOURCE_TYPE)};
    LookAtNames(resource);
    LookAtState(resource);
    LookAtSize(resource);
    LookAtClass(resource);
    LookAtFlags(resource);
    LookAtProperties(resource);
    LookAtDisk(resource);
    LookAtResourceLists(handle.get(), name, m_count++ < WholeLists, m_answers);
    LookAtRelations(resource);
}

void ResourceProbe::Conclude() {
    if (m_hasCore || (m_hasFlags && !m_lacksFlags)) {
        m_answers.Saw("core-flag", m_hasCore, m_hasCore ? "some are" : "none is");
    }
}

void ResourceProbe::LookAtNames(const Object& resource) {
    const std::wstring& name = resource.name;
    const std::wstring told = TextOf(resource.handle, CLUSCTL_RESOURCE_GET_NAME);
    if (!told.empty()) {
        m_answers.Saw("name-as-listed", told == name, told == name ? "as listed" : "otherwise than listed", name);
    }
    const std::wstring id = TextOf(resource.handle, CLUSCTL_RESOURCE_GET_ID);
    if (id.empty()) {
        return;
    }
    const bool isForm = id.size() == 36 && id.find_first_not_of(L"0123456789abcdef-") == std::wstring::npos;
    m_answers.Saw("id-form", isForm,
                  isForm ? "small letters, no braces" : "other characters, or another length than 36", name);
    SetLastError(ERROR_SUCCESS);
    const DWORD code = ResourceHandle(OpenClusterResource(m_cluster, id.c_str())) ? ERROR_SUCCESS : GetLastError();
    if (code == ERROR_SUCCESS) {
        m_answers.Saw("open-by-id", true, "opened", name);
    } else if (ResourceHandle(OpenClusterResource(m_cluster, name.c_str()))) { // it is not gone
        m_answers.SawCode("open-by-id", code, ERROR_SUCCESS, name);
    }
}

std::wstring ResourceProbe::OwnerOf(HRESOURCE resource) {
    std::vector<wchar_t> node(ProbeRoom + 1);
    DWORD count = ProbeRoom;
    const auto state = GetClusterResourceState(resource, node.data(), &count, nullptr, nullptr);
    return state == ClusterResourceStateUnknown ? std::wstring() : node.data();
}

void ResourceProbe::LookAtState(const Object& resource) {
    SetLastError(ERROR_SUCCESS);
    if (GetClusterResourceState(resource.handle, nullptr, nullptr, nullptr, nullptr) != ClusterResourceStateUnknown) {
        m_answers.Saw("state-without-room", true, "a state", resource.name);
    } else {
        m_answers.SawCode("state-without-room", GetLastError(), ERROR_SUCCESS, resource.name);
    }
    const std::wstring owner = OwnerOf(resource.handle);
    if (owner.empty()) {
        return;
    }
    if (std::none_of(m_owners.begin(), m_owners.end(), [&](const Owner& known) { return known.node == owner; })) {
        m_owners.push_back({owner, resource.name});
    }
    wchar_t shortRoom[2] = {};
    DWORD shortCount = 1;
    SetLastError(ERROR_SUCCESS);
    const auto state = GetClusterResourceState(resource.handle, shortRoom, &shortCount, nullptr, nullptr);
    const DWORD code = GetLastError();
    if (state != ClusterResourceStateUnknown) {
        m_answers.Saw("state-short-room", false, "a state", resource.name);
    } else if ((code == ERROR_MORE_DATA || !IsRefusal(code)) && OwnerOf(resource.handle) == owner) {
        const bool isLength = shortCount == owner.size();
        m_answers.Saw("state-short-room", code == ERROR_MORE_DATA && isLength,
                      CodeText(code) + (isLength ? ", the length" : ", another count"), resource.name);
    }
}

void ResourceProbe::LookAtSize(const Object& resource) {
    DWORD size = 0;
    const DWORD code = SizeCode(resource.handle, CLUSCTL_RESOURCE_GET_NAME, size);
    if (TellsOfRoom(code)) {
        const bool isSize = size == (resource.name.size() + 1) * sizeof(wchar_t);
        m_answers.Saw("control-size", code == ERROR_MORE_DATA && isSize,
                      CodeText(code) + (isSize ? ", the size with the terminator" : ", another size"), resource.name);
    }
}

void ResourceProbe::LookAtClass(const Object& resource) {
    DWORD told = ERROR_MORE_DATA; // the first of them that is none
    for (const DWORD control :
         {CLUSCTL_RESOURCE_GET_CLASS_INFO, CLUSCTL_RESOURCE_GET_FLAGS, CLUSCTL_RESOURCE_GET_CHARACTERISTICS}) {
        DWORD size = 0;
        const DWORD code = SizeCode(resource.handle, control, size);
        if (!TellsOfRoom(code)) {
            return;
        }
        told = told == ERROR_MORE_DATA ? code : told;
    }
    Bytes answer;
    const bool isRead = Ask(resource.handle, CLUSCTL_RESOURCE_GET_CLASS_INFO, answer) == ERROR_SUCCESS &&
                        answer.size() >= sizeof(DWORD);
    const bool isAddress = isRead && resource.type == L"IP Address";
    const DWORD number = isRead ? NumberAt(answer, 0) : 0;
    m_answers.Saw("class-info", told == ERROR_MORE_DATA && (!isAddress || number == CLUS_RESCLASS_UNKNOWN),
                  "size: " + CodeText(told) +
                      (isAddress ? ", class of an IP Address: " + std::to_string(number) : std::string()),
                  resource.name);
}

void ResourceProbe::LookAtFlags(const Object& resource) {
    Bytes answer;
    if (Ask(resource.handle, CLUSCTL_RESOURCE_GET_CHARACTERISTICS, answer) == ERROR_SUCCESS) {
        m_answers.Saw("flags-size", answer.size() == sizeof(DWORD), std::to_string(answer.size()) + " bytes",
                      resource.name);
    }
    m_isCore = false;
    if (Ask(resource.handle, CLUSCTL_RESOURCE_GET_FLAGS, answer) != ERROR_SUCCESS || answer.size() < sizeof(DWORD)) {
        m_lacksFlags = true;
        return;
    }
    m_answers.Saw("flags-size", answer.size() == sizeof(DWORD), std::to_string(answer.size()) + " bytes",
                  resource.name);
    m_hasFlags = true;
    m_isCore = (NumberAt(answer, 0) & CLUS_FLAG_CORE) != 0;
    m_hasCore = m_hasCore || m_isCore;
}

void ResourceProbe::LookAtProperties(const Object& resource) {
    Bytes list;
    if (Ask(resource.handle, CLUSCTL_RESOURCE_GET_PRIVATE_PROPERTIES, list) == ERROR_SUCCESS) {
        if (list.size() < sizeof(DWORD) || NumberAt(list, 0) == 0) {
            m_answers.Saw("property-list-empty", list.size() == sizeof(DWORD), std::to_string(list.size()) + " bytes",
                          resource.name);
        } else {
            LookAtPropertyList(list, resource.name, m_answers);
            LookAtFinders(resource, list);
        }
    }
    if (m_isCore && m_clusterAddress.empty() && resource.type == L"IP Address" &&
        GetClusterResourceState(resource.handle, nullptr, nullptr, nullptr, nullptr) == ClusterResourceOnline) {
        m_clusterAddress = TextProperty(list, L"Address");
    }
    LookAtNetworkName(resource, list);
}

void ResourceProbe::LookAtNetworkName(const Object& resource, const Bytes& properties) {
    Bytes answer;
    const DWORD code = Ask(resource.handle, CLUSCTL_RESOURCE_GET_NETWORK_NAME, answer);
    if (resource.type.empty()) {
        return; // it is not known whether it has one
    }
    if (resource.type != L"Network Name") {
        m_answers.SawCode("control-unsupported", code, ERROR_INVALID_FUNCTION, resource.name);
        return;
    }
    const std::wstring value = TextProperty(properties, L"Name");
    if (code == ERROR_SUCCESS && !value.empty()) {
        const std::wstring told = clus::TextInBuffer(answer.data(), answer.size(), 0);
        m_answers.Saw("network-name", told == value, told == value ? "the property" : "not as the property has it",
                      resource.name);
    }
}

// How lists are searched is the same for all resources: one is enough.
void ResourceProbe::LookAtFinders(const Object& resource, Bytes& properties) {
    std::wstring name;
    bool isText = false;
    if (m_hasLookedAtFinders || !FirstSimpleProperty(properties, name, isText)) {
        return;
    }
    m_hasLookedAtFinders = true;
    const auto size = static_cast<DWORD>(properties.size());
    const auto find = [&](bool text, const wchar_t* what) {
        wchar_t* found = nullptr;
        DWORD number = 0;
        const DWORD code = text ? ResUtilFindSzProperty(properties.data(), size, what, &found)
                                : ResUtilFindDwordProperty(properties.data(), size, what, &number);
        LocalFree(found);
        return code;
    };
    m_answers.SawCode("find-ignores-case", find(isText, InOtherCase(name).c_str()), ERROR_SUCCESS, resource.name);
    m_answers.SawCode("find-missing", find(isText, NoSuchName), ERROR_FILE_NOT_FOUND, resource.name);
    m_answers.SawCode("find-other-kind", find(!isText, name.c_str()), ERROR_INVALID_DATA, resource.name);
}

// So it is with types and dependencies.
void ResourceProbe::LookAtRelations(const Object& resource) {
    if (m_hasLookedAtRelations || resource.type.empty()) {
        return;
    }
    // The function tells no code: where it does not know the type itself, it was kept from asking.
    const auto isEqual = [&](const std::wstring& type) {
        return ResUtilResourceTypesEqual(type.c_str(), resource.handle) != FALSE;
    };
    const std::wstring otherCase = InOtherCase(resource.type);
    const bool isAsSimulated = isEqual(otherCase) || (isEqual(resource.type) && isEqual(otherCase));
    if (!isAsSimulated && !isEqual(resource.type)) {
        return;
    }
    m_answers.Saw("type-ignores-case", isAsSimulated, isAsSimulated ? "equal" : "not equal", resource.name);
    m_hasLookedAtRelations = true;
    SetLastError(ERROR_SUCCESS);
    const ResourceHandle found(ResUtilGetResourceDependency(resource.handle, NoSuchName));
    if (found) {
        m_answers.Saw("dependency-missing", false, "a resource", resource.name);
    } else {
        m_answers.SawCode("dependency-missing", GetLastError(), ERROR_RESOURCE_NOT_FOUND, resource.name);
    }
}

void ResourceProbe::LookAtDisk(const Object& resource) {
    const bool isDisk = resource.type == L"Physical Disk";
    if (!isDisk && resource.type != L"Network Name" && resource.type != L"IP Address") {
        return;
    }
    Bytes list;
    const DWORD code = Ask(resource.handle, CLUSCTL_RESOURCE_STORAGE_GET_DISK_INFO, list);
    if (!isDisk) {
        m_answers.SawCode("control-unsupported", code, ERROR_INVALID_FUNCTION, resource.name);
    } else if (code == ERROR_SUCCESS) {
        LookAtDiskList(list, resource.name, m_answers);
    }
}
