// Creating the product's resource set.
#include "ServiceStandIn.h"
#include "SetCreation.h"

#include <climits>

using namespace harness;

namespace {

class VeritasCreateSet : public VeritasTest {
protected:
    // The value that a resource's attribute is set to, "not set" when it is not.
    std::string Value(const std::string& resource, const std::string& attribute) const {
        const std::string prefix = "hares -modify " + resource + "  " + attribute + " ";
        for (const std::wstring& command : tools.CommandLines()) {
            const std::string text = Utf8(command);
            if (BeginsWith(text, prefix)) {
                return text.substr(prefix.size(), text.size() - prefix.size() - 1);
            }
        }
        return "not set";
    }

    SetCreation set{*this};
    ServiceStandIn service{Platform()};
};

// Commands and messages

TEST_F(VeritasCreateSet, WithoutOptionalServicesOfAnOfflineGroupCreatesThreeResourcesAndTurnsNothingOn) {
    EXPECT_TRUE(set.Create({false, false, FullAccount, false}));
    EXPECT_EQ(Told(*this), Lines({"> CreateKOVAResources",
                                  "$ hares -add EVS1-RegRep RegRep EVS1 ",
                                  "$ hares -modify EVS1-RegRep  MountResName EVS1-MountV ",
                                  "$ hares -modify EVS1-RegRep  ReplicationDirectory \\Data\\RegRep ",
                                  "$ hares -modify EVS1-RegRep  Keys "
                                  "\"HKLM\\SOFTWARE\\Plinthcore\\Zyntra Gate\\CurrentVersion\" \"\" ",
                                  "$ hares -modify EVS1-RegRep  RestoreLocally 1 ",
                                  "$ hares -modify EVS1-RegRep  Critical 0 ",
                                  "$ hares -modify EVS1-RegRep  Enabled 1 ",
                                  "$ hares -link EVS1-RegRep EVS1-MountV ",
                                  "I Creating EVS1-OXAHostService...",
                                  "$ hares -add EVS1-OXAHostService GenericService EVS1 ",
                                  "$ hares -modify EVS1-OXAHostService  DelayAfterOnline 300 ",
                                  "$ hares -modify EVS1-OXAHostService  DelayAfterOffline 120 ",
                                  "$ hares -modify EVS1-OXAHostService  UserAccount LocalSystem ",
                                  "$ hares -modify EVS1-OXAHostService  Password \"\" ",
                                  "$ hares -modify EVS1-OXAHostService  Domain \"NT Authority\" ",
                                  "$ hares -modify EVS1-OXAHostService  LanmanResName EVS1-Lanman ",
                                  "$ hares -modify EVS1-OXAHostService  UseVirtualName 1 ",
                                  "$ hares -modify EVS1-OXAHostService  ServiceName OXAHostService ",
                                  "$ hares -modify EVS1-OXAHostService  Critical 0 ",
                                  "$ hares -modify EVS1-OXAHostService  Enabled 1 ",
                                  "$ hares -link EVS1-OXAHostService EVS1-IS ",
                                  "$ hares -link EVS1-OXAHostService EVS1-RegRep ",
                                  "I Creating EVS1-OXASAService...",
                                  "$ hares -add EVS1-OXASAService GenericService EVS1 ",
                                  "$ hares -modify EVS1-OXASAService  DelayAfterOnline 300 ",
                                  "$ hares -modify EVS1-OXASAService  DelayAfterOffline 120 ",
                                  "$ hares -modify EVS1-OXASAService  UserAccount LocalSystem ",
                                  "$ hares -modify EVS1-OXASAService  Password \"\" ",
                                  "$ hares -modify EVS1-OXASAService  Domain \"NT Authority\" ",
                                  "$ hares -modify EVS1-OXASAService  LanmanResName EVS1-Lanman ",
                                  "$ hares -modify EVS1-OXASAService  UseVirtualName 1 ",
                                  "$ hares -modify EVS1-OXASAService  ServiceName OXASAService ",
                                  "$ hares -modify EVS1-OXASAService  Critical 0 ",
                                  "$ hares -modify EVS1-OXASAService  Enabled 1 ",
                                  "$ hares -link EVS1-OXASAService EVS1-RegRep ",
                                  "< CreateKOVAResources"}));
    EXPECT_EQ(Waiting(*this), Texts());
}

TEST_F(VeritasCreateSet, RunsAndTellsExactlyThisForEveryChoiceOfServicesAccountAndState) {
    for (unsigned choice = 0; choice < 64; ++choice) {
        const auto chosen = [choice](unsigned bit) { return (choice >> bit & 1) != 0; };
        const SetChoice creation = {chosen(0),
                                    chosen(1),
                                    {chosen(2) ? FullAccount.group : nullptr, chosen(3) ? FullAccount.user : nullptr,
                                     chosen(4) ? FullAccount.password : nullptr},
                                    chosen(5)};
        EXPECT_TRUE(set.Create(creation));
        EXPECT_EQ(Told(*this), Lines(CreationStory(creation))) << Describe(creation);
        EXPECT_EQ(Waiting(*this), creation.online ? RunsAtOnce("OXAHostService") : Texts()) << Describe(creation);
    }
}

TEST_F(VeritasCreateSet, OfAnOnlineGroupAwaitsTheHostServiceBeforeTheOptionalServicesAreTurnedOn) {
    EXPECT_TRUE(set.Create({true, true, FullAccount, true}));
    const Texts events = Events(*this);
    ASSERT_GE(events.size(), 17u);
    EXPECT_EQ(Texts(events.end() - 16, events.end()),
              (Texts{"CreateProcessW(hares -clear  EVS1-OXASAService)",
                     "CreateProcessW(hares -probe EVS1-OXASAService -sys  NODE1)",
                     "CreateProcessW(hares -online EVS1-OXASAService -sys NODE1 )",
                     "CreateProcessW(hares -clear  EVS1-OXAHostService)",
                     "CreateProcessW(hares -probe EVS1-OXAHostService -sys  NODE1)",
                     "CreateProcessW(hares -online EVS1-OXAHostService -sys NODE1 )",
                     "CServiceManager(OXAHostService,NULL)", "QueryServiceStatus()", "Sleep(10000)",
                     "~CServiceManager()", "CreateProcessW(hares -clear  EVS1-QAV_Monitor)",
                     "CreateProcessW(hares -probe EVS1-QAV_Monitor -sys  NODE1)",
                     "CreateProcessW(hares -online EVS1-QAV_Monitor -sys NODE1 )",
                     "CreateProcessW(hares -clear  EVS1-OXA_RemoteConfig)",
                     "CreateProcessW(hares -probe EVS1-OXA_RemoteConfig -sys  NODE1)",
                     "CreateProcessW(hares -online EVS1-OXA_RemoteConfig -sys NODE1 )"}));
}

TEST_F(VeritasCreateSet, TakesEveryNameFromTheRecord) {
    set.info.sGroupName = L"group";
    set.info.sRegRepResName = L"regrep";
    set.info.sMountResName = L"mount";
    set.info.sExchangeResName = L"store";
    set.info.sHostServiceResName = L"host";
    set.info.sSAServiceResName = L"attendant";
    set.info.sQAVMonitorResName = L"monitor";
    set.info.sRemoteConfigResName = L"remote";
    EXPECT_TRUE(set.Create({true, true, NoAccount, false}));
    Texts shape;
    for (const std::wstring& command : tools.CommandLines()) {
        if (command.find(L"-modify") == std::wstring::npos) {
            shape.push_back(Utf8(command));
        }
    }
    EXPECT_EQ(
        shape,
        (Texts{"hares -add regrep RegRep group ", "hares -link regrep mount ", "hares -add host GenericService group ",
               "hares -link host store ", "hares -link host regrep ", "hares -add attendant GenericService group ",
               "hares -link attendant regrep ", "hares -add monitor GenericService group ",
               "hares -link monitor regrep ", "hares -add remote GenericService group ", "hares -link remote host "}));
}

TEST_F(VeritasCreateSet, SucceedsWhateverTheToolsPrint) {
    for (const wchar_t* beginning : {L"hares -add ", L"hares -modify ", L"hares -link ", L"hares -online "}) {
        tools.AnswerPrefix(beginning, "VCS ERROR V-16-1-10285 refused\r\n", 1);
        tools.AnswerPrefix(beginning, "EVS1 ERROR refused\r\n", 1);
    }
    EXPECT_TRUE(set.Create({true, true, FullAccount, true}));
    EXPECT_EQ(Told(*this), Lines(CreationStory({true, true, FullAccount, true})));
}

TEST_F(VeritasCreateSet, LeavesTheCallersRecordAlone) {
    set.Create({true, true, FullAccount, true});
    EXPECT_EQ(set.info.sGroupName, L"EVS1");
    EXPECT_EQ(set.info.sDataPath, L"F:\\Data\\Store");
    EXPECT_EQ(set.info.nDelayAfterOnline, 300);
    EXPECT_EQ(set.info.sOnlineNode, L"NODE1");
}

TEST_F(VeritasCreateSet, OfARecordThatNobodyFilledRunsWithEmptyNames) {
    set.info = Server();
    EXPECT_TRUE(set.Create());
    EXPECT_THAT(Told(*this), ::testing::HasSubstr("W Cannot split path \n$ hares -add  RegRep  \n"
                                                  "$ hares -modify   MountResName  \n"
                                                  "$ hares -modify   ReplicationDirectory  \n"));
}

// Attribute values

TEST_F(VeritasCreateSet, DelaysAreWrittenAsDecimalNumbers) {
    set.info.nDelayAfterOnline = 600;
    set.info.nDelayAfterOffline = 600;
    EXPECT_TRUE(set.Create());
    EXPECT_EQ(Value("EVS1-OXAHostService", "DelayAfterOnline"), "600");
    EXPECT_EQ(Value("EVS1-OXAHostService", "DelayAfterOffline"), "600");
    for (const int delay : {0, -5, INT_MAX, INT_MIN}) {
        tools.TakeCommandLines();
        set.info.nDelayAfterOnline = delay;
        set.info.nDelayAfterOffline = 1;
        EXPECT_TRUE(set.Create(true));
        for (const char* resource : {"EVS1-OXAHostService", "EVS1-OXASAService", "EVS1-QAV_Monitor"}) {
            EXPECT_EQ(Value(resource, "DelayAfterOnline"), std::to_string(delay));
            EXPECT_EQ(Value(resource, "DelayAfterOffline"), "1");
        }
    }
}

TEST_F(VeritasCreateSet, ValuesAreWrittenAsTheyStand) {
    set.info.sLanmanResName = L"a \"lanman\" %s";
    set.info.sMountResName = L"a mount";
    EXPECT_TRUE(set.Create({false, true, {L"My domain", L"an \"admin\"", L"p"}, false}));
    EXPECT_EQ(Value("EVS1-OXAHostService", "LanmanResName"), "a \"lanman\" %s");
    EXPECT_EQ(Value("EVS1-RegRep", "MountResName"), "a mount");
    EXPECT_EQ(Value("EVS1-OXA_RemoteConfig", "UserAccount"), "\"an \"admin\"\"");
    EXPECT_EQ(Value("EVS1-OXA_RemoteConfig", "Domain"), "\"My domain\"");
}

TEST_F(VeritasCreateSet, AnEmptyLanmanNameIsWrittenEmptyWithoutQuotes) {
    set.info.sLanmanResName = L"";
    EXPECT_TRUE(set.Create());
    EXPECT_EQ(Value("EVS1-OXAHostService", "LanmanResName"), "");
}

TEST_F(VeritasCreateSet, EmptyAccountTextsCountAsGiven) {
    tools.Answer(L"vcsencrypt -agent ", "");
    EXPECT_TRUE(set.Create({false, true, {L"", L"", L""}, false}));
    EXPECT_EQ(Value("EVS1-OXA_RemoteConfig", "UserAccount"), "\"\"");
    EXPECT_EQ(Value("EVS1-OXA_RemoteConfig", "Password"), "\"\"");
    EXPECT_EQ(Value("EVS1-OXA_RemoteConfig", "Domain"), "\"\"");
    EXPECT_THAT(Told(*this), ::testing::Not(::testing::HasSubstr("is NULL")));
}

TEST_F(VeritasCreateSet, OnlyTheRemoteConfigurationGetsTheAccount) {
    EXPECT_TRUE(set.Create({true, true, FullAccount, false}));
    for (const char* resource : {"EVS1-OXAHostService", "EVS1-OXASAService", "EVS1-QAV_Monitor"}) {
        EXPECT_EQ(Value(resource, "UserAccount"), "LocalSystem");
        EXPECT_EQ(Value(resource, "Password"), "\"\"");
        EXPECT_EQ(Value(resource, "Domain"), "\"NT Authority\"");
    }
}

TEST_F(VeritasCreateSet, OfTheEncryptedPasswordTheFirstTokenIsTaken) {
    tools.Answer(L"vcsencrypt -agent clear", "first second\r\nthird\r\n");
    EXPECT_TRUE(set.Create({false, true, FullAccount, false}));
    EXPECT_EQ(Value("EVS1-OXA_RemoteConfig", "Password"), "\"first\"");
}

TEST_F(VeritasCreateSet, WithoutAnEncryptedPasswordAnEmptyOneIsQuoted) {
    tools.Answer(L"vcsencrypt -agent clear", "");
    EXPECT_TRUE(set.Create({false, true, FullAccount, false}));
    EXPECT_EQ(Value("EVS1-OXA_RemoteConfig", "UserAccount"), "\"admin\"");
    EXPECT_EQ(Value("EVS1-OXA_RemoteConfig", "Password"), "\"\"");
    EXPECT_EQ(Value("EVS1-OXA_RemoteConfig", "Domain"), "\"DOMAIN\"");
}

TEST_F(VeritasCreateSet, ThePasswordIsNowhereInTheLog) {
    EXPECT_TRUE(set.Create({true, true, {L"DOMAIN", L"admin", L"pass word"}, true}));
    const std::string log = TakeLog();
    EXPECT_THAT(log, ::testing::HasSubstr("I Command line is ***\n"));
    EXPECT_THAT(log, ::testing::HasSubstr("I Result: ***\n"));
    EXPECT_THAT(log, ::testing::Not(::testing::HasSubstr("pass")));
    EXPECT_THAT(log, ::testing::Not(::testing::HasSubstr("Result: eNcRyPtEd")));
    EXPECT_THAT(tools.TakeCommandLines(), ::testing::Contains(L"vcsencrypt -agent pass word"));
}

// Waiting for the host service

class VeritasCreateSetWait : public VeritasTest {
protected:
    // Creates with this delay; what was said about the wait.
    Texts Wait(int delay) {
        set.info.nDelayAfterOnline = delay;
        EXPECT_TRUE(set.Create({false, false, NoAccount, true}));
        Texts told = Split(Told(*this));
        const auto waiting =
            std::find(told.begin(), told.end(), "I Waiting for service EVS1-OXAHostService to go online");
        EXPECT_NE(waiting, told.end());
        EXPECT_EQ(told.back(), "< CreateKOVAResources");
        return waiting == told.end() ? Texts() : Texts(waiting + 1, told.end() - 1);
    }

    const Texts started = {"I service OXAHostService started successfully."};
    const Texts notStarted = {"W unable to start service OXAHostService."};
    SetCreation set{*this};
    ServiceStandIn service{Platform()};
};

TEST_F(VeritasCreateSetWait, LooksOncePerSecondOfTheDelayAndOnceMore) {
    service.state = [](unsigned) { return SERVICE_STOPPED; };
    for (const int delay : {1, 2, 600}) {
        EXPECT_EQ(Wait(delay), notStarted);
        EXPECT_EQ(Waiting(*this), LooksInVain("OXAHostService", static_cast<unsigned>(delay) + 1)) << delay;
    }
}

TEST_F(VeritasCreateSetWait, WithADelayOfZeroOrLessIsNone) {
    for (const int delay : {0, -1, -600, -3000000, INT_MIN}) {
        EXPECT_EQ(Wait(delay), Texts()) << delay;
        EXPECT_EQ(Waiting(*this), Texts()) << delay;
    }
}

TEST_F(VeritasCreateSetWait, OfMoreThanTheMillisecondsThatANumberHoldsIsOneAllTheSame) {
    for (const int delay : {2147483, 2147484, 3000000, 4294968, INT_MAX}) {
        EXPECT_EQ(Wait(delay), started) << delay;
        EXPECT_EQ(Waiting(*this), RunsAtOnce("OXAHostService")) << delay;
    }
}

TEST_F(VeritasCreateSetWait, EndsTenSecondsAfterTheServiceIsSeenRunning) {
    service.state = [](unsigned query) { return query < 3 ? SERVICE_START_PENDING : SERVICE_RUNNING; };
    EXPECT_EQ(Wait(300), started);
    EXPECT_EQ(Waiting(*this), (Texts{"CServiceManager(OXAHostService,NULL)", "QueryServiceStatus()", "Sleep(1000)",
                                     "QueryServiceStatus()", "Sleep(1000)", "QueryServiceStatus()", "Sleep(10000)",
                                     "~CServiceManager()"}));
}

TEST_F(VeritasCreateSetWait, TheLastLookCounts) {
    service.state = [](unsigned query) { return query < 6 ? SERVICE_STOPPED : SERVICE_RUNNING; };
    EXPECT_EQ(Wait(5), started);
    EXPECT_EQ(Wait(4), notStarted);
}

TEST_F(VeritasCreateSetWait, OnlyTheRunningStateEndsIt) {
    for (const DWORD state : {SERVICE_STOPPED, SERVICE_START_PENDING, SERVICE_STOP_PENDING, SERVICE_CONTINUE_PENDING,
                              SERVICE_PAUSE_PENDING, SERVICE_PAUSED}) {
        service.state = [state](unsigned) { return state; };
        EXPECT_EQ(Wait(1), notStarted) << state;
    }
}

TEST_F(VeritasCreateSetWait, AServiceThatCannotBeOpenedIsToldAndNoFailure) {
    service.openError = ERROR_SERVICE_DOES_NOT_EXIST;
    EXPECT_EQ(Wait(300), Texts{"E OS::CException caught, Err code: 1060"} + notStarted);
    EXPECT_EQ(Waiting(*this), Texts{"CServiceManager(OXAHostService,NULL)"});
}

TEST_F(VeritasCreateSetWait, AServiceThatCannotBeQueriedIsToldAndNoFailure) {
    service.state = [](unsigned query) -> DWORD {
        if (query == 2) {
            throw OS::CException(ERROR_ACCESS_DENIED);
        }
        return SERVICE_START_PENDING;
    };
    EXPECT_EQ(Wait(300), Texts{"E OS::CException caught, Err code: 5"} + notStarted);
    EXPECT_EQ(Waiting(*this), (Texts{"CServiceManager(OXAHostService,NULL)", "QueryServiceStatus()", "Sleep(1000)",
                                     "QueryServiceStatus()", "~CServiceManager()"}));
}

TEST_F(VeritasCreateSetWait, WhatFollowsIsTurnedOnThoughTheServiceDoesNotStart) {
    service.state = [](unsigned) { return SERVICE_STOPPED; };
    EXPECT_TRUE(set.Create({true, true, NoAccount, true}));
    EXPECT_THAT(Told(*this), ::testing::HasSubstr(notStarted[0] + "\nI Turning on EVS1-QAV_Monitor...\n"));
}

TEST(SwitchOnOrder, HasTheWishedResourcesOfARecord) {
    const CVeritasVirtualServerInfo info(L"EVS1-IS", L"EVS1");
    const auto order = [&info](bool monitor, bool remoteConfig) {
        return Spaced(CVeritasCluster::KOVAResourcesInSwitchOnOrder(info, monitor, remoteConfig));
    };
    EXPECT_EQ(order(false, false), " EVS1-OXASAService EVS1-OXAHostService");
    EXPECT_EQ(order(true, false), " EVS1-OXASAService EVS1-OXAHostService EVS1-QAV_Monitor");
    EXPECT_EQ(order(false, true), " EVS1-OXASAService EVS1-OXAHostService EVS1-OXA_RemoteConfig");
    EXPECT_EQ(order(true, true), " EVS1-OXASAService EVS1-OXAHostService EVS1-QAV_Monitor EVS1-OXA_RemoteConfig");
}

} // namespace
