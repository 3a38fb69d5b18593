// Prints the servers that this node serves: name, address and data folder. Exit code 1 when the cluster cannot be read.
#include <clus_VirtualServerUtil.h>

#include <cstdio>
#include <vector>

int main() {
    CVirtualServerUtil util;
    int count = 1;
    std::vector<CClusterVirtualServerInfo> servers(count); // never empty: a null buffer only asks for the count
    CVirtualServerUtil::ENUM_VS_RESULT result;
    while ((result = util.EnumServersOnCurrentNode(servers.data(), &count)) ==
           CVirtualServerUtil::ENUM_VS_RESULT_MORE_DATA) {
        servers.resize(count);
    }
    for (int i = 0; result == CVirtualServerUtil::ENUM_VS_RESULT_SUCCESS && i < count; ++i) {
        std::printf("%ls %ls %ls\n", servers[i].m_wsServerName, servers[i].m_wsServerIP, servers[i].m_wsDataPath);
    }
    return result == CVirtualServerUtil::ENUM_VS_RESULT_SUCCESS ? 0 : 1;
}
