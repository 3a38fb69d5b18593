// The parts of the doctor's round, one for each subject.
#ifndef CLUSCTL_DOCTORPARTS_H
#define CLUSCTL_DOCTORPARTS_H

#include "ClusterObjects.h"
#include "Doctor.h"
#include "ServersLeftOut.h"

#include "picture/Health.h"

#include <clus_VeritasCluster.h>

#include <string>
#include <vector>

// What only the computer that a support bundle was made on can show of itself.
enum class RecordedPart {
    Machine,
    SettingsFile,
    VcsTools,
    VcsMode
};

// With a bundle in use: whose computer it is about.
void TellBundle(Findings& findings);
// The same: what was found there, which is nothing where it is not told. False without a bundle.
bool TellRecorded(RecordedPart part, Findings& findings);

// Libraries, runs that were ended, files that were left.
void DiagnoseMachine(const LogCapture& log, Findings& findings);

// The settings file, the product's registry key and its values, and the deployment that follows.
void DiagnoseSettings(Findings& findings);

// Where the product's programs may run: beside this one, in the home directory, in the data root. Empty ones are not
// set.
std::vector<std::wstring> FoldersOfSettings();

// The failover cluster and its virtual servers; `wanted` as of Diagnose. With a deployment that has no cluster one that
// is there all the same is told.
void DiagnoseFailoverCluster(const LogCapture& log, const std::wstring& wanted, Findings& findings);

// The resources of one group that could be a virtual server, as ReadResource gives their lines.
struct ServerGroup {
    std::wstring name;
    std::vector<Json> members;
    bool isWhole = true; // no resource that cannot be read may be one of it
};

// What the status says of the cluster.
struct ClusterHealth {
    picture::ClusterPicture picture;
    picture::Health health;
    std::string unread; // the first thing that could not be read
};

// Only why not, when the cluster does not answer.
ClusterHealth ReadClusterHealth(const LogCapture& log);

// What the status tells of a group, or of no group, and the steps before have not told.
void DiagnoseProblems(const ClusterHealth& cluster, const std::wstring& group, Findings& findings);
// The same of all groups.
void DiagnoseOtherProblems(const ClusterHealth& cluster, Findings& findings);
// What could not be read, if nothing else tells of something that could not.
void TellUnreadHealth(const ClusterHealth& cluster, Findings& findings);

// Whether it was told that something cannot be read: what is not found may be there.
bool IsSomethingUnread(const Findings& findings);

// `here`: null when the library cannot list the servers of this node.
void DiagnoseServer(CCluster& cluster, const ServerGroup& group, const ServersHere* here, const ClusterHealth& health,
                    Findings& findings);

// The disks of a product's resource. `detail`: as ReadResource gives it. `dataPath`: empty where its place cannot be
// told.
void DiagnoseStorage(const CCluster& cluster, CClusterResource& resource, const Json& detail,
                     const std::wstring& dataPath, bool isHere, Findings& findings);

// The command of the cluster that changes a resource.
std::string OnResource(const std::string& verb, const std::wstring& resource, const std::string& rest);

// The text of a Network Name resource as the library reads it. False when it is none, or cannot be read.
bool ReadNetworkName(const CCluster& cluster, const Json& resource, std::wstring& networkName);

// The VCS cluster and its virtual servers.
void DiagnoseVcs(const LogCapture& log, const DoctorRequest& request, Findings& findings);

// `server` as the library has just collected it.
void DiagnoseVcsServer(const LogCapture& log, const CVeritasVirtualServerInfo& server, Findings& findings);

// That no group could be a virtual server, unless something cannot be read. Throws Failure (ServerNotFound) when one
// was wanted that is not there; `lister` is the command that lists what there is.
void TellNoServer(const std::wstring& wanted, const std::string& lister, Findings& findings);

// Of a record, as UTF-16; empty when it is null.
std::wstring TextMember(const Json& record, const char* member);

// A message of this tool as one line that begins with a capital and ends with a full stop.
std::string AsSentence(const std::string& message);

#endif
