// What becomes of the product's resource set when one of its resources cannot be created. CreateResource never says so,
// but its callers are prepared for it.
#include "Detour.h"
#include "InstalledServer.h"
#include "ServiceStandIn.h"

using namespace harness;

namespace {

// Stands in for CVeritasCluster::CreateResource: creates nothing, refuses one resource.
struct RefusingCreation {
    static bool Resource(const CVeritasCluster*, const wchar_t* name, const wchar_t*, const wchar_t*, const wchar_t*,
                         const NameValuePairList&) {
        const HarnessScope scope;
        asked.push_back(name);
        return name != refused;
    }
    static Names asked;
    static std::wstring refused;

    explicit RefusingCreation(const std::wstring& refusedName) {
        asked.clear();
        refused = refusedName;
    }
    const Detour detour{&CVeritasCluster::CreateResource, &Resource};
};
Names RefusingCreation::asked;
std::wstring RefusingCreation::refused;

// A resource of the whole set that is refused.
struct RefusedResource {
    const char* name; // what its refusal means
    const wchar_t* resource;
    Names asked; // all that were to be created
    Texts told;

    friend void PrintTo(const RefusedResource& row, std::ostream* out) {
        *out << row.name;
    }
};

class VeritasRefusedSet : public VeritasTest, public ::testing::WithParamInterface<RefusedResource> {
protected:
    SetCreation set{*this};
    ServiceStandIn service{Platform()};
};

const Texts ToHost = {"I Creating EVS1-OXAHostService..."};
const Texts ToAttendant =
    ToHost + Texts{"$ hares -link EVS1-OXAHostService EVS1-RegRep ", "I Creating EVS1-OXASAService..."};
const Texts ToMonitor = ToAttendant + Texts{"I Creating EVS1-QAV_Monitor..."};
const Texts ToRemoteConfig = ToMonitor + Texts{"I Creating EVS1-OXA_RemoteConfig...", "* vcsencrypt -agent clear"};

const RefusedResource RefusedResources[] = {
    {"WithoutRegistryReplicationNothingElseIsCreated",
     L"EVS1-RegRep",
     {L"EVS1-RegRep"},
     {"W Creating veritas res for EVS1-RegRep failed."}},
    {"AHostServiceThatIsRefusedIsNotLinked",
     L"EVS1-OXAHostService",
     {L"EVS1-RegRep", L"EVS1-OXAHostService"},
     ToHost + Texts{"W Creating veritas res for EVS1-OXAHostService failed."}},
    {"WithoutSAServiceWhatWasCreatedStaysAndTheRestIsSkipped",
     L"EVS1-OXASAService",
     {L"EVS1-RegRep", L"EVS1-OXAHostService", L"EVS1-OXASAService"},
     ToAttendant + Texts{"W Creating veritas res for EVS1-OXASAService failed."}},
    {"WithoutQuarantineMonitorNoRemoteConfigurationIsCreated",
     L"EVS1-QAV_Monitor",
     {L"EVS1-RegRep", L"EVS1-OXAHostService", L"EVS1-OXASAService", L"EVS1-QAV_Monitor"},
     ToMonitor + Texts{"W Creating veritas res for EVS1-QAV_Monitor failed."}},
    {"WithoutRemoteConfigurationNothingIsTurnedOn",
     L"EVS1-OXA_RemoteConfig",
     {L"EVS1-RegRep", L"EVS1-OXAHostService", L"EVS1-OXASAService", L"EVS1-QAV_Monitor", L"EVS1-OXA_RemoteConfig"},
     ToRemoteConfig + Texts{"W Creating veritas res for EVS1-OXA_RemoteConfig failed."}}};

TEST_P(VeritasRefusedSet, EndsTheCreationOfAnOnlineGroup) {
    const RefusingCreation creation(GetParam().resource);
    EXPECT_FALSE(set.Create({true, true, FullAccount, true}));
    EXPECT_EQ(RefusingCreation::asked, GetParam().asked);
    EXPECT_EQ(Waiting(*this), Texts());
    EXPECT_EQ(Told(*this), Lines(Texts{"> CreateKOVAResources"} + GetParam().told + Texts{"< CreateKOVAResources"}));
}

INSTANTIATE_TEST_SUITE_P(Resource, VeritasRefusedSet, ::testing::ValuesIn(RefusedResources), RowName());

class VeritasRefusedService : public VeritasTest {
protected:
    VeritasRefusedService() {
        server.Online();
        tools.AnswerPrefix(L"hares -list  Group=EVS1  Type=RegRep ", "");
        tools.AnswerPrefix(L"vcsencrypt -agent ", "eNcRyPtEd\r\n");
        server.Service("QAV_Monitor", {});
        server.Service("OXA_RemoteConfig", {});
        server.Service("OXAHostService", {"Host"});
    }

    InstalledServer server{*this};
    ServiceStandIn service{Platform()};
};

TEST_F(VeritasRefusedService, AQuarantineMonitorThatIsRefusedIsNotTurnedOn) {
    const RefusingCreation creation(L"EVS1-QAV_Monitor");
    EXPECT_FALSE(cluster.CreateQAVResourceAndTurnItOn(L"MAIL1", 5000));
    EXPECT_EQ(Told(*this), Lines(Texts{"> CreateQAVResource"} + FindServer() +
                                 Texts{"$ hares -list  Group=EVS1  Type=RegRep "} + NoService("QAV_Monitor") +
                                 Texts{"I Creating EVS1-QAV_Monitor...",
                                       "W Creating veritas res for EVS1-QAV_Monitor failed.", "< CreateQAVResource"}));
    EXPECT_EQ(Waiting(*this), Texts());
}

TEST_F(VeritasRefusedService, ARemoteConfigurationThatIsRefusedIsNotTurnedOn) {
    const RefusingCreation creation(L"EVS1-OXA_RemoteConfig");
    EXPECT_FALSE(cluster.CreateRemoteConfigResourceAndTurnItOn(L"MAIL1", L"DOMAIN", L"admin", L"clear", 5000));
    EXPECT_EQ(Told(*this),
              Lines(Texts{"> CreateRemoteConfigResource"} + FindServer() + NoService("OXA_RemoteConfig") +
                    FindService("OXAHostService") +
                    Texts{"I Creating EVS1-OXA_RemoteConfig...", "* vcsencrypt -agent clear",
                          "W Creating veritas res for EVS1-OXA_RemoteConfig failed.", "< CreateRemoteConfigResource"}));
    EXPECT_EQ(Waiting(*this), Texts());
}

} // namespace
