// The model as JSON text; the format is described in docs/cluster-simulator.md.
#ifndef CLUSSIM_MODELJSON_H
#define CLUSSIM_MODELJSON_H

#include "Model.h"

#include <stdexcept>

namespace clussim {

// What is wrong with a model text, and where.
class ModelError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Throws ModelError. `thisComputer` is the name that "." stands for.
std::unique_ptr<Model> ReadModel(const std::string& json, const std::wstring& thisComputer);

std::string WriteModel(const Model& model);

// What states are called in the text. False when there is no such name.
const char* StateName(State state);
bool StateByName(const std::string& name, State& state);
const char* StatusName(Node::Status status);
bool StatusByName(const std::string& name, Node::Status& status);
const char* StateName(NetworkState state);
bool StateByName(const std::string& name, NetworkState& state);
const char* StateName(InterfaceState state);
bool StateByName(const std::string& name, InterfaceState& state);

} // namespace clussim

#endif
