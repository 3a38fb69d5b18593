// Every public operation of the cluster classes, with each of its platform calls and allocations failing.
#include "ClusterFixture.h"
#include "FaultSweep.h"

#include <algorithm>

using namespace harness;

namespace {

typedef CClusterResource Res;

const char CodeOfFault[] = "the code";

std::string Count(const NameList& names) {
    return std::to_string(names.size());
}

class ClusterSweep : public ClusterTest {
protected:
    static ModelBuilder Model() {
        return ExchangeCluster()
            .Node("NODE-C")
            .Resource("EVS1 Store", "Generic Service")
            .State("Offline")
            .DependsOn("EVS1 Name")
            .DependsOn("EVS1 Disk")
            .PossibleOwner("NODE-A")
            .PossibleOwner("NODE-B") // else the group could not move
            .Private("Path", "F:\\Data")
            .Private("Id", 3);
    }

    typedef std::function<std::string(CCluster&)> ClusterOperation;
    typedef std::function<std::string(Res&)> ResourceOperation;
    typedef std::function<std::string(CCluster&, CClusterGroup&)> GroupOperation;

    // With a fault the result is one of `faulted`, in which CodeOfFault stands for that code, or the good one.
    void SweepCluster(const ClusterOperation& operation, const std::string& good,
                      std::vector<std::string> faulted = {"false"}) {
        faulted.push_back("not open");
        faulted.push_back(good);
        Sweep sweep;
        sweep.prepare = [this] { Load(Model()); };
        sweep.body = [&] {
            CCluster cluster;
            return cluster.OpenByLPC() ? operation(cluster) : std::string("not open");
        };
        sweep.check = [&](const SweepRun& run) {
            if (!run.faulted) {
                EXPECT_EQ(run.result, good);
            } else if (!run.threw) {
                std::vector<std::string> accepted = faulted;
                std::replace(accepted.begin(), accepted.end(), std::string(CodeOfFault), std::to_string(run.code));
                EXPECT_THAT(accepted, ::testing::Contains(run.result));
            }
        };
        FaultSweep(*this, sweep);
        EventSweep(*this, sweep);
    }

    void SweepResource(const wchar_t* name, const ResourceOperation& operation, const std::string& good,
                       const std::vector<std::string>& faulted = {"false"}) {
        SweepCluster(
            [&](CCluster& cluster) {
                Res resource;
                return cluster.OpenResourceByName(resource, name) ? operation(resource) : std::string("not open");
            },
            good, faulted);
    }

    void SweepGroup(const GroupOperation& operation, const std::string& good,
                    const std::vector<std::string>& faulted = {"false"}) {
        SweepCluster(
            [&](CCluster& cluster) {
                CClusterGroup group;
                return cluster.OpenGroupByName(group, L"EVS1") ? operation(cluster, group) : std::string("not open");
            },
            good, faulted);
    }
};

// Cluster
// ------------------------------------------------------------------------------------------------------------------

TEST_F(ClusterSweep, GetClusterName) {
    SweepCluster(
        [](CCluster& cluster) {
            std::wstring name = L"before";
            return cluster.GetClusterName(name) ? Utf8(name) : std::string(name == L"before" ? "false" : "written");
        },
        "EXCLUS");
}

TEST_F(ClusterSweep, GetClusterNameResourceGUID) {
    SweepCluster(
        [](CCluster&) {
            std::wstring name = L"n";
            std::wstring id = L"i";
            const bool result = CCluster::GetClusterNameResourceGUID(name, id);
            return result == (name == L"EXCLUS") && result == (id != L"i") ? TrueOrFalse(result) : std::string("half");
        },
        "true");
}

TEST_F(ClusterSweep, OpenByRPC) {
    SweepCluster(
        [](CCluster&) {
            CCluster other;
            const bool result = other.OpenByRPC(L"EXCLUS");
            return result == (other.GetHandle() != nullptr) ? TrueOrFalse(result) : std::string("half");
        },
        "true");
}

TEST_F(ClusterSweep, EnumNames) {
    for (const CCluster::CCLUSTER_OBJ_ENUM kind :
         {CCluster::CCLUSTER_OBJ_RESOURCE, CCluster::CCLUSTER_OBJ_NODE, CCluster::CCLUSTER_OBJ_GROUP}) {
        SweepCluster(
            [kind](CCluster& cluster) {
                NameList names;
                return TrueOrFalse(cluster.EnumNames(kind, names));
            },
            "true");
    }
}

TEST_F(ClusterSweep, EnumResourceNamesByType) {
    SweepCluster(
        [](CCluster& cluster) {
            NameList names;
            return cluster.EnumResourceNamesByType(L"Network Name", names) ? Count(names) : std::string("false");
        },
        "2", {"false", "0", "1"});
}

TEST_F(ClusterSweep, OpenNodeByName) {
    SweepCluster(
        [](CCluster& cluster) {
            CClusterNode node;
            const bool result = cluster.OpenNodeByName(node, L"NODE-B");
            return result == (node.GetNodeHandle() != nullptr) ? TrueOrFalse(result) : std::string("half");
        },
        "true");
}

TEST_F(ClusterSweep, OpenNetworkNameResourceByNetworkName) {
    SweepCluster(
        [](CCluster& cluster) {
            Res resource;
            const bool result = cluster.OpenNetworkNameResourceByNetworkName(resource, L"evs1");
            return result == (resource.GetResourceHandle() != nullptr) ? TrueOrFalse(result) : std::string("half");
        },
        "true");
}

TEST_F(ClusterSweep, OpenGroupByNetworkName) {
    SweepCluster(
        [](CCluster& cluster) {
            CClusterGroup group;
            const bool result = cluster.OpenGroupByNetworkName(group, L"evs1");
            return result == (group.GetGroupHandle() != nullptr) ? TrueOrFalse(result) : std::string("half");
        },
        "true");
}

TEST_F(ClusterSweep, FindFirstResourceNameByNetworkName) {
    SweepCluster(
        [](CCluster& cluster) {
            std::wstring name = L"before";
            return cluster.FindFirstResourceNameByNetworkName(name, L"evs1")
                       ? Utf8(name)
                       : std::string(name == L"before" ? "false" : "written");
        },
        "EVS1 Name");
}

TEST_F(ClusterSweep, CreateResource) {
    SweepGroup(
        [](CCluster&, CClusterGroup& group) {
            Res resource;
            return TrueOrFalse(CCluster::CreateResource(group, resource, L"EVS1 IP 2", L"IP Address"));
        },
        "true");
}

// Resource
// -----------------------------------------------------------------------------------------------------------------

TEST_F(ClusterSweep, GetResourceState) {
    SweepResource(L"Cluster IP", // its group's name needs memory
                  [](Res& resource) {
                      std::wstring node;
                      std::wstring group;
                      return std::to_string(resource.GetResourceState(&node, &group));
                  },
                  "1", {"-1"});
}

TEST_F(ClusterSweep, IsOnlineOnCurrentNode) {
    SweepResource(
        L"EVS1 IP",
        [](Res& resource) {
            std::wstring group;
            return TrueOrFalse(resource.IsOnlineOnCurrentNode(&group));
        },
        "true");
}

TEST_F(ClusterSweep, IsOnCurrentNode) {
    SweepResource(
        L"EVS1 IP",
        [](Res& resource) {
            std::wstring group;
            return TrueOrFalse(resource.IsOnCurrentNode(&group));
        },
        "true");
}

TEST_F(ClusterSweep, OnlineAndOfflineResource) {
    SweepResource(L"EVS1 Store",
                  [](Res& resource) {
                      const int online = resource.OnlineResource();
                      return std::to_string(online) + "/" + std::to_string(resource.OfflineResource());
                  },
                  "1/2", {"-1/-1", "-1/2", "1/-1"});
}

TEST_F(ClusterSweep, GetSystemStringProperty) {
    for (const auto id : {Res::RES_PROP_NAME, Res::RES_PROP_TYPE, Res::RES_PROP_NETWORK_NAME, Res::RES_PROP_GUID}) {
        SweepResource(
            L"EVS1 Name",
            [id](Res& resource) { return TrueOrFalse(resource.GetSystemStringProperty(id, false) != nullptr); },
            "true");
    }
    SweepResource(
        L"EVS1 Disk",
        [](Res& resource) {
            const wchar_t* const device = resource.GetSystemStringProperty(Res::RES_PROP_DISK_DEVICE, true);
            return device ? Utf8(device) : std::string("false");
        },
        "F:");
}

TEST_F(ClusterSweep, GetPrivateStringProperty) {
    SweepResource(
        L"EVS1 Store",
        [](Res& resource) {
            std::wstring value = L"before";
            return resource.GetPrivateStringProperty(L"Path", value)
                       ? Utf8(value)
                       : std::string(value == L"before" ? "false" : "written");
        },
        "F:\\Data");
}

TEST_F(ClusterSweep, GetPrivateDWORDProperty) {
    SweepResource(
        L"EVS1 Store",
        [](Res& resource) {
            DWORD value = 77;
            const bool result = resource.GetPrivateDWORDProperty(L"Id", value);
            return result == (value == 3) ? TrueOrFalse(result) : std::string("half");
        },
        "true");
}

TEST_F(ClusterSweep, SetDWORDProperty) {
    SweepResource(
        L"EVS1 Store",
        [](Res& resource) {
            return TrueOrFalse(resource.SetDWORDProperty(CLUSCTL_RESOURCE_SET_COMMON_PROPERTIES, L"RestartAction", 1));
        },
        "true");
}

TEST_F(ClusterSweep, AddDependency) {
    SweepCluster(
        [](CCluster& cluster) {
            Res store;
            Res address;
            if (!cluster.OpenResourceByName(store, L"EVS1 Store") || !cluster.OpenResourceByName(address, L"EVS1 IP")) {
                return std::string("not open");
            }
            return TrueOrFalse(store.AddDependency(address.GetResourceHandle()));
        },
        "true");
}

TEST_F(ClusterSweep, AddOwner) {
    SweepCluster(
        [](CCluster& cluster) {
            Res store;
            CClusterNode node;
            if (!cluster.OpenResourceByName(store, L"EVS1 Store") || !cluster.OpenNodeByName(node, L"NODE-C")) {
                return std::string("not open");
            }
            return std::to_string(store.AddOwner(node.GetNodeHandle()));
        },
        "0", {CodeOfFault});
}

TEST_F(ClusterSweep, DeleteResource) {
    SweepResource(
        L"EVS1 Store",
        [](Res& resource) {
            const bool result = resource.DeleteResource();
            return result == (resource.GetResourceHandle() == nullptr) ? TrueOrFalse(result) : std::string("half");
        },
        "true");
}

TEST_F(ClusterSweep, GetResourceStorageDependency) {
    SweepResource(
        L"EVS1 Store",
        [](Res& resource) {
            Res storage;
            const bool result = resource.GetResourceStorageDependency(storage);
            return result == (storage.GetResourceHandle() != nullptr) ? TrueOrFalse(result) : std::string("half");
        },
        "true");
}

TEST_F(ClusterSweep, GetResourceDependencyByType) {
    SweepResource(
        L"EVS1 Store",
        [](Res& resource) {
            Res found;
            const bool result = resource.GetResourceDependencyByType(found, L"Network Name");
            return result == (found.GetResourceHandle() != nullptr) ? TrueOrFalse(result) : std::string("half");
        },
        "true");
}

TEST_F(ClusterSweep, GetDependentNetworkName) {
    SweepResource(
        L"EVS1 Store",
        [](Res& resource) {
            std::wstring name = L"before";
            return resource.GetDependentNetworkName(name) ? Utf8(name)
                                                          : std::string(name == L"before" ? "false" : "written");
        },
        "EVS1");
}

TEST_F(ClusterSweep, EnumNamesOfAResource) {
    for (const DWORD kind : {1, 2, 4}) {
        SweepResource(
            L"EVS1 Name",
            [kind](Res& resource) {
                NameList names;
                return TrueOrFalse(resource.EnumNames(kind, names));
            },
            "true");
    }
}

// Group
// --------------------------------------------------------------------------------------------------------------------

TEST_F(ClusterSweep, EnumResourceNamesInGroup) {
    SweepGroup(
        [](CCluster&, CClusterGroup& group) {
            NameList names;
            return TrueOrFalse(group.EnumResourceNamesInGroup(names));
        },
        "true");
}

TEST_F(ClusterSweep, EnumResourceNamesInGroupByType) {
    SweepGroup(
        [](CCluster& cluster, CClusterGroup& group) {
            NameList names;
            return group.EnumResourceNamesInGroupByType(cluster, names, L"Network Name") ? Count(names)
                                                                                         : std::string("false");
        },
        "1", {"false", "0"});
}

TEST_F(ClusterSweep, EnumStorageResourceNamesInGroup) {
    SweepGroup(
        [](CCluster& cluster, CClusterGroup& group) {
            NameList names;
            return group.EnumStorageResourceNamesInGroup(cluster, names) ? Count(names) : std::string("false");
        },
        "1", {"0"});
}

TEST_F(ClusterSweep, EnumResourceInGroup) {
    SweepGroup(
        [](CCluster& cluster, CClusterGroup& group) {
            int visits = 0;
            const EnumResourceCallback count = [](HCLUSTER, HGROUP, HRESOURCE, const wchar_t*, void* context) -> DWORD {
                ++*static_cast<int*>(context);
                return 0;
            };
            const bool result = group.EnumResourceInGroup(cluster.GetHandle(), count, &visits);
            return result ? std::to_string(visits) : std::string("false");
        },
        "4", {"0", "1", "2", "3"});
}

TEST_F(ClusterSweep, FindPhysicalDiskResourceNameByDriveLetter) {
    SweepGroup(
        [](CCluster& cluster, CClusterGroup& group) {
            std::wstring name = L"before";
            return group.FindPhysicalDiskResourceNameByDriveLetter(cluster, L'F', name)
                       ? Utf8(name)
                       : std::string(name == L"before" ? "false" : "written");
        },
        "EVS1 Disk");
}

} // namespace
