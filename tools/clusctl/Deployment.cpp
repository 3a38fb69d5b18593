#include "Deployment.h"

#include "CommandLine.h"
#include "ModelSettings.h"
#include "Text.h"

#include <clus_VirtualServerUtil.h>

#include <CLI/Option.hpp>

namespace {

const char ExplainOption[] = "--explain";

const Columns DeploymentTitles = {{"kind", "Deployment"}, {"reason", "Because"}};

// False when the value is missing or no number.
bool ReadNumber(HKEY key, const wchar_t* name, DWORD& number) {
    DWORD type = 0;
    DWORD size = sizeof(number);
    return RegQueryValueExW(key, name, nullptr, &type, reinterpret_cast<BYTE*>(&number), &size) == ERROR_SUCCESS &&
           type == REG_DWORD;
}

std::string NumberSentence(HKEY key, const wchar_t* name) {
    DWORD number = 0;
    return ReadNumber(key, name, number) ? Quoted(std::wstring(name)) + " is " + std::to_string(number)
                                         : Quoted(std::wstring(name)) + " is not set";
}

} // namespace

void AddExplain(CLI::App& command, bool& isExplained) {
    command.add_flag(ExplainOption, isExplained,
                     "Say which deployment of the product the answer is for, and which registry values make it so");
}

const char* KindOfCluster(int quorumMode) {
    switch (quorumMode) {
    case CVirtualServerUtil::CLUSTER_QUORUM_SINGLE_COPY:
        return "single-copy-cluster";
    case CVirtualServerUtil::CLUSTER_QUORUM_CCR:
        return "continuous-replication";
    default:
        return "cluster";
    }
}

Deployment ReadDeployment() {
    const std::wstring path = CVirtualServerUtil::GetProductRegistryKey();
    const bool isCluster = CVirtualServerUtil::CheckIsClusterByRegKey();
    const char* kind = isCluster ? KindOfCluster(CVirtualServerUtil::GetClusterQuorumModeByRegKey()) : "plain-server";
    HKEY key = nullptr;
    // With the access that the library asks for: a key that refuses it is none.
    const LSTATUS code = RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_ALL_ACCESS, &key);
    const std::string name = "HKEY_LOCAL_MACHINE\\" + Printable(ProductKey());
    if (code != ERROR_SUCCESS) {
        return {kind, "the product's registry key " + name +
                          " cannot be opened: " + ErrorText(static_cast<unsigned long>(code))};
    }
    const std::string values = NumberSentence(key, L"IsCluster") + " and " + NumberSentence(key, L"ClusterQuorumMode");
    RegCloseKey(key);
    return {kind, values + " in " + name};
}

bool DependsOnDeployment(const CLI::App& command) {
    return command.get_option_no_throw(ExplainOption) != nullptr;
}

bool IsExplained(const CLI::App& command) {
    return DependsOnDeployment(command) && command.get_option(ExplainOption)->count() > 0;
}

Deployment DeploymentOf(const CLI::App& command) {
    const CLI::Option* const mode = command.get_option_no_throw("--mode");
    if (mode == nullptr || mode->count() == 0) {
        return ReadDeployment();
    }
    return {KindOfCluster(mode->results().front() == "ccr" ? CVirtualServerUtil::CLUSTER_QUORUM_CCR
                                                           : CVirtualServerUtil::CLUSTER_QUORUM_SINGLE_COPY),
            ModeReason};
}

Json DeploymentJson(const Deployment& deployment) {
    return {{"kind", deployment.kind}, {"reason", deployment.reason}};
}

IntendedCluster ReadIntendedCluster() {
    const std::wstring path = CVirtualServerUtil::GetProductRegistryKey();
    HKEY key = nullptr;
    const LSTATUS code = RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, &key);
    if (code != ERROR_SUCCESS) {
        return code == ERROR_FILE_NOT_FOUND ? IntendedCluster::NotInstalled : IntendedCluster::Unknown;
    }
    DWORD isCluster = 0;
    const bool isOne = ReadNumber(key, L"IsCluster", isCluster) && isCluster == 1;
    RegCloseKey(key);
    return isOne ? IntendedCluster::One : IntendedCluster::None;
}

void AddDeployment(const Deployment& deployment, bool isExplained, Report& report) {
    const Json record = DeploymentJson(deployment);
    if (isExplained) {
        report.AddRecord("deployment", record, DeploymentTitles);
    } else {
        report.AddMember("deployment", record);
    }
}
