// The failover cluster's notifications: that something has changed.
#ifndef CLUSCTL_CLUSTERNOTICES_H
#define CLUSCTL_CLUSTERNOTICES_H

#include "ClusterApi.h"

#include <chrono>

// While it lives, changes of nodes, groups and resources are told. Where a cluster has no notifications, or does not
// give them, the time is all there is to go by.
class ClusterNotices {
public:
    // `isWanted`: false of a cluster that is asked in another way.
    explicit ClusterNotices(bool isWanted);
    ~ClusterNotices();
    ClusterNotices(const ClusterNotices&) = delete;
    ClusterNotices& operator=(const ClusterNotices&) = delete;

    // Waits until something has changed, or the time is over. Throws Interrupted.
    void Await(std::chrono::milliseconds longest);

private:
    void Open();
    bool TakeOne(DWORD milliseconds);

    HCLUSTER m_cluster = nullptr;
    void* m_port = nullptr;
    bool m_isLost = false;
};

#endif
