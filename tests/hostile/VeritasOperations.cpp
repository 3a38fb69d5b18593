// The VCS cluster.
#include "Operations.h"
#include "Platform.h"

#include <string>

namespace hostile {

namespace {

typedef std::vector<std::wstring> Names;

Chance& TheChance() {
    return TheAttack().chance;
}

const wchar_t* NameOrNull() {
    return TheChance().OneIn(20) ? nullptr : SomeName(TheChance());
}

NameValuePairList SomePairs() {
    NameValuePairList pairs;
    for (std::size_t count = TheChance().Below(4); count > 0; --count) {
        pairs.emplace_back(SomeName(TheChance()), SomeName(TheChance()));
    }
    if (TheChance().OneIn(40)) {
        pairs.emplace_back(L"Long", std::wstring(TheChance().Below(40000), L'x'));
    }
    return pairs;
}

int SomeTimeout() {
    return static_cast<int>(TheChance().Below(30000)) - 1000;
}

CVeritasVirtualServerInfo SomeServer() {
    CVeritasVirtualServerInfo info(SomeName(TheChance()), SomeName(TheChance()));
    info.sOnlineNode = SomeName(TheChance());
    info.sDataPath = TheChance().OneIn(2) ? L"F:\\data\\" : SomeName(TheChance());
    info.sMountResName = SomeName(TheChance());
    info.bGroupOnline = TheChance().OneIn(2);
    info.nDelayAfterOnline = static_cast<int>(TheChance().Below(60)) - 1;
    return info;
}

void Read(const Names& names) {
    for (const std::wstring& name : names) {
        Touch(name.c_str());
    }
}

template <bool (CVeritasCluster::*list)(Names&, const NameValuePairList*) const> void List(SharedObjects& shared) {
    const NameValuePairList filter = SomePairs();
    Names names;
    (shared.veritas.*list)(names, TheChance().OneIn(2) ? &filter : nullptr);
    Read(names);
}

void ReadRun(const CVeritasToolRun& run, void*) {
    Touch(run.commandLine);
    if (run.output) {
        Touch(run.output, (run.cchOutput + 1) * sizeof(wchar_t));
    }
    if (TheChance().OneIn(4)) {
        Reenter();
    }
}

} // namespace

const std::vector<Operation>& VeritasOperations() {
    static const std::vector<Operation> operations = {
        {"SetVeritasToolRunCallback",
         [](SharedObjects&) { SetVeritasToolRunCallback(TheChance().OneIn(2) ? &ReadRun : nullptr, nullptr); }},
        {"SwitchToReadWriteMode", [](SharedObjects& shared) { shared.veritas.SwitchToReadWriteMode(); }},
        {"SwitchToReadOnlyMode", [](SharedObjects& shared) { shared.veritas.SwitchToReadOnlyMode(); }},
        {"EnumSystemNames", &List<&CVeritasCluster::EnumSystemNames>},
        {"EnumGroupNames", &List<&CVeritasCluster::EnumGroupNames>},
        {"EnumResourceNamesW", &List<&CVeritasCluster::EnumResourceNamesW>},
        {"EnumResDependencies",
         [](SharedObjects& shared) {
             Names parents;
             Names children;
             shared.veritas.EnumResDependencies(NameOrNull(), parents, children);
             Read(parents);
             Read(children);
         }},
        {"GetResourceAttribute",
         [](SharedObjects& shared) {
             std::wstring value;
             shared.veritas.GetResourceAttribute(NameOrNull(), NameOrNull(), value);
             Touch(value.c_str());
         }},
        {"GetGroupOnlineNode",
         [](SharedObjects& shared) {
             bool online = false;
             std::wstring system;
             shared.veritas.GetGroupOnlineNode(NameOrNull(), online, system, TheChance().OneIn(2));
         }},
        {"FindGroupNameByVirtualServerName",
         [](SharedObjects& shared) {
             std::wstring group;
             shared.veritas.FindGroupNameByVirtualServerName(NameOrNull(), group);
         }},
        {"GetGenericServiceResNameByServiceName",
         [](SharedObjects& shared) {
             std::wstring name;
             shared.veritas.GetGenericServiceResNameByServiceName(NameOrNull(), NameOrNull(), name);
         }},
        {"GetThirdPartyClusterType", [](SharedObjects& shared) { shared.veritas.GetThirdPartyClusterType(); }},
        {"CreateResource",
         [](SharedObjects& shared) {
             shared.veritas.CreateResource(NameOrNull(), NameOrNull(), NameOrNull(), NameOrNull(), SomePairs());
         }},
        {"LinkResource", [](SharedObjects& shared) { shared.veritas.LinkResource(NameOrNull(), NameOrNull()); }},
        {"DeleteResource", [](SharedObjects& shared) { shared.veritas.DeleteResource(NameOrNull()); }},
        {"TurnOnOrOffResource",
         [](SharedObjects& shared) {
             shared.veritas.TurnOnOrOffResource(NameOrNull(), NameOrNull(), TheChance().OneIn(2));
         }},
        {"EncryptVeritasPassword",
         [](SharedObjects& shared) {
             std::wstring encrypted;
             shared.veritas.EncryptVeritasPassword(NameOrNull(), encrypted);
         }},
        {"CollectEVSInfo",
         [](SharedObjects& shared) {
             CVeritasVirtualServerInfo info;
             shared.veritas.CollectEVSInfo(NameOrNull(), info);
         }},
        {"CollectExchangeEVSInfo of all",
         [](SharedObjects& shared) {
             std::vector<CVeritasVirtualServerInfo> infos;
             shared.veritas.CollectExchangeEVSInfo(infos);
         }},
        {"CollectExchangeEVSInfo of a group",
         [](SharedObjects& shared) {
             CVeritasVirtualServerInfo info;
             shared.veritas.CollectExchangeEVSInfo(NameOrNull(), info);
         }},
        {"FindMostParentMountVResourceNameInGroup",
         [](SharedObjects& shared) {
             Names mounts;
             shared.veritas.FindMostParentMountVResourceNameInGroup(NameOrNull(), mounts);
         }},
        {"GetKOVAShareDiskResNameByRegRepName",
         [](SharedObjects& shared) {
             std::wstring mount;
             shared.veritas.GetKOVAShareDiskResNameByRegRepName(NameOrNull(), NameOrNull(), mount);
         }},
        {"FindExistingKOVARegRepResName",
         [](SharedObjects& shared) {
             std::wstring name;
             shared.veritas.FindExistingKOVARegRepResName(NameOrNull(), name);
         }},
        {"CreateKOVAResources",
         [](SharedObjects& shared) {
             shared.veritas.CreateKOVAResources(SomeServer(), TheChance().OneIn(2), TheChance().OneIn(2), NameOrNull(),
                                                NameOrNull(), NameOrNull());
         }},
        {"KOVAResourcesInSwitchOnOrder",
         [](SharedObjects&) {
             Read(CVeritasCluster::KOVAResourcesInSwitchOnOrder(SomeServer(), TheChance().OneIn(2),
                                                                TheChance().OneIn(2)));
         }},
        {"CheckIfGenericServiceResourceExistsAndTurnItOn",
         [](SharedObjects& shared) {
             shared.veritas.CheckIfGenericServiceResourceExistsAndTurnItOn(NameOrNull(), NameOrNull(), NameOrNull(),
                                                                           SomeTimeout());
         }},
        {"CreateQAVResourceAndTurnItOn",
         [](SharedObjects& shared) { shared.veritas.CreateQAVResourceAndTurnItOn(NameOrNull(), SomeTimeout()); }},
        {"CreateRemoteConfigResourceAndTurnItOn",
         [](SharedObjects& shared) {
             shared.veritas.CreateRemoteConfigResourceAndTurnItOn(NameOrNull(), NameOrNull(), NameOrNull(),
                                                                  NameOrNull(), SomeTimeout());
         }},
        {"CollectKOVAResNames",
         [](SharedObjects& shared) {
             Names names;
             shared.veritas.CollectKOVAResNames(names);
         }},
        {"CollectKOVAResNames of a group",
         [](SharedObjects& shared) {
             Names names;
             shared.veritas.CollectKOVAResNames(NameOrNull(), names);
         }},
    };
    return operations;
}

} // namespace hostile
