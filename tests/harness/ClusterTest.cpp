#include "ClusterTest.h"

namespace harness {

namespace {

std::string CurrentTestName() {
    const ::testing::TestInfo* info = ::testing::UnitTest::GetInstance()->current_test_info();
    return info ? std::string(info->test_suite_name()) + "." + info->name() : "a program";
}

} // namespace

LibraryTest::LibraryTest()
    : m_watchdog(CurrentTestName()),
      m_computerNamePatch(FindImports(LibraryModule(), "kernel32.dll", "GetComputerNameW"),
                          [this](LPWSTR text, LPDWORD cch) { return ComputerName(text, cch); }) {
}

LibraryTest::~LibraryTest() = default;

IsolatedRegistry& LibraryTest::Registry() {
    if (!m_registry) {
        m_registry = std::make_unique<IsolatedRegistry>();
        m_platform.localMachine = m_registry->Root();
    }
    return *m_registry;
}

void LibraryTest::TearDown() {
    while (!m_atEnd.empty()) {
        const std::function<void()> action = std::move(m_atEnd.back());
        m_atEnd.pop_back();
        action();
    }
    Audit();
}

BOOL LibraryTest::ComputerName(LPWSTR text, LPDWORD cch) const {
    if (m_computerName.size() >= *cch) {
        *cch = static_cast<DWORD>(m_computerName.size() + 1);
        SetLastError(ERROR_BUFFER_OVERFLOW);
        return FALSE;
    }
    std::wmemcpy(text, m_computerName.c_str(), m_computerName.size() + 1);
    *cch = static_cast<DWORD>(m_computerName.size());
    return TRUE;
}

void LibraryTest::Audit() {
    EXPECT_EQ(m_heap.LiveBlocks(), 0u) << "local heap blocks left";
    EXPECT_EQ(m_heap.BadFrees(), 0u) << "frees of blocks that the library did not hold";
    EXPECT_EQ(m_platform.OpenKeys(), 0) << "registry keys left open";
    EXPECT_EQ(m_platform.WinsockStarts(), 0) << "Winsock starts not balanced";
    EXPECT_EQ(m_platform.OpenHandles(), "") << "handles left open";
    EXPECT_EQ(m_platform.BadCloses(), "") << "closes of what was not open";
    EXPECT_EQ(m_log.Misuse(), "") << "log lines with a wrong module handle, line or source tag";
}

ClusterTest::ClusterTest() {
    m_simulator.Reset();
    m_simulator.UseManualClock();
    Platform().onSleep = [this](DWORD milliseconds) { m_simulator.AdvanceClock(milliseconds); };
    if (m_simulator.Version() != 1) {
        throw std::runtime_error("another version of the simulator's control interface");
    }
}

ClusterTest::~ClusterTest() {
    m_simulator.Reset();
}

void ClusterTest::Load(const ModelBuilder& model) {
    LoadJson(model.Json());
}

void ClusterTest::LoadJson(const std::string& json) {
    m_simulator.Reset();
    m_simulator.UseManualClock();
    m_simulator.LoadModel(json);
    m_simulator.ClearJournal();
    Forget();
}

void ClusterTest::Audit() {
    LibraryTest::Audit();
    for (const char* kind : {"cluster", "resource", "group", "node", "enum"}) {
        EXPECT_EQ(m_simulator.OpenHandles(kind), 0u) << kind << " handles left open";
    }
    EXPECT_EQ(m_simulator.BadHandleCalls(), m_badHandleCalls) << "calls with handles that were not open";
}

} // namespace harness
