#include "ClusterInUse.h"

#include "ClusterApi.h"
#include "ModelInUse.h"
#include "VcsToolFiles.h"

#include "common/Environment.h"

#include <clus_VeritasCluster.h>

namespace {

const char SimulatedVcs[] = "the simulated cluster is of VCS";
const char SimulatedFailover[] = "the simulated cluster is a failover cluster";

struct Choice {
    bool isVcs;
    std::string why;
};

Answering g_chosen = Answering::FailoverCluster;
std::string g_why;

bool IsNamed(const wchar_t* variable) {
    return !common::EnvironmentVariable(variable).empty();
}

bool HasFailoverCluster() {
    const HCLUSTER cluster = OpenCluster(nullptr);
    if (cluster != nullptr) {
        CloseCluster(cluster);
    }
    return cluster != nullptr;
}

Choice ChooseHere() {
    const bool namesVcs = IsNamed(VcsVariable);
    const bool namesFailover = IsNamed(ClusterVariable);
    if (namesVcs != namesFailover) {
        return {namesVcs, namesVcs ? SimulatedVcs : SimulatedFailover};
    }
    if (CVeritasCluster().GetThirdPartyClusterType() != THIRD_PARTY_CLUSTER_TYPE_NONE) {
        return {true, std::string()};
    }
    if (namesFailover) {
        return {false, SimulatedFailover};
    }
    if (FindVcsTool(L"hares").empty() || FindVcsTool(L"hagrp").empty()) {
        return {false, "hares and hagrp are not on the search path"};
    }
    return HasFailoverCluster()
               ? Choice{false, "a failover cluster answers"}
               : Choice{true, "hares and hagrp are on the search path, and no failover cluster answers"};
}

Choice ChooseModel(const std::wstring& model) {
    const bool isVcs = IsModelOfVcs(model);
    return {isVcs, isVcs ? SimulatedVcs : SimulatedFailover};
}

} // namespace

Answering ChooseCluster(Answering asked, const std::wstring& model) {
    if (asked == Answering::Either) {
        const Choice choice = model.empty() ? ChooseHere() : ChooseModel(model);
        g_chosen = choice.isVcs ? Answering::Vcs : Answering::FailoverCluster;
        g_why = choice.why;
    } else {
        g_chosen = asked;
        g_why = asked == Answering::Vcs ? "the command asks VCS" : "";
    }
    return g_chosen;
}

Answering ClusterInUse() {
    return g_chosen;
}

const std::string& WhyClusterInUse() {
    return g_why;
}
