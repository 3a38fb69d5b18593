#include "PlatformTap.h"

#include <algorithm>

namespace harness {

PlatformTap::PlatformTap() {
    InstallTapTable(*this);
}

PlatformTap::~PlatformTap() {
    while (!m_calls.empty()) {
        m_calls.pop_back();
    }
    for (const HANDLE child : m_children) {
        CloseHandle(child);
    }
}

std::string PlatformTap::TakeJournal() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const std::string text = Lines(m_journal);
    m_journal.clear();
    return text;
}

std::size_t PlatformTap::CountCalls(const std::string& beginning) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return static_cast<std::size_t>(
        std::count_if(m_journal.begin(), m_journal.end(), [&beginning](const std::string& line) {
            return (line + "\n").compare(0, beginning.size(), beginning) == 0;
        }));
}

void PlatformTap::FailCall(const std::string& call, DWORD code, unsigned occurrence, FaultMode mode) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_faults.push_back({call, code, occurrence, mode, 0});
}

void PlatformTap::FailNthCall(unsigned n, FaultMode mode, DWORD code) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_sweepCount = 0;
    m_sweepAt = n;
    m_sweepMode = mode;
    m_sweepCode = code;
    m_fired.clear();
}

void PlatformTap::Install(std::unique_ptr<TappedCallBase> call) {
    m_calls.push_back(std::move(call));
}

bool PlatformTap::ShouldFail(const char* function, const std::string& text, DWORD* code) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (Fault& fault : m_faults) {
        if (fault.call != function && fault.call != text) {
            continue;
        }
        ++fault.seen;
        if (fault.mode == FaultMode::Once ? fault.seen == fault.occurrence : fault.seen >= fault.occurrence) {
            *code = fault.code;
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
    }
    return fails;
}

void PlatformTap::Record(const std::string& line) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_journal.push_back(line);
}

void PlatformTap::Label(const void* handle, const std::string& name) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_labels[handle] = name;
}

std::string PlatformTap::LabelOf(const void* handle) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_labels.find(handle);
    return !handle ? "NULL" : found == m_labels.end() ? "?" : found->second;
}

void PlatformTap::HandleOpened(HANDLE handle, const std::string& name) {
    Label(handle, name);
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_openHandles[handle] = name;
}

void PlatformTap::HandleClosed(HANDLE handle) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (handle != INVALID_HANDLE_VALUE && m_openHandles.erase(handle) == 0) {
        m_badCloses.push_back("handle " + std::to_string(reinterpret_cast<ULONG_PTR>(handle)));
    }
}

void PlatformTap::FileOpened(int file, const std::string& name) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_openFiles[file] = name;
}

void PlatformTap::FileClosed(int file) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_openFiles.erase(file) == 0) {
        m_badCloses.push_back("file " + std::to_string(file));
    }
}

std::string PlatformTap::OpenHandles() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<std::string> names;
    for (const auto& handle : m_openHandles) {
        names.push_back(handle.second);
    }
    for (const auto& file : m_openFiles) {
        names.push_back(file.second);
    }
    return Lines(names);
}

std::string PlatformTap::BadCloses() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return Lines(m_badCloses);
}

void PlatformTap::ForgetBadCloses() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_badCloses.clear();
}

void PlatformTap::WatchChild(HANDLE process) {
    HANDLE copy = nullptr;
    if (DuplicateHandle(GetCurrentProcess(), process, GetCurrentProcess(), &copy, 0, FALSE, DUPLICATE_SAME_ACCESS)) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_children.push_back(copy);
    }
}

size_t PlatformTap::LiveChildren() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<HANDLE> live;
    for (const HANDLE child : m_children) {
        if (WaitForSingleObject(child, 0) == WAIT_OBJECT_0) {
            CloseHandle(child);
        } else {
            live.push_back(child);
        }
    }
    m_children.swap(live);
    return m_children.size();
}

} // namespace harness
