#include "NewFile.h"

#include "Failure.h"
#include "Text.h"

#include "common/Files.h"
#include "common/TemporaryFolder.h"

#include <winsock2.h>
#include <windows.h>

namespace {

std::string CannotCreate(const std::wstring& path) {
    return "cannot create " + QuotedPath(path);
}

} // namespace

std::wstring FreshNameBeside(const std::wstring& path) {
    const size_t separator = path.find_last_of(L"\\/");
    const std::wstring folder = separator == std::wstring::npos ? std::wstring() : path.substr(0, separator + 1);
    const std::wstring name = folder + L"clusctl-" + std::to_wstring(GetCurrentProcessId());
    std::wstring fresh = name + L".new";
    for (int number = 2; common::FileExists(fresh); ++number) {
        fresh = name + L"-" + std::to_wstring(number) + L".new";
    }
    return fresh;
}

void RequireNoFile(const std::wstring& path) {
    if (common::FileExists(path)) {
        throw Failure(Errors::AlreadyExists, CannotCreate(path) + ": there is one already");
    }
}

void WriteNewFile(const std::wstring& path, const std::string& bytes) {
    const std::wstring fresh = FreshNameBeside(path);
    try {
        common::WriteWholeFile(fresh, bytes);
        if (!MoveFileW(fresh.c_str(), path.c_str())) {
            throw common::FileError(path, "created", GetLastError());
        }
    } catch (const common::FileError& error) {
        DeleteFileW(fresh.c_str());
        throw Failure::OfCode(CannotCreate(path), error.Code());
    }
}

void WriteNewFolder(const std::wstring& path, const std::vector<NewFolderFile>& files) {
    const std::string what = "cannot make the folder " + QuotedPath(path);
    if (common::FileExists(path)) {
        throw Failure(Errors::AlreadyExists, what + ": there is one already");
    }
    const std::wstring fresh = FreshNameBeside(path);
    if (!CreateDirectoryW(fresh.c_str(), nullptr)) {
        throw Failure::OfCode(what, GetLastError());
    }
    try {
        for (const NewFolderFile& file : files) {
            common::WriteWholeFile(fresh + L"\\" + file.name, file.bytes);
        }
        if (!MoveFileW(fresh.c_str(), path.c_str())) {
            throw common::FileError(path, "made", GetLastError());
        }
    } catch (const common::FileError& error) {
        common::RemoveFolder(fresh);
        throw Failure::OfCode(what, error.Code());
    }
}
