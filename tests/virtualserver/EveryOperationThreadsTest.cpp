// Every public operation on the cluster on 16 threads at once, each thread with a virtual server of its own: each gets
// what it gets alone.
#include "AtOnce.h"
#include "ThreadedCluster.h"

#include "clus_Cluster.h"

#include <list>

using namespace harness;

namespace {

typedef std::list<std::wstring> Names;

const int Threads = 16;
const int Rounds = 3;

struct UtilAccess : CVirtualServerUtil {
    using CVirtualServerUtil::GetHomeDir;
};

// The results of one thread's operations, those of its own server alone: the others come and go meanwhile.
class Results {
public:
    explicit Results(std::wstring server) : m_server(std::move(server)) {
    }

    void Add(bool result) {
        m_text += result ? "+" : "!";
    }
    void Add(const std::wstring& text) {
        m_text += Utf8(text) + ",";
    }
    void Add(const wchar_t* text) {
        Add(std::wstring(text ? text : L"(null)"));
    }
    void Add(DWORD number) {
        m_text += std::to_string(number) + ",";
    }
    void AddOwn(const Names& names) {
        for (const std::wstring& name : names) {
            if (name.compare(0, m_server.size(), m_server) == 0) {
                Add(name);
            }
        }
    }
    void Add(const Info& info) {
        Add(info.m_wsServerName);
        Add(info.m_wsServerIP);
        Add(info.m_wsDataPath);
        Add(info.m_bIsOnline);
    }
    const std::string& Text() const {
        return m_text;
    }

private:
    std::wstring m_server;
    std::string m_text;
};

void AskResource(CCluster& cluster, CClusterResource& resource, const std::wstring& server, Results& results) {
    std::wstring node;
    std::wstring group;
    const CClusterResource::RES_STATE state = resource.GetResourceState(&node, &group);
    results.Add(CClusterResource::GetStateString(state));
    results.Add(node + L" " + group);
    CClusterResource same(resource.GetResourceHandle(), false);
    results.Add(same.GetResourceState(nullptr, nullptr) == state);
    same.SetAutoClose(false); // the handle stays the other object's
    results.Add(resource.IsOnlineOnCurrentNode(nullptr));
    results.Add(resource.IsOnCurrentNode(&group));
    for (const auto id : {CClusterResource::RES_PROP_NAME, CClusterResource::RES_PROP_TYPE}) {
        results.Add(resource.GetSystemStringProperty(id, true));
    }
    CClusterResource networkName;
    CClusterResource storage;
    std::wstring text;
    Names names;
    results.Add(resource.GetResourceDependencyByType(networkName, L"Network Name"));
    results.Add(networkName.GetSystemStringProperty(CClusterResource::RES_PROP_GUID, false));
    results.Add(resource.GetDependentNetworkName(text));
    results.Add(text);
    results.Add(resource.GetResourceStorageDependency(storage));
    results.Add(resource.EnumNames(1, names)); // what it depends on
    results.AddOwn(names);
    CClusterResource disk;
    wchar_t path[8] = {};
    std::vector<std::wstring> paths;
    results.Add(cluster.OpenResourceByName(disk, (server + L" Disk").c_str()));
    results.Add(GetDiskLettersFromResource(disk.GetResourceHandle(), paths));
    results.Add(GetDiskLetterFromResource(disk.GetResourceHandle(), path, 8));
    results.Add(path);
}

void AskGroup(CCluster& cluster, const std::wstring& server, Results& results) {
    CClusterGroup group;
    Names names;
    std::wstring disk;
    DWORD visited = 0;
    CClusterGroup opened;
    results.Add(cluster.OpenGroupByName(opened, server.c_str()));
    group = opened;
    results.Add(group.GetGroupHandle() == opened.GetGroupHandle());
    opened = CClusterGroup(); // one object closes the handle
    results.Add(group.EnumResourceNamesInGroup(names));
    results.AddOwn(names);
    results.Add(group.EnumResourceNamesInGroupByType(cluster, names, L"IP Address"));
    results.Add(group.EnumStorageResourceNamesInGroup(cluster, names));
    results.Add(group.EnumResourceInGroup(
        cluster.GetHandle(),
        [](HCLUSTER, HGROUP, HRESOURCE, const wchar_t*, void* context) -> DWORD {
            ++*static_cast<DWORD*>(context);
            return 0;
        },
        &visited));
    results.Add(visited);
    results.Add(group.FindPhysicalDiskResourceNameByDriveLetter(cluster, L'F', disk));
    results.Add(disk);
    results.Add(cluster.OpenGroupByName(opened, server.c_str()));
    opened.Close();
    opened = CClusterGroup(); // without a handle, which its end would close once more
}

void AskCluster(CCluster& cluster, const std::wstring& server, Results& results) {
    std::wstring text;
    std::wstring id;
    Names names;
    results.Add(cluster.OpenByLPC());
    CCluster remote;
    results.Add(remote.OpenByRPC(L"EXCLUS"));
    results.Add(cluster.GetClusterName(text));
    results.Add(text);
    results.Add(CCluster::GetClusterNameResourceGUID(text, id));
    results.Add(id);
    for (const auto kind :
         {CCluster::CCLUSTER_OBJ_RESOURCE, CCluster::CCLUSTER_OBJ_NODE, CCluster::CCLUSTER_OBJ_GROUP}) {
        results.Add(cluster.EnumNames(kind, names));
    }
    results.AddOwn(names);
    names.clear();
    results.Add(cluster.EnumResourceNamesByType(L"Network Name", names));
    results.AddOwn(names);
    CClusterResource networkName;
    CClusterGroup group;
    results.Add(cluster.FindFirstResourceNameByNetworkName(text, server.c_str()));
    results.Add(text);
    results.Add(cluster.OpenNetworkNameResourceByNetworkName(networkName, server.c_str()));
    results.Add(cluster.OpenGroupByNetworkName(group, server.c_str()));
    CClusterResource attendant;
    results.Add(cluster.OpenResourceByName(attendant, (server + L" SA").c_str()));
    AskResource(cluster, attendant, server, results);
    AskGroup(cluster, server, results);
}

// A resource that is made, changed and deleted by the classes of the cluster.
void ChangeCluster(CCluster& cluster, const std::wstring& server, Results& results) {
    CClusterGroup group;
    CClusterResource resource;
    CClusterResource disk;
    CClusterNode node;
    DWORD number = 0;
    std::wstring text;
    CClusterResource address;
    results.Add(cluster.OpenResourceByName(address, (server + L" IP").c_str()));
    results.Add(address.GetPrivateStringProperty(L"Address", text));
    results.Add(text);
    results.Add(cluster.OpenGroupByName(group, server.c_str()));
    results.Add(CCluster::CreateResource(group, resource, (server + L" Spare").c_str(), L"IP Address"));
    CClusterNode opened;
    results.Add(cluster.OpenNodeByName(opened, L"NODE-A"));
    node = opened;
    opened = CClusterNode(); // one object closes the handle
    results.Add(resource.AddOwner(node.GetNodeHandle()));
    results.Add(cluster.OpenResourceByName(disk, (server + L" Disk").c_str()));
    results.Add(resource.AddDependency(disk.GetResourceHandle()));
    results.Add(resource.SetDWORDProperty(CLUSCTL_RESOURCE_SET_PRIVATE_PROPERTIES, L"Number", 7));
    results.Add(resource.GetPrivateDWORDProperty(L"Number", number));
    results.Add(number);
    results.Add(static_cast<DWORD>(resource.OnlineResource()));
    results.Add(static_cast<DWORD>(resource.OfflineResource()));
    results.Add(resource.DeleteResource());
}

void ChangeProduct(Util& util, const std::wstring& server, Results& results) {
    const std::wstring name = server + L" Product";
    Names names;
    Names leftOut;
    Info info;
    Info servers[Threads];
    int count = Threads;
    results.Add(Util::CreateKOVAResource(nullptr, name.c_str(), L"F:\\data", server.c_str(), L"",
                                         Util::CLUSTER_QUORUM_SINGLE_COPY));
    results.Add(Util::FindKOVAResources(server.c_str(), names));
    results.AddOwn(names);
    results.Add(Util::TurnOnKOVAResourceOnCurrentNode(server.c_str(), true, 1000));
    CClusterVirtualServerLookupRequest request;
    request.m_wsNameOrIP = server;
    results.Add(util.QueryServerInfo(request, info));
    results.Add(info);
    results.Add(util.IsTheSameVirtualServer(server.c_str(), info));
    results.Add(util.EnumServersOnCurrentNode(servers, &count) == Util::ENUM_VS_RESULT_SUCCESS);
    count = Threads;
    results.Add(util.EnumServersOnCurrentNodeEx(servers, &count, leftOut) == Util::ENUM_VS_RESULT_SUCCESS);
    CCluster cluster;
    CClusterResource product;
    results.Add(cluster.OpenByLPC() && cluster.OpenResourceByName(product, name.c_str()));
    results.Add(Util::GetVirtualServerInfo(product.GetResourceHandle(), info, true, true));
    results.Add(Util::GetSMTPInstanceInfo(server.c_str(), info));
    results.Add(static_cast<DWORD>(info.m_nSmtpInstanceCount));
    results.Add(Util::TurnOffKOVAResourceOnCurrentNode(server.c_str(), true, 1000));
    product.Close();
    results.Add(Util::DeleteKOVAResurceOnCurrentNode(server.c_str()));
    names.clear();
    results.Add(Util::FindKOVAResources(server.c_str(), names));
    results.AddOwn(names);
}

void AskHost(Results& results) {
    std::wstring text;
    Info info;
    results.Add(Util::CheckIsClusterByRegKey());
    results.Add(Util::GetProductRegistryKey());
    results.Add(static_cast<DWORD>(Util::GetClusterQuorumModeByRegKey()));
    results.Add(Util::GetDataRootPath());
    results.Add(UtilAccess::GetHomeDir(text));
    results.Add(text);
    results.Add(Util::GetNormalServerInfo(info));
    results.Add(info);
    Util::ConcatCCRDataPath(L"F:\\root", L"EVS1", text);
    results.Add(text);
    results.Add(static_cast<DWORD>(Util::QueryIISSiteID()));
    results.Add(Util::AtLeastOneExchangeResourceDLLOnlineOnCurrentNode());
    // Which instance is the first one online, the other threads decide, too.
    Util::FindSmtpVirtualServerInstanceResourceOnCurrentNode(text);
    Util::RestartSmtpVirtualServerInstanceResourceOnCurrentNode();
}

std::string EveryOperation(Util& util, int number) {
    const std::wstring server = L"EVS-" + std::to_wstring(100 + number);
    Results results(server);
    CCluster cluster;
    AskCluster(cluster, server, results);
    ChangeCluster(cluster, server, results);
    cluster.Close();
    ChangeProduct(util, server, results);
    AskHost(results);
    return results.Text();
}

ModelBuilder OneServerForEach() {
    ModelBuilder model = GivenCluster("EXCLUS").Node("NODE-A").Node("NODE-B");
    model.Group("Cluster Group", "NODE-B").NetworkName("Cluster Name", "EXCLUS");
    for (int number = 0; number < Threads; ++number) {
        const std::string server = "EVS-" + std::to_string(100 + number);
        model.Group(server, "NODE-A")
            .IpAddress(server + " IP", "192.0.2." + std::to_string(number + 1))
            .NetworkName(server + " Name", server)
            .DependsOn(server + " IP")
            .Disk(server + " Disk", "F:")
            .Resource(server + " SA", AttendantType)
            .DependsOn(server + " Name")
            .DependsOn(server + " Disk")
            .PossibleOwner("NODE-A")
            .Resource(server + " Store", StoreType)
            .DependsOn(server + " SA")
            .Resource(server + " SMTP", SmtpType)
            .Private("ProtocolInstanceId", 1);
    }
    return model;
}

class EveryOperationAtOnce : public ThreadedCluster {
protected:
    EveryOperationAtOnce() : ThreadedCluster(OneServerForEach()) {
        m_registry.SetText(ProductKey, L"HomeDir", L"C:\\Product");
    }

private:
    ImportPatch<void(DWORD), struct EveryOperationSleepTag> m_sleep{
        FindImports(LibraryModule(), "kernel32.dll", "Sleep"), [](DWORD) { ::Sleep(0); }};
};

TEST_F(EveryOperationAtOnce, GivesWhatItGivesAlone) {
    std::vector<Util> utils(Threads);
    std::vector<std::string> alone;
    for (int number = 0; number < Threads; ++number) {
        alone.push_back(EveryOperation(utils[static_cast<std::size_t>(number)], number));
    }
    EXPECT_EQ(alone.front().find('!'), std::string::npos) << "failed: " << alone.front();

    std::vector<std::string> together(Threads);
    std::vector<std::function<void()>> callers;
    for (int number = 0; number < Threads; ++number) {
        const auto index = static_cast<std::size_t>(number);
        callers.emplace_back([&, number, index] {
            for (int round = 0; round < Rounds; ++round) {
                const std::string results = EveryOperation(utils[index], number);
                if (results != alone[index]) {
                    together[index] = results;
                }
            }
        });
    }
    RunAtOnce(callers);
    for (std::size_t index = 0; index < together.size(); ++index) {
        EXPECT_EQ(together[index], "") << "alone: " << alone[index];
    }
}

} // namespace
