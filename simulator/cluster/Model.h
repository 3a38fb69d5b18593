// The simulated cluster and the rules it keeps.
#ifndef CLUSSIM_MODEL_H
#define CLUSSIM_MODEL_H

#include "PropertySet.h"

#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace clussim {

typedef unsigned long Code; // Win32 error code

// States as the cluster API numbers them.
enum State : int {
    StateUnknown = -1,
    StateInherited = 0,
    StateInitializing = 1,
    StateOnline = 2,
    StateOffline = 3,
    StateFailed = 4,
    StatePending = 128,
    StateOnlinePending = 129,
    StateOfflinePending = 130
};

// What a resource in this state was asked to be, as long as nothing else is known.
inline bool IsWantedByState(State state) {
    return state == StateOnline || state == StateOnlinePending || state == StateFailed;
}

struct Partition {
    std::wstring device;
    std::wstring label;
};

struct Disk {
    std::uint32_t signature = 0;
    std::wstring guid; // instead of a signature: a GPT disk
    std::uint32_t number = 0;
    std::uint64_t size = 0; // in bytes; 0: not told
    std::vector<Partition> partitions;
};

// Parts that a snapshot could not read, such as "disk", and the code with which the cluster refused them.
typedef std::map<std::string, Code> Unread;
// ERROR_SUCCESS for a part that is told.
Code CodeOf(const Unread& unread, const char* part);

struct Node {
    enum class Status { // as the cluster API numbers them
        Up,
        Down,
        Paused,
        Joining
    };

    std::wstring name;
    bool isThisComputer = false; // "." in the model file
    Status status = Status::Up;
    bool isPaused = false; // while it is down or joining: it will be paused again when it comes up
    Unread unread;
};

// States as the cluster API numbers them.
enum class NetworkState {
    Unavailable,
    Down,
    Partitioned,
    Up
};

enum class InterfaceState {
    Unavailable,
    Failed,
    Unreachable,
    Up
};

struct Network {
    std::wstring name;
    NetworkState state = NetworkState::Up;
};

// Of a node on a network.
struct NetworkInterface {
    std::wstring name;
    Node* node = nullptr;
    Network* network = nullptr;
    std::wstring address; // as it is written; empty: not told
    InterfaceState state = InterfaceState::Up;
};

struct ResourceType {
    std::wstring name;
    std::uint32_t classCode = 0;
    std::uint32_t subclass = 0;
    std::vector<Node*> hosts; // the nodes that have it installed; empty: all
};

struct Resource;

struct Group {
    std::wstring name;
    Node* owner = nullptr;
    std::wstring ownerAs; // its name as the cluster tells it here, in another letter case; empty: as it is
    std::vector<Node*> preferredOwners;
    PropertySet common;
    Unread unread;
    std::vector<std::int64_t> failovers;      // when it failed over, in clock milliseconds
    Node* movingTo = nullptr;                 // while its resources go offline for it
    std::int64_t failbackAt = 0;              // in clock milliseconds; 0: it does not wait for a failback
    std::vector<Resource*> resources;         // in creation order
    std::map<State, std::size_t> resourcesIn; // how many of them are in a state; kept by Model
};

struct Resource {
    std::wstring name;
    const ResourceType* type = nullptr;
    std::wstring id;         // GUID text without braces
    std::uint64_t order = 0; // among the model's resources
    Group* group = nullptr;
    State state = StateOffline; // changed by Model::SetState
    std::int64_t dueAt = 0;     // of a pending state, in clock milliseconds; 0: it never ends
    std::vector<Resource*> dependsOn;
    std::vector<Resource*> dependants; // who depends on it, in the model's order: kept by Model::Link and Unlink
    std::vector<Node*> possibleOwners;
    bool ownersGiven = false; // listed in the model file, and not just all nodes
    PropertySet common;
    PropertySet privateProperties;
    std::unique_ptr<Disk> disk;
    Unread unread;
    std::uint32_t onlineMs = 0;
    std::uint32_t offlineMs = 0;
    bool failsOnline = false;
    bool staysPending = false;
    bool isCore = false; // of the cluster itself: its name, its address, or the quorum
    bool isQuorum = false;
    bool isWanted = false;              // online is what was asked for last: the persistent state
    bool persistentGiven = false;       // in the model file
    std::vector<std::int64_t> restarts; // when the cluster restarted it after a failure, in clock milliseconds
    std::int64_t actAt = 0;             // when the cluster acts on its failure, in clock milliseconds; 0: never
};

// For what something falls due, and when at the earliest.
struct Agenda {
    std::vector<Resource*> resources; // in a pending state, or failed and to be acted on
    std::vector<Group*> groups;       // to fail back
    std::int64_t nextDue = INT64_MAX; // in clock milliseconds; nothing falls due before
};

// Something that happened in the cluster.
struct Event {
    std::int64_t at = 0;   // clock milliseconds
    const char* kind = ""; // "cluster", "node", "group" or "resource"
    std::wstring name;
    std::string what; // "moves from NODE-A to NODE-B"
    std::string why;  // empty when there is no more to say
};

struct EventLog {
    bool isOn = false;
    std::vector<Event> entries;
};

// The types of what else than a disk holds the quorum, or has a vote in it.
const wchar_t MajorityNodeSet[] = L"Majority Node Set";
const wchar_t FileShareWitness[] = L"File Share Witness";

// How the service behaves where its generations differ, or nobody knows.
struct Behaviour {
    bool emptyMaskIsEmptyList = false; // else an empty enumeration mask is an error
    Code deleteOnline = 5019;
    Code offlineFailed = 5038; // 0: succeeds, and the resource is offline
    int protocol = 2003;
    bool downNodesOwnGroups = false; // as a service says that has not noticed yet; else no such model is read
    bool actsOnFailures = false;     // restarts what fails and moves its group; else what fails stays failed
    bool needsRequired = true;       // what a type requires to depend on has to be there to come online
    Code lost = 1722;                // of calls with handles that were opened before the service ended
    bool handlesGoStale = false;     // when the service starts again; else they serve on
    bool leavesGroupOffline = true;  // when a group may not fail over again; else only what failed stays down
};

// Who goes on when nodes are lost.
enum class Quorum {
    Shared,  // whoever owns the quorum resource, be it a single node
    Majority // more than half of the votes: of the nodes and, where there is one, of the witness
};

// Who has a vote besides the nodes. It is taken to be within reach.
enum class Witness {
    None,
    Share, // a file share outside the cluster
    Disk   // since 2008
};

class Model {
public:
    Model() = default;
    Model(const Model&) = delete;
    Model& operator=(const Model&) = delete;

    std::wstring name;
    std::wstring domain; // of the DNS names of cluster and nodes; empty: they have none
    bool running = true;
    Unread unread; // of the cluster itself
    Quorum quorum = Quorum::Shared;
    Witness witness = Witness::None;
    Behaviour behaviour;
    std::int64_t clock = 0; // where the model's own clock stands, in milliseconds; 0: it goes by the computer's
    std::vector<std::string> faults; // as the file gives them
    std::string settings;            // the product's, a JSON object for whoever plays it; empty when there are none

    std::list<Node> nodes;
    std::list<Network> networks;
    std::list<NetworkInterface> interfaces;
    std::list<ResourceType> types;
    std::list<Group> groups;
    std::list<Resource> resources;
    bool typesGiven = false;
    Agenda agenda;
    EventLog events;
    bool isChanged = false; // set by every operation that changes something; whoever saves the model clears it

    // Look-up without case; null when there is none. A resource is found by name or ID.
    Node* FindNode(const std::wstring& nodeName) const;
    Group* FindGroup(const std::wstring& groupName) const;
    Resource* ResourceNamed(const std::wstring& nameOrId) const;
    Resource* ResourceWithId(const std::wstring& id) const;
    const ResourceType* FindType(const std::wstring& typeName) const;
    const Network* FindNetwork(const std::wstring& networkName) const;
    Network* FindNetwork(const std::wstring& networkName);
    const NetworkInterface* FindInterface(const std::wstring& interfaceName) const;

    // Whether a program may open the cluster by this name: the cluster's or a node's, with the domain or without it, or
    // an address that is in use: of a core resource, or of a node that takes part.
    bool AnswersTo(const std::wstring& nameOrAddress) const;

    // Gives the node this name; the one that has it gets the node's.
    void Rename(Node& node, const std::wstring& nodeName);

    // Building. False when the name is taken.
    bool AddNode(Node node);
    bool AddType(ResourceType type);
    bool AddGroup(Group group);
    Resource* AddResource(const std::wstring& resourceName, const std::wstring& id, const ResourceType* type,
                          Group* group); // null when name or ID is taken
    void AddBuiltInTypes();              // those that are not there yet

    void SetState(Resource& resource, State state);

    // Make and end a dependency; the rules are the caller's to check.
    static void Link(Resource& resource, Resource& dependsOn);
    static void Unlink(Resource& resource, Resource& dependsOn);

    // Operations, with the codes of the cluster API. What takes time, and what the cluster does by itself, is Engine's.
    Code Create(Group& group, const std::wstring& resourceName, const std::wstring& typeName, std::wstring& id);
    Code Delete(Resource& resource);
    Code AddDependency(Resource& resource, Resource& dependsOn);
    Code RemoveDependency(Resource& resource, Resource& dependsOn);
    Code AddOwner(Resource& resource, Node& node);

    static bool DependsOn(const Resource& resource, const Resource& other); // directly or not

private:
    std::unordered_map<std::wstring, Node*> m_nodesByName;
    std::unordered_map<std::wstring, Group*> m_groupsByName;
    std::unordered_map<std::wstring, ResourceType*> m_typesByName;
    std::unordered_map<std::wstring, std::list<Resource>::iterator> m_resourcesByName;
    std::unordered_map<std::wstring, std::list<Resource>::iterator> m_resourcesById;
    std::uint64_t m_resourcesMade = 0;
};

} // namespace clussim

#endif
