#include "StrayOutput.h"

#include <atomic>

namespace {

// Also the system's thread that reports a Ctrl+C asks.
std::atomic<const StrayOutput*> g_stray(nullptr);

} // namespace

StrayOutput::StrayOutput() : m_output(GetStdHandle(STD_OUTPUT_HANDLE)), m_errors(GetStdHandle(STD_ERROR_HANDLE)) {
    SECURITY_ATTRIBUTES inheritable = {sizeof(inheritable), nullptr, TRUE};
    m_nowhere = common::Handle(CreateFileW(L"NUL", GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, &inheritable,
                                           OPEN_EXISTING, 0, nullptr));
    g_stray = this;
    if (m_nowhere) {
        SetStdHandle(STD_OUTPUT_HANDLE, m_nowhere.get());
        SetStdHandle(STD_ERROR_HANDLE, m_nowhere.get());
    }
}

StrayOutput::~StrayOutput() {
    SetStdHandle(STD_OUTPUT_HANDLE, m_output);
    SetStdHandle(STD_ERROR_HANDLE, m_errors);
    g_stray = nullptr;
}

HANDLE StrayOutput::Own(DWORD standardHandle) {
    const StrayOutput* const stray = g_stray;
    if (stray == nullptr) {
        return GetStdHandle(standardHandle);
    }
    return standardHandle == STD_ERROR_HANDLE ? stray->m_errors : stray->m_output;
}
