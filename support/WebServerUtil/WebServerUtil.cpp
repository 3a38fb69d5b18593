#include "WebServerUtil.h"

#include "SiteLookup.h"

#include "common/Files.h"

#include <string>

namespace {

// No real configuration comes near; a file beyond it is not read.
const LONGLONG MaxFileSize = LONGLONG{256} * 1024 * 1024;

// False when the file does not exist. Empty `bytes` when it exists but cannot be read.
bool ReadFileBytes(const std::wstring& path, std::string& bytes) {
    try {
        const common::Handle file = common::OpenForReading(path);
        LARGE_INTEGER size = {};
        if (GetFileSizeEx(file.get(), &size) && size.QuadPart <= MaxFileSize) {
            bytes = common::ReadToEnd(file, path);
        }
        return true;
    } catch (const common::FileError& error) {
        return error.Code() != ERROR_FILE_NOT_FOUND && error.Code() != ERROR_PATH_NOT_FOUND;
    }
}

int FindSite(const std::wstring& homeDir) {
    wchar_t system[MAX_PATH];
    const UINT length = GetSystemDirectoryW(system, MAX_PATH);
    if (length == 0 || length >= MAX_PATH) {
        return -1;
    }
    const std::wstring folder = std::wstring(system, length) + L"\\inetsrv\\";
    std::string bytes;
    if (ReadFileBytes(folder + L"config\\applicationHost.config", bytes)) {
        return FindSiteOfFolder(bytes, SiteFileForm::ApplicationHost, homeDir);
    }
    if (ReadFileBytes(folder + L"MetaBase.xml", bytes)) {
        return FindSiteOfFolder(bytes, SiteFileForm::MetaBase, homeDir);
    }
    return -1;
}

} // namespace

CWebServer::CWebServer(const wchar_t* homeDir) : m_serverType(ServerTypeNone), m_siteId(-1) {
    if (homeDir == nullptr || *homeDir == L'\0') {
        return;
    }
    try {
        m_siteId = FindSite(homeDir);
    } catch (...) {
        // Out of memory counts as "not found": callers have no handler here.
    }
    if (m_siteId >= 0) {
        m_serverType = ServerTypeIIS;
    }
}

CWebServer::~CWebServer() = default;

int CWebServer::GetServerType() {
    return m_serverType;
}

int CWebServer::GetIISSiteID() {
    return m_siteId;
}
