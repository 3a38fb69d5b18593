// Whether the answers come from a simulator, which is always said, and whether it is the one that was meant.
#ifndef CLUSCTL_SIMULATION_H
#define CLUSCTL_SIMULATION_H

#include <string>

enum class Answering {
    FailoverCluster, // the platform's cluster API, or the simulator in its place
    Vcs,             // the VCS tools on the search path, or the simulator's
    Either           // whichever of the two there is: ChooseCluster (ClusterInUse.h) decides
};

// The variables of the environment that name a simulated cluster.
const wchar_t ClusterVariable[] = L"CLUSSIM_FILE";
const wchar_t VcsVariable[] = L"VCSSIM_MAIN_CF";

// Throws Failure when a simulated cluster of either kind is named (CLUSSIM_FILE, VCSSIM_MAIN_CF) and its simulator, or
// that of the cluster which the command asks, is not there: a rehearsal must not touch a real cluster. And when the
// file that is named for the cluster which the command asks is not there.
void RequireNamedSimulators(Answering asked);

// Whether a simulator has answered, and from which file. Made before the work begins: a rehearsal names another file.
class Simulation {
public:
    explicit Simulation(Answering asked);

    // `hasRunTools`: whether any VCS tool has run.
    bool HasAnswered(bool hasRunTools) const;

    // The file that --model names, or the environment, as it stands there; empty for none.
    const std::wstring& File() const {
        return m_file;
    }
    const wchar_t* Variable() const;

private:
    Answering m_asked;
    std::wstring m_file;
};

#endif
