// Which servers does this node serve? On a Microsoft cluster the Exchange virtual servers whose product resource this
// node owns, on a plain server the server itself; and where the product keeps its settings and data.
#ifndef CLUS_VIRTUALSERVERUTIL_H
#define CLUS_VIRTUALSERVERUTIL_H

#include "clus_Export.h"

#include <cstddef>
#include <list>
#include <string>

CLUSUTIL_SHARED_RUNTIME_BEGIN

class CCluster;
class CClusterResource;

// One server: the plain server, or one Exchange virtual server. A fixed-size record that callers allocate in arrays and
// that is copied bytewise. Texts are UTF-16 and always terminated; a longer text is cut to its member.
struct CLUSUTIL_API CClusterVirtualServerInfo {
    // Capacity of m_dwSmtpInstanceIds.
    enum : int {
        MaxSmtpInstances = 128
    };

    // An empty record: not online, instance count -1, all arrays zero.
    CClusterVirtualServerInfo();

    bool m_bIsOnline;                                   // plain server: always true
    int m_nSmtpInstanceCount;                           // valid entries below; -1: not collected or not applicable
    unsigned int m_dwSmtpInstanceIds[MaxSmtpInstances]; // "ProtocolInstanceId" of the group's SMTP instances
    wchar_t m_wsServerIP[511];                          // IP address; one character shorter than the other texts
    wchar_t m_wsServerName[512];                        // computer name, or network name of the virtual server
    wchar_t m_wsDataPath[512];                          // the product's data directory for this server
    wchar_t m_wsServerGUID[512];                        // server GUID, or ID of the Network Name resource
};

static_assert(sizeof(wchar_t) == 2, "texts are UTF-16");
static_assert(offsetof(CClusterVirtualServerInfo, m_bIsOnline) == 0, "record layout");
static_assert(offsetof(CClusterVirtualServerInfo, m_nSmtpInstanceCount) == 4, "record layout");
static_assert(offsetof(CClusterVirtualServerInfo, m_dwSmtpInstanceIds) == 8, "record layout");
static_assert(offsetof(CClusterVirtualServerInfo, m_wsServerIP) == 520, "record layout");
static_assert(offsetof(CClusterVirtualServerInfo, m_wsServerName) == 1542, "record layout");
static_assert(offsetof(CClusterVirtualServerInfo, m_wsDataPath) == 2566, "record layout");
static_assert(offsetof(CClusterVirtualServerInfo, m_wsServerGUID) == 3590, "record layout");
static_assert(sizeof(CClusterVirtualServerInfo) == 4616, "record layout");

// What CVirtualServerUtil::QueryServerInfo looks for.
struct CClusterVirtualServerLookupRequest {
    unsigned long long m_reserved = 0; // never read
    std::wstring m_wsNameOrIP;         // network name, computer name, host name with domain, "localhost", or IP address
};

// The product's view of this host. Construct one per use; the first instance of a process starts Windows Sockets and
// the last one stops it, uncounted across threads: create and destroy instances on one thread at a time. No member
// throws on its own.
//
// Whether the product is a cluster deployment, and which registry key holds its settings ("cfg_ProductRegistry.txt"),
// is read once per process; a change takes effect in a new process.
class CLUSUTIL_API CVirtualServerUtil {
public:
    // Result of EnumServersOnCurrentNode. The numbers are part of the interface.
    enum ENUM_VS_RESULT {
        ENUM_VS_RESULT_SUCCESS = 0,   // all records written; the count says how many
        ENUM_VS_RESULT_MORE_DATA = 1, // no record written; the count says how many are needed
        ENUM_VS_RESULT_FAIL = 2       // the cluster could not be read; neither buffer nor count is touched
    };

    // Quorum modes as stored under "ClusterQuorumMode".
    enum CLUSTER_QUORUM_MODE {
        CLUSTER_QUORUM_SINGLE_COPY = 1, // shared disk
        CLUSTER_QUORUM_CCR = 2          // continuous replication
    };

    CVirtualServerUtil();
    ~CVirtualServerUtil();
    CVirtualServerUtil(const CVirtualServerUtil&) = delete;
    CVirtualServerUtil& operator=(const CVirtualServerUtil&) = delete;

    // --- Servers ---

    // Lists the servers of this node. `*pCount` is the capacity of `pBuffer` in records on entry, and the number of
    // records written or needed on return. On a cluster `pBuffer` may be null to ask for the count
    // (ENUM_VS_RESULT_MORE_DATA); on a plain server it must not be null unless `*pCount` is below 1.
    //
    //     int count = 1;
    //     std::vector<CClusterVirtualServerInfo> servers(count); // never empty: a null buffer only asks for the count
    //     CVirtualServerUtil::ENUM_VS_RESULT result;
    //     while ((result = util.EnumServersOnCurrentNode(servers.data(), &count)) ==
    //            CVirtualServerUtil::ENUM_VS_RESULT_MORE_DATA)
    //         servers.resize(count); // more than before
    //     servers.resize(result == CVirtualServerUtil::ENUM_VS_RESULT_SUCCESS ? count : 0);
    ENUM_VS_RESULT EnumServersOnCurrentNode(CClusterVirtualServerInfo* pBuffer, int* pCount);

    // The same, with the same calls of the cluster. Replaces `leftOut` by the names of the resources that may make a
    // server of this node and are not in the list: they cannot be opened or described, or their type or owner cannot
    // be read. Untouched when the cluster could not be read.
    ENUM_VS_RESULT EnumServersOnCurrentNodeEx(CClusterVirtualServerInfo* pBuffer, int* pCount,
                                              std::list<std::wstring>& leftOut);

    // Finds the server of this node that `request.m_wsNameOrIP` denotes. On false `info` must not be used.
    bool QueryServerInfo(const CClusterVirtualServerLookupRequest& request, CClusterVirtualServerInfo& info);

    // Whether a name or an IP address denotes the server of `info`: its IP text exactly; its name in any letter case,
    // with a domain behind it when it starts with a letter; "localhost" when the record is this computer. Any other IP
    // address does not match.
    bool IsTheSameVirtualServer(const wchar_t* lpwsNameOrIP, const CClusterVirtualServerInfo& info);

    // Fills `info` for the plain server from the product's registry key and the computer name. False when the home
    // directory cannot be read from an opened key, or the computer name cannot be read; `info` may be partly filled
    // then.
    static bool GetNormalServerInfo(CClusterVirtualServerInfo& info);

    // Fills `info` for the virtual server of a product resource, whose handle stays the caller's. Does not set
    // m_bIsOnline. On false the record is partly filled and must be discarded.
    static bool GetVirtualServerInfo(HRESOURCE hResource, CClusterVirtualServerInfo& info, bool bGetDataPath,
                                     bool bGetSmtpInstances);

    // Collects the "ProtocolInstanceId" of every SMTP instance in the group of a virtual server. Not clustered: count
    // -1 and true. False on any failure, and when there are more than MaxSmtpInstances; those read so far stay in the
    // record.
    static bool GetSMTPInstanceInfo(const wchar_t* lpwsNetworkName, CClusterVirtualServerInfo& info);

    // Whether a "Microsoft Exchange Information Store" resource is online on this node.
    static bool AtLeastOneExchangeResourceDLLOnlineOnCurrentNode();

    // --- The product's own cluster resource ---
    //
    // One resource of type "clusRDLL" (single copy) or "clusRDLLCCR" (CCR) in the group of an Exchange virtual server,
    // which is named by its network name.

    // Creates the resource, offline, in the virtual server's group, which must be online on this node and hold no
    // product resource yet: with its dependencies (disk, store, network name), the possible owners of the group's
    // System Attendant, "KOVA_DATA_PATH" and "RestartAction". Any failure deletes what was created.
    //   lpwsDataRootPath      CCR: the data path is this, "CCRVSDB", virtual server name; null fails the creation
    //   lpwsKOVAResourceName  name of the new resource
    //   lpwsDataPath          single copy: the data path; null fails the creation
    //   szVirtualDiskLetter   single copy: name of the Physical Disk resource; empty: the System Attendant's disk
    //   nQuorumMode           a CLUSTER_QUORUM_MODE
    // May block for up to 295 seconds per node while the cluster refuses a possible owner; such a node is left out.
    static bool CreateKOVAResource(const wchar_t* lpwsDataRootPath, const wchar_t* lpwsKOVAResourceName,
                                   const wchar_t* lpwsDataPath, const wchar_t* lpwsVirtualServerName,
                                   const wchar_t* szVirtualDiskLetter, int nQuorumMode);

    // Bring the virtual server's product resources online or offline, wherever the cluster runs them. With `bWait` the
    // call polls once a second until the state is reached or `dwWaitTimeout` milliseconds have passed; a time-out that
    // is no multiple of 1,000 is never reached. Without it, or with a time-out of 0, a pending state counts as success.
    // True also when there is no resource.
    static bool TurnOnKOVAResourceOnCurrentNode(const wchar_t* lpwsVirtualServerName, bool bWait, DWORD dwWaitTimeout);
    static bool TurnOffKOVAResourceOnCurrentNode(const wchar_t* lpwsVirtualServerName, bool bWait, DWORD dwWaitTimeout);

    // Deletes the virtual server's product resources that this node owns; those of other nodes are skipped. A resource
    // that refuses is taken offline first, waited for up to three minutes. True also when one did not go offline in
    // that time and so remains.
    static bool DeleteKOVAResurceOnCurrentNode(const wchar_t* lpwsVirtualServerName);

    // The resources that are switched or deleted by the members above, without doing so: replaces `names` by those of
    // the type "clusRDLL" in the virtual server's group or, when it holds none, of "clusRDLLCCR". True also when there
    // are none; false, with `names` untouched, when the cluster, the virtual server or its group cannot be read.
    static bool FindKOVAResources(const wchar_t* lpwsVirtualServerName, std::list<std::wstring>& names);

    // Takes the first "Microsoft Exchange SMTP Server Instance" that is online on this node offline, waits for that up
    // to two minutes, and brings it online again. True when the switch-on was issued; its outcome is not awaited.
    static bool RestartSmtpVirtualServerInstanceResourceOnCurrentNode();

    // The instance that would be restarted, in `resourceName`; empty when there is none. False, with `resourceName`
    // untouched and the reason in the last-error value, when the cluster cannot be opened or its resources not listed.
    static bool FindSmtpVirtualServerInstanceResourceOnCurrentNode(std::wstring& resourceName);

    // --- Settings of the product and its host ---

    // Whether "IsCluster" is 1. Read once per process; a key that cannot be opened means false.
    static bool CheckIsClusterByRegKey();

    // The key below HKEY_LOCAL_MACHINE that holds the product's settings: the one that the settings file names, or the
    // compiled-in one. Read once per process.
    static std::wstring GetProductRegistryKey();

    // "ClusterQuorumMode" as stored, 0 when absent.
    static int GetClusterQuorumModeByRegKey();

    // "DataRootPath" of the compiled-in key (the settings file is not consulted), empty when absent.
    static std::wstring GetDataRootPath();

    // The data folder of a CCR virtual server: data root, "CCRVSDB", server name, joined with one backslash each. Null
    // counts as empty.
    static void ConcatCCRDataPath(const wchar_t* dataRoot, const wchar_t* serverName, std::wstring& path);

    // Number of the IIS site that serves the home directory, -1 when there is none.
    static int QueryIISSiteID();

protected:
    // "HomeDir", at most 1,023 characters. For derived classes; `homeDir` is untouched on failure.
    static bool GetHomeDir(std::wstring& homeDir);

private:
    ENUM_VS_RESULT EnumNormalServerOnCurrentNode_(CClusterVirtualServerInfo* pBuffer, int* pCount);
    ENUM_VS_RESULT EnumVirtualServerOnCurrentNode_(CClusterVirtualServerInfo* pBuffer, int* pCount);
    static bool CreateKOVAResource_(CCluster& cluster, CClusterResource& created, const wchar_t* lpwsDataRootPath,
                                    const wchar_t* lpwsKOVAResourceName, const wchar_t* lpwsDataPath,
                                    const wchar_t* lpwsVirtualServerName, const wchar_t* szVirtualDiskLetter,
                                    int nQuorumMode);
    static int SetKOVAProeprty_(HRESOURCE hResource, const wchar_t* lpwsName, const wchar_t* lpwsValue);
    bool QueryServerInfoFromRegistry_(const CClusterVirtualServerLookupRequest& request,
                                      CClusterVirtualServerInfo& info);
    bool QueryServerInfoFromCluster_(const CClusterVirtualServerLookupRequest& request,
                                     CClusterVirtualServerInfo& info);

    CClusterVirtualServerInfo m_normalServer; // this computer, filled when not clustered
    bool m_bIsCluster;
};

CLUSUTIL_SHARED_RUNTIME_END

#endif
