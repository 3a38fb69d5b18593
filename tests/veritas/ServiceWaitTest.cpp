// Waiting for a Windows service once its resource has been brought online. The service control manager is replaced
// below CommonUtil.dll, which is the one that asks it.
#include "Runs.h"

#include <limits>

using namespace harness;

namespace {

const SC_HANDLE Manager = reinterpret_cast<SC_HANDLE>(0x1010);
const SC_HANDLE Service = reinterpret_cast<SC_HANDLE>(0x2020);

template <typename Function, typename Tag> class CommonUtilPatch : public ImportPatch<Function, Tag> {
public:
    CommonUtilPatch(const char* name, std::function<Function> replacement)
        : ImportPatch<Function, Tag>(FindImports(GetModuleHandleW(L"CommonUtil.dll"), "advapi32.dll", name),
                                     std::move(replacement)) {
    }
};

class VeritasServiceWait : public VeritasTest {
protected:
    VeritasServiceWait() {
        tools.AnswerPrefix(L"hares -list ", "Res\t\tNODE1\r\n");
        tools.AnswerPrefix(L"hares -", "");
        Platform().onSleep = [this](DWORD milliseconds) { events.push_back("Sleep " + std::to_string(milliseconds)); };
    }

    // Brings the resource online and waits. Whatever comes of that, the resource is there.
    void Wait(int timeout) {
        events.clear();
        Forget();
        EXPECT_TRUE(cluster.CheckIfGenericServiceResourceExistsAndTurnItOn(L"G", L"Svc", L"NODE1", timeout));
        ASSERT_GE(tools.Runs().size(), 4u);
        EXPECT_EQ(tools.TakeCommandLines(),
                  (CommandList{L"hares -list  Type=GenericService  ServiceName=Svc  Group=G ", L"hares -clear  Res",
                               L"hares -probe Res -sys  NODE1", L"hares -online Res -sys NODE1 "}));
        // What is logged behind the last tool.
        const std::string log = TakeLog();
        const std::string leave = Lines({RunLeave});
        waitLog = log.substr(log.rfind(leave) + leave.size());
    }
    size_t Looks() const {
        return std::count(events.begin(), events.end(), "Query");
    }

    // The service runs at this look and from then on; 0: never.
    size_t runsAt = 0;
    DWORD stateBefore = SERVICE_START_PENDING;
    // What fails, with which code.
    DWORD managerCode = 0;
    DWORD serviceCode = 0;
    size_t queryFailsAt = 0;
    std::function<void()> onQuery;

    Texts events;
    std::string waitLog;

    const std::string started = Lines({"I service Svc started successfully."});
    const std::string notStarted = Lines({"W unable to start service Svc."});

private:
    static BOOL Fail(DWORD code) {
        SetLastError(code);
        return FALSE;
    }

    CommonUtilPatch<SC_HANDLE WINAPI(LPCWSTR, LPCWSTR, DWORD), struct OpenManagerTag> m_openManager{
        "OpenSCManagerW", [this](LPCWSTR machine, LPCWSTR database, DWORD) {
            EXPECT_EQ(database, nullptr);
            events.push_back("OpenManager " + Utf8(machine));
            return managerCode ? (SetLastError(managerCode), nullptr) : Manager;
        }};
    CommonUtilPatch<SC_HANDLE WINAPI(SC_HANDLE, LPCWSTR, DWORD), struct OpenServiceTag> m_openService{
        "OpenServiceW", [this](SC_HANDLE manager, LPCWSTR name, DWORD) {
            EXPECT_EQ(manager, Manager);
            events.push_back("OpenService " + Utf8(name));
            return serviceCode ? (SetLastError(serviceCode), nullptr) : Service;
        }};
    CommonUtilPatch<BOOL WINAPI(SC_HANDLE, LPSERVICE_STATUS), struct QueryTag> m_query{
        "QueryServiceStatus", [this](SC_HANDLE service, LPSERVICE_STATUS status) {
            EXPECT_EQ(service, Service);
            events.push_back("Query");
            if (onQuery) {
                onQuery();
            }
            if (Looks() == queryFailsAt) {
                return Fail(ERROR_INVALID_HANDLE);
            }
            *status = SERVICE_STATUS();
            status->dwCurrentState = runsAt && Looks() >= runsAt ? SERVICE_RUNNING : stateBefore;
            return BOOL(TRUE);
        }};
    CommonUtilPatch<BOOL WINAPI(SC_HANDLE), struct CloseTag> m_close{
        "CloseServiceHandle", [this](SC_HANDLE handle) {
            events.push_back(handle == Service ? "CloseService" : handle == Manager ? "CloseManager" : "Close?");
            return BOOL(TRUE);
        }};
};

TEST_F(VeritasServiceWait, AServiceThatRunsIsGivenTenSecondsMore) {
    runsAt = 1;
    Wait(60000);
    EXPECT_EQ(events,
              (Texts{"OpenManager NULL", "OpenService Svc", "Query", "Sleep 10000", "CloseService", "CloseManager"}));
    EXPECT_EQ(waitLog, started);
}

TEST_F(VeritasServiceWait, AServiceIsLookedAtEverySecondUntilItRuns) {
    runsAt = 3;
    Wait(60000);
    EXPECT_EQ(events, (Texts{"OpenManager NULL", "OpenService Svc", "Query", "Sleep 1000", "Query", "Sleep 1000",
                             "Query", "Sleep 10000", "CloseService", "CloseManager"}));
    EXPECT_EQ(waitLog, started);
}

TEST_F(VeritasServiceWait, SuccessIsLoggedBeforeTheTenSeconds) {
    runsAt = 1;
    std::string before;
    Platform().onSleep = [&](DWORD) { before = Log().Entries().back().Compact(); };
    Wait(1000);
    EXPECT_EQ(before, "I service Svc started successfully.");
    EXPECT_EQ(Platform().sleeps, std::vector<DWORD>{10000});
}

TEST_F(VeritasServiceWait, WithoutATimeOutTheServiceIsNotTouched) {
    for (const int timeout : {0, -1, -1000, std::numeric_limits<int>::min()}) {
        Wait(timeout);
        EXPECT_EQ(events, Texts()) << timeout;
        EXPECT_EQ(waitLog, "") << timeout;
    }
}

TEST_F(VeritasServiceWait, TheTimeOutGivesOneLookMoreThanItHasSeconds) {
    const std::vector<std::pair<int, size_t>> looks = {{1, 1},    {999, 1},  {1000, 2}, {1001, 2},
                                                       {1999, 2}, {2000, 3}, {2500, 3}, {10000, 11}};
    for (const auto& expected : looks) {
        Wait(expected.first);
        EXPECT_EQ(Looks(), expected.second) << expected.first;
        EXPECT_EQ(size_t(std::count(events.begin(), events.end(), "Sleep 1000")), expected.second) << expected.first;
        EXPECT_EQ(waitLog, notStarted) << expected.first;
    }
}

TEST_F(VeritasServiceWait, TheLastLookIsFollowedByItsSecondToo) {
    Wait(1);
    EXPECT_EQ(events,
              (Texts{"OpenManager NULL", "OpenService Svc", "Query", "Sleep 1000", "CloseService", "CloseManager"}));
    EXPECT_EQ(waitLog, notStarted);
}

TEST_F(VeritasServiceWait, AServiceThatRunsAtTheLastLookHasStarted) {
    runsAt = 3;
    Wait(2500);
    EXPECT_EQ(waitLog, started);
    EXPECT_EQ(Platform().sleeps, (std::vector<DWORD>{1000, 1000, 10000}));
}

TEST_F(VeritasServiceWait, AServiceThatRunsAfterTheLastLookHasNotStarted) {
    runsAt = 4;
    Wait(2500);
    EXPECT_EQ(waitLog, notStarted);
    EXPECT_EQ(Platform().sleeps, (std::vector<DWORD>{1000, 1000, 1000}));
}

TEST_F(VeritasServiceWait, TheLongestTimeOutEndsWithTheServicesStart) {
    runsAt = 5;
    Wait(std::numeric_limits<int>::max());
    EXPECT_EQ(Looks(), 5u);
    EXPECT_EQ(waitLog, started);
}

TEST_F(VeritasServiceWait, OnlyRunningCounts) {
    for (const DWORD state : {0, SERVICE_STOPPED, SERVICE_START_PENDING, SERVICE_STOP_PENDING, SERVICE_CONTINUE_PENDING,
                              SERVICE_PAUSE_PENDING, SERVICE_PAUSED, 8}) {
        stateBefore = state;
        Wait(1000);
        EXPECT_EQ(Looks(), 2u) << state;
        EXPECT_EQ(waitLog, notStarted) << state;
    }
}

TEST_F(VeritasServiceWait, AServiceThatCannotBeOpenedEndsTheWait) {
    serviceCode = ERROR_SERVICE_DOES_NOT_EXIST;
    Wait(60000);
    EXPECT_EQ(events, (Texts{"OpenManager NULL", "OpenService Svc", "CloseManager"}));
    EXPECT_EQ(waitLog, Lines({"E OS::CException caught, Err code: 1060"}) + notStarted);
}

TEST_F(VeritasServiceWait, AServiceManagerThatCannotBeOpenedEndsTheWait) {
    managerCode = ERROR_ACCESS_DENIED;
    Wait(60000);
    EXPECT_EQ(events, Texts{"OpenManager NULL"});
    EXPECT_EQ(waitLog, Lines({"E OS::CException caught, Err code: 5"}) + notStarted);
}

TEST_F(VeritasServiceWait, AStateThatCannotBeReadEndsTheWait) {
    runsAt = 4;
    queryFailsAt = 3;
    Wait(60000);
    EXPECT_EQ(events, (Texts{"OpenManager NULL", "OpenService Svc", "Query", "Sleep 1000", "Query", "Sleep 1000",
                             "Query", "CloseService", "CloseManager"}));
    EXPECT_EQ(waitLog, Lines({"E OS::CException caught, Err code: 6"}) + notStarted);
}

TEST_F(VeritasServiceWait, OtherExceptionsPassThrough) {
    onQuery = [] { throw std::runtime_error("other"); };
    EXPECT_THROW(cluster.CheckIfGenericServiceResourceExistsAndTurnItOn(L"G", L"Svc", L"NODE1", 1000),
                 std::runtime_error);
    EXPECT_EQ(events, (Texts{"OpenManager NULL", "OpenService Svc", "Query", "CloseService", "CloseManager"}));
    EXPECT_THAT(TakeLog(), ::testing::EndsWith(Lines({RunLeave})));
}

TEST_F(VeritasServiceWait, TheServiceIsOpenedAfterItsResourceWasTurnedOn) {
    runsAt = 1;
    onQuery = [this] { EXPECT_EQ(tools.CommandLines().back(), L"hares -online Res -sys NODE1 "); };
    Wait(1000);
    EXPECT_EQ(Looks(), 1u);
}

TEST_F(VeritasServiceWait, AResourceThatCouldNotBeTurnedOnIsNotWaitedFor) {
    tools.FailStart(4, ERROR_FILE_NOT_FOUND);
    Wait(60000);
    EXPECT_EQ(events, Texts());
    EXPECT_EQ(waitLog, Lines({"W failed to turn res: Res online."}));
}

} // namespace
