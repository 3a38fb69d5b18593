// Finding the Exchange virtual servers of a VCS cluster, their storage and the product's registry replication.
#include "clus_VeritasCluster.h"

#include "core/Text.h"
#include "core/UniqueNames.h"
#include "core/VeritasNames.h"
#include "platform/Log.h"
#include "settings/ProductSettings.h"

#include "CommonUtil.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>

CLUS_LOG_PLACE(VeritasCluster, 5);

using clus::Contains;
using clus::DefaultProductRegistryKey;
using clus::EqualNoCase;
using clus::TextOf;
using namespace clus::veritas;

bool CVeritasCluster::CollectEVSInfo(const wchar_t* virtualName, CVeritasVirtualServerInfo& info) const {
    LOG_ENTER_AND_LEAVE(L"CollectEVSInfo");
    const NameValuePairList filter = {{TypeAttribute, LanmanType}, {VirtualNameAttribute, TextOf(virtualName)}};
    std::vector<std::wstring> lanmans;
    if (!EnumResourceNamesW(lanmans, &filter)) {
        LOG_WARNING(L"EnumResourceNames fail");
        return false;
    }
    if (lanmans.empty()) {
        LOG_WARNING(L"No Lanman resource found.");
        return false;
    }
    info.sLanmanResName = lanmans.front();
    if (!GetResourceAttribute(info.sLanmanResName.c_str(), GroupAttribute, info.sGroupName)) {
        LOG_WARNING(L"Failed to get Group attribute for resource %s", info.sLanmanResName.c_str());
        return false;
    }
    info.SetGroupAndKOVAResourceName(info.sGroupName.c_str());
    if (!GetGroupOnlineNode(info.sGroupName.c_str(), info.bGroupOnline, info.sOnlineNode, true)) {
        LOG_WARNING(L"Failed to get Group online node for resource %s", info.sLanmanResName.c_str());
        return false;
    }
    return true;
}

bool CVeritasCluster::CollectExchangeEVSInfo(std::vector<CVeritasVirtualServerInfo>& infos) const {
    LOG_ENTER_AND_LEAVE(L"CollectExchangeEVSInfo");
    std::vector<std::wstring> groups;
    bool succeeded = EnumGroupNames(groups);

    const size_t first = infos.size();
    NameValuePairList filter = {
        {GroupAttribute, L""}, {TypeAttribute, ExchServiceType}, {ServiceAttribute, InformationStoreService}};
    for (const std::wstring& group : groups) {
        filter[0].second = group;
        std::vector<std::wstring> stores;
        if (!EnumResourceNamesW(stores, &filter)) {
            LOG_WARNING(L"CollectExchangeEVSInfo, EnumResourceNames for exchange resource failed");
            succeeded = false;
        }
        if (!stores.empty()) {
            infos.emplace_back(stores.front().c_str(), group.c_str());
        }
    }

    filter = {{GroupAttribute, L""}, {TypeAttribute, LanmanType}};
    for (size_t i = first; i < infos.size(); ++i) {
        CVeritasVirtualServerInfo& info = infos[i];
        filter[0].second = info.sGroupName;
        std::vector<std::wstring> lanmans;
        if (!EnumResourceNamesW(lanmans, &filter)) {
            LOG_WARNING(L"CollectExchangeEVSInfo, EnumResourceNames for lanman resource failed for group %s",
                        info.sGroupName.c_str());
            succeeded = false;
        }
        if (!GetGroupOnlineNode(info.sGroupName.c_str(), info.bGroupOnline, info.sOnlineNode, true)) {
            LOG_WARNING(L"CollectExchangeEVSInfo, GetGroupOnlineNode for lanman resource failed for group %s",
                        info.sGroupName.c_str());
            succeeded = false;
        }
        if (!lanmans.empty()) {
            info.sLanmanResName = lanmans.front();
        }
    }
    return succeeded; // what was found stays, whatever failed
}

bool CVeritasCluster::CollectExchangeEVSInfo(const wchar_t* groupName, CVeritasVirtualServerInfo& info) const {
    std::vector<CVeritasVirtualServerInfo> infos;
    if (!CollectExchangeEVSInfo(infos)) {
        return false;
    }
    const std::wstring group = TextOf(groupName);
    const auto found = std::find_if(infos.begin(), infos.end(), [&group](const CVeritasVirtualServerInfo& candidate) {
        return EqualNoCase(candidate.sGroupName, group.c_str());
    });
    if (found == infos.end()) {
        return false;
    }
    info = *found;
    return true;
}

bool CVeritasCluster::FindMostParentMountVResourceNameInGroup(const wchar_t* groupName,
                                                              std::vector<std::wstring>& mountResNames) const {
    LOG_ENTER_AND_LEAVE(L"FindMostParentMountVResourceNameInGroup");
    const std::wstring group = TextOf(groupName);
    LOG_INFO(L"Finding Exchange SA resource for group %s", group.c_str());
    const NameValuePairList attendantFilter = {
        {TypeAttribute, ExchServiceType}, {ServiceAttribute, SystemAttendantService}, {GroupAttribute, group}};
    std::vector<std::wstring> attendants;
    if (!EnumResourceNamesW(attendants, &attendantFilter)) {
        return false;
    }
    std::vector<std::wstring> dependencies;
    if (!attendants.empty()) {
        LOG_INFO(L"Exchange SA: %s", attendants.front().c_str());
        LOG_INFO(L"Finding the resources that ExchangeSA depends on.");
        std::vector<std::wstring> parents;
        if (!EnumResDependencies(attendants.front().c_str(), parents, dependencies)) {
            return false;
        }
    }
    const NameValuePairList mountFilter = {{TypeAttribute, MountVType}, {GroupAttribute, group}};
    std::vector<std::wstring> mounts;
    if (!EnumResourceNamesW(mounts, &mountFilter)) {
        return false;
    }
    std::vector<std::wstring> candidates;
    std::copy_if(dependencies.begin(), dependencies.end(), std::back_inserter(candidates),
                 [&mounts](const std::wstring& name) { return Contains(mounts, name); });

    std::vector<std::wstring> found;
    for (const std::wstring& candidate : candidates) {
        std::vector<std::wstring> parents;
        std::vector<std::wstring> children;
        if (!EnumResDependencies(candidate.c_str(), parents, children)) {
            continue;
        }
        const bool dependsOnOther =
            std::any_of(children.begin(), children.end(),
                        [&candidates](const std::wstring& name) { return Contains(candidates, name); });
        if (!dependsOnOther) {
            found.push_back(candidate);
        }
    }
    mountResNames.swap(found);
    return true;
}

bool CVeritasCluster::GetKOVAShareDiskResNameByRegRepName(const wchar_t* groupName, const wchar_t* regRepResName,
                                                          std::wstring& mountResName) const {
    const NameValuePairList filter = {{TypeAttribute, MountVType}, {GroupAttribute, TextOf(groupName)}};
    std::vector<std::wstring> mounts;
    if (!EnumResourceNamesW(mounts, &filter)) {
        return false;
    }
    std::vector<std::wstring> parents;
    std::vector<std::wstring> children;
    const bool succeeded = EnumResDependencies(regRepResName, parents, children);
    const auto found = std::find_if(children.begin(), children.end(),
                                    [&mounts](const std::wstring& name) { return Contains(mounts, name); });
    if (found != children.end()) {
        mountResName = *found;
    }
    return succeeded;
}

bool CVeritasCluster::FindExistingKOVARegRepResName(const wchar_t* groupName, std::wstring& regRepResName) const {
    const std::wstring key = GetDefaultRegRepRegKey();
    const NameValuePairList filter = {{GroupAttribute, TextOf(groupName)}, {TypeAttribute, RegRepType}};
    std::vector<std::wstring> resources;
    const bool listed = EnumResourceNamesW(resources, &filter);
    for (const std::wstring& resource : resources) {
        std::wstring keys;
        if (GetResourceAttribute(resource.c_str(), KeysAttribute, keys) && EqualNoCase(keys, key.c_str())) {
            regRepResName = resource;
            break;
        }
    }
    return listed; // whether or not one matched: callers tell by the empty text
}

std::wstring CVeritasCluster::GetDefaultRegRepReplicationDirectory(const wchar_t* path) const {
    wchar_t drive[_MAX_DRIVE] = {};
    wchar_t directory[_MAX_DIR] = {};
    wchar_t name[_MAX_FNAME] = {};
    wchar_t extension[_MAX_EXT] = {};
    // A part that is too long leaves all of them empty.
    _wsplitpath_s(path, drive, _MAX_DRIVE, directory, _MAX_DIR, name, _MAX_FNAME, extension, _MAX_EXT);
    if (directory[0] == L'\0') {
        LOG_WARNING(L"Cannot split path %s", path);
        return std::wstring();
    }
    // Without the drive: each system mounts the shared disk where its MountV resource says.
    return NS_StringUtils::concatPath(NS_StringUtils::concatPath(L"\\", directory), L"\\RegRep");
}

std::wstring CVeritasCluster::GetDefaultRegRepRegKey() const {
    return std::wstring(L"HKLM\\") + DefaultProductRegistryKey;
}
