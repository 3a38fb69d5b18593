#include "ServersLeftOut.h"

#include "PropertyJson.h"
#include "Text.h"
#include "ThisComputer.h"

#include "core/ResourceTypes.h"

#include <memory>

// One question: room for more servers than a node serves costs less than a second walk over the cluster.
bool ListServersHere(ServersHere& here) {
    const size_t ample = 1024;
    CVirtualServerUtil util;
    here.servers.resize(ample);
    auto count = static_cast<int>(ample);
    CVirtualServerUtil::ENUM_VS_RESULT result =
        util.EnumServersOnCurrentNodeEx(here.servers.data(), &count, here.leftOut);
    while (result == CVirtualServerUtil::ENUM_VS_RESULT_MORE_DATA) {
        here.servers.resize(static_cast<size_t>(count));
        result = util.EnumServersOnCurrentNodeEx(here.servers.data(), &count, here.leftOut);
    }
    const bool isListed = result == CVirtualServerUtil::ENUM_VS_RESULT_SUCCESS;
    here.servers.resize(isListed ? static_cast<size_t>(count) : 0);
    return isListed;
}

namespace {

// Whether a private property is there, and not empty. Otherwise `why` says what it lacks.
bool HasProperty(HRESOURCE resource, const wchar_t* name, const std::string& what, std::string& why) {
    std::vector<unsigned char> list;
    DWORD code = 0;
    if (!QueryResource(resource, CLUSCTL_RESOURCE_GET_PRIVATE_PROPERTIES, list, code)) {
        why = "the private properties of " + what + " cannot be read: " + ErrorText(code);
        return false;
    }
    const Json properties = PropertiesJson(list);
    const auto found = properties.find(Json(name).get<std::string>());
    if (found == properties.end() || (found->is_string() && found->get_ref<const std::string&>().empty())) {
        why = what + " has no " + Printable(name);
        return false;
    }
    return true;
}

std::string LeftOut(const std::wstring& name) {
    return "the server of " + Quoted(name) + " is left out: ";
}

std::string WhyNotDescribed(CClusterResource& resource) {
    std::string why;
    CClusterResource networkName;
    CClusterResource address;
    if (!resource.GetResourceDependencyByType(networkName, clus::NetworkNameType)) {
        return "it depends on no network name that can be read";
    }
    if (!networkName.GetResourceDependencyByType(address, clus::IpAddressType)) {
        return "its network name depends on no IP address that can be read";
    }
    if (!HasProperty(resource.GetResourceHandle(), clus::DataPathProperty, "it", why) ||
        !HasProperty(address.GetResourceHandle(), L"Address", "its IP address", why)) {
        return why;
    }
    return "the cluster does not describe its network name";
}

} // namespace

void FailToListServers() {
    CCluster cluster;
    OpenLocalCluster(cluster);
    ListNames(cluster, CCluster::CCLUSTER_OBJ_RESOURCE);
    throw Failure(Errors::Incomplete, "the cluster's resources could not be listed, and can be now").Hint("Ask again.");
}

std::string WhyLeftOut(const CCluster& cluster, const std::wstring& name, Report& report) {
    const std::string what = "a server may be left out: ";
    CClusterResource resource(OpenClusterResource(cluster.GetHandle(), name.c_str()));
    if (resource.GetResourceHandle() == nullptr) {
        MarkUnread(report, what + "cannot open the resource " + Quoted(name), GetLastError());
        return std::string();
    }
    Report unread;
    const Json record = ReadResource(cluster, name, ResourceParts::Line, unread);
    if (!unread.IsComplete()) {
        report.MarkIncomplete(what + unread.Warnings().front());
        if (unread.IsLost()) {
            report.MarkLost(unread.LostCode());
        }
        return std::string();
    }
    if (!clus::IsProductType(common::ToUtf16(record["type"].get<std::string>()).c_str()) ||
        !IsThisComputer(common::ToUtf16(record["owner"].get<std::string>()))) {
        return std::string(); // it can be read now, and makes no server of this node
    }
    const auto info = std::make_unique<CClusterVirtualServerInfo>();
    const bool isDescribed = CVirtualServerUtil::GetVirtualServerInfo(resource.GetResourceHandle(), *info, true, false);
    if (isDescribed) {
        report.MarkIncomplete(LeftOut(name) + "it could not be read, and can be now: ask again");
    }
    return isDescribed ? std::string() : WhyNotDescribed(resource);
}

void TellServersLeftOut(const Names& resources, Report& report) {
    if (resources.empty()) {
        return;
    }
    CCluster cluster;
    OpenLocalCluster(cluster);
    for (const std::wstring& name : resources) {
        const std::string reason = WhyLeftOut(cluster, name, report);
        if (!reason.empty()) {
            report.MarkIncomplete(LeftOut(name) + reason);
        }
    }
}
