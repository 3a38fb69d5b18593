// What becomes of discovery when the n-th tool cannot be started, for every n.
#include "SetFailureFixture.h"

using namespace harness;

namespace {

TEST_F(VeritasSetFailure, CollectEVSInfoEndsAtAFailedQuery) {
    Online();
    const auto member = [this] {
        Server info;
        const bool result = cluster.CollectEVSInfo(L"MAIL1", info);
        return Text(result) + " " + Utf8(info.sLanmanResName) + "," + Utf8(info.sGroupName) + "," +
               Utf8(info.sHostServiceResName) + "," + Text(info.bGroupOnline) + "," + Utf8(info.sOnlineNode);
    };
    const std::string enter = "> CollectEVSInfo";
    const std::string leave = "< CollectEVSInfo";
    const std::string list = "$ hares -list  Type=Lanman  VirtualName=MAIL1 ";
    const std::string show = "$ hares -display Lanman1 -attribute Group ";
    const std::string state = "$ hagrp -state EVS1 ";
    Check(member, {{0, "true Lanman1,EVS1,EVS1-OXAHostService,true,NODE2", {enter, list, show, state, leave}},
                   {1, "false ,,,false,", {enter, list, "W EnumResourceNames fail", leave}},
                   {2,
                    "false Lanman1,,,false,",
                    {enter, list, show, "W Failed to get Group attribute for resource Lanman1", leave}},
                   {3,
                    "false Lanman1,EVS1,EVS1-OXAHostService,false,",
                    {enter, list, show, state, "W Failed to get Group online node for resource Lanman1", leave}}});
}

class VeritasSetFailureServers : public VeritasSetFailure {
protected:
    VeritasSetFailureServers() {
        Online();
        tools.Answer(L"hagrp -list ", Listed({"EVS1", "EVS2"}));
        for (const std::string group : {"EVS1", "EVS2"}) {
            tools.Answer(L"hares -list  Group=" + Utf16(group) + L"  Type=ExchService  Service=MSExchangeIS ",
                         Listed({"IS-" + group}));
            tools.Answer(L"hares -list  Group=" + Utf16(group) + L"  Type=Lanman ", Listed({"LM-" + group}));
        }
        tools.Answer(L"hagrp -state EVS2 ", States("EVS2", {{"NODE1", "|PARTIAL|"}}));
    }

    static std::string Describe(const Server& server) {
        return Utf8(server.sGroupName + L"," + server.sExchangeResName + L"," + server.sLanmanResName + L"," +
                    server.sOnlineNode) +
               (server.bGroupOnline ? " " : ",not ");
    }

    const std::string enter = "> CollectExchangeEVSInfo";
    const std::string leave = "< CollectExchangeEVSInfo";
    const std::string groups = "$ hagrp -list ";
    const std::string stores1 = "$ hares -list  Group=EVS1  Type=ExchService  Service=MSExchangeIS ";
    const std::string stores2 = "$ hares -list  Group=EVS2  Type=ExchService  Service=MSExchangeIS ";
    const std::string storesFailed = "W CollectExchangeEVSInfo, EnumResourceNames for exchange resource failed";
    const std::string lanmans1 = "$ hares -list  Group=EVS1  Type=Lanman ";
    const std::string lanmans2 = "$ hares -list  Group=EVS2  Type=Lanman ";
    const std::string lanmanFailed =
        "W CollectExchangeEVSInfo, EnumResourceNames for lanman resource failed for group EVS";
    const std::string state1 = "$ hagrp -state EVS1 ";
    const std::string state2 = "$ hagrp -state EVS2 ";
    const std::string stateFailed =
        "W CollectExchangeEVSInfo, GetGroupOnlineNode for lanman resource failed for group EVS";
    const Texts good = {enter, groups, stores1, stores2, lanmans1, state1, lanmans2, state2, leave};
    const std::vector<Texts> told = {
        good,
        {enter, groups, leave},
        {enter, groups, stores1, storesFailed, stores2, lanmans2, state2, leave},
        {enter, groups, stores1, stores2, storesFailed, lanmans1, state1, leave},
        {enter, groups, stores1, stores2, lanmans1, lanmanFailed + "1", state1, lanmans2, state2, leave},
        {enter, groups, stores1, stores2, lanmans1, state1, stateFailed + "1", lanmans2, state2, leave},
        {enter, groups, stores1, stores2, lanmans1, state1, lanmans2, lanmanFailed + "2", state2, leave},
        {enter, groups, stores1, stores2, lanmans1, state1, lanmans2, state2, stateFailed + "2", leave}};
};

TEST_F(VeritasSetFailureServers, CollectExchangeEVSInfoOfAllKeepsWhatItFound) {
    const auto member = [this] {
        std::vector<Server> servers;
        std::string text = Text(cluster.CollectExchangeEVSInfo(servers)) + " ";
        for (const Server& server : servers) {
            text += Describe(server);
        }
        return text;
    };
    Check(member, {{0, "true EVS1,IS-EVS1,LM-EVS1,NODE2 EVS2,IS-EVS2,LM-EVS2,NODE1 ", told[0]},
                   {1, "false ", told[1]},
                   {2, "false EVS2,IS-EVS2,LM-EVS2,NODE1 ", told[2]},
                   {3, "false EVS1,IS-EVS1,LM-EVS1,NODE2 ", told[3]},
                   {4, "false EVS1,IS-EVS1,,NODE2 EVS2,IS-EVS2,LM-EVS2,NODE1 ", told[4]},
                   {5, "false EVS1,IS-EVS1,LM-EVS1,,not EVS2,IS-EVS2,LM-EVS2,NODE1 ", told[5]},
                   {6, "false EVS1,IS-EVS1,LM-EVS1,NODE2 EVS2,IS-EVS2,,NODE1 ", told[6]},
                   {7, "false EVS1,IS-EVS1,LM-EVS1,NODE2 EVS2,IS-EVS2,LM-EVS2,,not ", told[7]}});
}

TEST_F(VeritasSetFailureServers, CollectExchangeEVSInfoOfAGroupGivesNothing) {
    const auto member = [this] {
        Server info(L"before", L"before");
        const bool result = cluster.CollectExchangeEVSInfo(L"evs2", info);
        return Text(result) + " " + Describe(info);
    };
    std::vector<Failure> failures = {{0, "true EVS2,IS-EVS2,LM-EVS2,NODE1 ", told[0]}};
    for (unsigned failing = 1; failing < told.size(); ++failing) {
        failures.push_back({failing, "false before,before,,,not ", told[failing]});
    }
    Check(member, failures);
}

TEST_F(VeritasSetFailure, FindMostParentMountVResourceNameInGroupEndsAtAFailedListAndDropsUnreadableCandidates) {
    const std::string attendants = "hares -list  Type=ExchService  Service=MSExchangeSA  Group=EVS1 ";
    const std::string mounts = "hares -list  Type=MountV  Group=EVS1 ";
    tools.Answer(Utf16(attendants), Listed({"SA"}));
    tools.Answer(L"hares -dep SA", Dependencies({{"SA", "M1"}, {"SA", "M2"}, {"SA", "M3"}}));
    tools.Answer(Utf16(mounts), Listed({"M1", "M2", "M3"}));
    tools.Answer(L"hares -dep M1", Dependencies({{"M1", "M2"}}));
    tools.Answer(L"hares -dep M2", Dependencies({}));
    tools.Answer(L"hares -dep M3", Dependencies({}));
    const auto member = [this] {
        Names names = {L"before"};
        std::string text = Text(cluster.FindMostParentMountVResourceNameInGroup(L"EVS1", names));
        for (const std::wstring& name : names) {
            text += " " + Utf8(name);
        }
        return text;
    };
    const Texts enter = {"> FindMostParentMountVResourceNameInGroup", "I Finding Exchange SA resource for group EVS1",
                         "$ " + attendants};
    const Texts attendant = {"I Exchange SA: SA", "I Finding the resources that ExchangeSA depends on.",
                             "$ hares -dep SA"};
    const Texts volumes = {"$ " + mounts};
    const Texts candidates = {"$ hares -dep M1", "$ hares -dep M2", "$ hares -dep M3"};
    const Texts leave = {"< FindMostParentMountVResourceNameInGroup"};
    const Texts all = enter + attendant + volumes + candidates + leave;
    Check(member, {{0, "true M2 M3", all},
                   {1, "false before", enter + leave},
                   {2, "false before", enter + attendant + leave},
                   {3, "false before", enter + attendant + volumes + leave},
                   {4, "true M2 M3", all},
                   {5, "true M3", all},
                   {6, "true M2", all}});
}

TEST_F(VeritasSetFailure, GetKOVAShareDiskResNameByRegRepNameFailsWithEitherQuery) {
    tools.Answer(L"hares -list  Type=MountV  Group=EVS1 ", Listed({"M1"}));
    tools.Answer(L"hares -dep RegRep1", Dependencies({{"RegRep1", "M1"}}));
    const auto member = [this] {
        std::wstring mount = L"before";
        const bool result = cluster.GetKOVAShareDiskResNameByRegRepName(L"EVS1", L"RegRep1", mount);
        return Text(result) + " " + Utf8(mount);
    };
    const std::string list = "$ hares -list  Type=MountV  Group=EVS1 ";
    Check(member, {{0, "true M1", {list, "$ hares -dep RegRep1"}},
                   {1, "false before", {list}},
                   {2, "false before", {list, "$ hares -dep RegRep1"}}});
}

TEST_F(VeritasSetFailure, FindExistingKOVARegRepResNameFailsWithItsListAlone) {
    const std::string key = "HKLM\\" + Utf8(ProductKey);
    tools.Answer(L"hares -list  Group=EVS1  Type=RegRep ", Listed({"R1", "R2"}));
    tools.Answer(L"hares -display R1 -attribute Keys ", Shown("R1", "Keys", "HKLM\\Other"));
    tools.Answer(L"hares -display R2 -attribute Keys ", Shown("R2", "Keys", key));
    const auto member = [this] {
        std::wstring regRep = L"before";
        const bool result = cluster.FindExistingKOVARegRepResName(L"EVS1", regRep);
        return Text(result) + " " + Utf8(regRep);
    };
    const std::string list = "$ hares -list  Group=EVS1  Type=RegRep ";
    const std::string show1 = "$ hares -display R1 -attribute Keys ";
    const std::string show2 = "$ hares -display R2 -attribute Keys ";
    Check(member, {{0, "true R2", {list, show1, show2}},
                   {1, "false before", {list}},
                   {2, "true R2", {list, show1, show2}},
                   {3, "true before", {list, show1, show2}}});
}

} // namespace
