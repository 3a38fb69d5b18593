#include "Simulation.h"

#include "Failure.h"
#include "ModelInUse.h"
#include "ModelSettings.h"
#include "Replay.h"
#include "Text.h"
#include "VcsToolFiles.h"

#include "common/Environment.h"
#include "common/Files.h"

#include <winsock2.h>
#include <windows.h>

#include <algorithm>
#include <vector>

namespace {

bool IsClusterSimulated() {
    const HMODULE api = GetModuleHandleW(L"clusapi.dll");
    return api != nullptr && GetProcAddress(api, "ClusSimVersion") != nullptr;
}

// Whether the simulator has answered any cluster call of this process, or given the product's settings.
bool HasClusterSimulatorAnswered() {
    const HMODULE api = GetModuleHandleW(L"clusapi.dll");
    typedef size_t (*CountFunction)(const char* call);
    const auto count =
        api == nullptr
            ? nullptr
            : reinterpret_cast<CountFunction>(reinterpret_cast<void*>(GetProcAddress(api, "ClusSimCallCount")));
    return ModelSettings::AreInForce() || (count != nullptr && count(nullptr) != 0);
}

// By the description in its version resource: starting it might change a real cluster.
bool IsToolSimulated(const std::wstring& path) {
    DWORD ignored = 0;
    std::vector<unsigned char> information(GetFileVersionInfoSizeW(path.c_str(), &ignored));
    void* description = nullptr;
    UINT length = 0;
    return !information.empty() &&
           GetFileVersionInfoW(path.c_str(), 0, static_cast<DWORD>(information.size()), information.data()) &&
           VerQueryValueW(information.data(), L"\\StringFileInfo\\040904b0\\FileDescription", &description, &length) &&
           std::wstring(static_cast<const wchar_t*>(description), length).rfind(L"VCS simulator", 0) == 0;
}

std::vector<VcsToolFile> VcsToolsThere() {
    std::vector<VcsToolFile> tools = FindVcsTools();
    tools.erase(std::remove_if(tools.begin(), tools.end(), [](const VcsToolFile& tool) { return tool.path.empty(); }),
                tools.end());
    return tools;
}

// One real tool among them would reach the real cluster.
bool IsVcsSimulated() {
    const std::vector<VcsToolFile> tools = VcsToolsThere();
    return !tools.empty() &&
           std::all_of(tools.begin(), tools.end(), [](const VcsToolFile& tool) { return IsToolSimulated(tool.path); });
}

[[noreturn]] void Refuse(const wchar_t* variable, const std::string& who, const std::string& hint) {
    throw Failure(Errors::NoSimulator, Printable(variable) + " names a simulated cluster, but " + who).Hint(hint);
}

} // namespace

void RequireNamedSimulators(Answering asked) {
    const bool namesCluster = !common::EnvironmentVariable(ClusterVariable).empty();
    const bool namesVcs = !common::EnvironmentVariable(VcsVariable).empty();
    const bool asksVcs = asked == Answering::Vcs;
    if ((namesCluster || (namesVcs && !asksVcs)) && !IsClusterSimulated()) {
        Refuse(namesCluster ? ClusterVariable : VcsVariable,
               "the clusapi.dll in use is not the simulator's: the real cluster would answer",
               "Put the simulator's clusapi.dll and resutils.dll beside clusctl.exe, or remove the variable.");
    }
    if ((namesVcs || (namesCluster && asksVcs)) && !IsVcsSimulated()) {
        Refuse(namesVcs ? VcsVariable : ClusterVariable,
               VcsToolsThere().empty()
                   ? "there are no VCS tools on the search path"
                   : "the VCS tools on the search path are not the simulator's: the real cluster would answer",
               "Put the folder of the simulator's tools first on PATH, or remove the variable.");
    }
    const Simulation named(asked);
    if (!named.File().empty() && !common::FileExists(named.File())) {
        throw Failure(Errors::FileNotFound,
                      "there is no file " + Quoted(named.File()) + ", which " + Printable(named.Variable()) + " names");
    }
}

Simulation::Simulation(Answering asked)
    : m_asked(asked), m_file(NamedModel().empty() ? common::EnvironmentVariable(Variable()) : NamedModel()) {
}

bool Simulation::HasAnswered(bool hasRunTools) const {
    if (IsReplaying()) {
        return ModelSettings::AreInForce() || HasReplayed();
    }
    return m_asked == Answering::Vcs ? ModelSettings::AreInForce() || (hasRunTools && IsVcsSimulated())
                                     : HasClusterSimulatorAnswered();
}

const wchar_t* Simulation::Variable() const {
    return m_asked == Answering::Vcs ? VcsVariable : ClusterVariable;
}
