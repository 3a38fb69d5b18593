// Real processes for the library's runs: every command starts vcs_test_tool.exe, which does what the test says.
#ifndef REALTOOLS_H
#define REALTOOLS_H

#include "VeritasTest.h"

#include <functional>
#include <map>
#include <string>

namespace harness {

// A named event that a tool can wait for or set.
class NamedEvent {
public:
    explicit NamedEvent(const std::wstring& name);
    ~NamedEvent();
    NamedEvent(const NamedEvent&) = delete;
    NamedEvent& operator=(const NamedEvent&) = delete;

    const std::wstring& Name() const {
        return m_name;
    }
    void Set() const {
        SetEvent(m_event);
    }
    bool Wait(DWORD milliseconds) const {
        return WaitForSingleObject(m_event, milliseconds) == WAIT_OBJECT_0;
    }

private:
    std::wstring m_name;
    HANDLE m_event;
};

// Passes a start on to the platform as the library asked for it, but for the program: whatever tools are installed
// beside the test, the test tool runs.
class TestToolStarter : public ProcessStandIn {
public:
    explicit TestToolStarter(PlatformTap& tap);
    ~TestToolStarter() override;

    std::wstring program;                                 // a path
    std::function<void(const std::wstring&)> beforeStart; // gets the command line

    BOOL Create(const CreateProcessArguments& arguments, LPPROCESS_INFORMATION process) override;
    DWORD Wait(HANDLE process, DWORD milliseconds) override;
    BOOL ExitCode(HANDLE process, LPDWORD code) override;

private:
    PlatformTap& m_tap;
    ProcessStandIn* m_former;
};

class RealToolTest : public VeritasTest {
protected:
    RealToolTest();
    ~RealToolTest() override;

    // What the tool does from now on (see TestTool.cpp); with an id only when its command line has it: RunOf(id).
    void Act(const std::wstring& actions, const std::wstring& id = L"");

    // The tokens printed by a tool with that id; false when the run failed.
    bool RunOf(const std::wstring& id, Names& tokens) const;

    TestToolStarter starter;

private:
    std::vector<std::wstring> m_variables;
};

} // namespace harness

#endif
