// Asking VCS: lists, dependencies, attributes, states; and which cluster the product is configured for.
#include "clus_VeritasCluster.h"

#include "core/Text.h"
#include "core/ToolOutput.h"
#include "core/UniqueNames.h"
#include "core/VeritasNames.h"
#include "platform/Log.h"
#include "platform/RegistryKey.h"
#include "settings/ProductSettings.h"
#include "veritas/ToolRun.h"

CLUS_LOG_PLACE(VeritasCluster, 3);

using clus::AppendNew;
using clus::DefaultProductRegistryKey;
using clus::EqualNoCase;
using clus::NameColumn;
using clus::RegistryKey;
using clus::TextOf;
using namespace clus::veritas;

namespace {

// Columns of the tools' tables.
const size_t DependencyColumns = 3;
const size_t StateColumns = 4;

// Appends the names of a list that are not there yet.
bool AppendNames(const wchar_t* command, const std::wstring& conditions, std::vector<std::wstring>& names) {
    NameColumn found;
    if (!RunForNames(command, conditions.c_str(), found) || found.IsError()) {
        return false;
    }
    found.MoveTo(names);
    return true;
}

} // namespace

bool CVeritasCluster::EnumSystemNames(std::vector<std::wstring>& systems, const NameValuePairList* filter) const {
    const std::wstring conditions = filter ? ConcatNameValuePair_(*filter) : L"";
    std::vector<std::wstring> tokens;
    if (!ExecuteVeritasCommand_(L"hasys -list", conditions.c_str(), &tokens, true) || IsResultError(tokens)) {
        return false;
    }
    systems.swap(tokens);
    return true;
}

bool CVeritasCluster::EnumGroupNames(std::vector<std::wstring>& groups, const NameValuePairList* filter) const {
    return AppendNames(L"hagrp -list", filter ? ConcatNameValuePair_(*filter) : L"", groups);
}

bool CVeritasCluster::EnumResourceNamesW(std::vector<std::wstring>& resources, const NameValuePairList* filter) const {
    return AppendNames(L"hares -list", filter ? ConcatNameValuePair_(*filter) : L"", resources);
}

bool CVeritasCluster::EnumResDependencies(const wchar_t* resource, std::vector<std::wstring>& parents,
                                          std::vector<std::wstring>& children) const {
    const std::wstring name = TextOf(resource);
    std::vector<std::wstring> tokens;
    if (!ExecuteVeritasCommand_(L"hares -dep", name.c_str(), &tokens, true)) {
        return false;
    }
    for (size_t row = DependencyColumns; row + DependencyColumns <= tokens.size(); row += DependencyColumns) {
        const std::wstring& parent = tokens[row + 1];
        const std::wstring& child = tokens[row + 2];
        if (EqualNoCase(parent, name.c_str())) {
            AppendNew(children, child);
        }
        if (EqualNoCase(child, name.c_str())) {
            AppendNew(parents, parent);
        }
    }
    return true;
}

bool CVeritasCluster::GetResourceAttribute(const wchar_t* resource, const wchar_t* attribute,
                                           std::wstring& value) const {
    const std::wstring command = L"hares -display " + TextOf(resource) + L" -attribute " + TextOf(attribute);
    std::wstring text;
    if (!ExecuteVeritasCommand_(command.c_str(), L"", text, true) || IsResultError(text.c_str())) {
        return false;
    }
    return clus::ShownAttributeValue(text, value);
}

bool CVeritasCluster::GetGroupOnlineNode(const wchar_t* group, bool& online, std::wstring& system,
                                         bool acceptPartial) const {
    online = false;
    const std::wstring command = L"hagrp -state " + TextOf(group);
    std::vector<std::wstring> tokens;
    if (!ExecuteVeritasCommand_(command.c_str(), L"", &tokens, true)) {
        return false;
    }
    // The header is walked like a row: it names no state that matches. A row cut short does not match.
    for (size_t row = 0; row + StateColumns <= tokens.size(); row += StateColumns) {
        const std::wstring& state = tokens[row + 3];
        if ((acceptPartial && EqualNoCase(state, L"|PARTIAL|")) || EqualNoCase(state, L"|ONLINE|")) {
            online = true;
            system = tokens[row + 2];
            break;
        }
    }
    return true;
}

bool CVeritasCluster::FindGroupNameByVirtualServerName(const wchar_t* virtualName, std::wstring& group) const {
    const NameValuePairList filter = {{TypeAttribute, LanmanType}, {VirtualNameAttribute, TextOf(virtualName)}};
    std::vector<std::wstring> resources;
    if (!EnumResourceNamesW(resources, &filter)) {
        return false;
    }
    for (const std::wstring& resource : resources) {
        if (GetResourceAttribute(resource.c_str(), GroupAttribute, group)) {
            return true;
        }
    }
    return resources.empty(); // no such server is no failure: callers tell by the empty text
}

bool CVeritasCluster::GetGenericServiceResNameByServiceName(const wchar_t* group, const wchar_t* serviceName,
                                                            std::wstring& resource) const {
    LOG_ENTER_AND_LEAVE(L"GetGenericServiceResNameByServiceName");
    const std::wstring groupName = TextOf(group);
    const NameValuePairList filter = {
        {TypeAttribute, GenericServiceType}, {ServiceNameAttribute, TextOf(serviceName)}, {GroupAttribute, groupName}};
    std::vector<std::wstring> resources;
    if (!EnumResourceNamesW(resources, &filter)) {
        LOG_WARNING(L"Fail to enumerate resource for Group %s", groupName.c_str());
        return false;
    }
    if (resources.empty()) {
        LOG_WARNING(L"No resource found in Group %s", groupName.c_str());
        return false;
    }
    resource = resources.front();
    return true;
}

THIRD_PARTY_CLUSTER_TYPE CVeritasCluster::GetThirdPartyClusterType() const {
    DWORD type = 0;
    DWORD stored = 0;
    {
        // The compiled-in key, whatever the settings file names.
        const RegistryKey key(DefaultProductRegistryKey, KEY_READ);
        if (!key) {
            LOG_WARNING(L"Cannot open registry %s, Last err:%d", DefaultProductRegistryKey, GetLastError());
        } else if (key.ReadBytes(L"ThirdPartyClusterType", &stored, sizeof(stored))) {
            type = stored;
        } else {
            LOG_WARNING(L"Cannot query registry value %s, Last err:%d", L"ThirdPartyClusterType", GetLastError());
        }
    }
    LOG_INFO(L"GetThirdPartyClusterType: returns: %d", type);
    return static_cast<THIRD_PARTY_CLUSTER_TYPE>(type);
}
