#include "Simulator.h"

#include <winsock2.h>
#include <windows.h>

#include <stdexcept>

namespace harness {

namespace {

template <typename Function> void LookUp(Function& function, const char* name) {
    function =
        reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"clusapi.dll"), name)));
    if (!function) {
        throw std::runtime_error(std::string("the loaded clusapi.dll is not the simulator, it lacks ") + name);
    }
}

template <typename Read> std::string ReadAll(Read read) {
    std::string text(read(nullptr, 0), '\0');
    if (!text.empty()) {
        read(text.data(), text.size());
        text.pop_back();
    }
    return text;
}

} // namespace

Simulator::Simulator() {
    LookUp(Version, "ClusSimVersion");
    LookUp(Reset, "ClusSimReset");
    LookUp(ClearFaults, "ClusSimClearFaults");
    LookUp(UseManualClock, "ClusSimUseManualClock");
    LookUp(AdvanceClock, "ClusSimAdvanceClock");
    LookUp(Happen, "ClusSimHappen");
    LookUp(ClearJournal, "ClusSimClearJournal");
    LookUp(CallCount, "ClusSimCallCount");
    LookUp(OpenHandles, "ClusSimOpenHandles");
    LookUp(BadHandleCalls, "ClusSimBadHandleCalls");
    LookUp(m_loadModel, "ClusSimLoadModel");
    LookUp(m_readModel, "ClusSimReadModel");
    LookUp(m_readJournal, "ClusSimReadJournal");
    LookUp(m_addFault, "ClusSimAddFault");
}

void Simulator::LoadModel(const std::string& json) {
    char error[512] = "";
    if (!m_loadModel(json.c_str(), error, sizeof(error))) {
        throw std::runtime_error(std::string("model not accepted: ") + error);
    }
}

std::string Simulator::Model() const {
    return ReadAll(m_readModel);
}

std::string Simulator::Journal() const {
    return ReadAll(m_readJournal);
}

void Simulator::AddFault(const std::string& fault) {
    if (!m_addFault(fault.c_str())) {
        throw std::runtime_error("fault not accepted: " + fault);
    }
}

} // namespace harness
