// Turning on an existing service resource, and adding the optional ones to an existing installation.
#include "InstalledServer.h"
#include "ServiceStandIn.h"

using namespace harness;

namespace {

// Existing resources

class VeritasSwitchOn : public VeritasTest {
protected:
    bool TurnItOn(int timeout = 5000) {
        return cluster.CheckIfGenericServiceResourceExistsAndTurnItOn(L"EVS1", L"Svc", L"NODE2", timeout);
    }

    InstalledServer server{*this};
    ServiceStandIn service{Platform()};
};

TEST_F(VeritasSwitchOn, BringsAnExistingResourceOnlineAndAwaitsItsService) {
    server.Service("Svc", {"res", "second"});
    EXPECT_TRUE(TurnItOn());
    EXPECT_EQ(Told(*this), Lines(FindService("Svc") + TurnOn("res", "NODE2") + Texts{Started("Svc")}));
    EXPECT_EQ(Waiting(*this), RunsAtOnce("Svc"));
}

TEST_F(VeritasSwitchOn, HandsTheTimeOutOnInMilliseconds) {
    server.Service("Svc", {"res"});
    service.state = [](unsigned) { return SERVICE_STOPPED; };
    const struct {
        int timeout;
        unsigned looks;
    } waits[] = {{1, 1}, {999, 1}, {1000, 2}, {2500, 3}, {5000, 6}};
    for (const auto& wait : waits) {
        EXPECT_TRUE(TurnItOn(wait.timeout));
        EXPECT_EQ(Waiting(*this), LooksInVain("Svc", wait.looks)) << wait.timeout;
    }
    for (const int timeout : {0, -1}) {
        EXPECT_TRUE(TurnItOn(timeout));
        EXPECT_EQ(Waiting(*this), Texts()) << timeout;
    }
}

TEST_F(VeritasSwitchOn, TellsOfAResourceThatIsNotThere) {
    server.Service("Svc", {});
    EXPECT_FALSE(TurnItOn());
    EXPECT_EQ(Told(*this), Lines(NoService("Svc")));
}

TEST_F(VeritasSwitchOn, TellsOfAGroupThatCannotBeListed) {
    tools.AnswerNext("EVS1 ERROR\r\n");
    EXPECT_FALSE(TurnItOn());
    EXPECT_EQ(Told(*this), Lines(FindService("Svc", "W Fail to enumerate resource for Group EVS1") +
                                 Texts{"W call to GetGenericServiceResNameByServiceName failed"}));
}

TEST_F(VeritasSwitchOn, NullCountsAsAnEmptyGroupAndService) {
    tools.Answer(L"hares -list  Type=GenericService  ServiceName=  Group= ", Listed({"res"}));
    EXPECT_TRUE(cluster.CheckIfGenericServiceResourceExistsAndTurnItOn(nullptr, nullptr, L"NODE2", 1));
    EXPECT_EQ(Waiting(*this), RunsAtOnce(""));
}

TEST_F(VeritasSwitchOn, AResourceThatCannotBeTurnedOnExistsAllTheSame) {
    server.Service("Svc", {"res"});
    tools.FailStart(4, ERROR_FILE_NOT_FOUND);
    EXPECT_TRUE(TurnItOn());
    EXPECT_EQ(Told(*this),
              Lines(FindService("Svc") + TurnOn("res", "NODE2") + Texts{"W failed to turn res: res online."}));
    EXPECT_EQ(Waiting(*this), Texts());
}

TEST_F(VeritasSwitchOn, AServiceThatDoesNotStartHasAResourceAllTheSame) {
    server.Service("Svc", {"res"});
    service.openError = ERROR_SERVICE_DOES_NOT_EXIST;
    EXPECT_TRUE(TurnItOn());
    EXPECT_EQ(Told(*this), Lines(FindService("Svc") + TurnOn("res", "NODE2") +
                                 Texts{"E OS::CException caught, Err code: 1060", "W unable to start service Svc."}));
}

TEST_F(VeritasSwitchOn, WithoutASystemTheResourceIsNotProbed) {
    server.Service("Svc", {"res"});
    EXPECT_TRUE(cluster.CheckIfGenericServiceResourceExistsAndTurnItOn(L"EVS1", L"Svc", nullptr, 0));
    EXPECT_EQ(Told(*this), Lines(FindService("Svc") + Texts{"$ hares -clear  res", "$ hares -online res -sys  "}));
}

// The quarantine monitor

class VeritasAddMonitor : public VeritasTest {
protected:
    VeritasAddMonitor() {
        tools.Answer(L"hares -list  Group=EVS1  Type=RegRep ", Listed({"RegRep1"}));
    }
    void RegRep(const std::string& keys = "HKLM\\" + ProductKeyText) {
        tools.Answer(L"hares -display RegRep1 -attribute Keys ", Shown("RegRep1", "Keys", keys));
    }
    bool Add(int timeout = 5000) {
        return cluster.CreateQAVResourceAndTurnItOn(L"MAIL1", timeout);
    }
    Texts Created(const std::string& child, const std::string& system) const {
        return enter + FindServer() + regRepFound + NoService("QAV_Monitor") + Texts{"I Creating EVS1-QAV_Monitor..."} +
               ServiceResource("EVS1-QAV_Monitor", "QAV_Monitor", child, WithLanman()) +
               TurnOn("EVS1-QAV_Monitor", system);
    }

    const Texts enter = {"> CreateQAVResource"};
    const Texts leave = {"< CreateQAVResource"};
    const Texts regRepFound = {"$ hares -list  Group=EVS1  Type=RegRep ", "$ hares -display RegRep1 -attribute Keys "};
    InstalledServer server{*this};
    ServiceStandIn service{Platform()};
};

TEST_F(VeritasAddMonitor, CreatesItBelowTheRegRepResourceTurnsItOnAndAwaitsIt) {
    server.Online();
    RegRep();
    server.Service("QAV_Monitor", {});
    EXPECT_TRUE(Add());
    EXPECT_EQ(Told(*this), Lines(Created("RegRep1", "NODE2") + Texts{Started("QAV_Monitor")} + leave));
    EXPECT_EQ(Waiting(*this), RunsAtOnce("QAV_Monitor"));
}

TEST_F(VeritasAddMonitor, AnUnknownNetworkNameIsNoFailure) {
    EXPECT_TRUE(cluster.CreateQAVResourceAndTurnItOn(L"MAIL9", 5000));
    EXPECT_EQ(Told(*this), Lines(enter +
                                 Texts{"> CollectEVSInfo", "$ hares -list  Type=Lanman  VirtualName=MAIL9 ",
                                       "W No Lanman resource found.", "< CollectEVSInfo"} +
                                 leave));
}

TEST_F(VeritasAddMonitor, RegRepResourcesThatCannotBeListedAreNoFailure) {
    server.Online();
    tools.FailStart(4, ERROR_FILE_NOT_FOUND);
    EXPECT_TRUE(Add());
    EXPECT_EQ(Told(*this), Lines(enter + FindServer() + Texts{"$ hares -list  Group=EVS1  Type=RegRep "} + leave));
}

TEST_F(VeritasAddMonitor, WithoutARegRepResourceOfTheProductItIsLinkedToAnEmptyName) {
    server.Online();
    RegRep("HKLM\\SOFTWARE\\Other");
    server.Service("QAV_Monitor", {});
    EXPECT_TRUE(Add());
    EXPECT_EQ(Told(*this), Lines(Created("", "NODE2") + Texts{Started("QAV_Monitor")} + leave));
}

TEST_F(VeritasAddMonitor, AnExistingOneIsOnlyTurnedOn) {
    server.Online();
    RegRep();
    server.Service("QAV_Monitor", {"mine"});
    EXPECT_TRUE(Add());
    EXPECT_EQ(Told(*this), Lines(enter + FindServer() + regRepFound + FindService("QAV_Monitor") +
                                 TurnOn("mine", "NODE2") + Texts{Started("QAV_Monitor")} + leave));
}

TEST_F(VeritasAddMonitor, AnExistingOneThatCannotBeTurnedOnIsNoFailure) {
    server.Online();
    RegRep();
    server.Service("QAV_Monitor", {"mine"});
    tools.FailStart(L"hares -online mine -sys NODE2 ", ERROR_FILE_NOT_FOUND);
    EXPECT_TRUE(Add());
    EXPECT_EQ(Told(*this), Lines(enter + FindServer() + regRepFound + FindService("QAV_Monitor") +
                                 TurnOn("mine", "NODE2") + Texts{"W failed to turn res: mine online."} + leave));
}

TEST_F(VeritasAddMonitor, ANewOneThatCannotBeTurnedOnIsAFailure) {
    server.Online();
    RegRep();
    server.Service("QAV_Monitor", {});
    tools.FailStart(L"hares -online EVS1-QAV_Monitor -sys NODE2 ", ERROR_FILE_NOT_FOUND);
    EXPECT_FALSE(Add());
    EXPECT_EQ(Told(*this),
              Lines(Created("RegRep1", "NODE2") + Texts{"W failed to turn res: EVS1-QAV_Monitor online."} + leave));
    EXPECT_EQ(Waiting(*this), Texts());
}

TEST_F(VeritasAddMonitor, ANewOneWhoseServiceDoesNotStartIsNoFailure) {
    server.Online();
    RegRep();
    server.Service("QAV_Monitor", {});
    service.state = [](unsigned) { return SERVICE_STOPPED; };
    EXPECT_TRUE(Add(2500));
    EXPECT_EQ(Told(*this),
              Lines(Created("RegRep1", "NODE2") + Texts{"W unable to start service QAV_Monitor."} + leave));
    EXPECT_EQ(Waiting(*this), LooksInVain("QAV_Monitor", 3));
}

TEST_F(VeritasAddMonitor, OfAnOfflineGroupIsTurnedOnWithAnEmptySystem) {
    tools.Answer(L"hagrp -state EVS1 ", States("EVS1", {{"NODE1", "|OFFLINE|"}}));
    RegRep();
    server.Service("QAV_Monitor", {});
    EXPECT_TRUE(Add(0));
    EXPECT_EQ(Told(*this), Lines(Created("RegRep1", "") + leave));
}

// The remote configuration

class VeritasAddRemoteConfig : public VeritasTest {
protected:
    VeritasAddRemoteConfig() {
        tools.AnswerPrefix(L"vcsencrypt -agent ", "eNcRyPtEd\r\n");
    }
    bool Add(int timeout = 5000, const Account& account = FullAccount) {
        return cluster.CreateRemoteConfigResourceAndTurnItOn(L"MAIL1", account.group, account.user, account.password,
                                                             timeout);
    }
    Texts Created(const std::string& command, const ServiceAttributes& attributes,
                  const std::string& system = "NODE2") const {
        return enter + FindServer() + NoService("OXA_RemoteConfig") + FindService("OXAHostService") +
               Texts{"I Creating EVS1-OXA_RemoteConfig...", command} +
               ServiceResource("EVS1-OXA_RemoteConfig", "OXA_RemoteConfig", "Host1", attributes) +
               TurnOn("EVS1-OXA_RemoteConfig", system);
    }

    const Texts enter = {"> CreateRemoteConfigResource"};
    const Texts leave = {"< CreateRemoteConfigResource"};
    const std::string encryption = "* vcsencrypt -agent clear";
    InstalledServer server{*this};
    ServiceStandIn service{Platform()};
};

TEST_F(VeritasAddRemoteConfig, CreatesItBelowTheHostServiceTurnsItOnAndAwaitsIt) {
    server.Online();
    server.Service("OXA_RemoteConfig", {});
    server.Service("OXAHostService", {"Host1", "Host2"});
    EXPECT_TRUE(Add());
    EXPECT_EQ(Told(*this), Lines(Created(encryption, WithAccount()) + Texts{Started("OXA_RemoteConfig")} + leave));
    EXPECT_EQ(Waiting(*this), RunsAtOnce("OXA_RemoteConfig"));
}

TEST_F(VeritasAddRemoteConfig, AnUnknownNetworkNameIsAFailure) {
    EXPECT_FALSE(cluster.CreateRemoteConfigResourceAndTurnItOn(L"MAIL9", L"D", L"u", L"p", 5000));
    EXPECT_EQ(Told(*this),
              Lines(enter +
                    Texts{"> CollectEVSInfo", "$ hares -list  Type=Lanman  VirtualName=MAIL9 ",
                          "W No Lanman resource found.", "< CollectEVSInfo", "W Unable to Collect EVS info"} +
                    leave));
}

TEST_F(VeritasAddRemoteConfig, AnExistingOneIsOnlyTurnedOn) {
    server.Online();
    server.Service("OXA_RemoteConfig", {"mine"});
    EXPECT_TRUE(Add());
    EXPECT_EQ(Told(*this), Lines(enter + FindServer() + FindService("OXA_RemoteConfig") + TurnOn("mine", "NODE2") +
                                 Texts{Started("OXA_RemoteConfig")} + leave));
}

TEST_F(VeritasAddRemoteConfig, WithoutAHostServiceResourceIsAFailure) {
    server.Online();
    server.Service("OXA_RemoteConfig", {});
    server.Service("OXAHostService", {});
    EXPECT_FALSE(Add());
    EXPECT_EQ(Told(*this), Lines(enter + FindServer() + NoService("OXA_RemoteConfig") +
                                 FindService("OXAHostService", "W No resource found in Group EVS1") +
                                 Texts{"W Unable to GetKOVAResoruceNameInGroup"} + leave));
}

TEST_F(VeritasAddRemoteConfig, ANewOneThatCannotBeTurnedOnIsAFailure) {
    server.Online();
    server.Service("OXA_RemoteConfig", {});
    server.Service("OXAHostService", {"Host1"});
    tools.FailStart(L"hares -online EVS1-OXA_RemoteConfig -sys NODE2 ", ERROR_FILE_NOT_FOUND);
    EXPECT_FALSE(Add());
    EXPECT_EQ(Told(*this), Lines(Created(encryption, WithAccount()) +
                                 Texts{"W failed to turn res: EVS1-OXA_RemoteConfig online."} + leave));
}

TEST_F(VeritasAddRemoteConfig, ANewOneWhoseServiceDoesNotStartIsNoFailure) {
    server.Online();
    server.Service("OXA_RemoteConfig", {});
    server.Service("OXAHostService", {"Host1"});
    service.state = [](unsigned) { return SERVICE_STOPPED; };
    EXPECT_TRUE(Add(1000));
    EXPECT_EQ(Waiting(*this), LooksInVain("OXA_RemoteConfig", 2));
    EXPECT_EQ(Told(*this),
              Lines(Created(encryption, WithAccount()) + Texts{"W unable to start service OXA_RemoteConfig."} + leave));
}

TEST_F(VeritasAddRemoteConfig, APasswordThatIsNotEncryptedIsStoredEmpty) {
    server.Online();
    server.Service("OXA_RemoteConfig", {});
    server.Service("OXAHostService", {"Host1"});
    tools.Answer(L"vcsencrypt -agent clear", "");
    EXPECT_TRUE(Add(0));
    EXPECT_EQ(Told(*this), Lines(Created(encryption, WithAccount("\"\"")) + leave));
}

TEST_F(VeritasAddRemoteConfig, NullTextsCountAsEmpty) {
    ServiceAttributes attributes = WithLanman();
    attributes.user = "\"\"";
    attributes.domain = "\"\"";
    attributes.password = "\"eNcRyPtEd\"";
    server.Online();
    server.Service("OXA_RemoteConfig", {});
    server.Service("OXAHostService", {"Host1"});
    EXPECT_TRUE(Add(0, NoAccount));
    EXPECT_EQ(Told(*this), Lines(Created("* vcsencrypt -agent ", attributes) + leave));
}

TEST_F(VeritasAddRemoteConfig, ThePasswordIsNowhereInTheLog) {
    server.Online();
    server.Service("OXA_RemoteConfig", {});
    server.Service("OXAHostService", {"Host1"});
    EXPECT_TRUE(Add(0, {L"DOMAIN", L"admin", L"pass word"}));
    EXPECT_THAT(tools.TakeCommandLines(), ::testing::Contains(L"vcsencrypt -agent pass word"));
    const std::string log = TakeLog();
    EXPECT_THAT(log, ::testing::Not(::testing::HasSubstr("pass")));
    EXPECT_THAT(log, ::testing::Not(::testing::HasSubstr("Result: eNcRyPtEd")));
}

TEST_F(VeritasAddRemoteConfig, NullCountsAsAnEmptyNetworkName) {
    tools.Answer(L"hares -list  Type=Lanman  VirtualName= ", "");
    EXPECT_FALSE(cluster.CreateRemoteConfigResourceAndTurnItOn(nullptr, L"DOMAIN", L"admin", L"p", 0));
    EXPECT_TRUE(cluster.CreateQAVResourceAndTurnItOn(nullptr, 0));
    EXPECT_EQ(tools.TakeCommandLines(), (CommandList(2, L"hares -list  Type=Lanman  VirtualName= ")));
}

} // namespace
