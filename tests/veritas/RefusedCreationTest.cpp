// What becomes of the product's resource set when one of its resources cannot be created. CreateResource never says so,
// but its callers are prepared for it.
#include "AddServiceFixture.h"
#include "Detour.h"

using namespace harness;

namespace {

// Stands in for CVeritasCluster::CreateResource: creates nothing, refuses one resource.
struct Creation {
    static bool Resource(const CVeritasCluster*, const wchar_t* name, const wchar_t*, const wchar_t*, const wchar_t*,
                         const NameValuePairList&) {
        const HarnessScope scope;
        asked.push_back(name);
        return name != refused;
    }
    static Names asked;
    static std::wstring refused;

    explicit Creation(const std::wstring& refusedName) {
        asked.clear();
        refused = refusedName;
    }
    const Detour detour{&CVeritasCluster::CreateResource, &Resource};
};
Names Creation::asked;
std::wstring Creation::refused;

class VeritasRefusedSet : public CreationTest {
protected:
    // The whole set, of a group that is online.
    bool CreateWithout(const wchar_t* refused) {
        const Creation creation(refused);
        return Create({true, true, FullAccount, true});
    }
    static std::string Told(const Texts& told) {
        return Lines(Texts{"> CreateKOVAResources"} + told + Texts{"< CreateKOVAResources"});
    }
    using SetTest::Told;

    const Texts host = {"I Creating EVS1-OXAHostService..."};
    const Texts attendant =
        host + Texts{"$ hares -link EVS1-OXAHostService EVS1-RegRep ", "I Creating EVS1-OXASAService..."};
    const Texts monitor = attendant + Texts{"I Creating EVS1-QAV_Monitor..."};
    const Texts remoteConfig = monitor + Texts{"I Creating EVS1-OXA_RemoteConfig...", "* vcsencrypt -agent clear"};
};

TEST_F(VeritasRefusedSet, WithoutRegistryReplicationNothingElseIsCreated) {
    EXPECT_FALSE(CreateWithout(L"EVS1-RegRep"));
    EXPECT_EQ(Creation::asked, Names{L"EVS1-RegRep"});
    EXPECT_EQ(Told(), Told({"W Creating veritas res for EVS1-RegRep failed."}));
}

TEST_F(VeritasRefusedSet, AHostServiceThatIsRefusedIsNotLinked) {
    EXPECT_FALSE(CreateWithout(L"EVS1-OXAHostService"));
    EXPECT_EQ(Creation::asked, (Names{L"EVS1-RegRep", L"EVS1-OXAHostService"}));
    EXPECT_EQ(Told(), Told(host + Texts{"W Creating veritas res for EVS1-OXAHostService failed."}));
}

TEST_F(VeritasRefusedSet, WithoutSAServiceWhatWasCreatedStaysAndTheRestIsSkipped) {
    EXPECT_FALSE(CreateWithout(L"EVS1-OXASAService"));
    EXPECT_EQ(Creation::asked, (Names{L"EVS1-RegRep", L"EVS1-OXAHostService", L"EVS1-OXASAService"}));
    EXPECT_EQ(Told(), Told(attendant + Texts{"W Creating veritas res for EVS1-OXASAService failed."}));
}

TEST_F(VeritasRefusedSet, WithoutQuarantineMonitorNoRemoteConfigurationIsCreated) {
    EXPECT_FALSE(CreateWithout(L"EVS1-QAV_Monitor"));
    EXPECT_EQ(Creation::asked,
              (Names{L"EVS1-RegRep", L"EVS1-OXAHostService", L"EVS1-OXASAService", L"EVS1-QAV_Monitor"}));
    EXPECT_EQ(Told(), Told(monitor + Texts{"W Creating veritas res for EVS1-QAV_Monitor failed."}));
}

TEST_F(VeritasRefusedSet, WithoutRemoteConfigurationNothingIsTurnedOn) {
    EXPECT_FALSE(CreateWithout(L"EVS1-OXA_RemoteConfig"));
    EXPECT_EQ(Creation::asked.size(), 5u);
    EXPECT_EQ(Told(), Told(remoteConfig + Texts{"W Creating veritas res for EVS1-OXA_RemoteConfig failed."}));
    EXPECT_EQ(Waiting(), Texts());
}

class VeritasRefusedService : public AddServiceTest {
protected:
    VeritasRefusedService() {
        Online();
        tools.AnswerPrefix(L"hares -list  Group=EVS1  Type=RegRep ", "");
        tools.AnswerPrefix(L"vcsencrypt -agent ", "eNcRyPtEd\r\n");
        Service("QAV_Monitor", {});
        Service("OXA_RemoteConfig", {});
        Service("OXAHostService", {"Host"});
    }
};

TEST_F(VeritasRefusedService, AQuarantineMonitorThatIsRefusedIsNotTurnedOn) {
    const Creation creation(L"EVS1-QAV_Monitor");
    EXPECT_FALSE(cluster.CreateQAVResourceAndTurnItOn(L"MAIL1", 5000));
    EXPECT_EQ(Told(), Lines(Texts{"> CreateQAVResource"} + FindServer() +
                            Texts{"$ hares -list  Group=EVS1  Type=RegRep "} + NoService("QAV_Monitor") +
                            Texts{"I Creating EVS1-QAV_Monitor...",
                                  "W Creating veritas res for EVS1-QAV_Monitor failed.", "< CreateQAVResource"}));
    EXPECT_EQ(Waiting(), Texts());
}

TEST_F(VeritasRefusedService, ARemoteConfigurationThatIsRefusedIsNotTurnedOn) {
    const Creation creation(L"EVS1-OXA_RemoteConfig");
    EXPECT_FALSE(cluster.CreateRemoteConfigResourceAndTurnItOn(L"MAIL1", L"DOMAIN", L"admin", L"clear", 5000));
    EXPECT_EQ(Told(),
              Lines(Texts{"> CreateRemoteConfigResource"} + FindServer() + NoService("OXA_RemoteConfig") +
                    FindService("OXAHostService") +
                    Texts{"I Creating EVS1-OXA_RemoteConfig...", "* vcsencrypt -agent clear",
                          "W Creating veritas res for EVS1-OXA_RemoteConfig failed.", "< CreateRemoteConfigResource"}));
    EXPECT_EQ(Waiting(), Texts());
}

} // namespace
