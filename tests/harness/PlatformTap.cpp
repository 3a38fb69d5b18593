#include "PlatformTap.h"

namespace harness {

PlatformTap::PlatformTap() {
    InstallTapTable(*this);
}

PlatformTap::~PlatformTap() {
    while (!m_calls.empty()) {
        m_calls.pop_back();
    }
}

std::string PlatformTap::TakeJournal() {
    const std::string text = Lines(m_journal);
    m_journal.clear();
    return text;
}

void PlatformTap::FailCall(const std::string& call, DWORD code, unsigned occurrence, FaultMode mode) {
    m_faults.push_back({call, code, occurrence, mode, 0});
}

void PlatformTap::FailNthCall(unsigned n, FaultMode mode, DWORD code) {
    m_sweepCount = 0;
    m_sweepAt = n;
    m_sweepMode = mode;
    m_sweepCode = code;
    m_fired.clear();
}

void PlatformTap::Install(std::unique_ptr<TappedCallBase> call) {
    m_calls.push_back(std::move(call));
}

bool PlatformTap::ShouldFail(const char* function, const std::string& text, DWORD* code, FaultMode* mode) {
    for (Fault& fault : m_faults) {
        if (fault.call != function && fault.call != text) {
            continue;
        }
        ++fault.seen;
        if (fault.mode == FaultMode::Once ? fault.seen == fault.occurrence : fault.seen >= fault.occurrence) {
            *code = fault.code;
            *mode = fault.mode;
            return true;
        }
    }
    ++m_sweepCount;
    const bool fails =
        m_sweepAt != 0 && (m_sweepMode == FaultMode::Once ? m_sweepCount == m_sweepAt : m_sweepCount >= m_sweepAt);
    if (fails) {
        if (m_fired.empty()) {
            m_fired = text;
            OnFirstFault();
        }
        *code = m_sweepCode;
        *mode = m_sweepMode;
    }
    return fails;
}

void PlatformTap::Record(const std::string& line) {
    m_journal.push_back(line);
}

void PlatformTap::Label(const void* handle, const std::string& name) {
    m_labels[handle] = name;
}

std::string PlatformTap::LabelOf(const void* handle) const {
    const auto found = m_labels.find(handle);
    return !handle ? "NULL" : found == m_labels.end() ? "?" : found->second;
}

} // namespace harness
