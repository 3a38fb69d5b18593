// A lock that its owner may enter again.
#ifndef CLUS_PLATFORM_CRITICALSECTION_H
#define CLUS_PLATFORM_CRITICALSECTION_H

#include <winsock2.h>
#include <windows.h>

namespace clus {

class CriticalSection {
public:
    CriticalSection() {
        InitializeCriticalSection(&m_section);
    }
    ~CriticalSection() {
        DeleteCriticalSection(&m_section);
    }
    CriticalSection(const CriticalSection&) = delete;
    CriticalSection& operator=(const CriticalSection&) = delete;

    void Enter() {
        EnterCriticalSection(&m_section);
    }
    void Leave() {
        LeaveCriticalSection(&m_section);
    }

private:
    CRITICAL_SECTION m_section;
};

class CriticalSectionGuard {
public:
    explicit CriticalSectionGuard(CriticalSection& section) : m_section(section) {
        m_section.Enter();
    }
    ~CriticalSectionGuard() {
        m_section.Leave();
    }
    CriticalSectionGuard(const CriticalSectionGuard&) = delete;
    CriticalSectionGuard& operator=(const CriticalSectionGuard&) = delete;

private:
    CriticalSection& m_section;
};

} // namespace clus

#endif
