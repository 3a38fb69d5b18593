#include "ClusterInUse.h"

#include "ClusterApi.h"
#include "ModelInUse.h"
#include "VcsToolFiles.h"

#include "common/Environment.h"

#include <clus_VeritasCluster.h>

namespace {

Answering g_chosen = Answering::FailoverCluster;

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

bool IsVcsHere() {
    const bool namesVcs = IsNamed(VcsVariable);
    const bool namesFailover = IsNamed(ClusterVariable);
    if (namesVcs != namesFailover) {
        return namesVcs;
    }
    if (CVeritasCluster().GetThirdPartyClusterType() != THIRD_PARTY_CLUSTER_TYPE_NONE) {
        return true;
    }
    const bool hasTools = !FindVcsTool(L"hares").empty() && !FindVcsTool(L"hagrp").empty();
    return !namesFailover && hasTools && !HasFailoverCluster();
}

} // namespace

Answering ChooseCluster(Answering asked, const std::wstring& model) {
    if (asked == Answering::Either) {
        const bool isVcs = model.empty() ? IsVcsHere() : IsModelOfVcs(model);
        asked = isVcs ? Answering::Vcs : Answering::FailoverCluster;
    }
    g_chosen = asked;
    return asked;
}

Answering ClusterInUse() {
    return g_chosen;
}
