// What becomes of the product's resource set when the n-th tool cannot be started, for every n.
#include "Detour.h"
#include "FailingRuns.h"
#include "InstalledServer.h"
#include "ServiceStandIn.h"

#include <algorithm>

using namespace harness;

namespace {

// Creating the set

Texts WithoutLine(Texts lines, const std::string& line) {
    lines.erase(std::remove(lines.begin(), lines.end(), line), lines.end());
    return lines;
}

Texts Replaced(Texts lines, const std::string& line, const Texts& with) {
    const auto found = std::find(lines.begin(), lines.end(), line);
    EXPECT_NE(found, lines.end()) << line;
    if (found != lines.end()) {
        lines.insert(lines.erase(found), with.begin(), with.end());
    }
    return lines;
}

std::string RunNumber(const Texts& told, unsigned number) {
    for (const std::string& line : told) {
        if (IsRun(line) && --number == 0) {
            return line;
        }
    }
    return "no such run";
}

class VeritasSetFailureCreation : public VeritasTest {
protected:
    // Only the encryption and the host service's switch-on matter for what follows; nothing for the result.
    void CheckCreation(const SetChoice& creation) {
        const Texts good = CreationStory(creation);
        const unsigned count = static_cast<unsigned>(RunsIn(good));
        for (unsigned failing = 1; failing <= count; ++failing) {
            const std::string run = RunNumber(good, failing);
            SCOPED_TRACE("fails: " + run);
            Texts told = good;
            Texts waiting = creation.online ? RunsAtOnce("OXAHostService") : Texts();
            if (run == "* vcsencrypt -agent clear") {
                told = Replaced(told, Modify("EVS1-OXA_RemoteConfig", "Password", "\"eNcRyPtEd\""),
                                {Modify("EVS1-OXA_RemoteConfig", "Password", "\"\"")});
            }
            if (run == "$ hares -online EVS1-OXAHostService -sys NODE1 ") {
                told = WithoutLine(told, "I Waiting for service EVS1-OXAHostService to go online");
                told = WithoutLine(told, "I service OXAHostService started successfully.");
                waiting.clear();
            }
            tools.FailStart(failing, ERROR_FILE_NOT_FOUND);
            Forget();
            EXPECT_TRUE(set.Create(creation));
            EXPECT_EQ(Waiting(*this), waiting);
            EXPECT_EQ(Told(*this), Lines(told));
            Audit();
        }
    }

    SetCreation set{*this};
    ServiceStandIn service{Platform()};
};

TEST_F(VeritasSetFailureCreation, CreateKOVAResourcesOfAnOnlineGroupWithAllServicesRunsAndTellsTheRest) {
    const SetChoice creation = {true, true, FullAccount, true};
    EXPECT_EQ(RunsIn(CreationStory(creation)), 8u + 13u + 12u + 12u + 13u + 12u);
    CheckCreation(creation);
}

TEST_F(VeritasSetFailureCreation, CreateKOVAResourcesOfAnOfflineGroupWithAllServicesRunsAndTellsTheRest) {
    CheckCreation({true, true, NoAccount, false});
}

TEST_F(VeritasSetFailureCreation, CreateKOVAResourcesOfAnOnlineGroupWithoutOptionalServicesRunsAndTellsTheRest) {
    CheckCreation({false, false, NoAccount, true});
}

// Turning on what exists, and adding to it

class VeritasSetFailure : public VeritasTest {
protected:
    InstalledServer server{*this};
    ServiceStandIn service{Platform()};
};

// What finding the virtual server tells when its command `failing` (1 to 3) fails.
Texts ServerNotFound(unsigned failing) {
    const char* const messages[] = {"W EnumResourceNames fail", "W Failed to get Group attribute for resource Lanman1",
                                    "W Failed to get Group online node for resource Lanman1"};
    Texts told = FindServer();
    told.resize(1 + failing);
    return told + Texts{messages[failing - 1], "< CollectEVSInfo"};
}

Texts ServiceNotListed(const std::string& serviceName) {
    return FindService(serviceName, "W Fail to enumerate resource for Group EVS1");
}

const Texts CallFailed = {"W call to GetGenericServiceResNameByServiceName failed"};

TEST_F(VeritasSetFailure, CheckIfGenericServiceResourceExistsAndTurnItOnIsTrueOnceTheResourceIsFound) {
    server.Service("Svc", {"res"});
    const Texts all = FindService("Svc") + TurnOn("res", "NODE2");
    const Texts good = all + Texts{Started("Svc")};
    ExpectOfEachFailingRun(
        *this,
        [this] {
            return TrueOrFalse(cluster.CheckIfGenericServiceResourceExistsAndTurnItOn(L"EVS1", L"Svc", L"NODE2", 1000));
        },
        {{"the service starts", "true", good},
         {"a resource that is not listed is not there", "false", ServiceNotListed("Svc") + CallFailed},
         {"a fault that is not cleared is no matter", "true", good},
         {"a missing probe is no matter", "true", good},
         {"a resource that is not turned on is told", "true", all + Texts{"W failed to turn res: res online."}}});
}

// A resource that is found has a name; a list that gives an empty one counts as none.
TEST_F(VeritasSetFailure, CheckIfGenericServiceResourceExistsAndTurnItOnTurnsOnNothingWithoutAName) {
    const Detour found(
        &CVeritasCluster::GetGenericServiceResNameByServiceName,
        +[](const CVeritasCluster*, const wchar_t*, const wchar_t*, std::wstring&) { return true; });
    EXPECT_FALSE(cluster.CheckIfGenericServiceResourceExistsAndTurnItOn(L"EVS1", L"Svc", L"NODE2", 1000));
    EXPECT_EQ(TakeLog(), "");
    EXPECT_EQ(tools.TakeCommandLines(), CommandList());
}

class VeritasSetFailureMonitor : public VeritasTest {
protected:
    VeritasSetFailureMonitor() {
        server.Online();
        tools.Answer(L"hares -list  Group=EVS1  Type=RegRep ", Listed({"RegRep1"}));
        tools.Answer(L"hares -display RegRep1 -attribute Keys ", Shown("RegRep1", "Keys", "HKLM\\" + ProductKeyText));
    }

    void Check(std::vector<FailingRun> rows) {
        rows.insert(rows.begin() + 1, untilFound.begin(), untilFound.end());
        ExpectOfEachFailingRun(
            *this, [this] { return TrueOrFalse(cluster.CreateQAVResourceAndTurnItOn(L"MAIL1", 1000)); }, rows);
    }
    static Texts Creating(const std::string& child) {
        return Texts{"I Creating EVS1-QAV_Monitor..."} +
               ServiceResource("EVS1-QAV_Monitor", "QAV_Monitor", child, WithLanman()) +
               TurnOn("EVS1-QAV_Monitor", "NODE2");
    }

    InstalledServer server{*this};
    ServiceStandIn service{Platform()};

    const Texts enter = {"> CreateQAVResource"};
    const Texts leave = {"< CreateQAVResource"};
    const Texts started = Texts{Started("QAV_Monitor")} + leave;
    const Texts regRepList = {"$ hares -list  Group=EVS1  Type=RegRep "};
    const Texts found = enter + FindServer() + regRepList + Texts{"$ hares -display RegRep1 -attribute Keys "};
    const Texts notListed = found + ServiceNotListed("QAV_Monitor") + CallFailed + Creating("RegRep1") + started;
    // Runs 1 to 4.
    const std::vector<FailingRun> untilFound = {
        {"a network name that is not found is no failure", "true", enter + ServerNotFound(1) + leave},
        {"a network name without a group is no failure", "true", enter + ServerNotFound(2) + leave},
        {"a group without a state is no failure", "true", enter + ServerNotFound(3) + leave},
        {"RegRep resources that are not listed are no failure", "true", enter + FindServer() + regRepList + leave}};
};

TEST_F(VeritasSetFailureMonitor, CreateQAVResourceAndTurnItOnFailsOnlyWhenTheNewResourceIsNotTurnedOn) {
    server.Service("QAV_Monitor", {});
    const Texts missing = found + NoService("QAV_Monitor");
    const Texts good = missing + Creating("RegRep1") + started;
    std::vector<FailingRun> rows = {
        {"the monitor is added", "true", good},
        {"a RegRep resource without keys is not the product's", "true", missing + Creating("") + started},
        {"a monitor that is not listed is added", "true", notListed}};
    for (unsigned run = 7; run <= 20; ++run) { // add, ten attributes, link, clear, probe
        rows.push_back({"commands that change the cluster are no matter", "true", good});
    }
    rows.push_back({"a new resource that is not turned on is a failure", "false",
                    missing + Creating("RegRep1") + Texts{"W failed to turn res: EVS1-QAV_Monitor online."} + leave});
    Check(rows);
}

TEST_F(VeritasSetFailureMonitor, CreateQAVResourceAndTurnItOnWhereItExistsNeverFails) {
    server.Service("QAV_Monitor", {"mine"});
    const Texts turned = found + FindService("QAV_Monitor") + TurnOn("mine", "NODE2");
    Check({{"the monitor is turned on", "true", turned + started},
           {"no RegRep resource is needed", "true", turned + started},
           {"a monitor that is not listed is added", "true", notListed},
           {"a fault that is not cleared is no matter", "true", turned + started},
           {"a missing probe is no matter", "true", turned + started},
           {"a resource that is not turned on is no failure", "true",
            turned + Texts{"W failed to turn res: mine online."} + leave}});
}

class VeritasSetFailureRemoteConfig : public VeritasTest {
protected:
    VeritasSetFailureRemoteConfig() {
        server.Online();
        tools.Answer(L"vcsencrypt -agent clear", "eNcRyPtEd\r\n");
        server.Service("OXAHostService", {"Host1"});
    }

    void Check(std::vector<FailingRun> rows) {
        rows.insert(rows.begin() + 1, untilFound.begin(), untilFound.end());
        ExpectOfEachFailingRun(
            *this,
            [this] {
                return TrueOrFalse(
                    cluster.CreateRemoteConfigResourceAndTurnItOn(L"MAIL1", L"DOMAIN", L"admin", L"clear", 1000));
            },
            rows);
    }
    static Texts Creating(const std::string& password = "\"eNcRyPtEd\"") {
        return Texts{"I Creating EVS1-OXA_RemoteConfig...", "* vcsencrypt -agent clear"} +
               ServiceResource("EVS1-OXA_RemoteConfig", "OXA_RemoteConfig", "Host1", WithAccount(password)) +
               TurnOn("EVS1-OXA_RemoteConfig", "NODE2");
    }
    Texts NotFound(unsigned failing) const {
        return enter + ServerNotFound(failing) + Texts{"W Unable to Collect EVS info"} + leave;
    }

    InstalledServer server{*this};
    ServiceStandIn service{Platform()};

    const Texts enter = {"> CreateRemoteConfigResource"};
    const Texts leave = {"< CreateRemoteConfigResource"};
    const Texts started = Texts{Started("OXA_RemoteConfig")} + leave;
    const Texts found = enter + FindServer();
    const Texts host = FindService("OXAHostService");
    // Runs 1 to 4.
    const std::vector<FailingRun> untilFound = {
        {"a network name that is not found is a failure", "false", NotFound(1)},
        {"a network name without a group is a failure", "false", NotFound(2)},
        {"a group without a state is a failure", "false", NotFound(3)},
        {"a remote configuration that is not listed is added", "true",
         found + ServiceNotListed("OXA_RemoteConfig") + CallFailed + host + Creating() + started}};
};

TEST_F(VeritasSetFailureRemoteConfig, CreateRemoteConfigResourceAndTurnItOnFailsWithoutServerOrHostOrSwitchOn) {
    server.Service("OXA_RemoteConfig", {});
    const Texts missing = found + NoService("OXA_RemoteConfig");
    const Texts good = missing + host + Creating() + started;
    std::vector<FailingRun> rows = {
        {"the remote configuration is added", "true", good},
        {"a host service that is not listed is a failure", "false",
         missing + ServiceNotListed("OXAHostService") + Texts{"W Unable to GetKOVAResoruceNameInGroup"} + leave},
        {"a password that is not encrypted is stored empty", "true", missing + host + Creating("\"\"") + started}};
    for (unsigned run = 7; run <= 20; ++run) { // add, ten attributes, link, clear, probe
        rows.push_back({"commands that change the cluster are no matter", "true", good});
    }
    rows.push_back(
        {"a new resource that is not turned on is a failure", "false",
         missing + host + Creating() + Texts{"W failed to turn res: EVS1-OXA_RemoteConfig online."} + leave});
    Check(rows);
}

TEST_F(VeritasSetFailureRemoteConfig, CreateRemoteConfigResourceAndTurnItOnWhereItExistsFailsWithoutServerAlone) {
    server.Service("OXA_RemoteConfig", {"mine"});
    const Texts turned = found + FindService("OXA_RemoteConfig") + TurnOn("mine", "NODE2");
    Check({{"the remote configuration is turned on", "true", turned + started},
           {"a fault that is not cleared is no matter", "true", turned + started},
           {"a missing probe is no matter", "true", turned + started},
           {"a resource that is not turned on is no failure", "true",
            turned + Texts{"W failed to turn res: mine online."} + leave}});
}

TEST_F(VeritasSetFailure, CollectKOVAResNamesEndsAtAFailedQuery) {
    Registry().SetText(ProductKey, L"DataRootPath", L"F:\\Data\\Store");
    const char* const services[] = {"OXAHostService", "OXA_RemoteConfig", "OXASAService", "QAV_Monitor"};
    for (const std::string conditions : {"", " Group=EVS1 "}) {
        Texts queries;
        for (const std::string name : services) {
            queries.push_back("hares -list " + conditions + " Type=GenericService  ServiceName=" + name + " ");
            tools.Answer(Utf16(queries.back()), Listed({name}));
        }
        queries.push_back("hares -list " + conditions + " Type=RegRep  ReplicationDirectory=\\Data\\RegRep ");
        tools.Answer(Utf16(queries.back()), Listed({"RegRep"}));

        const auto member = [&] {
            Names names = {L"before"};
            const bool result =
                conditions.empty() ? cluster.CollectKOVAResNames(names) : cluster.CollectKOVAResNames(L"EVS1", names);
            return TrueOrFalse(result) + Spaced(names);
        };
        const auto told = [&](std::size_t count) {
            Texts lines = {"> CollectKOVAResNames"};
            for (std::size_t i = 0; i < count; ++i) {
                if (i == 4) {
                    lines.push_back("I GetVeritasDiskPath: returns: F:\\Data\\Store");
                }
                lines.push_back("$ " + queries[i]);
            }
            return lines + Texts{"< CollectKOVAResNames"};
        };
        const std::string found = " before OXAHostService OXA_RemoteConfig OXASAService QAV_Monitor";
        ExpectOfEachFailingRun(
            *this, member,
            {{"all queries run", "true" + found + " RegRep", told(5)},
             {"nothing is found", "false before", told(1)},
             {"the host service is kept", "false before OXAHostService", told(2)},
             {"two services are kept", "false before OXAHostService OXA_RemoteConfig", told(3)},
             {"three services are kept", "false before OXAHostService OXA_RemoteConfig OXASAService", told(4)},
             {"all services are kept", "false" + found, told(5)}});
    }
}

} // namespace
