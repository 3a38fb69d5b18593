// A caller that knows only the installed package: prints the cluster's name and its resources.
#include <clus_Cluster.h>
#include <clus_VirtualServerUtil.h>

#include <cstdio>

int main() {
    CCluster cluster;
    std::wstring clusterName;
    std::list<std::wstring> resources;
    if (!cluster.OpenByLPC() || !cluster.GetClusterName(clusterName) ||
        !cluster.EnumNames(CCluster::CCLUSTER_OBJ_RESOURCE, resources)) {
        std::fprintf(stderr, "cannot read the cluster\n");
        return 1;
    }
    std::printf("cluster %ls\n", clusterName.c_str());
    for (const std::wstring& name : resources) {
        std::printf("resource %ls\n", name.c_str());
    }

    std::wstring path;
    CVirtualServerUtil::ConcatCCRDataPath(L"D:\\data", L"EVS1", path);
    return path == L"D:\\data\\CCRVSDB\\EVS1" ? 0 : 1;
}
