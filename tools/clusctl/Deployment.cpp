#include "Deployment.h"

#include "ClusterInUse.h"
#include "CommandLine.h"
#include "ModelSettings.h"
#include "Text.h"

#include <clus_VirtualServerUtil.h>

#include <CLI/Option.hpp>

namespace {

const char ExplainOption[] = "--explain";
const char ExplainDescription[] =
    "Say which deployment of the product the answer is for, and which registry values make it so";

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

std::string CannotBeOpened(const std::string& key, LSTATUS code) {
    return "the product's registry key " + key + " cannot be opened: " + ErrorText(static_cast<unsigned long>(code));
}

// The library goes by the compiled-in key, and only reads it.
Deployment ReadVcsDeployment() {
    HKEY key = nullptr;
    const LSTATUS code = RegOpenKeyExW(HKEY_LOCAL_MACHINE, CompiledInProductKey, 0, KEY_READ, &key);
    const std::string name = "HKEY_LOCAL_MACHINE\\" + Printable(CompiledInProductKey);
    std::string value;
    if (code == ERROR_SUCCESS) {
        value = NumberSentence(key, L"ThirdPartyClusterType") + " in " + name;
        RegCloseKey(key);
    } else {
        value = CannotBeOpened(name, code);
    }
    return {"vcs", WhyClusterInUse().empty() ? value : WhyClusterInUse() + "; " + value};
}

} // namespace

void AddExplain(CLI::App& command, bool& isExplained) {
    command.add_flag(ExplainOption, isExplained, ExplainDescription);
}

CLI::Option& AddExplain(CLI::App& command) {
    return *command.add_flag(ExplainOption, ExplainDescription);
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
    if (ClusterInUse() == Answering::Vcs) {
        return ReadVcsDeployment();
    }
    const std::wstring path = CVirtualServerUtil::GetProductRegistryKey();
    const bool isCluster = CVirtualServerUtil::CheckIsClusterByRegKey();
    const char* kind = isCluster ? KindOfCluster(CVirtualServerUtil::GetClusterQuorumModeByRegKey()) : "plain-server";
    HKEY key = nullptr;
    // With the access that the library asks for: a key that refuses it is none.
    const LSTATUS code = RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_ALL_ACCESS, &key);
    const std::string name = "HKEY_LOCAL_MACHINE\\" + Printable(ProductKey());
    if (code != ERROR_SUCCESS) {
        return {kind, CannotBeOpened(name, code)};
    }
    const std::string values = NumberSentence(key, L"IsCluster") + " and " + NumberSentence(key, L"ClusterQuorumMode");
    RegCloseKey(key);
    return {kind, values + " in " + name};
}

Deployment DeploymentAsked() {
    Deployment deployment = ReadDeployment();
    if (ClusterInUse() == Answering::FailoverCluster && !WhyClusterInUse().empty()) {
        deployment.reason += "; " + WhyClusterInUse();
    }
    return deployment;
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
        return DeploymentAsked();
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
