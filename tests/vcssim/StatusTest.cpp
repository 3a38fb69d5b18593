// hastatus, haclus, hacf and haagent.
#include "ToolTest.h"

#include "common/Text.h"

using ::testing::HasSubstr;
using ::testing::Not;

class ToolStatus : public ToolTest {
protected:
    // The folder of the main.cf, as an argument.
    std::string Folder() const {
        const std::wstring path = Path(L"");
        return common::ToUtf8(path.substr(0, path.find_last_of(L"\\/")));
    }
};

TEST_F(ToolStatus, TheSummaryShowsSystemsAndGroups) {
    const std::string expected = "\n"
                                 "-- SYSTEM STATE\n"
                                 "-- System               State                Frozen\n"
                                 "\n"
                                 "A  NODE1                RUNNING              0\n"
                                 "A  NODE2                RUNNING              0\n"
                                 "\n"
                                 "-- GROUP STATE\n"
                                 "-- Group           System               Probed     AutoDisabled    State\n"
                                 "\n"
                                 "B  G               NODE1                Y          N               PARTIAL\n"
                                 "B  G               NODE2                Y          N               OFFLINE\n"
                                 "B  H               NODE2                Y          N               OFFLINE\n";
    EXPECT_EQ(Run("hastatus", "-sum"), expected);
    EXPECT_EQ(m_exitCode, 0);
    EXPECT_EQ(Run("hastatus", "-summary"), expected);
    EXPECT_THAT(Run("hastatus", ""), HasSubstr("usage: hastatus "));
}

TEST_F(ToolStatus, TheSummaryShowsWhatIsNotAsItShouldBe) {
    WriteFile(L".state.json",
              R"({"clock": 0, "times": {"*": {"online": 10, "offline": 10}}, "systems": {"NODE2": "EXITED"},
        "resources": {"G-Mount": {"NODE1": "ONLINE"}, "G-IP": {"NODE1": "FAULTED"}}, "frozen": {"groups": ["H"]}})");
    Run("hares", "-online G-RegRep -sys NODE1");
    const std::string failed = "\n"
                               "-- RESOURCES FAILED\n"
                               "-- Group           Type                 Resource             System\n"
                               "\n"
                               "C  G               IP                   G-IP                 NODE1\n";
    const std::string summary = Run("hastatus", "-sum");
    EXPECT_THAT(summary, HasSubstr("A  NODE2                EXITED               0\n"));
    EXPECT_THAT(summary,
                HasSubstr(failed + "\n"
                                   "-- RESOURCES ONLINING\n"
                                   "-- Group           Type                 Resource             System        "
                                   "       IState\n"
                                   "\n"
                                   "E  G               RegRep               G-RegRep             NODE1         "
                                   "       W_ONLINE\n"
                                   "\n"
                                   "-- GROUPS FROZEN\n"
                                   "\n"
                                   "G  H\n"));
    m_environment.options.shortSummary = true;
    const std::string known = Run("hastatus", "-sum");
    EXPECT_THAT(known, HasSubstr(failed));
    EXPECT_THAT(known, Not(HasSubstr("FROZEN\n")));
}

TEST_F(ToolStatus, TheClusterHasAttributesAndAState) {
    WriteFile(L"", std::string(Sample).replace(std::string(Sample).find("cluster C1 (\n"), 13,
                                               "cluster C1 (\n\tUserNames = { admin = x }\n\tOwnAttribute = 7\n"));
    const std::string shown = Run("haclus", "-display");
    EXPECT_EQ(shown.substr(0, shown.find("BackupInterval")), "#Attribute               Value\n"
                                                             "AdministratorGroups      \n"
                                                             "Administrators           \n"
                                                             "AutoAddSystemToCSG       1\n"
                                                             "AutoStartTimeout         150\n");
    EXPECT_THAT(shown, HasSubstr("ClusState                RUNNING\n"));
    EXPECT_THAT(shown, HasSubstr("ClusterName              C1\n"));
    EXPECT_THAT(shown, HasSubstr("OwnAttribute             7\n"));
    EXPECT_THAT(shown, HasSubstr("ReadOnly                 0\n"));
    EXPECT_THAT(shown, HasSubstr("UserNames                admin\tx\n"));
    EXPECT_EQ(Run("haclus", "-state"), "#Cluster     Attribute             Value\n"
                                       "C1           ClusState             RUNNING\n");
    EXPECT_EQ(Run("haclus", "-state C1"), "RUNNING\n");
    EXPECT_EQ(Run("haclus", "-value ReadOnly"), "0\n");
    Run("haconf", "-dump -makero");
    EXPECT_EQ(Run("haclus", "-value ReadOnly -localclus"), "1\n");
    EXPECT_EQ(Run("haclus", "-wait DumpingMembership 0 -time 60"), "");
    EXPECT_EQ(m_exitCode, 0);
    EXPECT_EQ(Run("haclus", "-wait ReadOnly 0"), "VCS WARNING V-16-1-10805 Connection timed out\n");
    EXPECT_EQ(m_exitCode, 1);
    EXPECT_EQ(Run("haclus", "-wait Other 0"), "VCS WARNING V-16-1-99011 (simulated) Attribute Other does not exist\n");
    EXPECT_THAT(Run("haclus", "-wait ReadOnly"), HasSubstr("usage: haclus "));
    EXPECT_THAT(Run("haclus", "-wait ReadOnly 0 -time soon"), HasSubstr("usage: haclus "));
    EXPECT_EQ(Run("haclus", "-state C2"), "VCS WARNING V-16-1-99066 (simulated) Cluster C2 does not exist\n");
    EXPECT_EQ(Run("haclus", "-value Other"), "VCS WARNING V-16-1-99011 (simulated) Attribute Other does not exist\n");
    EXPECT_THAT(Run("haclus", "-other"), HasSubstr("usage: haclus "));
    WriteFile(L".state.json", R"({"systems": {"NODE1": "FAULTED", "NODE2": "EXITED"}})");
    m_environment.options.bareClusterState = true;
    EXPECT_EQ(Run("haclus", "-state"), "EXITED\n");
}

TEST_F(ToolStatus, AConfigurationThatIsOneIsVerifiedInSilence) {
    EXPECT_EQ(Run("hacf", "-verify " + Folder()), "");
    EXPECT_EQ(m_exitCode, 0);
    m_environment.options.engineIsUp = false;
    m_environment.mainCf.clear();
    EXPECT_EQ(Run("hacf", "-verify " + Folder()), "") << "needs no engine";
    EXPECT_EQ(m_exitCode, 0);
    EXPECT_THAT(Run("hacf", "-verify"), HasSubstr("usage: hacf "));
    EXPECT_THAT(Run("hacf", "-cftocmd x"), HasSubstr("usage: hacf "));
    EXPECT_THAT(Run("hacf", "-verify " + Folder() + "\\absent"), HasSubstr("main.cf does not exist"));
    EXPECT_EQ(m_exitCode, 1);
}

TEST_F(ToolStatus, WhatIsWrongWithAConfigurationIsNamed) {
    const std::vector<std::pair<const char*, const char*>> wrong = {
        {"group G (\n", "main.cf, line 2: expected"},
        {"system A\ngroup G ( SystemList = { B = 0 } )\n", "system 'B' in the SystemList of group 'G' does not exist"},
        {"system A\nsystem B\ngroup G ( SystemList = { A = 0 } AutoStartList = { B } )\n",
         "system 'B' in the AutoStartList of group 'G' is not in its SystemList"},
        {"system A\ngroup G ( SystemList = { A = 0 } )\nT r ()\nT s ()\nr requires s\ns requires r\n",
         "resource 'r' requires itself"},
        {"group G (\nrequires group H online local firm\n)\n", "group 'H', which group 'G' requires, does not exist"},
        {"group G (\nrequires group H online local firm\n)\ngroup H (\nrequires group G online local firm\n)\n",
         "group 'G' requires itself"},
        {"group G ( )\nLanman l (\nShape = round\n)\n", "type 'Lanman' of resource 'l' has no attribute 'Shape'"}};
    for (const auto& entry : wrong) {
        WriteFile(L"", entry.first);
        EXPECT_THAT(Run("hacf", "-verify " + Folder()), HasSubstr(entry.second));
        EXPECT_EQ(m_exitCode, 1);
    }
}

TEST_F(ToolStatus, AnAgentThatIsNotThereIsRefused) {
    EXPECT_EQ(Run("haagent", "-display NoSuchType"), "VCS WARNING V-16-1-13301 Attempt to access non-existent agent\n");
    EXPECT_EQ(m_exitCode, 1);
    EXPECT_TRUE(m_pieces.at(0).toErrors);
    EXPECT_EQ(Run("haagent", "-display IP"),
              "VCS WARNING V-16-1-99061 (simulated) Not simulated: what haagent shows of an agent\n");
    EXPECT_EQ(m_exitCode, 1);
    for (const char* const arguments : {"", "-display", "-display IP NIC", "-list"}) {
        EXPECT_EQ(Run("haagent", arguments), "usage: haagent -display AGENT\n");
        EXPECT_EQ(m_exitCode, 2);
    }
}
