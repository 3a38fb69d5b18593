// The virtual servers and the product's resources.
#include "Operations.h"
#include "Platform.h"

#include <list>
#include <string>

namespace hostile {

namespace {

typedef CClusterVirtualServerInfo Info;

Chance& TheChance() {
    return TheAttack().chance;
}

const wchar_t* NameOrNull() {
    return TheChance().OneIn(20) ? nullptr : SomeName(TheChance());
}

// A record whose end is a guarded block's, and that its own texts must not leave unterminated.
class Record {
public:
    Record() : m_info(std::make_unique<Info>()) {
    }
    ~Record() {
        for (const wchar_t* text :
             {m_info->m_wsServerIP, m_info->m_wsServerName, m_info->m_wsDataPath, m_info->m_wsServerGUID}) {
            Touch(text);
        }
        if (m_info->m_nSmtpInstanceCount > Info::MaxSmtpInstances) {
            TheAttack().Fail("a record counts more instances than it has room for");
        }
    }
    Record(const Record&) = delete;
    Record& operator=(const Record&) = delete;

    Info& Get() {
        return *m_info;
    }

private:
    std::unique_ptr<Info> m_info;
};

// Buffer and count as a caller may have them.
template <typename List> void ListServers(List list) {
    std::vector<Info> records(TheChance().Below(5));
    int count = static_cast<int>(records.size());
    const bool hasBuffer = !records.empty();
    const int given = count;
    const int result = list(hasBuffer ? records.data() : nullptr, &count);
    if (result == CVirtualServerUtil::ENUM_VS_RESULT_SUCCESS && count > given) {
        TheAttack().Fail("more records than there is room for");
    }
    if (result == CVirtualServerUtil::ENUM_VS_RESULT_FAIL && count != given) {
        TheAttack().Fail("a count is changed by a failure");
    }
    for (const Info& record : records) {
        Touch(record.m_wsServerName);
    }
}

// Whole seconds: a time that is no multiple of the interval goes on for days.
DWORD SomeTimeout() {
    return 1000 * static_cast<DWORD>(TheChance().Below(100));
}

} // namespace

const std::vector<Operation>& ServerOperations() {
    static const std::vector<Operation> operations = {
        {"CVirtualServerUtil", [](SharedObjects&) { const ServerUtil servers; }},
        {"EnumServersOnCurrentNode",
         [](SharedObjects& shared) {
             ListServers(
                 [&](Info* records, int* count) { return shared.servers.EnumServersOnCurrentNode(records, count); });
         }},
        {"EnumServersOnCurrentNodeEx",
         [](SharedObjects& shared) {
             std::list<std::wstring> leftOut;
             ListServers([&](Info* records, int* count) {
                 return shared.servers.EnumServersOnCurrentNodeEx(records, count, leftOut);
             });
         }},
        {"QueryServerInfo",
         [](SharedObjects& shared) {
             CClusterVirtualServerLookupRequest request;
             request.m_wsNameOrIP = SomeName(TheChance());
             Record record;
             shared.servers.QueryServerInfo(request, record.Get());
         }},
        {"IsTheSameVirtualServer",
         [](SharedObjects& shared) {
             Record record;
             wcscpy(record.Get().m_wsServerName, SomeName(TheChance()));
             shared.servers.IsTheSameVirtualServer(NameOrNull(), record.Get());
         }},
        {"GetNormalServerInfo",
         [](SharedObjects&) {
             Record record;
             CVirtualServerUtil::GetNormalServerInfo(record.Get());
         }},
        {"GetVirtualServerInfo",
         [](SharedObjects& shared) {
             Record record;
             CVirtualServerUtil::GetVirtualServerInfo(shared.resources[TheChance().Below(4)].GetResourceHandle(),
                                                      record.Get(), TheChance().OneIn(2), TheChance().OneIn(2));
         }},
        {"GetSMTPInstanceInfo",
         [](SharedObjects&) {
             Record record;
             CVirtualServerUtil::GetSMTPInstanceInfo(NameOrNull(), record.Get());
         }},
        {"AtLeastOneExchangeResourceDLLOnlineOnCurrentNode",
         [](SharedObjects&) { CVirtualServerUtil::AtLeastOneExchangeResourceDLLOnlineOnCurrentNode(); }},
        {"CreateKOVAResource",
         [](SharedObjects&) {
             CVirtualServerUtil::CreateKOVAResource(NameOrNull(), NameOrNull(), NameOrNull(), NameOrNull(),
                                                    TheChance().OneIn(2) ? L"" : NameOrNull(),
                                                    static_cast<int>(TheChance().Below(4)));
         }},
        {"TurnOnKOVAResourceOnCurrentNode",
         [](SharedObjects&) {
             CVirtualServerUtil::TurnOnKOVAResourceOnCurrentNode(NameOrNull(), TheChance().OneIn(2), SomeTimeout());
         }},
        {"TurnOffKOVAResourceOnCurrentNode",
         [](SharedObjects&) {
             CVirtualServerUtil::TurnOffKOVAResourceOnCurrentNode(NameOrNull(), TheChance().OneIn(2), SomeTimeout());
         }},
        {"DeleteKOVAResurceOnCurrentNode",
         [](SharedObjects&) { CVirtualServerUtil::DeleteKOVAResurceOnCurrentNode(NameOrNull()); }},
        {"FindKOVAResources",
         [](SharedObjects&) {
             std::list<std::wstring> names;
             CVirtualServerUtil::FindKOVAResources(NameOrNull(), names);
         }},
        {"RestartSmtpVirtualServerInstanceResourceOnCurrentNode",
         [](SharedObjects&) { CVirtualServerUtil::RestartSmtpVirtualServerInstanceResourceOnCurrentNode(); }},
        {"FindSmtpVirtualServerInstanceResourceOnCurrentNode",
         [](SharedObjects&) {
             std::wstring name;
             CVirtualServerUtil::FindSmtpVirtualServerInstanceResourceOnCurrentNode(name);
         }},
        {"CheckIsClusterByRegKey", [](SharedObjects&) { CVirtualServerUtil::CheckIsClusterByRegKey(); }},
        {"GetProductRegistryKey", [](SharedObjects&) { Touch(CVirtualServerUtil::GetProductRegistryKey().c_str()); }},
        {"GetClusterQuorumModeByRegKey", [](SharedObjects&) { CVirtualServerUtil::GetClusterQuorumModeByRegKey(); }},
        {"GetDataRootPath", [](SharedObjects&) { Touch(CVirtualServerUtil::GetDataRootPath().c_str()); }},
        {"GetHomeDir",
         [](SharedObjects&) {
             std::wstring homeDir;
             ServerUtil::GetHomeDir(homeDir);
         }},
        {"ConcatCCRDataPath",
         [](SharedObjects&) {
             std::wstring path;
             CVirtualServerUtil::ConcatCCRDataPath(NameOrNull(), NameOrNull(), path);
         }},
        {"QueryIISSiteID", [](SharedObjects&) { CVirtualServerUtil::QueryIISSiteID(); }},
    };
    return operations;
}

} // namespace hostile
