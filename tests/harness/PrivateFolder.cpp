#include "PrivateFolder.h"

#include <winsock2.h>
#include <windows.h>

#include <stdexcept>

namespace harness {

PrivateFolder::PrivateFolder() : TemporaryFolder(L"clusutil") {
    wchar_t former[MAX_PATH];
    const DWORD length = GetCurrentDirectoryW(MAX_PATH, former);
    if (length == 0 || length >= MAX_PATH || !SetCurrentDirectoryW(Path().c_str())) {
        throw std::runtime_error("cannot change the current directory");
    }
    m_formerDirectory = former;
}

PrivateFolder::~PrivateFolder() {
    SetCurrentDirectoryW(m_formerDirectory.c_str());
}

} // namespace harness
