// CServiceManager: the state of a Windows service.
#include "CommonUtil.h"

CServiceManager::CServiceManager(const wchar_t* serviceName, const wchar_t* machineName)
    : m_hManager(nullptr), m_hService(nullptr) {
    if (serviceName == nullptr) {
        throw OS::CException(ERROR_INVALID_PARAMETER);
    }
    m_hManager = OpenSCManagerW(machineName, nullptr, SC_MANAGER_CONNECT);
    if (m_hManager == nullptr) {
        throw OS::CException(GetLastError());
    }
    m_hService = OpenServiceW(m_hManager, serviceName, SERVICE_QUERY_STATUS);
    if (m_hService == nullptr) {
        const DWORD code = GetLastError();
        CloseServiceHandle(m_hManager); // the destructor does not run for an object that was not constructed
        throw OS::CException(code);
    }
}

CServiceManager::~CServiceManager() {
    const DWORD lastError = GetLastError();
    CloseServiceHandle(m_hService);
    CloseServiceHandle(m_hManager);
    SetLastError(lastError);
}

DWORD CServiceManager::QueryServiceStatus() {
    SERVICE_STATUS status;
    if (!::QueryServiceStatus(m_hService, &status)) {
        throw OS::CException(GetLastError());
    }
    return status.dwCurrentState;
}
