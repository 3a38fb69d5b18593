// What the model file calls states.
#include "ModelJson.h"
#include "ModelStates.h"

namespace clussim {

namespace {

template <std::size_t count, typename State>
bool ByName(const ModelState (&states)[count], const std::string& name, State& state) {
    for (const ModelState& known : states) {
        if (name == known.name) {
            state = static_cast<State>(known.number);
            return true;
        }
    }
    return false;
}

} // namespace

const char* StateName(State state) {
    return NameOf(ResourceStates, state, "");
}

bool StateByName(const std::string& name, State& state) {
    return ByName(ResourceStates, name, state);
}

const char* StatusName(Node::Status status) {
    return NameOf(NodeStates, static_cast<int>(status), "");
}

bool StatusByName(const std::string& name, Node::Status& status) {
    return ByName(NodeStates, name, status);
}

const char* StateName(NetworkState state) {
    return NameOf(NetworkStates, static_cast<int>(state), "");
}

bool StateByName(const std::string& name, NetworkState& state) {
    return ByName(NetworkStates, name, state);
}

const char* StateName(InterfaceState state) {
    return NameOf(InterfaceStates, static_cast<int>(state), "");
}

bool StateByName(const std::string& name, InterfaceState& state) {
    return ByName(InterfaceStates, name, state);
}

} // namespace clussim
