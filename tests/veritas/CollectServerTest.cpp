// One virtual server by its network name.
#include "Story.h"
#include "ToolTables.h"

using namespace harness;

namespace {

class VeritasCollectServer : public VeritasTest {
protected:
    VeritasCollectServer() {
        info.sGroupName = L"before";
        info.sExchangeResName = L"IS before";
        info.sLanmanResName = L"Lanman before";
        info.sHostServiceResName = L"host before";
        info.sRegRepResName = L"regrep before";
        info.sMountResName = L"mount before";
        info.sDataPath = L"path before";
        info.nDelayAfterOnline = 7;
        info.nDelayAfterOffline = 8;
        info.sOnlineNode = L"node before";
    }

    void Answer(const std::string& lanmans, const std::string& group, const std::string& state) {
        tools.Answer(ListLanmans, lanmans);
        tools.Answer(ShowGroup, group);
        tools.Answer(L"hagrp -state EVS1 ", state);
    }

    bool Collect() {
        return cluster.CollectEVSInfo(L"MAIL1", info);
    }

    const wchar_t* const ListLanmans = L"hares -list  Type=Lanman  VirtualName=MAIL1 ";
    const wchar_t* const ShowGroup = L"hares -display EVS1-Lanman -attribute Group ";
    const Texts all = {"> CollectEVSInfo", "$ hares -list  Type=Lanman  VirtualName=MAIL1 ",
                       "$ hares -display EVS1-Lanman -attribute Group ", "$ hagrp -state EVS1 "};
    Server info;
};

TEST_F(VeritasCollectServer, ANetworkNameLeadsToLanmanResourceGroupProductNamesAndSystem) {
    Answer(Listed({"EVS1-Lanman"}), Shown("EVS1-Lanman", "Group", "EVS1"),
           States("EVS1", {{"NODE1", "|OFFLINE|"}, {"NODE2", "|ONLINE|"}}));
    EXPECT_TRUE(Collect());
    EXPECT_EQ(info.sGroupName, L"EVS1");
    EXPECT_EQ(info.sLanmanResName, L"EVS1-Lanman");
    EXPECT_EQ(info.sHostServiceResName, L"EVS1-OXAHostService");
    EXPECT_EQ(info.sSAServiceResName, L"EVS1-OXASAService");
    EXPECT_EQ(info.sRemoteConfigResName, L"EVS1-OXA_RemoteConfig");
    EXPECT_EQ(info.sQAVMonitorResName, L"EVS1-QAV_Monitor");
    EXPECT_TRUE(info.bGroupOnline);
    EXPECT_EQ(info.sOnlineNode, L"NODE2");
    EXPECT_EQ(Told(*this), Lines(all + Texts{"< CollectEVSInfo"}));
}

TEST_F(VeritasCollectServer, TheStoreResourceAndWhatTheCallerSetStay) {
    Answer(Listed({"EVS1-Lanman"}), Shown("EVS1-Lanman", "Group", "EVS1"), States("EVS1", {{"NODE1", "|ONLINE|"}}));
    EXPECT_TRUE(Collect());
    EXPECT_EQ(info.sExchangeResName, L"IS before");
    EXPECT_EQ(info.sRegRepResName, L"regrep before");
    EXPECT_EQ(info.sMountResName, L"mount before");
    EXPECT_EQ(info.sDataPath, L"path before");
    EXPECT_EQ(info.nDelayAfterOnline, 7);
    EXPECT_EQ(info.nDelayAfterOffline, 8);
}

TEST_F(VeritasCollectServer, TheFirstOfSeveralLanmanResourcesIsTaken) {
    Answer(Listed({"EVS1-Lanman", "Other", "Third"}), Shown("EVS1-Lanman", "Group", "EVS1"), States("EVS1", {}));
    EXPECT_TRUE(Collect());
    EXPECT_EQ(info.sLanmanResName, L"EVS1-Lanman");
    EXPECT_EQ(Told(*this), Lines(all + Texts{"< CollectEVSInfo"}));
}

TEST_F(VeritasCollectServer, APartlyOnlineGroupIsOnlineWhateverTheCaseOfItsState) {
    for (const char* state : {"|PARTIAL|", "|partial|", "|ONLINE|", "|Online|"}) {
        Answer(Listed({"EVS1-Lanman"}), Shown("EVS1-Lanman", "Group", "EVS1"), States("EVS1", {{"NODE1", state}}));
        info.bGroupOnline = false;
        EXPECT_TRUE(Collect());
        EXPECT_TRUE(info.bGroupOnline) << state;
        EXPECT_EQ(info.sOnlineNode, L"NODE1");
    }
}

TEST_F(VeritasCollectServer, AGroupThatIsNowhereOnlineKeepsTheSystemsName) {
    Answer(Listed({"EVS1-Lanman"}), Shown("EVS1-Lanman", "Group", "EVS1"),
           States("EVS1", {{"NODE1", "|OFFLINE|"}, {"NODE2", "|STARTING|PARTIAL|"}}));
    info.bGroupOnline = true;
    EXPECT_TRUE(Collect());
    EXPECT_FALSE(info.bGroupOnline);
    EXPECT_EQ(info.sOnlineNode, L"node before");
}

TEST_F(VeritasCollectServer, AGroupNameWithBlanksIsKeptWhole) {
    tools.Answer(ListLanmans, Listed({"EVS1-Lanman"}));
    tools.Answer(ShowGroup, Shown("EVS1-Lanman", "Group", "My group   "));
    tools.Answer(L"hagrp -state My group ", "");
    EXPECT_TRUE(Collect());
    EXPECT_EQ(info.sGroupName, L"My group");
    EXPECT_EQ(info.sHostServiceResName, L"My group-OXAHostService");
}

TEST_F(VeritasCollectServer, ANetworkNameThatNoLanmanResourceCarriesIsToldAndTouchesNothing) {
    tools.Answer(ListLanmans, "");
    EXPECT_FALSE(Collect());
    EXPECT_EQ(info.sLanmanResName, L"Lanman before");
    EXPECT_EQ(info.sGroupName, L"before");
    EXPECT_EQ(Told(*this), Lines({all[0], all[1], "W No Lanman resource found.", "< CollectEVSInfo"}));
}

TEST_F(VeritasCollectServer, AListThatVcsRefusesIsAFailedEnumeration) {
    tools.Answer(ListLanmans, "EVS1 ERROR no such attribute\r\n");
    EXPECT_FALSE(Collect());
    EXPECT_EQ(info.sLanmanResName, L"Lanman before");
    EXPECT_EQ(Told(*this), Lines({all[0], all[1], "W EnumResourceNames fail", "< CollectEVSInfo"}));
}

TEST_F(VeritasCollectServer, ALanmanResourceWithoutGroupIsTold) {
    for (const std::string& answer :
         {std::string("#Resource   Attribute   System   Value\r\n"), std::string(), Shown("EVS1-Lanman", "Group", ""),
          std::string("VCS WARNING V-16-1-40142 Resource does not exist\r\nb c d e f\r\n")}) {
        tools.Answer(ListLanmans, Listed({"EVS1-Lanman"}));
        tools.AnswerNext(Listed({"EVS1-Lanman"}));
        tools.AnswerNext(answer);
        EXPECT_FALSE(Collect());
        EXPECT_EQ(info.sLanmanResName, L"EVS1-Lanman");
        EXPECT_EQ(info.sGroupName, L"before");
        EXPECT_EQ(info.sHostServiceResName, L"host before");
        EXPECT_EQ(Told(*this), Lines({all[0], all[1], all[2],
                                      "W Failed to get Group attribute for resource EVS1-Lanman", "< CollectEVSInfo"}));
    }
}

TEST_F(VeritasCollectServer, AMessageOfAStoppedEngineIsTakenForALanmanResource) {
    const char message[] = "VCS ERROR V-16-1-10600 Cannot connect to VCS engine\r\n";
    tools.Answer(ListLanmans, message);
    tools.Answer(L"hares -display VCS -attribute Group ", message);
    EXPECT_FALSE(Collect());
    EXPECT_EQ(Told(*this), Lines({all[0], all[1], "$ hares -display VCS -attribute Group ",
                                  "W Failed to get Group attribute for resource VCS", "< CollectEVSInfo"}));
}

TEST_F(VeritasCollectServer, ANullNetworkNameCountsAsEmpty) {
    tools.Answer(L"hares -list  Type=Lanman  VirtualName= ", "");
    EXPECT_FALSE(cluster.CollectEVSInfo(nullptr, info));
    EXPECT_EQ(Told(*this), Lines({all[0], "$ hares -list  Type=Lanman  VirtualName= ", "W No Lanman resource found.",
                                  "< CollectEVSInfo"}));
}

} // namespace
