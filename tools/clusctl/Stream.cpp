#include "Stream.h"

#include "Text.h"

#include "common/Text.h"

#include <algorithm>

namespace {

const size_t LargestPiece = 16384; // older consoles refuse larger ones

} // namespace

Stream::Stream(DWORD standardHandle) : m_handle(GetStdHandle(standardHandle)), m_isConsole(false) {
    DWORD mode = 0;
    m_isConsole = GetConsoleMode(m_handle, &mode) != FALSE;
}

bool Stream::IsConsole() const {
    return m_isConsole;
}

DWORD Stream::Write(const std::string& text) const {
    if (m_handle == nullptr || m_handle == INVALID_HANDLE_VALUE) {
        return ERROR_INVALID_HANDLE;
    }
    const std::wstring wide = m_isConsole ? common::ToUtf16(text) : std::wstring();
    const size_t length = m_isConsole ? wide.size() : text.size();
    size_t done = 0;
    while (done < length) {
        const auto piece = static_cast<DWORD>(std::min(length - done, LargestPiece));
        DWORD written = 0;
        const BOOL result = m_isConsole ? WriteConsoleW(m_handle, wide.data() + done, piece, &written, nullptr)
                                        : WriteFile(m_handle, text.data() + done, piece, &written, nullptr);
        if (!result) {
            return GetLastError();
        }
        if (written == 0) {
            return ERROR_HANDLE_DISK_FULL;
        }
        done += written;
    }
    return ERROR_SUCCESS;
}
