// What a model file calls states, by the numbers that the cluster API has for them. For whatever writes such a file.
#ifndef CLUSSIM_MODELSTATES_H
#define CLUSSIM_MODELSTATES_H

#include <cstddef>

namespace clussim {

struct ModelState {
    int number;
    const char* name;
};

const ModelState ResourceStates[] = {
    {-1, "Unknown"}, {0, "Inherited"}, {1, "Initializing"},    {2, "Online"},           {3, "Offline"},
    {4, "Failed"},   {128, "Pending"}, {129, "OnlinePending"}, {130, "OfflinePending"},
};

const ModelState NodeStates[] = {
    {0, "up"},
    {1, "down"},
    {2, "paused"},
    {3, "joining"},
};

const ModelState NetworkStates[] = {
    {0, "unavailable"},
    {1, "down"},
    {2, "partitioned"},
    {3, "up"},
};

const ModelState InterfaceStates[] = {
    {0, "unavailable"},
    {1, "failed"},
    {2, "unreachable"},
    {3, "up"},
};

template <std::size_t count> const char* NameOf(const ModelState (&states)[count], int number, const char* otherwise) {
    for (const ModelState& known : states) {
        if (known.number == number) {
            return known.name;
        }
    }
    return otherwise;
}

} // namespace clussim

#endif
