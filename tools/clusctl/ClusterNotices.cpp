#include "ClusterNotices.h"

#include "Interruption.h"
#include "Replay.h"

#include <Interception.h>

#include <algorithm>
#include <vector>

namespace {

const DWORD Wanted = CLUSTER_CHANGE_NODE_STATE | CLUSTER_CHANGE_NODE_ADDED | CLUSTER_CHANGE_NODE_DELETED |
                     CLUSTER_CHANGE_GROUP_STATE | CLUSTER_CHANGE_GROUP_ADDED | CLUSTER_CHANGE_GROUP_DELETED |
                     CLUSTER_CHANGE_RESOURCE_STATE | CLUSTER_CHANGE_RESOURCE_ADDED | CLUSTER_CHANGE_RESOURCE_DELETED |
                     CLUSTER_CHANGE_RESOURCE_PROPERTY;
const std::chrono::milliseconds Step(250);     // how soon Ctrl+C is obeyed
const std::chrono::milliseconds Settling(300); // one move of a group is many notifications

// Looked up when they are needed: a cluster API without them does for everything else. Calls of what is found go where
// those of imports go, into a recording too.
template <typename Function> Function Find(const char* name) {
    const HMODULE api = GetModuleHandleW(L"clusapi.dll");
    const bool isThere = IsReplaying() || (api != nullptr && GetProcAddress(api, name) != nullptr);
    return isThere ? reinterpret_cast<Function>(
                         reinterpret_cast<void*>(recording::Interception::Replacement("clusapi.dll", name)))
                   : nullptr;
}

} // namespace

ClusterNotices::ClusterNotices(bool isWanted) {
    if (isWanted) {
        Open();
    }
}

ClusterNotices::~ClusterNotices() {
    const auto close = Find<decltype(&CloseClusterNotifyPort)>("CloseClusterNotifyPort");
    if (m_port != nullptr && close != nullptr) {
        close(static_cast<HCHANGE>(m_port));
    }
    if (m_cluster != nullptr) {
        CloseCluster(m_cluster);
    }
}

void ClusterNotices::Open() {
    const auto create = Find<decltype(&CreateClusterNotifyPort)>("CreateClusterNotifyPort");
    m_cluster = create == nullptr ? nullptr : OpenCluster(nullptr);
    if (m_cluster != nullptr) {
        m_port = create(static_cast<HCHANGE>(INVALID_HANDLE_VALUE), m_cluster, Wanted, 0);
    }
}

bool ClusterNotices::TakeOne(DWORD milliseconds) {
    static const auto take = Find<decltype(&GetClusterNotify)>("GetClusterNotify");
    DWORD_PTR key = 0;
    DWORD kind = 0;
    std::vector<wchar_t> name(256);
    auto length = static_cast<DWORD>(name.size());
    const DWORD code = take(static_cast<HCHANGE>(m_port), &key, &kind, name.data(), &length, milliseconds);
    if (code != ERROR_SUCCESS && code != ERROR_MORE_DATA && code != WAIT_TIMEOUT) {
        m_isLost = true; // it went with the cluster
    }
    return code == ERROR_SUCCESS || code == ERROR_MORE_DATA;
}

// Counts its steps and looks at no clock, so that a replay asks as often as the recording did.
void ClusterNotices::Await(std::chrono::milliseconds longest) {
    for (std::chrono::milliseconds left = longest; left.count() > 0; left -= std::min(Step, left)) {
        if (m_port == nullptr || m_isLost) {
            Interruption::Wait(std::min(Step, left));
            continue;
        }
        Interruption::Check();
        if (TakeOne(static_cast<DWORD>(std::min(Step, left).count()))) {
            Interruption::Wait(std::min(Settling, left));
            while (!m_isLost && TakeOne(0)) {
            }
            return;
        }
    }
}
