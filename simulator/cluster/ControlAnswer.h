// How the control functions give their answers: into the caller's buffer, or telling how large that has to be.
#ifndef CLUSSIM_CONTROLANSWER_H
#define CLUSSIM_CONTROLANSWER_H

#include "Call.h"
#include "PropertyLists.h"

#include <cstdio>
#include <cstring>
#include <string>

namespace clussim {

// "0x01000029": what faults call a control code.
inline std::wstring ControlText(DWORD code) {
    wchar_t text[16];
    _snwprintf(text, 16, L"0x%08lx", code);
    return text;
}

class ControlAnswer {
public:
    ControlAnswer(Call& call, void* out, DWORD cbOut, DWORD* cbReturned)
        : m_call(call), m_out(out), m_cbOut(cbOut), m_cbReturned(cbReturned) {
    }

    // Ends the call with a code and no answer; ERROR_SUCCESS of what has none.
    DWORD Fail(Code code) const {
        return Return(code, 0);
    }

    // Ends the call with the bytes. A probe without a buffer may succeed.
    DWORD Give(const Bytes& bytes, bool succeedsAsProbe = false) const {
        const auto cb = static_cast<DWORD>(bytes.size());
        if (!m_out || m_cbOut < cb) {
            const bool isGood = succeedsAsProbe && !m_out && m_cbOut == 0;
            return Return(isGood ? static_cast<Code>(ERROR_SUCCESS) : static_cast<Code>(ERROR_MORE_DATA), cb);
        }
        std::memcpy(m_out, bytes.data(), cb);
        return Return(ERROR_SUCCESS, cb);
    }

private:
    DWORD Return(Code code, DWORD cb) const {
        if (m_cbReturned) {
            *m_cbReturned = cb;
        }
        return m_call.Return(code);
    }

    Call& m_call;
    void* const m_out;
    const DWORD m_cbOut;
    DWORD* const m_cbReturned;
};

} // namespace clussim

#endif
