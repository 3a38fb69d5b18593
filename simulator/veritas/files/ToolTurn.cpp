#include "ToolTurn.h"

#include "common/Files.h"

namespace vcssim {

namespace {

const int MostAttempts = 100;
const DWORD Pause = 3; // milliseconds

common::Handle MakeSign(const std::wstring& path) {
    for (int attempt = 1;; ++attempt) {
        common::Handle sign(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS,
                                        FILE_ATTRIBUTE_NORMAL | FILE_FLAG_DELETE_ON_CLOSE, nullptr));
        const DWORD code = GetLastError();
        if (sign) {
            return sign;
        }
        // Somebody may be looking at the last one, which is denied while it is being deleted.
        if (attempt == MostAttempts || (code != ERROR_ACCESS_DENIED && code != ERROR_SHARING_VIOLATION)) {
            throw common::FileError(path, "locked", code);
        }
        Sleep(Pause);
    }
}

} // namespace

ToolTurn::ToolTurn(const ClusterFiles& files) : m_lock(files.Lock()), m_turn(m_lock) {
    if (!m_turn) {
        throw common::FileError(files.Lock(), "locked", m_turn.Code());
    }
    m_sign = MakeSign(files.Lock());
}

} // namespace vcssim
