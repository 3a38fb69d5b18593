// Which file the lines of the product's members name: support finds a line by it, and it is one file for all of them.
#include "CreationCalls.h"

#include <algorithm>
#include <map>

using namespace harness;

namespace {

const char UtilTag[] = ".\\clus_VirtualServerUtil.cpp";
const char ClusterTag[] = ".\\clus_Cluster.cpp";

class ProductSourceTags : public ClusterTest {
protected:
    // Of the lines since the log was taken last those that begin with one of `own` are the virtual servers' part, the
    // others the cluster's. Each of `own` is among them.
    void ExpectTags(const Texts& own) {
        std::map<std::string, int> lines;
        for (const LogLine& line : Log().Entries()) {
            const auto lead = std::find_if(own.begin(), own.end(), [&](const std::string& text) {
                return line.Compact().compare(0, text.size(), text) == 0;
            });
            EXPECT_EQ(line.sourceTag, lead == own.end() ? ClusterTag : UtilTag) << line.Compact();
            if (lead != own.end()) {
                ++lines[*lead];
            }
        }
        for (const std::string& text : own) {
            EXPECT_GT(lines[text], 0) << "not logged: " << text;
        }
        TakeLog();
    }
};

TEST_F(ProductSourceTags, OfACreation) {
    const Texts succeeding = {
        "> CreateKOVAResource_", "< CreateKOVAResource_", "I Get group ",         "I Get system attendant ",
        "I Get Store: ",         "I Adding node ",        "I AddOwner returns: ", "I AddOwner operation ok.",
        "> SetKOVAProeprty_",    "< SetKOVAProeprty_"};
    for (const Creation& way : EveryWay) {
        Load(ExchangeServer());
        EXPECT_TRUE(way.Run());
        ExpectTags(succeeding);
    }

    Load(ExchangeServer());
    Platform().FailCall("AddClusterResourceNode(KOVA,NODE-B)", 5);
    AddFault("ClusterResourceControl@KOVA=5");
    EXPECT_FALSE(WithReplication.Run());
    ExpectTags(succeeding + Texts({"I Retrying adding node ", "E Cannot set private property ", RollBackLine}));
}

TEST_F(ProductSourceTags, OfARefusedCreation) {
    Load(ExchangeServer());
    AddFault("OpenCluster=5");
    EXPECT_FALSE(WithReplication.Run());
    ExpectTags({"> CreateKOVAResource_", "< CreateKOVAResource_", "E Cannot open cluster", RollBackLine});
}

TEST_F(ProductSourceTags, OfASwitch) {
    const Texts finding = {"I Network name: ",
                           "I Opening cluster...",
                           "I Performing FindFirstResourceNameByNetworkName...",
                           "I Opening resource by name:",
                           "I Getting resource state...",
                           "I Opening group: ",
                           "I Performing EnumResourceNamesInGroupByType...",
                           "I Open resource: KOVA"};
    const Texts on = finding + Texts({"> TurnOnKOVAResourceOnCurrentNode", "< TurnOnKOVAResourceOnCurrentNode",
                                      "I online-ing resource: KOVA..."});
    const Texts off =
        finding + Texts({"> CVirtualServerUtil::TurnOffKOVAResourceOnCurrentNode",
                         "< CVirtualServerUtil::TurnOffKOVAResourceOnCurrentNode", "I offline-ing resource: KOVA..."});

    Load(ProductServer().State("Offline"));
    EXPECT_TRUE(CVirtualServerUtil::TurnOnKOVAResourceOnCurrentNode(L"EVS1", false, 0));
    ExpectTags(on + Texts({"I Resource KOVA is on-line.", "I Resource: KOVA, is online/online pending"}));
    EXPECT_TRUE(CVirtualServerUtil::TurnOffKOVAResourceOnCurrentNode(L"EVS1", false, 0));
    ExpectTags(off + Texts({"I Resource KOVA is off-line.", "I Resource: KOVA, is offline/offline pending"}));

    Load(ProductServer("clusRDLLCCR").State("Offline").Raw("staysPending", "true"));
    EXPECT_FALSE(CVirtualServerUtil::TurnOnKOVAResourceOnCurrentNode(L"EVS1", true, 1000));
    ExpectTags(on + Texts({"E No clusRDLL(Non-CCRf) resource found", "I Resource KOVA is on-line pending.",
                           "E Fail to bring resource: KOVA online"}));

    Load(ProductServer().State("Online"));
    AddFault("OfflineClusterResource@KOVA=5");
    EXPECT_FALSE(CVirtualServerUtil::TurnOffKOVAResourceOnCurrentNode(L"EVS1", false, 0));
    ExpectTags(off + Texts({"E Fail to bring resource: KOVA offline"}));
}

TEST_F(ProductSourceTags, OfADeletion) {
    const Texts deleting = {"> DeleteKOVAResurceOnCurrentNode", "< DeleteKOVAResurceOnCurrentNode",
                            "I try deleting KOVA resource:KOVA...", "I Deleting resource KOVA "};
    Load(ProductServer().State("Offline"));
    EXPECT_TRUE(CVirtualServerUtil::DeleteKOVAResurceOnCurrentNode(L"EVS1"));
    ExpectTags(deleting);

    Load(ProductServer("clusRDLLCCR").State("Online").Raw("staysPending", "true"));
    EXPECT_TRUE(CVirtualServerUtil::DeleteKOVAResurceOnCurrentNode(L"EVS1"));
    ExpectTags(deleting + Texts({"E No clusRDLL(Non-CCR) resource found", "I Turning KOVA resource:KOVA offline...",
                                 "I KOVA resource:KOVA is offline pending.",
                                 "E Error bring resource KOVA, off-line, abort delete"}));
}

TEST_F(ProductSourceTags, OfARestart) {
    const Texts restarting = {"> CVirtualServerUtil::GetFirstSmtpVirtualServerInstanceResource()",
                              "< CVirtualServerUtil::GetFirstSmtpVirtualServerInstanceResource(), bSuccess=",
                              "I Current node is: ", "I EnumNames, returns ", "I Try to offline SMTP "};
    const auto server = [] { return ProductServer().Resource("SMTP", SmtpType); };
    Load(server());
    EXPECT_TRUE(CVirtualServerUtil::RestartSmtpVirtualServerInstanceResourceOnCurrentNode());
    ExpectTags(restarting + Texts({"I Resource SMTP is offlined, online it again."}));

    Load(server().Raw("staysPending", "true"));
    AddFault("GetClusterResourceState@SMTP#2=state:4");
    AddFault("OpenClusterResource@EVS1 Name=5007");
    EXPECT_FALSE(CVirtualServerUtil::RestartSmtpVirtualServerInstanceResourceOnCurrentNode());
    ExpectTags(restarting + Texts({"W Warning, open resource EVS1 Name fail", "I Resource SMTP is offline pending.",
                                   "E Unexpected OfflineResource Result, resource state = "}));
}

} // namespace
