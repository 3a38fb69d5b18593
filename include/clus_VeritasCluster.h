// Veritas Cluster Server (VCS), driven through its command-line tools: what systems, groups and resources there are,
// where the Exchange virtual servers run, and the product's own set of resources in their groups.
#ifndef CLUS_VERITASCLUSTER_H
#define CLUS_VERITASCLUSTER_H

#include "clus_Export.h"

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

CLUSUTIL_SHARED_RUNTIME_BEGIN

// Names and values in the order in which they are used; a name may occur more than once. As a filter every pair is one
// condition name=value, all of which must hold; as attributes every pair is one value to set. Texts go on the tools'
// command lines as they stand, without quoting: a value with a blank reaches the tool as several arguments.
typedef std::vector<std::pair<std::wstring, std::wstring>> NameValuePairList;

// "ThirdPartyClusterType" of the product's registry key, exactly as stored; not limited to the value named here.
enum THIRD_PARTY_CLUSTER_TYPE : int {
    THIRD_PARTY_CLUSTER_TYPE_NONE = 0 // no third-party cluster configured, or nothing could be read
};

// One Exchange virtual server on VCS: a service group with a Lanman resource that carries the network name.
struct CLUSUTIL_API CVeritasVirtualServerInfo {
    // Empty texts, delays of 600 seconds, not online.
    CVeritasVirtualServerInfo();
    // As above, with the names of a group that holds the information store resource `exchangeResName`. Null counts as
    // empty.
    CVeritasVirtualServerInfo(const wchar_t* exchangeResName, const wchar_t* groupName);
    CVeritasVirtualServerInfo(const CVeritasVirtualServerInfo& other);
    CVeritasVirtualServerInfo& operator=(const CVeritasVirtualServerInfo& other);
    ~CVeritasVirtualServerInfo();

    // Sets sGroupName and derives the names of the product's four service resources from it: group name, "-", service.
    // Null counts as empty.
    void SetGroupAndKOVAResourceName(const wchar_t* groupName);

    std::wstring sGroupName;           // the VCS service group
    std::wstring sExchangeResName;     // the ExchService resource whose Service is "MSExchangeIS"
    std::wstring sLanmanResName;       // the Lanman resource
    std::wstring sHostServiceResName;  // <group>-OXAHostService
    std::wstring sSAServiceResName;    // <group>-OXASAService
    std::wstring sRemoteConfigResName; // <group>-OXA_RemoteConfig
    std::wstring sQAVMonitorResName;   // <group>-QAV_Monitor
    std::wstring sRegRepResName;       // RegRep resource to create or use; set by the caller
    std::wstring sMountResName;        // MountV resource below the RegRep resource; set by the caller
    std::wstring sDataPath;   // path on the shared disk that gives the replication directory; set by the caller
    int nDelayAfterOnline;    // seconds; also how long the host service is waited for
    int nDelayAfterOffline;   // seconds
    bool bGroupOnline;        // online, or partly online, on some system
    std::wstring sOnlineNode; // that system
};

// The VCS cluster this node belongs to. Holds nothing between calls: construct one wherever it is needed. Operations
// run the tools "haconf", "hasys", "hagrp", "hares" and "vcsencrypt", which must be on the search path of the process,
// with their output in a temporary file ("ha-XXXX.tmp") of the current directory, which must be writable and must not
// change meanwhile. A tool is waited for without a time-out and has no usable standard input. Members may run on
// several threads at once.
//
// Success means that the tools could be run; which messages of a tool count as failure is said at each member. The
// debug log shows each run, but has no line of its own for a tool that could not be started; the last-error value says
// why. Unless said otherwise, null texts count as empty. Nothing throws but for want of memory, what the service
// manager library throws beyond OS::CException, and what the function that is told of tool runs throws.
class CLUSUTIL_API CVeritasCluster {
public:
    // Starts nothing.
    CVeritasCluster() = default;
    // All objects are alike.
    CVeritasCluster(const CVeritasCluster&) = default;
    // Copies nothing.
    CVeritasCluster& operator=(const CVeritasCluster& other);

    // --- Configuration mode ---
    //
    // The cluster's configuration must be open for writing before resources are created, linked or deleted; the mode is
    // cluster-wide, and no other member changes or checks it. True as soon as the tool ran, also when the mode was the
    // one asked for.

    // "haconf -makerw".
    bool SwitchToReadWriteMode() const;
    // "haconf -dump -makero": writes the configuration to disk and closes it.
    bool SwitchToReadOnlyMode() const;

    // --- Queries ---
    //
    // Outputs keep what they held when the result is false, but for `online`. A message that begins with the word VCS
    // is not recognised as an error in a list and yields names such as "VCS": with the engine down, lists hold such
    // names.

    // "hasys -list": replaces `systems` by the names of the cluster's systems.
    bool EnumSystemNames(std::vector<std::wstring>& systems, const NameValuePairList* filter = nullptr) const;
    // "hagrp -list" and "hares -list": append the names of the groups or resources that are not in the list yet (letter
    // case counts). What the list holds stays.
    bool EnumGroupNames(std::vector<std::wstring>& groups, const NameValuePairList* filter = nullptr) const;
    bool EnumResourceNamesW(std::vector<std::wstring>& resources, const NameValuePairList* filter = nullptr) const;

    // "hares -dep": appends to `children` the resources that `resource` depends on, to `parents` those that depend on
    // it, each once. True also when the tool reports an error.
    bool EnumResDependencies(const wchar_t* resource, std::vector<std::wstring>& parents,
                             std::vector<std::wstring>& children) const;

    // "hares -display": the attribute's value, inner blanks kept and trailing ones removed; of an attribute that is
    // kept per system, the value of the first system listed. False also when the value is empty or VCS reports an
    // error.
    bool GetResourceAttribute(const wchar_t* resource, const wchar_t* attribute, std::wstring& value) const;

    // "hagrp -state": the first system on which the group is online, or, with `acceptPartial`, partly online. True
    // whether or not there is one. `online` is set to false first, on every path; `system` is touched only when there
    // is one. An unknown group is not online.
    bool GetGroupOnlineNode(const wchar_t* group, bool& online, std::wstring& system, bool acceptPartial) const;

    // The group whose Lanman resource carries the network name. True with `group` untouched when no resource carries
    // it: pass an empty text and test it.
    bool FindGroupNameByVirtualServerName(const wchar_t* virtualName, std::wstring& group) const;

    // The first GenericService resource of the group that runs the Windows service. False when there is none.
    bool GetGenericServiceResNameByServiceName(const wchar_t* group, const wchar_t* serviceName,
                                               std::wstring& resource) const;

    // Which third-party cluster the product is configured for, from the compiled-in registry key.
    THIRD_PARTY_CLUSTER_TYPE GetThirdPartyClusterType() const;

    // --- Resource operations ---
    //
    // What the tools print is not examined: ask again with the queries to know whether the change took effect.
    // Attribute values are logged with their command lines.

    // Adds a resource ("hares -add"), sets its attributes in order ("hares -modify") and lets it depend on
    // `childResName` ("hares -link") unless that is null. Always true; every command is run whatever became of the ones
    // before.
    bool CreateResource(const wchar_t* resName, const wchar_t* resType, const wchar_t* groupName,
                        const wchar_t* childResName, const NameValuePairList& params) const;
    // Lets `parent` depend on `child`.
    bool LinkResource(const wchar_t* parent, const wchar_t* child) const;
    // "hares -delete". Always true.
    bool DeleteResource(const wchar_t* resource) const;
    // Clears the resource's fault on all systems and probes it on this one, then brings it online there or takes it
    // offline; does not wait for the new state. A null `system` is not probed, and then named as an empty text.
    bool TurnOnOrOffResource(const wchar_t* resource, const wchar_t* system, bool online) const;

    // "vcsencrypt -agent": the form in which VCS agents keep a password. The password is an argument of the tool, in
    // clear and unquoted; neither it nor the result is logged. True with `encrypted` untouched when the tool prints
    // nothing.
    bool EncryptVeritasPassword(const wchar_t* password, std::wstring& encrypted) const;

    // --- Exchange virtual servers ---

    // The virtual server with a network name: Lanman resource, group, product resource names and online system. The
    // information store resource is not looked for. On false `info` may be partly filled.
    bool CollectEVSInfo(const wchar_t* virtualName, CVeritasVirtualServerInfo& info) const;

    // Appends every group that holds an ExchService resource for "MSExchangeIS". False when any query failed; what was
    // found until then is appended all the same, at worst without the Lanman resource's name or the online system.
    bool CollectExchangeEVSInfo(std::vector<CVeritasVirtualServerInfo>& infos) const;

    // The same for one group, whose name compares without case. False, with `info` untouched, when it is not found or
    // any query failed.
    bool CollectExchangeEVSInfo(const wchar_t* groupName, CVeritasVirtualServerInfo& info) const;

    // Replaces `mountResNames` by the MountV resources that the group's "MSExchangeSA" resource depends on and that do
    // not depend on another of these, in the order of its dependencies.
    bool FindMostParentMountVResourceNameInGroup(const wchar_t* groupName,
                                                 std::vector<std::wstring>& mountResNames) const;

    // The first MountV resource of the group that a RegRep resource depends on; untouched when there is none.
    bool GetKOVAShareDiskResNameByRegRepName(const wchar_t* groupName, const wchar_t* regRepResName,
                                             std::wstring& mountResName) const;

    // The RegRep resource of the group that replicates the product's registry key. True with `regRepResName` untouched
    // when none does: pass an empty text and test it.
    bool FindExistingKOVARegRepResName(const wchar_t* groupName, std::wstring& regRepResName) const;

    // --- The product's resource set ---
    //
    // A RegRep resource that replicates the product's registry key, and GenericService resources for the services
    // "OXAHostService", "OXASAService", "QAV_Monitor" and "OXA_RemoteConfig". The configuration must be open for
    // writing. Time-outs are in milliseconds: how long a service is waited for until it runs (0: not at all), plus ten
    // seconds once it does.

    // Creates the set for `info`, whose caller has set sRegRepResName, sMountResName and sDataPath: registry
    // replication, host and SA service, and as wished quarantine monitor and remote configuration. If the group is
    // online, brings them online and waits up to nDelayAfterOnline seconds for the host service. Account, group
    // (domain) and password are those of the remote configuration service; when one is null it runs as LocalSystem. A
    // password that cannot be encrypted is set as an empty one. Nothing is rolled back, and failing to come online is
    // no failure.
    bool CreateKOVAResources(CVeritasVirtualServerInfo info, bool bCreateQAV, bool bCreateRemoteConfig,
                             const wchar_t* szRemoteConfigGroup, const wchar_t* szRemoteConfigUsername,
                             const wchar_t* szRemoteConfigPassword) const;

    // The set's resources that CreateKOVAResources brings online, in its order: the SA service, the host service, and
    // as wished quarantine monitor and remote configuration. It runs no tool.
    static std::vector<std::wstring> KOVAResourcesInSwitchOnOrder(const CVeritasVirtualServerInfo& info,
                                                                  bool bCreateQAV, bool bCreateRemoteConfig);

    // Whether the group has a resource for the service; if so it is brought online on `nodeName` and the service waited
    // for, whatever comes of that.
    bool CheckIfGenericServiceResourceExistsAndTurnItOn(const wchar_t* groupName, const wchar_t* serviceName,
                                                        const wchar_t* nodeName, int timeout) const;

    // Adds the quarantine monitor to an existing installation, if it is not there, and brings it online. True also when
    // the virtual server or its RegRep resources cannot be found out, for whatever reason; false when the new resource
    // could not be brought online.
    bool CreateQAVResourceAndTurnItOn(const wchar_t* virtualName, int timeout) const;

    // The same for the remote configuration service. False also when there is no virtual server of this network name or
    // no host service resource to depend on.
    bool CreateRemoteConfigResourceAndTurnItOn(const wchar_t* virtualName, const wchar_t* szRemoteConfigGroup,
                                               const wchar_t* szRemoteConfigUsername,
                                               const wchar_t* szRemoteConfigPassword, int timeout) const;

    // Append the names of the product's resources of every group, or of one, that are not in the list yet: services by
    // their name, RegRep resources by the replication directory that the registered data root gives. On false those
    // found before the failure are appended.
    bool CollectKOVAResNames(std::vector<std::wstring>& resNames) const;
    bool CollectKOVAResNames(const wchar_t* groupName, std::vector<std::wstring>& resNames) const;

private:
    bool ExecuteVeritasCommand_(const wchar_t* command, const wchar_t* arguments, std::wstring& text,
                                bool logDetails) const;
    bool ExecuteVeritasCommand_(const wchar_t* command, const wchar_t* arguments, std::vector<std::wstring>* tokens,
                                bool logDetails) const;
    bool ExecuteVeritasCommand_(const wchar_t* command, bool logDetails) const;
    bool Read_(const wchar_t* fileName, std::wstring& text) const;
    bool Parse_(const std::wstring& text, std::vector<std::wstring>& tokens) const;
    void DumpResult_(const wchar_t* fileName) const;
    bool IsResultError(const wchar_t* text) const;
    bool IsResultError(const std::vector<std::wstring>& tokens) const;
    std::wstring ConcatNameValuePair_(const NameValuePairList& pairs) const;

    void ProbeAndClearFaultOnres(const wchar_t* resource, const wchar_t* system) const;
    bool WaitForServiceToStart(const wchar_t* serviceName, int timeout) const;

    std::wstring GetDefaultRegRepReplicationDirectory(const wchar_t* path) const;
    std::wstring GetDefaultRegRepRegKey() const;

    void MakeDefaultCreateRegRepResoruceParams(NameValuePairList& params) const;
    void MakeDefaultCreateGenericServiceResoruceParams(NameValuePairList& params) const;
    bool CollectKOVAResNames(const NameValuePairList filter, std::vector<std::wstring>& resNames) const;
};

// What one run of a VCS tool came to, for programs that act on it; the debug log is for people. Secrets are replaced by
// "***": the arguments and the result of "vcsencrypt" ("*** ***" when it is several words; its messages are shown), the
// values of attributes whose name ends in password, secret, token or key, and what repeats them. Texts are valid during
// the callback only; when there is no memory for them, the command line is empty and the output null.
struct CVeritasToolRun {
    const wchar_t* commandLine; // as the tool got it: what goes beyond 16,383 characters is cut off
    bool started;               // false: it could not be started, and there is no exit code
    bool exitCodeKnown;         // GetExitCodeProcess succeeded
    // Win32 code: why it was not started (CreateProcessW), or its capture file got no name. 0 when it was started, and
    // when the system gives no reason: the run then counts as one without output.
    DWORD startError;
    DWORD exitCode; // what the tool ended with
    // Win32 code: why the capture file could not be opened, so that the output went astray if the tool was started;
    // else 0. ERROR_SHARING_VIOLATION: another program had it open for a second.
    DWORD captureError;
    // Both streams as captured, one character per byte, each line ended by a line feed; null when they could not be
    // read back.
    const wchar_t* output;
    size_t cchOutput; // characters of `output`: null characters count, the terminator does not
};

// Told of a run; `context` is what it was registered with.
typedef void (*VeritasToolRunCallback)(const CVeritasToolRun& run, void* context);

extern "C" {

// Registers the one function of this process that is told of every tool run of CVeritasCluster, at the run's end and
// before its member goes on; null, as at the start, for none. A run whose member throws for want of memory is not told.
//
// The function is called on the thread of the run, one call at a time. It must not wait for a tool run of another
// thread, which may be waiting for this call to end. An exception that it throws ends the member that ran the tool and
// goes to its caller: so a program stops a member of many runs between two of them. What the library has open is closed
// and the capture file deleted; what the tools have done stays. When this returns, the former function is not running
// (one that replaces itself excepted) and is not called again: do not call this while a running callback waits for you.
// Callable from any thread.
CLUSUTIL_API void SetVeritasToolRunCallback(VeritasToolRunCallback callback, void* context);
}

CLUSUTIL_SHARED_RUNTIME_END

#endif
