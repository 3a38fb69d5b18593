// The record of a plain server, which is this computer.
#include "clus_VirtualServerUtil.h"

#include "platform/ComputerName.h"
#include "platform/Log.h"
#include "settings/ProductSettings.h"
#include "virtualserver/HostSettings.h"
#include "virtualserver/RecordText.h"

CLUS_LOG_PLACE(VirtualServerUtil, 4);

using clus::ComputerName;
using clus::CopyText;
using clus::ProductRegistryKey;
using clus::ReadHomeDir;
using clus::RegistryKey;
using clus::RegistryTextCharacters;
using clus::ShortRegistryTextBytes;

bool CVirtualServerUtil::GetNormalServerInfo(CClusterVirtualServerInfo& info) {
    LOG_ENTER_AND_LEAVE(L"CVirtualServerUtil::GetNormalServerInfo()");
    {
        const RegistryKey key(ProductRegistryKey().c_str(), KEY_ALL_ACCESS);
        if (key) {
            wchar_t text[RegistryTextCharacters] = {};
            if (!ReadHomeDir(key, text)) {
                return false;
            }
            CopyText(info.m_wsDataPath, text);

            if (key.ReadText(L"ServerIP", text, RegistryTextCharacters, ShortRegistryTextBytes)) {
                CopyText(info.m_wsServerIP, text);
                LOG_INFO(L"Got server IP from registry: %s", text);
            } else {
                LOG_ERROR(L"Cannot get ServerIP, assume 127.0.0.1");
                CopyText(info.m_wsServerIP, L"127.0.0.1");
            }

            if (key.ReadText(L"SERVERGUID", text, RegistryTextCharacters, ShortRegistryTextBytes)) {
                CopyText(info.m_wsServerGUID, text);
                LOG_INFO(L"Got server guid from registry: %s", text);
            } else {
                LOG_ERROR(L"Cannot get SERVER GUID, assume NULL server guid");
                CopyText(info.m_wsServerGUID, L"00000000-0000-0000-0000-000000000000");
            }
        }
    }
    ComputerName computer;
    if (!computer.Read()) {
        LOG_ERROR(L"CServerPathLocatorBase::Init(), cannot get computer name");
        return false;
    }
    CopyText(info.m_wsServerName, computer.c_str());
    info.m_nSmtpInstanceCount = -1;
    info.m_bIsOnline = true;

    const std::wstring dataRoot = GetDataRootPath();
    LOG_INFO(L"Root data path got: %s", dataRoot.c_str());
    if (dataRoot.empty()) {
        LOG_INFO(L"Skip update Root data path.");
    } else {
        LOG_INFO(L"Root data path.");
        CopyText(info.m_wsDataPath, dataRoot.c_str());
    }
    LOG_INFO(L"Got Normal Server: %s, %s, %s", info.m_wsServerName, info.m_wsDataPath, info.m_wsServerGUID);
    return true;
}
