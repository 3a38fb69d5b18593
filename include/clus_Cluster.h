// Failover cluster access: the cluster, its resources, groups and nodes.
//
// Every class holds at most one cluster handle and closes it when it dies (a resource only with auto-close on). An
// object belongs to one thread at a time; separate objects may be used on separate threads. No member throws on its
// own: failures are results and log lines. A failing allocation of the standard library passes through as its
// exception, with every handle and buffer released, but out of the two functions with C linkage.
//
// Handles stay usable after the CCluster they were opened from is closed.
#ifndef CLUS_CLUSTER_H
#define CLUS_CLUSTER_H

#include "clus_Export.h"

#include <list>
#include <string>
#include <vector>

CLUSUTIL_SHARED_RUNTIME_BEGIN

class CCluster;

// One cluster node (HNODE). Opened by CCluster::OpenNodeByName.
class CLUSUTIL_API CClusterNode {
public:
    CClusterNode();
    ~CClusterNode();

    // Copies the handle value only: afterwards both objects close the same handle. Meant for handing a fresh handle on.
    CClusterNode& operator=(const CClusterNode& other);
    CClusterNode(const CClusterNode&) = delete;

    // The handle, still owned by this object; null when none is held.
    HNODE GetNodeHandle() const;

private:
    friend class CCluster;

    HNODE m_hNode;
};

// One cluster resource (HRESOURCE). Opened by CCluster::OpenResourceByName, created by CCluster::CreateResource, found
// by the dependency finders below, or wrapped around a handle that somebody else owns (autoClose false).
class CLUSUTIL_API CClusterResource {
public:
    // State of a resource, and result of switching one. The numbers are part of the interface.
    enum RES_STATE {
        RES_STATE_UNKNOWN = -1, // failure, or a state the cluster itself does not know
        RES_STATE_INITIALIZING = 0,
        RES_STATE_ONLINE = 1,
        RES_STATE_OFFLINE = 2,
        RES_STATE_FAILED = 3,
        RES_STATE_PENDING = 4,
        RES_STATE_ONLINE_PENDING = 5,
        RES_STATE_OFFLINE_PENDING = 6,
        RES_STATE_END = 7 // end mark, never returned
    };

    // System string properties.
    enum RES_PROPERTY_ID {
        RES_PROP_NAME = 0,         // CLUSCTL_RESOURCE_GET_NAME
        RES_PROP_TYPE = 1,         // CLUSCTL_RESOURCE_GET_RESOURCE_TYPE
        RES_PROP_NETWORK_NAME = 2, // CLUSCTL_RESOURCE_GET_NETWORK_NAME; Network Name resources only
        RES_PROP_DISK_DEVICE = 3,  // CLUSCTL_RESOURCE_STORAGE_GET_DISK_INFO: device name of the disk's first partition
        RES_PROP_GUID = 4          // CLUSCTL_RESOURCE_GET_ID: GUID text without braces
    };

    // Takes `h`, which may be null. With `autoClose` false the object never closes its handle.
    explicit CClusterResource(HRESOURCE h = nullptr, bool autoClose = true);
    ~CClusterResource();
    CClusterResource(const CClusterResource&) = delete;
    CClusterResource& operator=(const CClusterResource&) = delete;

    // CloseClusterResource, then forgets the handle and the cached properties. With auto-close off it does nothing at
    // all.
    void Close();
    void SetAutoClose(bool autoClose);

    // The handle, still owned as before; null when none is held.
    HRESOURCE GetResourceHandle();

    // Text of a state, such as "[ONLINE]"; a constant. `state` must be 0 to RES_STATE_END: there is no range check.
    static const wchar_t* GetStateString(int state);

    // GetClusterResourceState. `nodeName` (the owner node) and `groupName` are optional and written only when read. A
    // node name of more than 15 or a group name of more than 255 characters makes the call fail. RES_STATE_UNKNOWN on
    // failure, and for a state that this class does not know; the texts are written then all the same.
    RES_STATE GetResourceState(std::wstring* nodeName, std::wstring* groupName);

    // OnlineClusterResource / OfflineClusterResource: the state reached, or the pending state when the cluster goes on
    // by itself (neither call waits), or RES_STATE_UNKNOWN on failure.
    RES_STATE OnlineResource();
    RES_STATE OfflineResource();

    // Whether this computer owns the resource (exact, case-sensitive comparison of the owner node with
    // GetComputerNameW, which gives 15 characters at most), and, for the first, whether it is online. `groupName` is
    // optional and receives the group's name whenever the state could be read, also when the result is false.
    bool IsOnlineOnCurrentNode(std::wstring* groupName);
    bool IsOnCurrentNode(std::wstring* groupName);

    // A system property, read once and then cached; `refresh` reads it again. Null on failure. The text belongs to the
    // object and stays valid until the next refreshed read of the same property, the taking of another handle, Close,
    // or destruction. A disk without partitions gives whatever text stands at the start of its disk information, not
    // null. There is no range check of `id`.
    const wchar_t* GetSystemStringProperty(RES_PROPERTY_ID id, bool refresh);

    // Private properties (CLUSCTL_RESOURCE_GET_PRIVATE_PROPERTIES). False when they cannot be read or the property is
    // missing or of another type; `value` is then untouched.
    bool GetPrivateStringProperty(const wchar_t* name, std::wstring& value);
    bool GetPrivateDWORDProperty(const wchar_t* name, DWORD& value);

    // Sends one DWORD property to the owner node (ClusterResourceControl) with the given control code, for example
    // CLUSCTL_RESOURCE_SET_COMMON_PROPERTIES. An answer of ERROR_RESOURCE_PROPERTIES_STORED (an online resource takes
    // the value up later) counts as failure.
    bool SetDWORDProperty(DWORD controlCode, const wchar_t* name, DWORD value);

    // AddClusterResourceDependency: this resource will depend on `dependsOn`.
    bool AddDependency(HRESOURCE dependsOn);

    // AddClusterResourceNode: makes the node a possible owner. The Win32 code; ERROR_OBJECT_ALREADY_EXISTS when it is
    // one already.
    DWORD AddOwner(HNODE node);

    // DeleteClusterResource, and on success Close.
    bool DeleteResource();

    // The first storage-class resource this one depends on directly (ResUtilGetResourceDependencyByClass); `storage`
    // owns its handle. A handle that it already held is overwritten, not closed.
    bool GetResourceStorageDependency(CClusterResource& storage);

    // The first resource of the given type this one depends on directly (ResUtilGetResourceDependency); `dependency`
    // owns its handle. Fails when it already holds one.
    bool GetResourceDependencyByType(CClusterResource& dependency, const wchar_t* type);

    // The network name of the Network Name resource this one depends on. `networkName` is untouched on failure.
    bool GetDependentNetworkName(std::wstring& networkName);

    // Appends the names of related objects (ClusterResourceOpenEnum, ClusterResourceEnum): `enumType` is a mask of
    // CLUSTER_RESOURCE_ENUM_DEPENDS (1), _PROVIDES (2) and _NODES (4, the possible owners). False also when single
    // entries could not be read; the others are in the list then.
    bool EnumNames(DWORD enumType, std::list<std::wstring>& names) const;

private:
    friend class CCluster;

    // Takes a new handle; what was cached of another resource goes.
    void SetResourceHandle(HRESOURCE h);

    enum {
        PropertyCount = 5
    };

    HRESOURCE m_hResource;
    bool m_bAutoClose;
    std::wstring m_propertyCache[PropertyCount]; // by RES_PROPERTY_ID, empty until read
};

// Called for each resource of a group. The resource handle is valid during the call only. Return 0 to go on with the
// next resource, anything else to stop after this one.
typedef DWORD (*EnumResourceCallback)(HCLUSTER cluster, HGROUP group, HRESOURCE resource, const wchar_t* resourceName,
                                      void* context);

// One cluster group (HGROUP). Opened by CCluster::OpenGroupByName or CCluster::OpenGroupByNetworkName.
class CLUSUTIL_API CClusterGroup {
public:
    // Starts without a handle whatever `h` is.
    explicit CClusterGroup(HGROUP h = nullptr);
    ~CClusterGroup();

    // Copies the handle value only: afterwards both objects close the same handle. Meant for handing a fresh handle on.
    CClusterGroup& operator=(const CClusterGroup& other);
    CClusterGroup(const CClusterGroup&) = delete;

    // CloseClusterGroup. The handle value is kept, so that destruction closes it once more: call Close just before the
    // object dies, or not at all.
    void Close();

    // The handle, still owned by this object; null when none is held.
    HGROUP GetGroupHandle();

    // Appends the names of the group's resources (ClusterGroupOpenEnum, ClusterGroupEnum). False on failure, with the
    // names read so far in the list.
    bool EnumResourceNamesInGroup(std::list<std::wstring>& names) const;

    // The same, then keeps only the names whose resource type is exactly `type`; names that were in the list before are
    // filtered too. False as soon as one resource cannot be opened; the list is partly filtered then.
    bool EnumResourceNamesInGroupByType(CCluster& cluster, std::list<std::wstring>& names, const wchar_t* type) const;

    // Appends the names of the group's storage-class resources (CLUSCTL_RESOURCE_GET_CLASS_INFO). False only when no
    // group handle is held.
    bool EnumStorageResourceNamesInGroup(CCluster& cluster, std::list<std::wstring>& names) const;

    // Opens each resource of the group and calls `callback` for it. False only when no group handle is held: a group
    // that cannot be enumerated counts as an empty one.
    bool EnumResourceInGroup(HCLUSTER cluster, EnumResourceCallback callback, void* context) const;

    // The group's first disk whose first partition's device name begins with `driveLetter` (exact letter case;
    // CLUSCTL_RESOURCE_STORAGE_GET_DISK_INFO).
    // `resourceName` is untouched when there is none.
    bool FindPhysicalDiskResourceNameByDriveLetter(CCluster& cluster, wchar_t driveLetter,
                                                   std::wstring& resourceName) const;

private:
    friend class CCluster;

    void SetGroupHandle(HGROUP h);

    HGROUP m_hGroup;
};

// The cluster itself (HCLUSTER). Construct, OpenByLPC or OpenByRPC, any number of queries, then Close or destruction.
// No member reopens a handle implicitly.
class CLUSUTIL_API CCluster {
public:
    // What EnumNames lists. Any other value is logged and asks the cluster with an empty type mask.
    enum CCLUSTER_OBJ_ENUM : int {
        CCLUSTER_OBJ_RESOURCE = 2,
        CCLUSTER_OBJ_NODE = 4,
        CCLUSTER_OBJ_GROUP = 5
    };

    CCluster();
    ~CCluster();
    CCluster(const CCluster&) = delete;
    CCluster& operator=(const CCluster&) = delete;

    // OpenCluster for the cluster the local node belongs to. True also when a cluster is already open.
    bool OpenByLPC();

    // OpenCluster by name. False when a cluster is already open; that one stays open.
    bool OpenByRPC(const wchar_t* lpcwClusterName);

    // CloseCluster. Safe to call repeatedly.
    void Close();

    // The handle, still owned by this object; null while closed.
    HCLUSTER GetHandle() const;

    // GetClusterInformation. Fails for a name of more than 15 characters, the limit callers rely on. `name` is
    // untouched on failure.
    bool GetClusterName(std::wstring& name);

    // The local cluster's name and the ID of the resource that carries it (GUID text without braces). Both outputs are
    // written on success only.
    static bool GetClusterNameResourceGUID(std::wstring& clusterName, std::wstring& resourceId);

    // Appends the names of all objects of one kind, in the cluster's order (ClusterOpenEnum, ClusterEnum). False also
    // when single entries could not be read; the others are in the list then, unless too many in a row failed
    // (docs/behaviour.md).
    bool EnumNames(CCLUSTER_OBJ_ENUM kind, std::list<std::wstring>& names) const;

    // The same for resources, then keeps only the names whose resource opens and whose type is exactly `resourceType`.
    // Names that were in the list before are filtered too. On false the list holds the names read so far, of any type.
    bool EnumResourceNamesByType(const wchar_t* resourceType, std::list<std::wstring>& names);

    // OpenClusterResource, OpenClusterGroup. Fail when the object already holds a handle.
    bool OpenResourceByName(CClusterResource& resource, const wchar_t* name) const;
    bool OpenGroupByName(CClusterGroup& group, const wchar_t* name) const;

    // OpenClusterNode. A handle that `node` already held is overwritten, not closed.
    bool OpenNodeByName(CClusterNode& node, const wchar_t* name) const;

    // Find the Network Name resource that carries `networkName`, upper-cased (ASCII letters only) and compared exactly
    // with what the cluster returns; the first match wins. They give the open resource, its open group, or its name.
    bool OpenNetworkNameResourceByNetworkName(CClusterResource& resource, const wchar_t* networkName);
    bool OpenGroupByNetworkName(CClusterGroup& group, const wchar_t* networkName);
    bool FindFirstResourceNameByNetworkName(std::wstring& resourceName, const wchar_t* networkName);

    // CreateClusterResource in the group; the new resource is offline. A handle that `resource` already held is
    // overwritten, not closed.
    static bool CreateResource(CClusterGroup& group, CClusterResource& resource, const wchar_t* name,
                               const wchar_t* type);

private:
    HCLUSTER m_hCluster;
};

// Disk paths. Both are exported under their plain names, for callers that look them up at run time. Callable from any
// thread. They never throw: without memory they are false, and `paths` and `path` are as before.
extern "C" {

// Appends the path of every partition of a Physical Disk resource that can be translated: a drive root ("F:\\") or a
// mount folder, with a backslash at its end, in the order of the partitions. Works on the node that owns the disk
// (CLUSCTL_RESOURCE_STORAGE_GET_DISK_INFO, then the volume manager). True when the disk information was read, also when
// no partition could be translated.
CLUSUTIL_API bool GetDiskLettersFromResource(HRESOURCE resource, std::vector<std::wstring>& paths);

// The first of these paths, cut to `cchPath` characters including the terminator. False, with `path` untouched, when
// there is none and when `cchPath` is 0.
CLUSUTIL_API bool GetDiskLetterFromResource(HRESOURCE resource, wchar_t* path, DWORD cchPath);
}

CLUSUTIL_SHARED_RUNTIME_END

#endif
