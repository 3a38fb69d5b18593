#include "platform/NameEnumeration.h"

#include "platform/Log.h"

CLUS_LOG_PLACE(Cluster, 5);

namespace clus {

namespace {

const unsigned MostFailures = 1000; // in a row

void LogEnd(DWORD code, unsigned failures) {
    LOG_ERROR(L"Enumeration ended, code:%d, answers without an entry:%d", code, failures);
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

} // namespace clus
