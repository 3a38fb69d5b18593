// The properties of a cluster resource.
#include "clus_Cluster.h"

#include "core/PropertyList.h"
#include "core/ValueList.h"
#include "platform/ControlReply.h"
#include "platform/Log.h"
#include "platform/Owner.h"

#include <cstdint>
#include <cwchar>

CLUS_LOG_PLACE(Cluster, 3);

using clus::ControlReply;
using clus::LocalMemoryOwner;

namespace {

// How a system string property is asked for and where its text stands in the answer.
struct SystemProperty {
    DWORD controlCode;
    bool searchesValueList;
    std::uint32_t syntax;   // of the entry searched
    std::size_t textOffset; // in that entry, in bytes
};

// By RES_PROPERTY_ID. The device name follows the partition entry's syntax, length and flags.
const SystemProperty SystemProperties[] = {
    {CLUSCTL_RESOURCE_GET_NAME, false, 0, 0},
    {CLUSCTL_RESOURCE_GET_RESOURCE_TYPE, false, 0, 0},
    {CLUSCTL_RESOURCE_GET_NETWORK_NAME, false, 0, 0},
    {CLUSCTL_RESOURCE_STORAGE_GET_DISK_INFO, true, clus::SyntaxPartitionInfo, 12},
    {CLUSCTL_RESOURCE_GET_ID, false, 0, 0},
};

// The text of a system property, whose answer begins with `text`. A value list without the entry searched gives the
// text at its start: callers get a text for a disk without partitions, not a failure.
std::wstring SystemPropertyText(const SystemProperty& property, const ControlReply& reply, const wchar_t* text) {
    if (property.searchesValueList) {
        clus::ValueListReader reader(reply.Data(), reply.Size());
        while (reader.Next()) {
            if (reader.Syntax() == property.syntax) {
                return reader.TextAt(property.textOffset);
            }
        }
    }
    return text;
}

} // namespace

const wchar_t* CClusterResource::GetSystemStringProperty(RES_PROPERTY_ID id, bool refresh) {
    if (!m_hResource) {
        LOG_ERROR(L"Resource handle is NULL.");
        LOG_LEAVE(L"CClusterResource::GetSystemStringProperty");
        return nullptr;
    }
    std::wstring& cached = m_propertyCache[id];
    if (!refresh && !cached.empty()) {
        return cached.c_str();
    }
    const SystemProperty& property = SystemProperties[id];
    ControlReply reply;
    const wchar_t* const text = reply.AskForText(m_hResource, property.controlCode);
    if (!text) {
        return nullptr;
    }
    cached = SystemPropertyText(property, reply, text);
    return cached.c_str();
}

bool CClusterResource::GetPrivateStringProperty(const wchar_t* name, std::wstring& value) {
    ControlReply reply;
    if (reply.Ask(m_hResource, CLUSCTL_RESOURCE_GET_PRIVATE_PROPERTIES) == 0) {
        return false;
    }
    wchar_t* text = nullptr;
    if (ResUtilFindSzProperty(reply.Data(), reply.Offered(), name, &text) != ERROR_SUCCESS) {
        return false;
    }
    const LocalMemoryOwner textOwner(text);
    if (!text) {
        return false;
    }
    value.assign(text, wcsnlen(text, LocalSize(text) / sizeof(wchar_t)));
    return true;
}

bool CClusterResource::GetPrivateDWORDProperty(const wchar_t* name, DWORD& value) {
    ControlReply reply;
    return reply.Ask(m_hResource, CLUSCTL_RESOURCE_GET_PRIVATE_PROPERTIES) != 0 &&
           ResUtilFindDwordProperty(reply.Data(), reply.Offered(), name, &value) == ERROR_SUCCESS;
}

bool CClusterResource::SetDWORDProperty(DWORD controlCode, const wchar_t* name, DWORD value) {
    LOG_ENTER(L"CClusterResource::SetDWORDProperty, %d,%s,%d", controlCode, name, value);
    LOG_LEAVE_AT_END(L"CClusterResource::SetDWORDProperty");
    const std::size_t cchName = name ? std::wcslen(name) : 0;
    const DWORD cb = static_cast<DWORD>(clus::DwordPropertyListSize(cchName));
    LocalMemoryOwner block(LocalAlloc(LPTR, cb));
    if (!block) {
        LOG_ERROR(L"LocalAlloc %d bytes fail", cb);
        return false;
    }
    clus::WriteDwordPropertyList(static_cast<unsigned char*>(block.get()), name, cchName, value);
    const DWORD code = ClusterResourceControl(m_hResource, nullptr, controlCode, block.get(), cb, nullptr, 0, nullptr);
    block.reset();
    if (code != ERROR_SUCCESS) {
        LOG_ERROR(L"CClusterResource::SetDWORDProperty failed, code:%d", code);
        return false;
    }
    return true;
}
