// Creating and destroying CVirtualServerUtil: the deployment's kind, Windows Sockets.
#include "clus_VirtualServerUtil.h"

#include "platform/Log.h"

#include <winsock2.h>

CLUS_LOG_PLACE(VirtualServerUtil, 2);

namespace {

unsigned int InstanceCount = 0;

// Counts an instance, and starts Windows Sockets with the first; undone unless the instance is completed.
class InstanceStart {
public:
    InstanceStart() {
        if (InstanceCount++ == 0) {
            WSADATA data;
            WSAStartup(MAKEWORD(2, 2), &data);
        }
    }
    ~InstanceStart() {
        if (!m_completed) {
            Undo();
        }
    }
    InstanceStart(const InstanceStart&) = delete;
    InstanceStart& operator=(const InstanceStart&) = delete;

    void Complete() {
        m_completed = true;
    }
    static void Undo() {
        if (--InstanceCount == 0) {
            WSACleanup();
        }
    }

private:
    bool m_completed = false;
};

} // namespace

CVirtualServerUtil::CVirtualServerUtil() : m_bIsCluster(false) {
    LOG_ENTER_AND_LEAVE(L"CVirtualServerUtil::CVirtualServerUtil()");
    InstanceStart start;
    m_bIsCluster = CheckIsClusterByRegKey();
    if (!m_bIsCluster) {
        GetNormalServerInfo(m_normalServer);
    }
    start.Complete();
}

CVirtualServerUtil::~CVirtualServerUtil() {
    LOG_ENTER_AND_LEAVE(L"CVirtualServerUtil::~CVirtualServerUtil()");
    InstanceStart::Undo();
}
