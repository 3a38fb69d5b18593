#include "Stream.h"

#include "StrayOutput.h"
#include "Text.h"

#include "picture/TerminalPage.h"

#include "common/Text.h"

#include <algorithm>

namespace {

const size_t LargestPiece = 16384; // older consoles refuse larger ones

const WORD Foreground = FOREGROUND_RED | FOREGROUND_GREEN | FOREGROUND_BLUE | FOREGROUND_INTENSITY;

// Not left to the console: those before Windows 10 show such sequences as they are.
WORD AttributesOf(const std::string& style, WORD plain) {
    const WORD others = plain & static_cast<WORD>(~Foreground);
    if (style == Styles::Bold) {
        return plain | FOREGROUND_INTENSITY;
    }
    if (style == Styles::Reverse) {
        return static_cast<WORD>((plain & 0x0F) << 4 | (plain & 0xF0) >> 4);
    }
    return style == Styles::Red      ? others | FOREGROUND_RED | FOREGROUND_INTENSITY
           : style == Styles::Green  ? others | FOREGROUND_GREEN | FOREGROUND_INTENSITY
           : style == Styles::Yellow ? others | FOREGROUND_RED | FOREGROUND_GREEN | FOREGROUND_INTENSITY
                                     : plain;
}

} // namespace

Stream::Stream(DWORD standardHandle) : m_handle(StrayOutput::Own(standardHandle)), m_isConsole(false) {
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
    return m_isConsole && text.find('\x1B') != std::string::npos ? WriteStyled(text) : WritePlain(text);
}

DWORD Stream::WriteStyled(const std::string& text) const {
    CONSOLE_SCREEN_BUFFER_INFO screen = {};
    if (!GetConsoleScreenBufferInfo(m_handle, &screen)) {
        return GetLastError();
    }
    DWORD code = ERROR_SUCCESS;
    for (size_t position = 0; position < text.size() && code == ERROR_SUCCESS;) {
        const size_t style = std::min(text.find('\x1B', position), text.size());
        code = WritePlain(text.substr(position, style - position));
        const size_t end = text.find('m', style);
        position = end == std::string::npos ? text.size() : end + 1;
        if (style < text.size()) {
            SetConsoleTextAttribute(m_handle, AttributesOf(text.substr(style, position - style), screen.wAttributes));
        }
    }
    SetConsoleTextAttribute(m_handle, screen.wAttributes);
    return code;
}

DWORD Stream::WritePlain(const std::string& text) const {
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
