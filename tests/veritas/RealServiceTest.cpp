// Services of the real service control manager, brought online and awaited. The time between two looks is shortened.
#include "ChildProcess.h"
#include "VeritasTest.h"

#include <algorithm>
#include <string>
#include <vector>

using namespace harness;

namespace {

// A registered service whose program is the test service; stopped and removed at the end.
class RealService {
public:
    explicit RealService(const std::wstring& name) {
        const std::wstring program = L"\"" + ProgramFolder() + L"vcs_test_service.exe\"";
        m_manager = OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT | SC_MANAGER_CREATE_SERVICE);
        m_service = CreateServiceW(m_manager, name.c_str(), nullptr, SERVICE_ALL_ACCESS, SERVICE_WIN32_OWN_PROCESS,
                                   SERVICE_DEMAND_START, SERVICE_ERROR_NORMAL, program.c_str(), nullptr, nullptr,
                                   nullptr, nullptr, nullptr);
    }
    ~RealService() {
        if (m_service != nullptr) {
            Stop();
            DeleteService(m_service);
            CloseServiceHandle(m_service);
        }
        if (m_manager != nullptr) {
            CloseServiceHandle(m_manager);
        }
    }
    RealService(const RealService&) = delete;
    RealService& operator=(const RealService&) = delete;

    bool Exists() const {
        return m_service != nullptr;
    }
    bool Start() {
        return StartServiceW(m_service, 0, nullptr) != FALSE;
    }

private:
    void Stop() {
        SERVICE_STATUS status;
        for (int tries = 0; tries < 100; ++tries) {
            ControlService(m_service, SERVICE_CONTROL_STOP, &status); // refused until it runs
            if (!QueryServiceStatus(m_service, &status) || status.dwCurrentState == SERVICE_STOPPED) {
                return;
            }
            Sleep(50);
        }
        ADD_FAILURE() << "the test service does not stop";
    }

    SC_HANDLE m_manager = nullptr;
    SC_HANDLE m_service = nullptr;
};

class VeritasRealService : public VeritasTest {
protected:
    VeritasRealService() {
        Registry();
        tools.AnswerPrefix(L"hares -list ", "res NODE1\r\n");
        tools.AnswerPrefix(L"hares -", "");
        Platform().onSleep = [](DWORD milliseconds) { Sleep(milliseconds / 20); };
    }

    // Starts the service when its resource is brought online, as the cluster's agent does.
    void StartWith(RealService& service, const std::wstring& command) {
        tools.onRun = [&service, command, this](const ToolRun& run) {
            if (run.commandLine == command) {
                started = service.Start();
            }
        };
    }

    const std::wstring name = L"clusutil_veritas_test_" + std::to_wstring(GetCurrentProcessId());
    bool started = false;
};

TEST_F(VeritasRealService, AServiceThatStartsIsAwaitedUntilItRuns) {
    RealService service(name);
    if (!service.Exists()) {
        GTEST_SKIP() << "this account may not create services";
    }
    StartWith(service, L"hares -online res -sys NODE1 ");
    EXPECT_TRUE(cluster.CheckIfGenericServiceResourceExistsAndTurnItOn(L"EVS1", name.c_str(), L"NODE1", 300000));
    EXPECT_TRUE(started);
    EXPECT_THAT(TakeLog(), ::testing::EndsWith("I service " + Utf8(name) + " started successfully.\n"));
    // Its pending start was seen, then its running.
    ASSERT_GE(Platform().sleeps.size(), 2u);
    EXPECT_EQ(Platform().sleeps.back(), 10000u);
    EXPECT_EQ(std::count(Platform().sleeps.begin(), Platform().sleeps.end(), 1000u),
              static_cast<std::ptrdiff_t>(Platform().sleeps.size() - 1));
}

TEST_F(VeritasRealService, AServiceThatNobodyStartsIsLookedAtOncePerSecondAndOnceMore) {
    const RealService service(name);
    if (!service.Exists()) {
        GTEST_SKIP() << "this account may not create services";
    }
    EXPECT_TRUE(cluster.CheckIfGenericServiceResourceExistsAndTurnItOn(L"EVS1", name.c_str(), L"NODE1", 2500));
    EXPECT_EQ(Platform().sleeps, (std::vector<DWORD>{1000, 1000, 1000}));
    EXPECT_THAT(TakeLog(), ::testing::EndsWith("W unable to start service " + Utf8(name) + ".\n"));
}

TEST_F(VeritasRealService, AServiceThatIsNotRegisteredIsToldWithItsCode) {
    EXPECT_TRUE(cluster.CheckIfGenericServiceResourceExistsAndTurnItOn(L"EVS1", name.c_str(), L"NODE1", 2500));
    EXPECT_EQ(Platform().sleeps, std::vector<DWORD>());
    EXPECT_THAT(TakeLog(), ::testing::EndsWith("E OS::CException caught, Err code: 1060\nW unable to start service " +
                                               Utf8(name) + ".\n"));
}

TEST_F(VeritasRealService, ACreationAwaitsTheHostServiceBeforeTheQuarantineMonitorIsTurnedOn) {
    RealService service(L"OXAHostService");
    if (!service.Exists()) {
        GTEST_SKIP() << "the product is installed, or this account may not create services";
    }
    StartWith(service, L"hares -online EVS1-OXAHostService -sys NODE1 ");
    CVeritasVirtualServerInfo info(L"IS", L"EVS1");
    info.bGroupOnline = true;
    info.sOnlineNode = L"NODE1";
    EXPECT_TRUE(cluster.CreateKOVAResources(info, true, false, nullptr, nullptr, nullptr));
    EXPECT_TRUE(started);
    const std::string log = TakeLog();
    const std::size_t waiting = log.find("I Waiting for service EVS1-OXAHostService to go online\n"
                                         "I service OXAHostService started successfully.\n"
                                         "I Turning on EVS1-QAV_Monitor...\n");
    EXPECT_NE(waiting, std::string::npos) << log;
}

} // namespace
