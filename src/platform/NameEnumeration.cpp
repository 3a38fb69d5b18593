#include "platform/NameEnumeration.h"

#include "platform/Log.h"
#include "platform/Owner.h"

CLUS_LOG_PLACE(Cluster, 5);

namespace clus {

namespace {

const unsigned MostFailures = 1000; // in a row

void LogEnd(DWORD code, unsigned failures) {
    LOG_ERROR(L"Enumeration ended, code:%d, answers without an entry:%d", code, failures);
}

template <typename Names> bool AppendClusterNamesTo(HCLUSTER cluster, DWORD mask, Names& names) {
    LocalBuffer buffer;
    const ClusterEnumOwner hEnum(ClusterOpenEnum(cluster, mask));
    if (!hEnum) {
        LOG_ERROR(L"calling ClusterOpenEnum failed");
        return false;
    }
    DWORD type = 0;
    return AppendNames(
        256, OnFailedEntry::GoOn,
        [&](DWORD index, wchar_t* text, DWORD* cch) { return ClusterEnum(hEnum.get(), index, &type, text, cch); },
        [](DWORD) { LOG_ERROR(L"Unexpected result for cluster enum"); }, buffer, names);
}

} // namespace

bool EnumerationWatch::MayGoOn(DWORD code) {
    if (++m_failures < MostFailures) {
        return true;
    }
    LogEnd(code, m_failures);
    return false;
}

bool EnumerationWatch::MayGrow(DWORD cch, DWORD cchGiven) const {
    if (cch >= cchGiven) {
        return true;
    }
    LogEnd(ERROR_MORE_DATA, m_failures + 1);
    return false;
}

bool AppendClusterNames(HCLUSTER cluster, DWORD mask, std::list<std::wstring>& names) {
    return AppendClusterNamesTo(cluster, mask, names);
}

bool AppendClusterNames(HCLUSTER cluster, DWORD mask, NameStore& names) {
    return AppendClusterNamesTo(cluster, mask, names);
}

} // namespace clus
