// The environments of all processes of this session, as long as the object lives.
#ifndef ENVIRONMENTWATCH_H
#define ENVIRONMENTWATCH_H

#include <windows.h>

#include <atomic>
#include <set>
#include <string>
#include <thread>

class EnvironmentWatch {
public:
    explicit EnvironmentWatch(const std::wstring& sought);
    ~EnvironmentWatch();
    EnvironmentWatch(const EnvironmentWatch&) = delete;
    EnvironmentWatch& operator=(const EnvironmentWatch&) = delete;

    // Tells on standard error whose were read, and in whose the text was found, by the names of the programs.
    void Finish();

private:
    void LookAtNewOnes();
    bool LookAt(DWORD process, const std::wstring& program);

    std::wstring m_sought;
    std::set<DWORD> m_known; // those that live and were read
    std::set<std::wstring> m_read;
    std::set<std::wstring> m_found;
    std::atomic<bool> m_isFinished{false};
    std::thread m_thread;
};

#endif
