// The record of one Exchange virtual server on VCS.
#include "Story.h"

using namespace harness;

namespace {

using VeritasServerRecord = VeritasTest;

// Every member by name, in order of declaration.
Texts Members(const Server& info) {
    return {Utf8(info.sGroupName),
            Utf8(info.sExchangeResName),
            Utf8(info.sLanmanResName),
            Utf8(info.sHostServiceResName),
            Utf8(info.sSAServiceResName),
            Utf8(info.sRemoteConfigResName),
            Utf8(info.sQAVMonitorResName),
            Utf8(info.sRegRepResName),
            Utf8(info.sMountResName),
            Utf8(info.sDataPath),
            std::to_string(info.nDelayAfterOnline),
            std::to_string(info.nDelayAfterOffline),
            info.bGroupOnline ? "online" : "offline",
            Utf8(info.sOnlineNode)};
}

Server Full() {
    Server info(L"IS", L"EVS1");
    info.sLanmanResName = L"Lanman";
    info.sHostServiceResName = L"host";
    info.sSAServiceResName = L"sa";
    info.sRemoteConfigResName = L"remote";
    info.sQAVMonitorResName = L"monitor";
    info.sRegRepResName = L"regrep";
    info.sMountResName = L"mount";
    info.sDataPath = L"F:\\Data";
    info.nDelayAfterOnline = 1;
    info.nDelayAfterOffline = 2;
    info.bGroupOnline = true;
    info.sOnlineNode = L"NODE1";
    return info;
}

const Texts FullMembers = {"EVS1",   "IS",    "Lanman",   "host", "sa", "remote", "monitor",
                           "regrep", "mount", "F:\\Data", "1",    "2",  "online", "NODE1"};

TEST_F(VeritasServerRecord, IsEmptyOfflineAndDelays600SecondsAtFirst) {
    alignas(Server) unsigned char memory[sizeof(Server)];
    std::memset(memory, 0xcc, sizeof(memory));
    Server* const info = new (memory) Server;
    EXPECT_EQ(Members(*info), (Texts{"", "", "", "", "", "", "", "", "", "", "600", "600", "offline", ""}));
    info->~Server();
}

TEST_F(VeritasServerRecord, MembersLieInTheOrderOfTheirDeclaration) {
    const Server info;
    const std::vector<const void*> addresses = {
        &info.sGroupName,          &info.sExchangeResName,  &info.sLanmanResName,
        &info.sHostServiceResName, &info.sSAServiceResName, &info.sRemoteConfigResName,
        &info.sQAVMonitorResName,  &info.sRegRepResName,    &info.sMountResName,
        &info.sDataPath,           &info.nDelayAfterOnline, &info.nDelayAfterOffline,
        &info.bGroupOnline,        &info.sOnlineNode};
    EXPECT_TRUE(std::is_sorted(addresses.begin(), addresses.end()));
    EXPECT_EQ(static_cast<const void*>(&info), addresses[0]);
    static_assert(sizeof(info.nDelayAfterOnline) == 4 && sizeof(info.nDelayAfterOffline) == 4, "32-bit seconds");
    static_assert(!std::is_polymorphic_v<Server>, "a plain structure");
}

TEST_F(VeritasServerRecord, TakesExchangeResourceAndGroupAndDerivesFourNames) {
    const Server info(L"EVS1-IS", L"EVS1");
    EXPECT_EQ(Members(info),
              (Texts{"EVS1", "EVS1-IS", "", "EVS1-OXAHostService", "EVS1-OXASAService", "EVS1-OXA_RemoteConfig",
                     "EVS1-QAV_Monitor", "", "", "", "600", "600", "offline", ""}));
}

TEST_F(VeritasServerRecord, NamesAreTheGroupAsItStandsAHyphenAndTheService) {
    Server info;
    for (const std::string group : {"EVS1", "evs1", "Group-1", "-", "Exchange Gruppe", ""}) {
        info.SetGroupAndKOVAResourceName(Utf16(group).c_str());
        EXPECT_EQ(Utf8(info.sGroupName), group);
        EXPECT_EQ(Utf8(info.sHostServiceResName), group + "-OXAHostService");
        EXPECT_EQ(Utf8(info.sSAServiceResName), group + "-OXASAService");
        EXPECT_EQ(Utf8(info.sRemoteConfigResName), group + "-OXA_RemoteConfig");
        EXPECT_EQ(Utf8(info.sQAVMonitorResName), group + "-QAV_Monitor");
    }
}

TEST_F(VeritasServerRecord, SettingTheGroupTouchesNoOtherMember) {
    Server info = Full();
    info.SetGroupAndKOVAResourceName(L"EVS2");
    EXPECT_EQ(Members(info),
              (Texts{"EVS2", "IS", "Lanman", "EVS2-OXAHostService", "EVS2-OXASAService", "EVS2-OXA_RemoteConfig",
                     "EVS2-QAV_Monitor", "regrep", "mount", "F:\\Data", "1", "2", "online", "NODE1"}));
}

TEST_F(VeritasServerRecord, AGroupMayBeSetFromTheRecordsOwnTexts) {
    Server info(L"IS", L"A group name longer than any text that a string keeps inside");
    const std::wstring name = info.sGroupName;
    info.SetGroupAndKOVAResourceName(info.sGroupName.c_str());
    EXPECT_EQ(info.sGroupName, name);
    EXPECT_EQ(info.sQAVMonitorResName, name + L"-QAV_Monitor");
    info.SetGroupAndKOVAResourceName(info.sHostServiceResName.c_str());
    EXPECT_EQ(info.sGroupName, name + L"-OXAHostService");
    EXPECT_EQ(info.sHostServiceResName, name + L"-OXAHostService-OXAHostService");
    EXPECT_EQ(info.sSAServiceResName, name + L"-OXAHostService-OXASAService");
}

TEST_F(VeritasServerRecord, NullTextsCountAsEmpty) {
    const Server info(nullptr, nullptr);
    EXPECT_EQ(Members(info), (Texts{"", "", "", "-OXAHostService", "-OXASAService", "-OXA_RemoteConfig", "-QAV_Monitor",
                                    "", "", "", "600", "600", "offline", ""}));
}

TEST_F(VeritasServerRecord, CopiesHoldEveryMemberAndAreIndependent) {
    Server original = Full();
    const Server copy(original);
    Server assigned;
    EXPECT_EQ(&(assigned = original), &assigned);
    original = Server();
    EXPECT_EQ(Members(copy), FullMembers);
    EXPECT_EQ(Members(assigned), FullMembers);
    EXPECT_EQ(Members(original), (Texts{"", "", "", "", "", "", "", "", "", "", "600", "600", "offline", ""}));
}

TEST_F(VeritasServerRecord, MayBeAssignedToItself) {
    Server info = Full();
    const Server& same = info;
    info = same;
    EXPECT_EQ(Members(info), FullMembers);
}

TEST_F(VeritasServerRecord, ClusterObjectsAreAllAlike) {
    const CVeritasCluster first;
    const CVeritasCluster copy(first);
    CVeritasCluster assigned;
    EXPECT_EQ(&(assigned = copy), &assigned);
    EXPECT_EQ(tools.TakeCommandLines(), CommandList());
}

} // namespace
