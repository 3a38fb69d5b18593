// A cluster node.
#include "clus_Cluster.h"

#include "platform/Owner.h"

using clus::LastErrorKeeper;

CClusterNode::CClusterNode() : m_hNode(nullptr) {
}

CClusterNode::~CClusterNode() {
    if (m_hNode) {
        const LastErrorKeeper keeper;
        CloseClusterNode(m_hNode);
    }
}

CClusterNode& CClusterNode::operator=(const CClusterNode& other) {
    m_hNode = other.m_hNode; // shared on purpose, see the header
    return *this;
}

HNODE CClusterNode::GetNodeHandle() const {
    return m_hNode;
}
