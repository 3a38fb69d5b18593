// Every member of CVeritasCluster with each of its platform calls and allocations failing, and with something that
// befalls the cluster between two runs of its tools. Each run sees afterwards that no handle, no block, no registry key
// and no capture file is left.
#include "FaultSweep.h"
#include "ServiceStandIn.h"
#include "SetCreation.h"
#include "ToolTables.h"

#include <algorithm>
#include <iterator>
#include <new>
#include <set>
#include <sstream>

using namespace harness;

namespace {

// What befalls the cluster: how the answers of its tools change from then on.
struct ToolEvent {
    const char* what;
    void (*change)(const std::wstring& commandLine, std::string& output, DWORD& exitCode);
    const char* words; // that results may hold then
};

const char EngineMessage[] = "VCS ERROR V-16-1-10600 Cannot connect to VCS engine";

// Nobody has to know a message when names are asked for: its words are names then.
const ToolEvent ToolEvents[] = {{"the engine stops",
                                 [](const std::wstring&, std::string& output, DWORD& exitCode) {
                                     output = std::string(EngineMessage) + "\r\n";
                                     exitCode = 1;
                                 },
                                 EngineMessage},
                                {"the group is online on the other system",
                                 [](const std::wstring& commandLine, std::string& output, DWORD&) {
                                     if (commandLine.compare(0, 13, L"hagrp -state ") == 0) {
                                         for (std::size_t at = output.find("NODE"); at != std::string::npos;
                                              at = output.find("NODE", at + 1)) {
                                             output[at + 4] = output[at + 4] == '1' ? '2' : '1';
                                         }
                                     }
                                 },
                                 "NODE1 NODE2"}};

std::set<std::string> WordsOf(std::string text) {
    std::replace(text.begin(), text.end(), ',', ' ');
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), std::istream_iterator<std::string>()};
}

std::string Described(const Server& server) {
    return Utf8(L" " + server.sGroupName + L"," + server.sExchangeResName + L"," + server.sLanmanResName + L",") +
           (server.bGroupOnline ? "" : "not ") + Utf8(server.sOnlineNode);
}

class VeritasSweep : public VeritasTest {
protected:
    VeritasSweep() {
        tools.AllowUnscripted(); // a fault may lead to queries for an empty name
        tools.Answer(L"hares -list  Type=Lanman  VirtualName=MAIL1 ", Listed({"Lanman1"}));
        tools.Answer(L"hares -display Lanman1 -attribute Group ", Shown("Lanman1", "Group", "EVS1"));
        tools.Answer(L"hagrp -state EVS1 ", States("EVS1", {{"NODE1", "|ONLINE|"}}));
        tools.Answer(L"hares -list  Group=EVS1  Type=RegRep ", Listed({"R1", "R2"}));
        tools.Answer(L"hares -display R1 -attribute Keys ", Shown("R1", "Keys", "HKLM\\SOFTWARE\\Other"));
        tools.Answer(L"hares -display R2 -attribute Keys ", Shown("R2", "Keys", "HKLM\\" + ProductKeyText));
        tools.Answer(ListService("OXAHostService"), Listed({"Host1"}));
        tools.AnswerPrefix(L"hares -list ", "");
        tools.AnswerPrefix(L"hares -delete ", "");
    }

    static std::wstring ListService(const std::string& name) {
        return L"hares -list  Type=GenericService  ServiceName=" + Utf16(name) + L"  Group=EVS1 ";
    }

    void SweepOver(const std::function<std::string()>& member, const std::function<void(const SweepRun&)>& check,
                   unsigned step = 1) {
        Sweep sweep;
        sweep.prepare = [this] {
            tools.TakeCommandLines();
            Platform().sleeps.clear();
        };
        sweep.body = member;
        sweep.check = check;
        sweep.limit = 10000;
        sweep.step = step;
        FaultSweep(*this, sweep);
        for (const ToolEvent& event : ToolEvents) {
            m_eventWords = event.words;
            SweepOverEvent(sweep, event);
        }
        m_eventWords.clear();
    }

    // From the 1st, 2nd, ... run of a tool on.
    void SweepOverEvent(const Sweep& sweep, const ToolEvent& event) {
        unsigned count = 0;
        unsigned first = 0;
        tools.onAnswer = [&](const std::wstring& commandLine, std::string& output, DWORD& exitCode) {
            if (++count >= first) {
                event.change(commandLine, output, exitCode);
            }
        };
        SweepRuns::Run(*this, sweep,
                       {event.what, ERROR_SUCCESS,
                        [&](unsigned n) {
                            first = n;
                            count = 0;
                        },
                        [&] { return count >= first; }});
        tools.onAnswer = nullptr;
    }

    // A run without failure gives `good`; one with a failure that, or one of `faulted`.
    void SweepOver(const std::function<std::string()>& member, const std::string& good, Texts faulted,
                   unsigned step = 1) {
        faulted.push_back(good);
        SweepOver(
            member,
            [&](const SweepRun& run) {
                if (!run.faulted) {
                    EXPECT_EQ(run.result, good);
                } else if (run.isEvent) {
                    std::string known = m_eventWords + " true false";
                    for (const std::string& result : faulted) {
                        known += " " + result;
                    }
                    EXPECT_THAT(WordsOf(known), ::testing::IsSupersetOf(WordsOf(run.result))) << run.fault;
                } else if (!run.threw) {
                    EXPECT_THAT(faulted, ::testing::Contains(run.result)) << run.fault;
                }
            },
            step);
    }

    SetCreation set{*this};
    ServiceStandIn service{Platform()};

private:
    std::string m_eventWords;
};

// Configuration mode and queries

TEST_F(VeritasSweep, ConfigurationModeIsSwitchedOrNot) {
    tools.Answer(L"haconf -makerw ", "");
    tools.Answer(L"haconf -dump -makero ", "");
    SweepOver([this] { return TrueOrFalse(cluster.SwitchToReadWriteMode()); }, "true", {"false"});
    SweepOver([this] { return TrueOrFalse(cluster.SwitchToReadOnlyMode()); }, "true", {"false"});
}

TEST_F(VeritasSweep, ListsAreWholeOrEmptyOrUntouched) {
    tools.Answer(L"hasys -list ", "NODE1\r\nNODE2\r\n");
    tools.Answer(L"hagrp -list  Parallel=0 ", Listed({"EVS1", "EVS2"}));
    tools.Answer(L"hares -list  Type=Lanman ", Listed({"L1", "L2"}));
    SweepOver(
        [this] {
            Names names = {L"before"};
            const bool result = cluster.EnumSystemNames(names);
            return TrueOrFalse(result) + Spaced(names);
        },
        "true NODE1 NODE2", {"true", "false before"});
    tools.Answer(L"hasys -list  SysState=RUNNING ", "NODE1\r\nNODE2\r\n");
    SweepOver(
        [this] {
            const NameValuePairList filter = {{L"SysState", L"RUNNING"}};
            Names names = {L"before"};
            const bool result = cluster.EnumSystemNames(names, &filter);
            return TrueOrFalse(result) + Spaced(names);
        },
        "true NODE1 NODE2", {"true", "false before"});
    SweepOver(
        [this] {
            const NameValuePairList filter = {{L"Parallel", L"0"}};
            Names names = {L"before"};
            const bool result = cluster.EnumGroupNames(names, &filter);
            return TrueOrFalse(result) + Spaced(names);
        },
        "true before EVS1 EVS2", {"true before", "false before"});
    SweepOver(
        [this] {
            const NameValuePairList filter = {{L"Type", L"Lanman"}};
            Names names = {L"before"};
            const bool result = cluster.EnumResourceNamesW(names, &filter);
            return TrueOrFalse(result) + Spaced(names);
        },
        "true before L1 L2", {"true before", "false before"});
}

// Short texts need no memory of their own; these do.
TEST_F(VeritasSweep, ListsOfLongNamesAreWholeOrUntouched) {
    tools.Answer(L"hagrp -list ", "EVS1\t\tSYSTEM-NODE1\r\nEXCHANGE-EVS2\t\tSYSTEM-NODE1\r\n");
    SweepOver(
        [this] {
            Names names;
            const bool result = cluster.EnumGroupNames(names);
            return TrueOrFalse(result) + Spaced(names);
        },
        "true EVS1 EXCHANGE-EVS2", {"true", "false"});
}

TEST_F(VeritasSweep, StorageOfAGroupWithALongNameIsFoundOrUntouched) {
    tools.Answer(L"hares -list  Type=ExchService  Service=MSExchangeSA  Group=EXCHANGE-EVS2 ", "");
    tools.Answer(L"hares -list  Type=MountV  Group=EXCHANGE-EVS2 ", Listed({"M1"}));
    tools.Answer(L"hares -dep R2", Dependencies({{"R2", "M1"}}));
    SweepOver(
        [this] {
            Names mounts = {L"before"};
            const bool result = cluster.FindMostParentMountVResourceNameInGroup(L"EXCHANGE-EVS2", mounts);
            return TrueOrFalse(result) + Spaced(mounts);
        },
        "true", {"false before"});
    SweepOver(
        [this] {
            std::wstring mount = L"before";
            const bool result = cluster.GetKOVAShareDiskResNameByRegRepName(L"EXCHANGE-EVS2", L"R2", mount);
            return TrueOrFalse(result) + " " + Utf8(mount);
        },
        "true M1", {"true before", "false before"});
}

TEST_F(VeritasSweep, DependenciesAreWholeOrNone) {
    tools.Answer(L"hares -dep R1", Dependencies({{"R1", "M1"}, {"Host", "R1"}}));
    SweepOver(
        [this] {
            Names parents;
            Names children;
            const bool result = cluster.EnumResDependencies(L"R1", parents, children);
            return TrueOrFalse(result) + Spaced(parents) + Spaced(children);
        },
        "true Host M1", {"true", "false"});
}

TEST_F(VeritasSweep, ValuesAreWholeOrUntouched) {
    SweepOver(
        [this] {
            std::wstring value = L"before";
            const bool result = cluster.GetResourceAttribute(L"R1", L"Keys", value);
            return TrueOrFalse(result) + " " + Utf8(value);
        },
        "true HKLM\\SOFTWARE\\Other", {"false before"});
    SweepOver(
        [this] {
            std::wstring group = L"before";
            const bool result = cluster.FindGroupNameByVirtualServerName(L"MAIL1", group);
            return TrueOrFalse(result) + " " + Utf8(group);
        },
        "true EVS1", {"true before", "false before"});
    SweepOver(
        [this] {
            std::wstring resource = L"before";
            const bool result = cluster.GetGenericServiceResNameByServiceName(L"EVS1", L"OXAHostService", resource);
            return TrueOrFalse(result) + " " + Utf8(resource);
        },
        "true Host1", {"false before"});
}

TEST_F(VeritasSweep, AGroupIsOnlineOrNot) {
    SweepOver(
        [this] {
            bool online = true;
            std::wstring system = L"before";
            const bool result = cluster.GetGroupOnlineNode(L"EVS1", online, system, false);
            return TrueOrFalse(result) + " " + TrueOrFalse(online) + " " + Utf8(system);
        },
        "true true NODE1", {"true false before", "false false before"});
}

TEST_F(VeritasSweep, TheClusterTypeIsAsStoredOrNone) {
    Registry().SetNumber(ProductKey, L"ThirdPartyClusterType", 2);
    SweepOver([this] { return std::to_string(cluster.GetThirdPartyClusterType()); }, "2", {"0"});
}

// Resource operations

TEST_F(VeritasSweep, CreatingAndDeletingAResourceIsAlwaysTrue) {
    SweepOver(
        [this] {
            const NameValuePairList attributes = {{L"Critical", L"0"}, {L"Enabled", L"1"}};
            return TrueOrFalse(cluster.CreateResource(L"R1", L"RegRep", L"EVS1", L"M1", attributes));
        },
        "true", {});
    SweepOver([this] { return TrueOrFalse(cluster.DeleteResource(L"R1")); }, "true", {});
}

TEST_F(VeritasSweep, LinksAndSwitchesAreAskedForOrNot) {
    tools.AnswerPrefix(L"hares -offline ", "");
    SweepOver([this] { return TrueOrFalse(cluster.LinkResource(L"Host", L"R1")); }, "true", {"false"});
    SweepOver([this] { return TrueOrFalse(cluster.TurnOnOrOffResource(L"R1", L"NODE1", true)); }, "true", {"false"});
    SweepOver([this] { return TrueOrFalse(cluster.TurnOnOrOffResource(L"R1", L"NODE1", false)); }, "true", {"false"});
}

TEST_F(VeritasSweep, APasswordIsEncryptedOrUntouchedAndNeverLogged) {
    SweepOver(
        [this] {
            std::wstring encrypted = L"before";
            const bool result = cluster.EncryptVeritasPassword(L"clear", encrypted);
            return TrueOrFalse(result) + " " + Utf8(encrypted);
        },
        [](const SweepRun& run) {
            const Texts results = {"true eNcRyPtEd", "true before", "false before", ""};
            // Of a message the first word is taken for the password.
            EXPECT_TRUE(run.result == "true VCS" ? run.isEvent
                                                 : ::testing::Matches(::testing::Contains(run.result))(results))
                << run.result;
            EXPECT_TRUE(run.faulted || run.result == results[0]);
            EXPECT_THAT(run.log, ::testing::Not(::testing::HasSubstr("clear")));
            EXPECT_THAT(run.log, ::testing::Not(::testing::HasSubstr("eNcRyPtEd")));
        });
}

// A run is told unless its member ends for want of memory before: a report never changes what becomes of it.
TEST_F(VeritasSweep, ToolRunsAreToldWhateverBecomesOfTheReport) {
    static unsigned told = 0;
    SetVeritasToolRunCallback([](const CVeritasToolRun&, void*) { ++told; }, nullptr);
    tools.Answer(L"haconf -makerw ", "as it was, and as it is to stay: in read-write mode\r\n");
    SweepOver(
        [this] {
            told = 0;
            return TrueOrFalse(cluster.SwitchToReadWriteMode());
        },
        [](const SweepRun& run) {
            EXPECT_THAT((Texts{"true", run.faulted ? "false" : "true", run.threw ? "" : "true"}),
                        ::testing::Contains(run.result));
            EXPECT_EQ(told, run.threw ? 0u : 1u);
        });
    SweepOver(
        [this] {
            std::wstring encrypted = L"before";
            const bool result = cluster.EncryptVeritasPassword(L"clear", encrypted);
            return TrueOrFalse(result) + " " + Utf8(encrypted);
        },
        "true eNcRyPtEd", {"true before", "false before"});
    SetVeritasToolRunCallback(nullptr, nullptr);
}

// Discovery

TEST_F(VeritasSweep, AServerIsFoundAsFarAsItsToolsAnswer) {
    SweepOver(
        [this] {
            Server server;
            const bool result = cluster.CollectEVSInfo(L"MAIL1", server);
            return TrueOrFalse(result) + Described(server);
        },
        "true EVS1,,Lanman1,NODE1",
        {"false ,,,not ", "false ,,Lanman1,not ", "false EVS1,,Lanman1,not ", "true EVS1,,Lanman1,not "});
}

using VeritasSweepServers = VeritasSweep;

void AnswerServers(ToolScript& tools) {
    tools.Answer(L"hagrp -list ", Listed({"EVS1", "EVS2"}));
    tools.Answer(L"hagrp -state EVS2 ", States("EVS2", {{"NODE2", "|PARTIAL|"}}));
    for (const std::wstring group : {L"EVS1", L"EVS2"}) {
        tools.Answer(L"hares -list  Group=" + group + L"  Type=ExchService  Service=MSExchangeIS ", Listed({"IS"}));
        tools.Answer(L"hares -list  Group=" + group + L"  Type=Lanman ", Listed({"LM"}));
    }
}

TEST_F(VeritasSweepServers, EveryRecordThatWasFoundStays) {
    AnswerServers(tools);
    const std::string good = "true EVS1,IS,LM,NODE1 EVS2,IS,LM,NODE2";
    Texts accepted;
    for (const char* first : {"", " EVS1,IS,LM,NODE1", " EVS1,IS,LM,not ", " EVS1,IS,,NODE1", " EVS1,IS,,not "}) {
        for (const char* second : {"", " EVS2,IS,LM,NODE2", " EVS2,IS,LM,not ", " EVS2,IS,,NODE2", " EVS2,IS,,not "}) {
            accepted.push_back(std::string("true") + first + second);
            accepted.push_back(std::string("false") + first + second);
        }
    }
    SweepOver(
        [this] {
            std::vector<Server> servers;
            std::string text = TrueOrFalse(cluster.CollectExchangeEVSInfo(servers));
            for (const Server& server : servers) {
                text += Described(server);
            }
            return text;
        },
        good, accepted);
}

TEST_F(VeritasSweepServers, AServersRecordIsGivenOnlyWhenNothingFailed) {
    AnswerServers(tools);
    SweepOver(
        [this] {
            Server server(L"before", L"before");
            const bool result = cluster.CollectExchangeEVSInfo(L"EVS2", server);
            return TrueOrFalse(result) + Described(server);
        },
        "true EVS2,IS,LM,NODE2",
        {"false before,before,,not ", "true EVS2,IS,,NODE2", "true EVS2,IS,LM,not ", "true EVS2,IS,,not "});
}

TEST_F(VeritasSweep, StorageIsFoundOrUntouched) {
    tools.Answer(L"hares -list  Type=ExchService  Service=MSExchangeSA  Group=EVS1 ", Listed({"SA"}));
    tools.Answer(L"hares -list  Type=MountV  Group=EVS1 ", Listed({"M1", "M2"}));
    tools.Answer(L"hares -dep SA", Dependencies({{"SA", "M1"}, {"SA", "M2"}}));
    tools.Answer(L"hares -dep M1", Dependencies({{"M1", "M2"}}));
    tools.Answer(L"hares -dep M2", Dependencies({}));
    tools.Answer(L"hares -dep R2", Dependencies({{"R2", "M2"}}));
    SweepOver(
        [this] {
            Names mounts = {L"before"};
            const bool result = cluster.FindMostParentMountVResourceNameInGroup(L"EVS1", mounts);
            return TrueOrFalse(result) + Spaced(mounts);
        },
        "true M2", {"true M1 M2", "true M1", "true", "false before"});
    SweepOver(
        [this] {
            std::wstring mount = L"before";
            const bool result = cluster.GetKOVAShareDiskResNameByRegRepName(L"EVS1", L"R2", mount);
            return TrueOrFalse(result) + " " + Utf8(mount);
        },
        "true M2", {"true before", "false before"});
    SweepOver(
        [this] {
            std::wstring regRep = L"before";
            const bool result = cluster.FindExistingKOVARegRepResName(L"EVS1", regRep);
            return TrueOrFalse(result) + " " + Utf8(regRep);
        },
        "true R2", {"true before", "false before"});
}

// The product's resource set. The long operations are swept in steps that have no divisor in common with the number of
// calls of one run, so that every kind of call fails somewhere.

TEST_F(VeritasSweep, ACreationIsAlwaysTrueAndItsPasswordNeverLogged) {
    set.info.bGroupOnline = true;
    SweepOver(
        [this] {
            return TrueOrFalse(cluster.CreateKOVAResources(set.info, true, true, FullAccount.group, FullAccount.user,
                                                           FullAccount.password));
        },
        [](const SweepRun& run) {
            EXPECT_EQ(run.result, run.threw ? "" : "true");
            EXPECT_THAT(run.log, ::testing::Not(::testing::HasSubstr("-agent clear")));
            EXPECT_THAT(run.log, ::testing::Not(::testing::HasSubstr("Result: eNcRyPtEd")));
        },
        13);
}

// It asks nothing of the platform, so only memory can be short.
TEST_F(VeritasSweep, TheOrderOfSwitchingOnIsWholeOrNotGiven) {
    const Names whole = {L"EVS1-OXASAService", L"EVS1-OXAHostService", L"EVS1-QAV_Monitor", L"EVS1-OXA_RemoteConfig"};
    Names names;
    unsigned n = 1;
    for (; names.empty(); ++n) {
        ASSERT_LE(n, 100u);
        Heap().FailAllocation(n, FaultMode::Once);
        Heap().StartOperation();
        try {
            names = CVeritasCluster::KOVAResourcesInSwitchOnOrder(set.info, true, true);
        } catch (const std::bad_alloc&) {
            EXPECT_TRUE(Heap().Fired());
        }
        Heap().EndOperation();
        EXPECT_EQ(Heap().LiveAllocations() != 0, !names.empty());
    }
    Heap().FailAllocation(0, FaultMode::Once);
    EXPECT_EQ(names, whole);
    EXPECT_GT(n, whole.size());
}

TEST_F(VeritasSweep, AnExistingServiceIsTurnedOn) {
    SweepOver(
        [this] {
            return TrueOrFalse(
                cluster.CheckIfGenericServiceResourceExistsAndTurnItOn(L"EVS1", L"OXAHostService", L"NODE1", 1000));
        },
        "true", {"false"});
}

TEST_F(VeritasSweep, TheQuarantineMonitorIsAdded) {
    SweepOver([this] { return TrueOrFalse(cluster.CreateQAVResourceAndTurnItOn(L"MAIL1", 1000)); }, "true", {"false"},
              3);
}

TEST_F(VeritasSweep, TheRemoteConfigurationIsAdded) {
    SweepOver(
        [this] {
            return TrueOrFalse(
                cluster.CreateRemoteConfigResourceAndTurnItOn(L"MAIL1", L"DOMAIN", L"admin", L"clear", 1000));
        },
        "true", {"false"}, 3);
}

TEST_F(VeritasSweep, ProductNamesAreThoseFoundBeforeTheFailure) {
    Registry().SetText(ProductKey, L"DataRootPath", L"F:\\Data\\Store");
    const Texts found = {"h", "c", "s", "q", "r"};
    std::size_t i = 0;
    for (const char* name : {"OXAHostService", "OXA_RemoteConfig", "OXASAService", "QAV_Monitor"}) {
        tools.Answer(L"hares -list  Group=EVS1  Type=GenericService  ServiceName=" + Utf16(name) + L" ",
                     Listed({found[i++]}));
    }
    tools.Answer(L"hares -list  Group=EVS1  Type=RegRep  ReplicationDirectory=\\Data\\RegRep ", Listed({found[i]}));
    Texts accepted;
    for (unsigned some = 0; some < 1u << found.size(); ++some) {
        std::string names;
        for (i = 0; i < found.size(); ++i) {
            names += some >> i & 1 ? " " + found[i] : "";
        }
        accepted.push_back("true" + names);
        accepted.push_back("false" + names);
    }
    SweepOver(
        [this] {
            Names names;
            const bool result = cluster.CollectKOVAResNames(L"EVS1", names);
            return TrueOrFalse(result) + Spaced(names);
        },
        "true h c s q r", accepted);
    SweepOver(
        [this] {
            Names names;
            const bool result = cluster.CollectKOVAResNames(names);
            return TrueOrFalse(result) + Spaced(names);
        },
        "true", {"false"}, 3);
}

} // namespace
