#include "Simulation.h"

#include "Failure.h"
#include "ModelSettings.h"
#include "Text.h"
#include "VcsToolFiles.h"

#include "common/Environment.h"

#include <winsock2.h>
#include <windows.h>

#include <vector>

namespace {

const wchar_t ClusterVariable[] = L"CLUSSIM_FILE";
const wchar_t VcsVariable[] = L"VCSSIM_MAIN_CF";
const wchar_t AnyVcsTool[] = L"hares"; // they are all of one make

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

bool IsVcsSimulated() {
    const std::wstring path = FindVcsTool(AnyVcsTool);
    return !path.empty() && IsToolSimulated(path);
}

[[noreturn]] void Refuse(const wchar_t* variable, const std::string& who, const std::string& hint) {
    throw Failure(Errors::NoSimulator, Printable(variable) + " names a simulated cluster, but " + who).Hint(hint);
}

} // namespace

void RequireNamedSimulators() {
    if (!common::EnvironmentVariable(ClusterVariable).empty() && !IsClusterSimulated()) {
        Refuse(ClusterVariable, "the clusapi.dll in use is not the simulator's: the real cluster would answer",
               "Put the simulator's clusapi.dll and resutils.dll beside clusctl.exe, or remove the variable.");
    }
    // Without any tools nothing real answers either, and what is missing is said by whoever needs it.
    if (!common::EnvironmentVariable(VcsVariable).empty() && !FindVcsTool(AnyVcsTool).empty() && !IsVcsSimulated()) {
        Refuse(VcsVariable, "the VCS tools on the search path are not the simulator's: the real cluster would answer",
               "Put the folder of the simulator's tools first on PATH, or remove the variable.");
    }
}

std::wstring SimulatedBy(Answering answering) {
    const bool isVcs = answering == Answering::Vcs;
    if (isVcs ? !IsVcsSimulated() : !HasClusterSimulatorAnswered()) {
        return std::wstring();
    }
    const std::wstring file = common::EnvironmentVariable(isVcs ? VcsVariable : ClusterVariable);
    return file.empty() ? L"no file" : file;
}
