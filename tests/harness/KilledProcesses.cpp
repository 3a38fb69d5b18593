#include "KilledProcesses.h"

#include "common/Environment.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cwchar>

namespace harness {

namespace {

int WantedKills(int usual) {
    const int named = _wtoi(common::EnvironmentVariable(L"CLUSUTIL_KILLS").c_str());
    return named > 0 ? named : usual;
}

} // namespace

KilledProcesses::KilledProcesses(const Starter& start, int usual) : m_start(start), m_wanted(WantedKills(usual)) {
    for (Process& process : m_processes) {
        Start(process);
    }
}

KilledProcesses::~KilledProcesses() {
    std::printf("killed: %d processes\n", m_count); // scripts/sweep.sh adds them up
}

void KilledProcesses::Start(Process& process) {
    process.number = std::to_wstring(1000 + m_started++ % 1000).substr(1);
    process.child = m_start(process.number);
}

std::wstring KilledProcesses::KillOne(DWORD milliseconds) {
    m_killed = &m_processes[static_cast<std::size_t>(Random(static_cast<int>(m_processes.size())))];
    EXPECT_TRUE(m_killed->child->RunsFor(milliseconds)) << "it ended by itself";
    m_killed->child->Stop();
    ++m_count;
    return m_killed->number;
}

void KilledProcesses::StartAnother() {
    Start(*m_killed);
}

std::array<std::wstring, 8> KilledProcesses::StopAll() {
    std::array<std::wstring, 8> numbers;
    for (std::size_t i = 0; i < m_processes.size(); ++i) {
        m_processes[i].child->Stop();
        numbers[i] = m_processes[i].number;
    }
    return numbers;
}

} // namespace harness
