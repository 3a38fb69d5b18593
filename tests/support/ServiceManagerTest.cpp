#include "CommonUtil.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

// A real service that is never started.
class StoppedService {
public:
    StoppedService() : m_name(L"clusutil_support_test_" + std::to_wstring(GetCurrentProcessId())) {
        m_manager = OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT | SC_MANAGER_CREATE_SERVICE);
        m_service = CreateServiceW(m_manager, m_name.c_str(), nullptr, SERVICE_ALL_ACCESS, SERVICE_WIN32_OWN_PROCESS,
                                   SERVICE_DEMAND_START, SERVICE_ERROR_NORMAL, L"C:\\no_such_program.exe", nullptr,
                                   nullptr, nullptr, nullptr, nullptr);
    }
    ~StoppedService() {
        if (m_service != nullptr) {
            Delete();
        }
        CloseServiceHandle(m_manager);
    }
    StoppedService(const StoppedService&) = delete;
    StoppedService& operator=(const StoppedService&) = delete;

    const wchar_t* Name() const {
        return m_name.c_str();
    }
    bool Exists() const {
        return m_service != nullptr;
    }
    void Delete() {
        DeleteService(m_service);
        CloseServiceHandle(m_service);
        m_service = nullptr;
    }

private:
    std::wstring m_name;
    SC_HANDLE m_manager = nullptr;
    SC_HANDLE m_service = nullptr;
};

DWORD CodeOfOpening(const wchar_t* service, const wchar_t* machine) {
    try {
        CServiceManager manager(service, machine);
    } catch (const OS::CException& exception) {
        return exception.GetErrorCode();
    }
    return ERROR_SUCCESS;
}

std::vector<std::wstring> NamesOfRunningServices() {
    const SC_HANDLE manager = OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT | SC_MANAGER_ENUMERATE_SERVICE);
    std::vector<BYTE> buffer(256 * 1024);
    DWORD needed = 0;
    DWORD count = 0;
    DWORD resume = 0;
    EXPECT_TRUE(EnumServicesStatusW(manager, SERVICE_WIN32, SERVICE_ACTIVE,
                                    reinterpret_cast<ENUM_SERVICE_STATUSW*>(buffer.data()),
                                    static_cast<DWORD>(buffer.size()), &needed, &count, &resume))
        << GetLastError();
    CloseServiceHandle(manager);
    const auto* const services = reinterpret_cast<const ENUM_SERVICE_STATUSW*>(buffer.data());
    std::vector<std::wstring> names;
    for (DWORD i = 0; i < count; ++i) {
        if (services[i].ServiceStatus.dwCurrentState == SERVICE_RUNNING) {
            names.push_back(services[i].lpServiceName);
        }
    }
    return names;
}

} // namespace

TEST(ServiceManager, ReportsAStoppedService) {
    const StoppedService service;
    if (!service.Exists()) {
        GTEST_SKIP() << "this account may not create services";
    }
    CServiceManager manager(service.Name(), nullptr);
    EXPECT_EQ(static_cast<DWORD>(SERVICE_STOPPED), manager.QueryServiceStatus());
    EXPECT_EQ(static_cast<DWORD>(SERVICE_STOPPED), manager.QueryServiceStatus());
}

// Services of a computer that has just started change their state by themselves, or go: what counts is a state that
// holds.
TEST(ServiceManager, ReportsARunningService) {
    const DWORD start = GetTickCount();
    do {
        for (const std::wstring& name : NamesOfRunningServices()) {
            DWORD state = SERVICE_START_PENDING;
            try {
                state = CServiceManager(name.c_str(), nullptr).QueryServiceStatus();
            } catch (const OS::CException&) {
                continue; // busy with its start
            }
            if (state == SERVICE_RUNNING) {
                SUCCEED() << "reported as listed";
                return;
            }
        }
        Sleep(100);
    } while (GetTickCount() - start < 30000);
    FAIL() << "no service that is listed as running was reported as running";
}

TEST(ServiceManager, ThrowsForAnUnknownService) {
    EXPECT_EQ(static_cast<DWORD>(ERROR_SERVICE_DOES_NOT_EXIST), CodeOfOpening(L"clusutil_no_such_service", nullptr));
}

TEST(ServiceManager, ThrowsForANullName) {
    EXPECT_EQ(static_cast<DWORD>(ERROR_INVALID_PARAMETER), CodeOfOpening(nullptr, nullptr));
}

TEST(ServiceManager, KeepsTheLastErrorValueWhenItCloses) {
    const StoppedService service;
    if (!service.Exists()) {
        GTEST_SKIP() << "this account may not create services";
    }
    {
        const CServiceManager manager(service.Name(), nullptr);
        SetLastError(0xE0BADC0D);
    }
    EXPECT_EQ(0xE0BADC0D, GetLastError());
}

TEST(CException, CarriesItsCode) {
    EXPECT_EQ(1234u, OS::CException(1234).GetErrorCode());
}
