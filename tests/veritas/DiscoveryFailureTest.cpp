// What becomes of discovery when the n-th tool cannot be started, for every n.
#include "FailingRuns.h"
#include "ProductNames.h"
#include "ToolTables.h"

using namespace harness;

namespace {

using VeritasDiscoveryFailure = VeritasTest;

TEST_F(VeritasDiscoveryFailure, CollectEVSInfoEndsAtAFailedQuery) {
    tools.Answer(L"hares -list  Type=Lanman  VirtualName=MAIL1 ", Listed({"Lanman1"}));
    tools.Answer(L"hares -display Lanman1 -attribute Group ", Shown("Lanman1", "Group", "EVS1"));
    tools.Answer(L"hagrp -state EVS1 ", States("EVS1", {{"NODE1", "|OFFLINE|"}, {"NODE2", "|ONLINE|"}}));
    const auto member = [this] {
        Server info;
        const bool result = cluster.CollectEVSInfo(L"MAIL1", info);
        return TrueOrFalse(result) + " " + Utf8(info.sLanmanResName) + "," + Utf8(info.sGroupName) + "," +
               Utf8(info.sHostServiceResName) + "," + TrueOrFalse(info.bGroupOnline) + "," + Utf8(info.sOnlineNode);
    };
    const std::string enter = "> CollectEVSInfo";
    const std::string leave = "< CollectEVSInfo";
    const std::string list = "$ hares -list  Type=Lanman  VirtualName=MAIL1 ";
    const std::string show = "$ hares -display Lanman1 -attribute Group ";
    const std::string state = "$ hagrp -state EVS1 ";
    ExpectOfEachFailingRun(
        *this, member,
        {{"the server is found", "true Lanman1,EVS1,EVS1-OXAHostService,true,NODE2", {enter, list, show, state, leave}},
         {"a network name that is not listed leaves all empty",
          "false ,,,false,",
          {enter, list, "W EnumResourceNames fail", leave}},
         {"a group that is not shown leaves the name",
          "false Lanman1,,,false,",
          {enter, list, show, "W Failed to get Group attribute for resource Lanman1", leave}},
         {"a state that is not told leaves the group",
          "false Lanman1,EVS1,EVS1-OXAHostService,false,",
          {enter, list, show, state, "W Failed to get Group online node for resource Lanman1", leave}}});
}

class VeritasDiscoveryFailureServers : public VeritasTest {
protected:
    VeritasDiscoveryFailureServers() {
        tools.Answer(L"hagrp -state EVS1 ", States("EVS1", {{"NODE1", "|OFFLINE|"}, {"NODE2", "|ONLINE|"}}));
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

TEST_F(VeritasDiscoveryFailureServers, CollectExchangeEVSInfoOfAllKeepsWhatItFound) {
    const auto member = [this] {
        std::vector<Server> servers;
        std::string text = TrueOrFalse(cluster.CollectExchangeEVSInfo(servers)) + " ";
        for (const Server& server : servers) {
            text += Describe(server);
        }
        return text;
    };
    ExpectOfEachFailingRun(
        *this, member,
        {{"both servers are found", "true EVS1,IS-EVS1,LM-EVS1,NODE2 EVS2,IS-EVS2,LM-EVS2,NODE1 ", told[0]},
         {"groups that are not listed are no servers", "false ", told[1]},
         {"the first group is passed over", "false EVS2,IS-EVS2,LM-EVS2,NODE1 ", told[2]},
         {"the second group is passed over", "false EVS1,IS-EVS1,LM-EVS1,NODE2 ", told[3]},
         {"the first server has no network name", "false EVS1,IS-EVS1,,NODE2 EVS2,IS-EVS2,LM-EVS2,NODE1 ", told[4]},
         {"the first server is not online", "false EVS1,IS-EVS1,LM-EVS1,,not EVS2,IS-EVS2,LM-EVS2,NODE1 ", told[5]},
         {"the second server has no network name", "false EVS1,IS-EVS1,LM-EVS1,NODE2 EVS2,IS-EVS2,,NODE1 ", told[6]},
         {"the second server is not online", "false EVS1,IS-EVS1,LM-EVS1,NODE2 EVS2,IS-EVS2,LM-EVS2,,not ", told[7]}});
}

TEST_F(VeritasDiscoveryFailureServers, CollectExchangeEVSInfoOfAGroupGivesNothing) {
    const auto member = [this] {
        Server info(L"before", L"before");
        const bool result = cluster.CollectExchangeEVSInfo(L"evs2", info);
        return TrueOrFalse(result) + " " + Describe(info);
    };
    std::vector<FailingRun> rows = {{"the group's server is found", "true EVS2,IS-EVS2,LM-EVS2,NODE1 ", told[0]}};
    for (unsigned run = 1; run < told.size(); ++run) {
        rows.push_back({"the record stays as it was", "false before,before,,,not ", told[run]});
    }
    ExpectOfEachFailingRun(*this, member, rows);
}

TEST_F(VeritasDiscoveryFailure, FindMostParentMountVResourceNameInGroupEndsAtAFailedListAndDropsUnreadableCandidates) {
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
        const bool result = cluster.FindMostParentMountVResourceNameInGroup(L"EVS1", names);
        return TrueOrFalse(result) + Spaced(names);
    };
    const Texts enter = {"> FindMostParentMountVResourceNameInGroup", "I Finding Exchange SA resource for group EVS1",
                         "$ " + attendants};
    const Texts attendant = {"I Exchange SA: SA", "I Finding the resources that ExchangeSA depends on.",
                             "$ hares -dep SA"};
    const Texts volumes = {"$ " + mounts};
    const Texts candidates = {"$ hares -dep M1", "$ hares -dep M2", "$ hares -dep M3"};
    const Texts leave = {"< FindMostParentMountVResourceNameInGroup"};
    const Texts all = enter + attendant + volumes + candidates + leave;
    ExpectOfEachFailingRun(
        *this, member,
        {{"the two lowest volumes are found", "true M2 M3", all},
         {"attendants that are not listed end the search", "false before", enter + leave},
         {"dependencies that are not told end the search", "false before", enter + attendant + leave},
         {"volumes that are not listed end the search", "false before", enter + attendant + volumes + leave},
         {"an upper volume is dropped all the same", "true M2 M3", all},
         {"the first lowest volume is dropped", "true M3", all},
         {"the second lowest volume is dropped", "true M2", all}});
}

TEST_F(VeritasDiscoveryFailure, GetKOVAShareDiskResNameByRegRepNameFailsWithEitherQuery) {
    tools.Answer(L"hares -list  Type=MountV  Group=EVS1 ", Listed({"M1"}));
    tools.Answer(L"hares -dep RegRep1", Dependencies({{"RegRep1", "M1"}}));
    const auto member = [this] {
        std::wstring mount = L"before";
        const bool result = cluster.GetKOVAShareDiskResNameByRegRepName(L"EVS1", L"RegRep1", mount);
        return TrueOrFalse(result) + " " + Utf8(mount);
    };
    const std::string list = "$ hares -list  Type=MountV  Group=EVS1 ";
    ExpectOfEachFailingRun(
        *this, member,
        {{"the volume is found", "true M1", {list, "$ hares -dep RegRep1"}},
         {"volumes that are not listed are a failure", "false before", {list}},
         {"dependencies that are not told are a failure", "false before", {list, "$ hares -dep RegRep1"}}});
}

TEST_F(VeritasDiscoveryFailure, FindExistingKOVARegRepResNameFailsWithItsListAlone) {
    const std::string key = "HKLM\\" + ProductKeyText;
    tools.Answer(L"hares -list  Group=EVS1  Type=RegRep ", Listed({"R1", "R2"}));
    tools.Answer(L"hares -display R1 -attribute Keys ", Shown("R1", "Keys", "HKLM\\Other"));
    tools.Answer(L"hares -display R2 -attribute Keys ", Shown("R2", "Keys", key));
    const auto member = [this] {
        std::wstring regRep = L"before";
        const bool result = cluster.FindExistingKOVARegRepResName(L"EVS1", regRep);
        return TrueOrFalse(result) + " " + Utf8(regRep);
    };
    const std::string list = "$ hares -list  Group=EVS1  Type=RegRep ";
    const std::string show1 = "$ hares -display R1 -attribute Keys ";
    const std::string show2 = "$ hares -display R2 -attribute Keys ";
    ExpectOfEachFailingRun(*this, member,
                           {{"the product's resource is found", "true R2", {list, show1, show2}},
                            {"resources that are not listed are a failure", "false before", {list}},
                            {"another one's keys are no matter", "true R2", {list, show1, show2}},
                            {"the product's keys alone are missed", "true before", {list, show1, show2}}});
}

} // namespace
