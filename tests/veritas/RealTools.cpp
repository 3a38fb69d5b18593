#include "RealTools.h"

#include "ChildProcess.h"

namespace harness {

NamedEvent::NamedEvent(const std::wstring& name)
    : m_name(L"clusutil-" + std::to_wstring(GetCurrentProcessId()) + L"-" + name),
      m_event(CreateEventW(nullptr, TRUE, FALSE, m_name.c_str())) {
}

NamedEvent::~NamedEvent() {
    CloseHandle(m_event);
}

TestToolStarter::TestToolStarter(PlatformTap& tap) : m_tap(tap), m_former(tap.processes) {
    program = ProgramFolder() + L"vcs_test_tool.exe";
    m_tap.processes = this;
}

TestToolStarter::~TestToolStarter() {
    m_tap.processes = m_former;
}

BOOL TestToolStarter::Create(const CreateProcessArguments& arguments, LPPROCESS_INFORMATION process) {
    if (beforeStart) {
        beforeStart(arguments.commandLine);
    }
    const BOOL started = CreateProcessW(program.c_str(), arguments.commandLine, arguments.processAttributes,
                                        arguments.threadAttributes, arguments.inheritHandles, arguments.flags,
                                        arguments.environment, arguments.directory, arguments.startup, process);
    if (started) {
        m_tap.WatchChild(process->hProcess);
    }
    return started;
}

DWORD TestToolStarter::Wait(HANDLE process, DWORD milliseconds) {
    return WaitForSingleObject(process, milliseconds);
}

BOOL TestToolStarter::ExitCode(HANDLE process, LPDWORD code) {
    return GetExitCodeProcess(process, code);
}

RealToolTest::RealToolTest() : starter(Platform()) {
}

RealToolTest::~RealToolTest() {
    for (const std::wstring& variable : m_variables) {
        SetEnvironmentVariableW(variable.c_str(), nullptr);
    }
}

void RealToolTest::Act(const std::wstring& actions, const std::wstring& id) {
    const std::wstring variable = L"VCS_TEST_TOOL" + (id.empty() ? L"" : L"_" + id);
    m_variables.push_back(variable);
    SetEnvironmentVariableW(variable.c_str(), actions.c_str());
}

bool RealToolTest::RunOf(const std::wstring& id, Names& tokens) const {
    const NameValuePairList filter = {{L"Id", id}};
    tokens.clear();
    return cluster.EnumSystemNames(tokens, &filter);
}

} // namespace harness
