// Settings of the product and its host.
#include "clus_VirtualServerUtil.h"

#include "platform/Log.h"
#include "settings/ProductSettings.h"
#include "virtualserver/HostSettings.h"

#include "CommonUtil.h"
#include "WebServerUtil.h"

CLUS_LOG_PLACE(VirtualServerUtil, 3);

using clus::ProductRegistryKey;
using clus::ReadHomeDir;
using clus::RegistryKey;
using clus::RegistryTextCharacters;

bool clus::ReadHomeDir(const RegistryKey& key, wchar_t (&text)[RegistryTextCharacters]) {
    if (!key.ReadText(L"HomeDir", text, RegistryTextCharacters, ShortRegistryTextBytes)) {
        LOG_ERROR(L"Cannot get home directory");
        return false;
    }
    return true;
}

bool CVirtualServerUtil::CheckIsClusterByRegKey() {
    LOG_ENTER_AND_LEAVE(L"CVirtualServerUtil::CheckIsClusterByRegKey()");
    return clus::IsClusterDeployment();
}

std::wstring CVirtualServerUtil::GetProductRegistryKey() {
    return ProductRegistryKey();
}

int CVirtualServerUtil::GetClusterQuorumModeByRegKey() {
    LOG_ENTER_AND_LEAVE(L"CVirtualServerUtil::GetClusterQuorumModeByRegKey()");
    DWORD mode = 0;
    const RegistryKey key(ProductRegistryKey().c_str(), KEY_READ);
    if (key && !key.ReadDword(L"ClusterQuorumMode", mode)) {
        LOG_WARNING(L"CVirtualServerUtil::GetClusterQuorumModeByRegKey(), cannot read key value ClusterQuorumMode!");
    }
    return static_cast<int>(mode);
}

std::wstring CVirtualServerUtil::GetDataRootPath() {
    return clus::DataRootPath();
}

bool CVirtualServerUtil::GetHomeDir(std::wstring& homeDir) {
    LOG_ENTER_AND_LEAVE(L"CVirtualServerUtil::GetHomeDir()");
    const RegistryKey key(ProductRegistryKey().c_str(), KEY_READ);
    if (!key) {
        return false;
    }
    wchar_t text[RegistryTextCharacters] = {};
    if (!ReadHomeDir(key, text)) {
        return false;
    }
    homeDir = text;
    return true;
}

int CVirtualServerUtil::QueryIISSiteID() {
    LOG_ENTER_AND_LEAVE(L"CVirtualServerUtil::CheckIsClusterByRegKey()"); // the text it shares since its first release
    const RegistryKey key(ProductRegistryKey().c_str(), KEY_READ);
    if (!key) {
        return -1;
    }
    wchar_t homeDir[RegistryTextCharacters] = {};
    if (!ReadHomeDir(key, homeDir)) {
        return -1;
    }
    const int iisServerType = 0;
    CWebServer webServer(homeDir);
    if (webServer.GetServerType() != iisServerType) {
        return -1;
    }
    const int siteId = webServer.GetIISSiteID();
    LOG_INFO(L"Got IIS web site id: %d", siteId);
    return siteId;
}

void CVirtualServerUtil::ConcatCCRDataPath(const wchar_t* dataRoot, const wchar_t* serverName, std::wstring& path) {
    path = NS_StringUtils::concatPath(NS_StringUtils::concatPath(dataRoot ? dataRoot : L"", L"CCRVSDB"),
                                      serverName ? serverName : L"");
}
