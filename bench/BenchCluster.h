// The surroundings of a measurement: a generated cluster in the simulator's memory, and a computer that counts as
// clustered.
#ifndef BENCHCLUSTER_H
#define BENCHCLUSTER_H

#include <winsock2.h>
#include <windows.h>

#include <cstddef>
#include <string>

namespace bench {

// Groups of ten resources, one of them the product's; every second group is on this node.
const std::size_t ResourcesPerGroup = 10;

// The node that owns the other groups.
enum class OtherNode {
    Up,
    Down // the groups stay there
};

// The model text of a cluster of so many resources (a multiple of ten).
std::string ClusterText(std::size_t resources, OtherNode other = OtherNode::Up);

// Loads that cluster. Throws std::runtime_error when the simulator refuses it.
void LoadCluster(std::size_t resources);

// "IsCluster" is 1 under the product's key while one lives; then it is what it was before.
class ClusteredRegistry {
public:
    ClusteredRegistry();
    ~ClusteredRegistry();
    ClusteredRegistry(const ClusteredRegistry&) = delete;
    ClusteredRegistry& operator=(const ClusteredRegistry&) = delete;

private:
    HKEY m_key;
    bool m_hadValue;
    DWORD m_oldValue;
};

} // namespace bench

#endif
