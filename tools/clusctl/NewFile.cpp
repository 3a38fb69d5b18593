#include "NewFile.h"

#include "Failure.h"
#include "Text.h"

#include "common/Files.h"

#include <winsock2.h>
#include <windows.h>

namespace {

std::string CannotCreate(const std::wstring& path) {
    return "cannot create " + QuotedPath(path);
}

} // namespace

void RequireNoFile(const std::wstring& path) {
    if (common::FileExists(path)) {
        throw Failure(Errors::AlreadyExists, CannotCreate(path) + ": there is one already");
    }
}

void WriteNewFile(const std::wstring& path, const std::string& bytes) {
    // A name of this process's own: several may write at once, and only one of them makes the file.
    const std::wstring fresh = path + L"." + std::to_wstring(GetCurrentProcessId()) + L".new";
    DWORD code = ERROR_SUCCESS;
    try {
        common::WriteWholeFile(fresh, bytes);
        code = MoveFileW(fresh.c_str(), path.c_str()) ? static_cast<DWORD>(ERROR_SUCCESS) : GetLastError();
    } catch (const common::FileError& error) {
        code = error.Code();
    }
    if (code != ERROR_SUCCESS) {
        DeleteFileW(fresh.c_str());
        throw Failure::OfCode(CannotCreate(path), code);
    }
}
