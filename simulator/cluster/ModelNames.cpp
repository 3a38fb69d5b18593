// What the model file calls the states of resources and nodes.
#include "ModelJson.h"

namespace clussim {

namespace {

const std::pair<const char*, State> StateNames[] = {
    {"Unknown", StateUnknown},
    {"Inherited", StateInherited},
    {"Initializing", StateInitializing},
    {"Online", StateOnline},
    {"Offline", StateOffline},
    {"Failed", StateFailed},
    {"Pending", StatePending},
    {"OnlinePending", StateOnlinePending},
    {"OfflinePending", StateOfflinePending},
};

const std::pair<const char*, Node::Status> NodeStates[] = {
    {"up", Node::Status::Up},
    {"down", Node::Status::Down},
    {"paused", Node::Status::Paused},
};

template <typename Entry, std::size_t count, typename Value>
const char* NameOf(const Entry (&entries)[count], Value value) {
    for (const Entry& entry : entries) {
        if (entry.second == value) {
            return entry.first;
        }
    }
    return "";
}

template <typename Entry, std::size_t count, typename Value>
bool ByName(const Entry (&entries)[count], const std::string& name, Value& value) {
    for (const Entry& entry : entries) {
        if (name == entry.first) {
            value = entry.second;
            return true;
        }
    }
    return false;
}

} // namespace

const char* StateName(State state) {
    return NameOf(StateNames, state);
}

bool StateByName(const std::string& name, State& state) {
    return ByName(StateNames, name, state);
}

const char* StatusName(Node::Status status) {
    return NameOf(NodeStates, status);
}

bool StatusByName(const std::string& name, Node::Status& status) {
    return ByName(NodeStates, name, status);
}

} // namespace clussim
