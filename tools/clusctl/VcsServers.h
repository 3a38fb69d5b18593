// Exchange virtual servers and their storage, found as the library finds them.
#ifndef CLUSCTL_VCSSERVERS_H
#define CLUSCTL_VCSSERVERS_H

#include "LogCapture.h"
#include "VcsValues.h"

#include <clus_VeritasCluster.h>

#include <string>

// All throw Failure when VCS cannot be asked.

// The virtual server of a group. Throws Failure, too, when the group holds none.
CVeritasVirtualServerInfo FindVcsServer(const LogCapture& log, const std::wstring& group);

// The virtual server with a network name. Throws Failure, too, when there is none.
CVeritasVirtualServerInfo FindVcsServerByName(const LogCapture& log, const std::wstring& networkName);

// The MountV resources that the product's RegRep resource may depend on.
VcsNames TopMountResources(const LogCapture& log, const std::wstring& group);

// What depends on a resource, and on what it depends. Throws Failure, too, when the answer was lost: a resource without
// dependencies is told as such.
void ReadDependencies(const LogCapture& log, const std::wstring& resource, VcsNames& parents, VcsNames& children,
                      const std::string& what);

// Whether VCS shows the dependency, whatever a tool said. Throws Failure, too, when the answer was lost.
bool ShowsDependency(const LogCapture& log, const std::wstring& parent, const std::wstring& child,
                     const std::string& what);

// The RegRep resource that replicates the product's key, and its disk; empty texts when there is none.
struct RegistryReplication {
    std::wstring resource;
    std::wstring disk;
};
RegistryReplication FindRegistryReplication(const LogCapture& log, const std::wstring& group);

// All RegRep resources of the group that replicate it, that one first or not.
VcsNames ListRegistryReplications(const LogCapture& log, const std::wstring& group);

// Its RegRep resources of which VCS shows that they replicate no key at all: a creation that was interrupted leaves
// one.
VcsNames ListHalfMadeReplications(const LogCapture& log, const std::wstring& group);

// A member of CVeritasCluster that lists names.
typedef bool (CVeritasCluster::*ListFunction)(VcsNames& names, const NameValuePairList* filter) const;

// What it lists; `kind` is the word for it: "systems".
VcsNames ListVcsNames(const LogCapture& log, ListFunction list, const char* kind,
                      const NameValuePairList& filter = NameValuePairList());

// A cluster that answers has a system. Throws Failure when VCS lists none, for then another empty list tells nothing.
void RequireVcsAnswer(const LogCapture& log, const std::string& what);

// All resources of the cluster, or of a group. An empty list is asked for twice.
VcsNames ListVcsResources(const LogCapture& log);
VcsNames ListVcsResources(const LogCapture& log, const std::wstring& group);

// The GenericService resources of a group that run a Windows service.
VcsNames ListResourcesOfService(const LogCapture& log, const std::wstring& group, const std::wstring& service);

// The service groups.
VcsNames ListVcsGroups(const LogCapture& log);

// Of a network name that no Lanman resource carries: the one that one carries in another letter case, as a sentence of
// DidYouMean; empty when there is none.
std::string NetworkNameInOtherCase(const LogCapture& log, const std::wstring& networkName);

// Throw Failure, not found, with `what` and the name, when VCS does not list it. A name in another letter case is
// named: the tools compare letter for letter.
void RequireVcsResource(const LogCapture& log, const std::wstring& name, const std::string& what);
void RequireVcsGroup(const LogCapture& log, const std::wstring& name, const std::string& what);
void RequireVcsSystem(const LogCapture& log, const std::wstring& name, const std::string& what);

#endif
