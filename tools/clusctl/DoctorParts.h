// The parts of the doctor's round, one for each subject.
#ifndef CLUSCTL_DOCTORPARTS_H
#define CLUSCTL_DOCTORPARTS_H

#include "ClusterObjects.h"
#include "Doctor.h"
#include "ServersLeftOut.h"

#include <clus_VeritasCluster.h>

#include <string>
#include <vector>

// Libraries, runs that were ended, files that were left.
void DiagnoseMachine(const LogCapture& log, Findings& findings);

// The settings file, the product's registry key and its values, and the deployment that follows.
void DiagnoseSettings(Findings& findings);

// The failover cluster and its virtual servers; `wanted` as of Diagnose. With a deployment that has no cluster one that
// is there all the same is told.
void DiagnoseFailoverCluster(const std::wstring& wanted, Findings& findings);

// The resources of one group that could be a virtual server, as ReadResource gives their lines.
struct ServerGroup {
    std::wstring name;
    std::vector<Json> members;
};

// `here`: null when the library cannot list the servers of this node.
void DiagnoseServer(CCluster& cluster, const ServerGroup& group, const ServersHere* here, Findings& findings);

// The text of a Network Name resource as the library reads it. False when it is none, or cannot be read.
bool ReadNetworkName(const CCluster& cluster, const Json& resource, std::wstring& networkName);

// The VCS cluster and its virtual servers.
void DiagnoseVcs(const LogCapture& log, const DoctorRequest& request, Findings& findings);

// `server` as the library has just collected it.
void DiagnoseVcsServer(const LogCapture& log, const CVeritasVirtualServerInfo& server, Findings& findings);

// That no group could be a virtual server. Throws Failure (ServerNotFound) when one was wanted; `lister` is the command
// that lists what there is.
void TellNoServer(const std::wstring& wanted, const std::string& lister, Findings& findings);

// Of a record, as UTF-16; empty when it is null.
std::wstring TextMember(const Json& record, const char* member);

// A message of this tool as one line that begins with a capital and ends with a full stop.
std::string AsSentence(const std::string& message);

// Whether two names differ in nothing but letter case, if at all.
bool IsSameName(const std::wstring& one, const std::wstring& other);

#endif
