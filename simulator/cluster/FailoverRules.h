// Which node a group may go to, and what its properties say of it.
#ifndef CLUSSIM_FAILOVERRULES_H
#define CLUSSIM_FAILOVERRULES_H

#include "Model.h"

namespace clussim {

const std::uint32_t Never = 0xFFFFFFFF; // of periods and hours
const std::int64_t MsPerHour = 3600000;
const Code ProviderFailed = 5942; // ERROR_CLUSTER_RESOURCE_PROVIDER_FAILED

std::uint32_t NumberOf(const PropertySet& properties, const wchar_t* name, std::uint32_t otherwise);

bool IsUp(const Node& node);

// How many nodes take part, and whether they may run the cluster.
std::size_t Members(const Model& model);
bool HasQuorum(const Model& model);

// While the cluster does not run: how many nodes would take part, and whether it starts with them. Their services try
// to join again and again.
std::size_t Candidates(const Model& model);
bool CanStart(const Model& model);

std::string Votes(const Model& model, std::size_t nodes); // "2 of 3 nodes and the witness"

// Whether the service runs there, as far as the quorum and this computer's own service are concerned.
bool RunsOn(const Model& model, const Node& node);

// The types of which a resource is required to depend on one each.
std::vector<const wchar_t*> RequiredTypes(const Resource& resource, const Model& model);
// The first of which it has none; null when it has all.
const wchar_t* MissingType(const Model& model, const Resource& resource);

// Whether an IP address is bound to a network that is not there, not up, or that the node where it is has no interface
// on that is up. In a model without networks nothing is.
bool LacksNetwork(const Model& model, const Resource& resource);
std::string NetworkMissing(const Resource& resource); // says so

// Whether the node is a possible owner of all resources of the group, be they online or not.
bool MayHost(const Group& group, const Node& node);

// In the order of the group's preferred owners, then that of the other nodes: the next behind the owner, from the end
// to the beginning, that is up and may host the group; or null.
Node* NextNode(Model& model, const Group& group);

// The first in that order, the owner apart: where a group goes that is moved without saying where.
Node* BestNode(Model& model, const Group& group);

// Where a group goes whose node is lost: the next behind it that may host it, else any that is up, else one that is
// paused; null when all are down. When its cluster starts: the same from the beginning.
Node* Refuge(Model& model, const Group& group);
Node* FirstRefuge(Model& model, const Group& group);

} // namespace clussim

#endif
