// The cluster, its resources and groups, and the paths of disks.
#include "Operations.h"
#include "Platform.h"

#include "platform/ClusterApi.h"

#include <list>
#include <string>

namespace hostile {

namespace {

typedef std::list<std::wstring> Names;

Chance& TheChance() {
    return TheAttack().chance;
}

// One of the shared ones, or else one that the caller has and that is opened for it.
CCluster& SomeCluster(SharedObjects& shared, CCluster& fresh) {
    if (TheChance().OneIn(2)) {
        if (!shared.cluster.GetHandle() && !TheChance().OneIn(8)) {
            shared.cluster.OpenByLPC();
        }
        return shared.cluster;
    }
    if (!TheChance().OneIn(8)) {
        fresh.OpenByLPC();
    }
    return fresh;
}
CClusterResource& SomeResource(SharedObjects& shared, CClusterResource& fresh) {
    if (TheChance().OneIn(2)) {
        CClusterResource& resource = shared.resources[TheChance().Below(4)];
        if (!resource.GetResourceHandle() && !TheChance().OneIn(8)) {
            shared.cluster.OpenResourceByName(resource, SomeName(TheChance()));
        }
        return resource;
    }
    shared.cluster.OpenResourceByName(fresh, SomeName(TheChance()));
    return fresh;
}
CClusterGroup& SomeGroup(SharedObjects& shared, CClusterGroup& fresh) {
    if (TheChance().OneIn(2)) {
        CClusterGroup& group = shared.groups[TheChance().Below(3)];
        if (!group.GetGroupHandle() && !TheChance().OneIn(8)) {
            shared.cluster.OpenGroupByName(group, SomeName(TheChance()));
        }
        return group;
    }
    shared.cluster.OpenGroupByName(fresh, SomeName(TheChance()));
    return fresh;
}

const wchar_t* NameOrNull() {
    return TheChance().OneIn(20) ? nullptr : SomeName(TheChance());
}

// That a caller may read all that it was given.
void Read(const Names& names) {
    for (const std::wstring& name : names) {
        Touch(name.c_str());
    }
}

DWORD VisitResource(HCLUSTER, HGROUP, HRESOURCE handle, const wchar_t* name, void* context) {
    Touch(name);
    if (TheChance().OneIn(3)) {
        CClusterResource resource(handle, false);
        Touch(resource.GetSystemStringProperty(CClusterResource::RES_PROP_TYPE, true));
    }
    Reenter();
    ++*static_cast<int*>(context);
    const DWORD results[] = {0, 0, 0, 1, 0xFFFFFFFF};
    return TheChance().Of(results);
}

const Operation Sessions[] = {
    {"CCluster::OpenByLPC", [](SharedObjects& shared) { shared.cluster.OpenByLPC(); }},
    {"CCluster::OpenByRPC", [](SharedObjects& shared) { shared.cluster.OpenByRPC(NameOrNull()); }},
    {"CCluster::Close", [](SharedObjects& shared) { shared.cluster.Close(); }},
    {"CCluster::GetClusterName",
     [](SharedObjects& shared) {
         CCluster fresh;
         std::wstring name;
         SomeCluster(shared, fresh).GetClusterName(name);
         Touch(name.c_str());
     }},
    {"CCluster::GetClusterNameResourceGUID",
     [](SharedObjects&) {
         std::wstring name;
         std::wstring id;
         CCluster::GetClusterNameResourceGUID(name, id);
     }},
    {"CCluster::EnumNames",
     [](SharedObjects& shared) {
         const int kinds[] = {2, 4, 5, 5, 0, -1};
         CCluster fresh;
         Names names;
         SomeCluster(shared, fresh).EnumNames(static_cast<CCluster::CCLUSTER_OBJ_ENUM>(TheChance().Of(kinds)), names);
         Read(names);
     }},
    {"CCluster::EnumResourceNamesByType",
     [](SharedObjects& shared) {
         CCluster fresh;
         Names names;
         SomeCluster(shared, fresh).EnumResourceNamesByType(SomeType(TheChance()), names);
         Read(names);
     }},
    {"CCluster::OpenResourceByName",
     [](SharedObjects& shared) {
         shared.cluster.OpenResourceByName(shared.resources[TheChance().Below(4)], SomeName(TheChance()));
     }},
    {"CCluster::OpenGroupByName",
     [](SharedObjects& shared) {
         shared.cluster.OpenGroupByName(shared.groups[TheChance().Below(3)], SomeName(TheChance()));
     }},
    {"CCluster::OpenNodeByName",
     [](SharedObjects& shared) {
         CCluster fresh;
         CClusterNode node;
         SomeCluster(shared, fresh).OpenNodeByName(node, SomeName(TheChance()));
     }},
    {"CCluster::OpenNetworkNameResourceByNetworkName",
     [](SharedObjects& shared) {
         CCluster fresh;
         CClusterResource resource;
         SomeCluster(shared, fresh).OpenNetworkNameResourceByNetworkName(resource, NameOrNull());
     }},
    {"CCluster::OpenGroupByNetworkName",
     [](SharedObjects& shared) {
         CCluster fresh;
         CClusterGroup group;
         SomeCluster(shared, fresh).OpenGroupByNetworkName(group, NameOrNull());
     }},
    {"CCluster::FindFirstResourceNameByNetworkName",
     [](SharedObjects& shared) {
         CCluster fresh;
         std::wstring name;
         SomeCluster(shared, fresh).FindFirstResourceNameByNetworkName(name, NameOrNull());
     }},
    {"CCluster::CreateResource",
     [](SharedObjects& shared) {
         CClusterGroup fresh;
         CClusterResource resource;
         CCluster::CreateResource(SomeGroup(shared, fresh), resource, SomeName(TheChance()), SomeType(TheChance()));
     }},
};

const Operation Resources[] = {
    {"CClusterResource::Close", [](SharedObjects& shared) { shared.resources[TheChance().Below(4)].Close(); }},
    {"CClusterResource::SetAutoClose",
     [](SharedObjects& shared) {
         CClusterResource resource;
         shared.cluster.OpenResourceByName(resource, SomeName(TheChance()));
         resource.SetAutoClose(false);
         resource.Close();
         resource.SetAutoClose(true);
     }},
    {"CClusterResource::GetStateString",
     [](SharedObjects&) { Touch(CClusterResource::GetStateString(static_cast<int>(TheChance().Below(8)))); }},
    {"CClusterResource::GetResourceState",
     [](SharedObjects& shared) {
         CClusterResource fresh;
         std::wstring node;
         std::wstring group;
         SomeResource(shared, fresh)
             .GetResourceState(TheChance().OneIn(2) ? &node : nullptr, TheChance().OneIn(2) ? &group : nullptr);
         if (node.size() > 15 || group.size() > 255) {
             TheAttack().Fail("a name is longer than its room");
         }
     }},
    {"CClusterResource::OnlineResource",
     [](SharedObjects& shared) {
         CClusterResource fresh;
         SomeResource(shared, fresh).OnlineResource();
     }},
    {"CClusterResource::OfflineResource",
     [](SharedObjects& shared) {
         CClusterResource fresh;
         SomeResource(shared, fresh).OfflineResource();
     }},
    {"CClusterResource::IsOnlineOnCurrentNode",
     [](SharedObjects& shared) {
         CClusterResource fresh;
         std::wstring group;
         SomeResource(shared, fresh).IsOnlineOnCurrentNode(TheChance().OneIn(2) ? &group : nullptr);
     }},
    {"CClusterResource::IsOnCurrentNode",
     [](SharedObjects& shared) {
         CClusterResource fresh;
         std::wstring group;
         SomeResource(shared, fresh).IsOnCurrentNode(TheChance().OneIn(2) ? &group : nullptr);
     }},
    {"CClusterResource::GetSystemStringProperty",
     [](SharedObjects& shared) {
         CClusterResource fresh;
         const auto id = static_cast<CClusterResource::RES_PROPERTY_ID>(TheChance().Below(5));
         Touch(SomeResource(shared, fresh).GetSystemStringProperty(id, TheChance().OneIn(2)));
     }},
    {"CClusterResource::GetPrivateStringProperty",
     [](SharedObjects& shared) {
         CClusterResource fresh;
         std::wstring value;
         SomeResource(shared, fresh).GetPrivateStringProperty(SomeName(TheChance()), value);
         Touch(value.c_str());
     }},
    {"CClusterResource::GetPrivateDWORDProperty",
     [](SharedObjects& shared) {
         CClusterResource fresh;
         DWORD value = 0;
         SomeResource(shared, fresh).GetPrivateDWORDProperty(SomeName(TheChance()), value);
     }},
    {"CClusterResource::SetDWORDProperty",
     [](SharedObjects& shared) {
         CClusterResource fresh;
         SomeResource(shared, fresh)
             .SetDWORDProperty(CLUSCTL_RESOURCE_SET_COMMON_PROPERTIES, NameOrNull(),
                               static_cast<DWORD>(TheChance().Next()));
     }},
    {"CClusterResource::AddDependency",
     [](SharedObjects& shared) {
         CClusterResource fresh;
         CClusterResource other;
         SomeResource(shared, fresh).AddDependency(SomeResource(shared, other).GetResourceHandle());
     }},
    {"CClusterResource::AddOwner",
     [](SharedObjects& shared) {
         CClusterResource fresh;
         CClusterNode node;
         shared.cluster.OpenNodeByName(node, SomeName(TheChance()));
         SomeResource(shared, fresh).AddOwner(node.GetNodeHandle());
     }},
    {"CClusterResource::DeleteResource",
     [](SharedObjects& shared) {
         CClusterResource fresh;
         SomeResource(shared, fresh).DeleteResource();
     }},
    {"CClusterResource::GetResourceStorageDependency",
     [](SharedObjects& shared) {
         CClusterResource fresh;
         CClusterResource storage;
         SomeResource(shared, fresh).GetResourceStorageDependency(storage);
     }},
    {"CClusterResource::GetResourceDependencyByType",
     [](SharedObjects& shared) {
         CClusterResource fresh;
         CClusterResource dependency;
         SomeResource(shared, fresh).GetResourceDependencyByType(dependency, SomeType(TheChance()));
     }},
    {"CClusterResource::GetDependentNetworkName",
     [](SharedObjects& shared) {
         CClusterResource fresh;
         std::wstring name;
         SomeResource(shared, fresh).GetDependentNetworkName(name);
     }},
    {"CClusterResource::EnumNames",
     [](SharedObjects& shared) {
         CClusterResource fresh;
         Names names;
         SomeResource(shared, fresh).EnumNames(static_cast<DWORD>(TheChance().Below(8)), names);
         Read(names);
     }},
};

const Operation Groups[] = {
    {"CClusterGroup::operator=",
     [](SharedObjects& shared) {
         CClusterGroup copy;
         copy = shared.groups[TheChance().Below(3)];
     }},
    {"CClusterGroup::Close", [](SharedObjects& shared) { shared.groups[TheChance().Below(3)].Close(); }},
    {"CClusterGroup::EnumResourceNamesInGroup",
     [](SharedObjects& shared) {
         CClusterGroup fresh;
         Names names;
         SomeGroup(shared, fresh).EnumResourceNamesInGroup(names);
         Read(names);
     }},
    {"CClusterGroup::EnumResourceNamesInGroupByType",
     [](SharedObjects& shared) {
         CClusterGroup fresh;
         Names names;
         SomeGroup(shared, fresh)
             .EnumResourceNamesInGroupByType(shared.cluster, names,
                                             TheChance().OneIn(20) ? nullptr : SomeType(TheChance()));
         Read(names);
     }},
    {"CClusterGroup::EnumStorageResourceNamesInGroup",
     [](SharedObjects& shared) {
         CClusterGroup fresh;
         Names names;
         SomeGroup(shared, fresh).EnumStorageResourceNamesInGroup(shared.cluster, names);
         Read(names);
     }},
    {"CClusterGroup::EnumResourceInGroup",
     [](SharedObjects& shared) {
         CClusterGroup fresh;
         int visited = 0;
         SomeGroup(shared, fresh)
             .EnumResourceInGroup(shared.cluster.GetHandle(), TheChance().OneIn(10) ? nullptr : VisitResource,
                                  &visited);
     }},
    {"CClusterGroup::FindPhysicalDiskResourceNameByDriveLetter",
     [](SharedObjects& shared) {
         CClusterGroup fresh;
         std::wstring name;
         SomeGroup(shared, fresh).FindPhysicalDiskResourceNameByDriveLetter(shared.cluster, L'F', name);
     }},
    {"GetDiskLettersFromResource",
     [](SharedObjects& shared) {
         CClusterResource fresh;
         std::vector<std::wstring> paths;
         GetDiskLettersFromResource(SomeResource(shared, fresh).GetResourceHandle(), paths);
     }},
    {"GetDiskLetterFromResource",
     [](SharedObjects& shared) {
         CClusterResource fresh;
         std::vector<wchar_t> path(TheChance().Below(300)); // its end is a guarded block's
         GetDiskLetterFromResource(SomeResource(shared, fresh).GetResourceHandle(), path.data(),
                                   static_cast<DWORD>(path.size()));
     }},
};

} // namespace

const std::vector<Operation>& ClusterOperations() {
    static const std::vector<Operation> operations = [] {
        std::vector<Operation> all(std::begin(Sessions), std::end(Sessions));
        all.insert(all.end(), std::begin(Resources), std::end(Resources));
        all.insert(all.end(), std::begin(Groups), std::end(Groups));
        return all;
    }();
    return operations;
}

} // namespace hostile
