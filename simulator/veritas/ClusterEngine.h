// The engine working on a loaded cluster.
#ifndef VCSSIM_CLUSTERENGINE_H
#define VCSSIM_CLUSTERENGINE_H

#include "Cluster.h"
#include "VcsEngine.h"
#include "Options.h"

#include <string>

namespace vcssim {

// The time has passed up to now when it is made. What the engine does reaches the cluster's state with Store.
class ClusterEngine {
public:
    // The cluster has to outlive it, and its configuration must not change meanwhile.
    ClusterEngine(Cluster& cluster, const Options& options);
    ClusterEngine(const ClusterEngine&) = delete;
    ClusterEngine& operator=(const ClusterEngine&) = delete;

    Engine& Control() {
        return m_engine;
    }
    const EngineState& State() const {
        return m_state;
    }
    // Of things that exist.
    std::size_t System(const std::string& name) const;
    std::size_t Group(const std::string& name) const;
    std::size_t Resource(std::size_t group, const std::string& name) const;

    void Store();

private:
    void ReadStates();
    void ReadProgress();
    void StoreStates();
    void StoreProgress();

    Cluster& m_cluster;
    EngineModel m_model;
    EngineState m_state;
    EngineState m_before;
    Engine m_engine;
};

// Lets the cluster's time pass, if anything is under way or its clock is a simulated one.
void LetTimePass(Cluster& cluster, const Options& options);

} // namespace vcssim

#endif
