#include "LibraryCalls.h"

#include <CallData.h>

namespace {

// What a call failed with: its own code, or the last-error value when it gives a handle or a state.
DWORD CodeOf(const recording::Call& call, recording::Slot result) {
    switch (call.result) {
    case recording::Result::Code:
        return static_cast<DWORD>(result);
    case recording::Result::Handle:
        return result == 0 ? GetLastError() : ERROR_SUCCESS;
    case recording::Result::State:
        return recording::ResultOf(call, result) == -1 ? GetLastError() : ERROR_SUCCESS;
    default:
        return ERROR_SUCCESS; // "no" is an answer
    }
}

bool IsFailure(DWORD code) {
    return code != ERROR_SUCCESS && code != ERROR_IO_PENDING && code != ERROR_MORE_DATA && code != ERROR_NO_MORE_ITEMS;
}

} // namespace

LibraryCalls::LibraryCalls()
    : m_thread(GetCurrentThreadId()), m_former(recording::Interception::Current()),
      m_interception(*this, {GetModuleHandleW(L"clusutil.dll")}) {
}

recording::Slot LibraryCalls::Answer(const recording::Call& call, const recording::Slot* slots,
                                     recording::Invocation invoke) {
    const recording::Slot result =
        m_former == nullptr ? invoke(call.original, slots) : m_former->Answer(call, slots, invoke);
    if (GetCurrentThreadId() == m_thread && call.effect != recording::Effect::Closes) {
        const DWORD lastError = GetLastError();
        const DWORD code = CodeOf(call, result);
        Note(call, slots, code);
        Done(call, slots, code);
        SetLastError(lastError);
    }
    return result;
}

void LibraryCalls::Done(const recording::Call& /*call*/, const recording::Slot* /*slots*/, DWORD /*code*/) {
}

void LibraryCalls::Note(const recording::Call& call, const recording::Slot* slots, DWORD code) {
    const DWORD failure = IsFailure(code) ? code : ERROR_SUCCESS;
    if (failure != ERROR_SUCCESS && recording::Changes(call, slots)) {
        m_refusedChange = failure;
    }
    const std::string name = call.name;
    if (name != "DeleteClusterResource") {
        m_last = {name, name == m_last.name ? m_last.inARow + 1 : 1, failure};
    }
}

BOOL LibraryCalls::StartProcess(const wchar_t* program, wchar_t* commandLine, DWORD flags, STARTUPINFOW* startup,
                                PROCESS_INFORMATION* information) {
    return m_former == nullptr ? CreateProcessW(program, commandLine, nullptr, nullptr, TRUE, flags, nullptr, nullptr,
                                                startup, information)
                               : m_former->StartProcess(program, commandLine, flags, startup, information);
}

BOOL LibraryCalls::ExitCodeOf(HANDLE process, DWORD* exitCode) {
    return m_former == nullptr ? GetExitCodeProcess(process, exitCode) : m_former->ExitCodeOf(process, exitCode);
}

std::wstring LibraryCalls::ComputerName() const {
    return m_former == nullptr ? std::wstring() : m_former->ComputerName();
}
