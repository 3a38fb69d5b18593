// What becomes of the product's resource set when the n-th tool cannot be started, for every n.
#include "SetFailureFixture.h"

using namespace harness;

namespace {

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

class VeritasSetFailureCreation : public CreationTest {
protected:
    // Only the encryption and the host service's switch-on matter for what follows; nothing for the result.
    void CheckCreation(const SetChoice& creation) {
        const Texts good = Expected(creation);
        const unsigned count = static_cast<unsigned>(RunsIn(good));
        for (unsigned failing = 1; failing <= count; ++failing) {
            const std::string run = RunNumber(good, failing);
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
            EXPECT_TRUE(Create(creation)) << run;
            EXPECT_EQ(Waiting(), waiting) << run;
            EXPECT_EQ(Told(), Lines(told)) << "fails: " << run;
            Audit();
        }
    }
};

TEST_F(VeritasSetFailureCreation, CreateKOVAResourcesOfAnOnlineGroupWithAllServicesRunsAndTellsTheRest) {
    const SetChoice creation = {true, true, FullAccount, true};
    EXPECT_EQ(RunsIn(Expected(creation)), 8u + 13u + 12u + 12u + 13u + 12u);
    CheckCreation(creation);
}

TEST_F(VeritasSetFailureCreation, CreateKOVAResourcesOfAnOfflineGroupWithAllServicesRunsAndTellsTheRest) {
    CheckCreation({true, true, NoAccount, false});
}

TEST_F(VeritasSetFailureCreation, CreateKOVAResourcesOfAnOnlineGroupWithoutOptionalServicesRunsAndTellsTheRest) {
    CheckCreation({false, false, NoAccount, true});
}

TEST_F(VeritasSetFailure, CheckIfGenericServiceResourceExistsAndTurnItOnIsTrueOnceTheResourceIsFound) {
    Service("Svc", {"res"});
    const auto member = [this] {
        return Text(cluster.CheckIfGenericServiceResourceExistsAndTurnItOn(L"EVS1", L"Svc", L"NODE2", 1000));
    };
    const Texts all = FindService("Svc") + TurnOn("res", "NODE2");
    const Texts good = all + Texts{Started("Svc")};
    Check(member, {{0, "true", good},
                   {1, "false",
                    FindService("Svc", "W Fail to enumerate resource for Group EVS1") +
                        Texts{"W call to GetGenericServiceResNameByServiceName failed"}},
                   {2, "true", good},
                   {3, "true", good},
                   {4, "true", all + Texts{"W failed to turn res: res online."}}});
}

class VeritasSetFailureAddition : public VeritasSetFailure {
protected:
    VeritasSetFailureAddition() {
        Online();
        tools.Answer(L"hares -list  Group=EVS1  Type=RegRep ", Listed({"RegRep1"}));
        tools.Answer(L"hares -display RegRep1 -attribute Keys ", Shown("RegRep1", "Keys", "HKLM\\" + Utf8(ProductKey)));
        tools.Answer(L"vcsencrypt -agent clear", "eNcRyPtEd\r\n");
        Service("OXAHostService", {"Host1"});
    }

    // What finding the virtual server tells when its command `failing` (1 to 3) fails.
    static Texts ServerNotFound(unsigned failing) {
        const char* const messages[] = {"W EnumResourceNames fail",
                                        "W Failed to get Group attribute for resource Lanman1",
                                        "W Failed to get Group online node for resource Lanman1"};
        Texts told = FindServer();
        told.resize(1 + failing);
        return told + Texts{messages[failing - 1], "< CollectEVSInfo"};
    }
    static Texts ServiceNotListed(const std::string& serviceName) {
        return FindService(serviceName, "W Fail to enumerate resource for Group EVS1");
    }

    const Texts regRepList = {"$ hares -list  Group=EVS1  Type=RegRep "};
    const Texts regRep = regRepList + Texts{"$ hares -display RegRep1 -attribute Keys "};
    const Texts callFailed = {"W call to GetGenericServiceResNameByServiceName failed"};
};

class VeritasSetFailureMonitor : public VeritasSetFailureAddition {
protected:
    std::string Add() {
        return Text(cluster.CreateQAVResourceAndTurnItOn(L"MAIL1", 1000));
    }
    Texts Creating(const std::string& child) const {
        return Texts{"I Creating EVS1-QAV_Monitor..."} +
               ServiceResource("EVS1-QAV_Monitor", "QAV_Monitor", child, WithLanman()) +
               TurnOn("EVS1-QAV_Monitor", "NODE2");
    }

    const Texts enter = {"> CreateQAVResource"};
    const Texts leave = {"< CreateQAVResource"};
    const Texts started = Texts{Started("QAV_Monitor")} + leave;
    const Texts found = enter + FindServer() + regRep;
    const std::vector<Failure> untilFound = {{1, "true", enter + ServerNotFound(1) + leave},
                                             {2, "true", enter + ServerNotFound(2) + leave},
                                             {3, "true", enter + ServerNotFound(3) + leave},
                                             {4, "true", enter + FindServer() + regRepList + leave}};
};

TEST_F(VeritasSetFailureMonitor, CreateQAVResourceAndTurnItOnFailsOnlyWhenTheNewResourceIsNotTurnedOn) {
    Service("QAV_Monitor", {});
    const Texts good = found + NoService("QAV_Monitor") + Creating("RegRep1") + started;
    std::vector<Failure> failures = untilFound;
    failures.insert(failures.begin(), {0, "true", good});
    failures.push_back({5, "true", found + NoService("QAV_Monitor") + Creating("") + started});
    failures.push_back(
        {6, "true", found + ServiceNotListed("QAV_Monitor") + callFailed + Creating("RegRep1") + started});
    for (unsigned failing = 7; failing <= 20; ++failing) { // add, ten attributes, link, clear, probe
        failures.push_back({failing, "true", good});
    }
    failures.push_back({21, "false",
                        found + NoService("QAV_Monitor") + Creating("RegRep1") +
                            Texts{"W failed to turn res: EVS1-QAV_Monitor online."} + leave});
    Check([this] { return Add(); }, failures);
}

TEST_F(VeritasSetFailureMonitor, CreateQAVResourceAndTurnItOnWhereItExistsNeverFails) {
    Service("QAV_Monitor", {"mine"});
    const Texts turned = found + FindService("QAV_Monitor") + TurnOn("mine", "NODE2");
    std::vector<Failure> failures = untilFound;
    failures.insert(failures.begin(), {0, "true", turned + started});
    failures.push_back({5, "true", turned + started});
    failures.push_back(
        {6, "true", found + ServiceNotListed("QAV_Monitor") + callFailed + Creating("RegRep1") + started});
    failures.push_back({7, "true", turned + started});
    failures.push_back({8, "true", turned + started});
    failures.push_back({9, "true", turned + Texts{"W failed to turn res: mine online."} + leave});
    Check([this] { return Add(); }, failures);
}

class VeritasSetFailureRemoteConfig : public VeritasSetFailureAddition {
protected:
    std::string Add() {
        return Text(cluster.CreateRemoteConfigResourceAndTurnItOn(L"MAIL1", L"DOMAIN", L"admin", L"clear", 1000));
    }
    Texts Creating(const std::string& password = "\"eNcRyPtEd\"") const {
        ServiceAttributes attributes = WithLanman();
        attributes.user = "\"admin\"";
        attributes.password = password;
        attributes.domain = "\"DOMAIN\"";
        return Texts{"I Creating EVS1-OXA_RemoteConfig...", "* vcsencrypt -agent clear"} +
               ServiceResource("EVS1-OXA_RemoteConfig", "OXA_RemoteConfig", "Host1", attributes) +
               TurnOn("EVS1-OXA_RemoteConfig", "NODE2");
    }
    Texts NotFound(unsigned failing) const {
        return enter + ServerNotFound(failing) + Texts{"W Unable to Collect EVS info"} + leave;
    }

    const Texts enter = {"> CreateRemoteConfigResource"};
    const Texts leave = {"< CreateRemoteConfigResource"};
    const Texts started = Texts{Started("OXA_RemoteConfig")} + leave;
    const Texts found = enter + FindServer();
    const Texts host = FindService("OXAHostService");
};

TEST_F(VeritasSetFailureRemoteConfig, CreateRemoteConfigResourceAndTurnItOnFailsWithoutServerOrHostOrSwitchOn) {
    Service("OXA_RemoteConfig", {});
    const Texts missing = found + NoService("OXA_RemoteConfig");
    const Texts good = missing + host + Creating() + started;
    std::vector<Failure> failures = {
        {0, "true", good},
        {1, "false", NotFound(1)},
        {2, "false", NotFound(2)},
        {3, "false", NotFound(3)},
        {4, "true", found + ServiceNotListed("OXA_RemoteConfig") + callFailed + host + Creating() + started},
        {5, "false",
         missing + ServiceNotListed("OXAHostService") + Texts{"W Unable to GetKOVAResoruceNameInGroup"} + leave},
        {6, "true", missing + host + Creating("\"\"") + started}};
    for (unsigned failing = 7; failing <= 20; ++failing) { // add, ten attributes, link, clear, probe
        failures.push_back({failing, "true", good});
    }
    failures.push_back(
        {21, "false",
         missing + host + Creating() + Texts{"W failed to turn res: EVS1-OXA_RemoteConfig online."} + leave});
    Check([this] { return Add(); }, failures);
}

TEST_F(VeritasSetFailureRemoteConfig, CreateRemoteConfigResourceAndTurnItOnWhereItExistsFailsWithoutServerAlone) {
    Service("OXA_RemoteConfig", {"mine"});
    const Texts turned = found + FindService("OXA_RemoteConfig") + TurnOn("mine", "NODE2");
    Check([this] { return Add(); },
          {{0, "true", turned + started},
           {1, "false", NotFound(1)},
           {2, "false", NotFound(2)},
           {3, "false", NotFound(3)},
           {4, "true", found + ServiceNotListed("OXA_RemoteConfig") + callFailed + host + Creating() + started},
           {5, "true", turned + started},
           {6, "true", turned + started},
           {7, "true", turned + Texts{"W failed to turn res: mine online."} + leave}});
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
            std::string text = Text(result);
            for (const std::wstring& name : names) {
                text += " " + Utf8(name);
            }
            return text;
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
        Check(member, {{0, "true before OXAHostService OXA_RemoteConfig OXASAService QAV_Monitor RegRep", told(5)},
                       {1, "false before", told(1)},
                       {2, "false before OXAHostService", told(2)},
                       {3, "false before OXAHostService OXA_RemoteConfig", told(3)},
                       {4, "false before OXAHostService OXA_RemoteConfig OXASAService", told(4)},
                       {5, "false before OXAHostService OXA_RemoteConfig OXASAService QAV_Monitor", told(5)}});
    }
}

} // namespace
