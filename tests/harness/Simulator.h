// The simulator's control interface, looked up in the clusapi.dll that was loaded: a foreign clusapi.dll is found out,
// and no import library of the simulator is needed.
#ifndef HARNESS_SIMULATOR_H
#define HARNESS_SIMULATOR_H

#include "ClusSimControl.h"

#include <string>

namespace harness {

class Simulator {
public:
    // Throws std::runtime_error when the loaded clusapi.dll is not the simulator.
    Simulator();

    // Throws std::runtime_error with the simulator's reason when the text is malformed.
    void LoadModel(const std::string& json);
    std::string Model() const;
    // Calls as the simulator saw them, also those of resutils.dll.
    std::string Journal() const;
    void AddFault(const std::string& fault);

    decltype(&ClusSimVersion) Version;
    decltype(&ClusSimReset) Reset;
    decltype(&ClusSimClearFaults) ClearFaults;
    decltype(&ClusSimUseManualClock) UseManualClock;
    decltype(&ClusSimAdvanceClock) AdvanceClock;
    decltype(&ClusSimHappen) Happen;
    decltype(&ClusSimClearJournal) ClearJournal;
    decltype(&ClusSimCallCount) CallCount;
    decltype(&ClusSimOpenHandles) OpenHandles;
    decltype(&ClusSimBadHandleCalls) BadHandleCalls;

private:
    decltype(&ClusSimLoadModel) m_loadModel;
    decltype(&ClusSimReadModel) m_readModel;
    decltype(&ClusSimReadJournal) m_readJournal;
    decltype(&ClusSimAddFault) m_addFault;
};

} // namespace harness

#endif
