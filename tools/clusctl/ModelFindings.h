// What is wrong with a model, and how two models differ.
#ifndef CLUSCTL_MODELFINDINGS_H
#define CLUSCTL_MODELFINDINGS_H

#include "Json.h"

#include <cstddef>
#include <string>
#include <vector>

struct ModelFinding {
    std::wstring file;
    bool isNote = false;    // the simulator takes it all the same
    std::size_t line = 0;   // 0: not known
    std::size_t column = 0; // 0: not known
    std::string message;    // "groups[1].owner: there is no node NODE-X"
};

// No finding but notes when the simulator takes the model. A finding that would lead to others is the last one. Throws
// Failure when a file cannot be read, or the installation lacks the simulator.
std::vector<ModelFinding> CheckModel(const std::wstring& model);

struct ModelDifference {
    std::string change; // "added", "removed", "changed"
    std::string object; // "resource EVS1 IP"
    std::string property;
    Json before; // null for what is not there; secrets are masked
    Json after;
};

// In the order of the first model, then what only the second one has. Throws Failure when one of them cannot be read,
// or they are not of the same kind.
std::vector<ModelDifference> CompareModels(const std::wstring& before, const std::wstring& after);

#endif
