// The configuration mode, and what the dump writes.
#include "ToolTest.h"

using ::testing::HasSubstr;

class ToolMode : public ToolTest {
protected:
    ToolMode() {
        WriteFile(L".state.json", "{}");
    }
};

TEST_F(ToolMode, RefusesEveryChangeWhileItIsReadOnly) {
    for (const char* change :
         {"-add New MountV G", "-modify G-IP Address 1", "-link G-Mount G-IP", "-unlink G-IP G-NIC", "-delete G-IP"}) {
        EXPECT_EQ(Run("hares", change),
                  "VCS WARNING V-16-1-11309 Configuration must be ReadWrite : Use haconf -makerw\n")
            << change;
        EXPECT_EQ(m_exitCode, 1);
    }
    EXPECT_EQ(ReadFile(L""), Sample);
    EXPECT_FALSE(HasFile(L".live"));
}

TEST_F(ToolMode, IsSwitchedOnce) {
    EXPECT_EQ(Run("haconf", "-makerw"), "");
    EXPECT_EQ(m_exitCode, 0);
    EXPECT_EQ(Run("haconf", "-makerw"), "VCS WARNING V-16-1-10364 Cluster already writable.\n");
    EXPECT_EQ(m_exitCode, 1);
    EXPECT_EQ(Run("haconf", "-dump -makero"), "");
    EXPECT_EQ(m_exitCode, 0);
    EXPECT_EQ(Run("haconf", "-dump -makero"), "VCS WARNING V-16-1-10369 Cluster not writable\n");
    EXPECT_EQ(m_exitCode, 1);
}

TEST_F(ToolMode, DumpsWithoutChangesWriteNothing) {
    Run("haconf", "-makerw");
    Run("haconf", "-dump -makero");
    EXPECT_EQ(ReadFile(L""), Sample);
    EXPECT_FALSE(HasFile(L".previous"));
}

TEST_F(ToolMode, ShowsChangesAtOnceAndWritesThemWithTheDump) {
    Run("haconf", "-makerw");
    Run("hares", "-modify G-Mount VolumeName Vol");
    EXPECT_EQ(Run("hares", "-value G-Mount VolumeName"), "Vol\n");
    EXPECT_EQ(ReadFile(L""), Sample);
    EXPECT_EQ(Run("haconf", "-dump"), "");
    EXPECT_THAT(ReadFile(L""), HasSubstr("\t\tVolumeName = Vol\n\t\t)\n"));
    EXPECT_EQ(ReadFile(L".previous"), Sample);
    EXPECT_FALSE(HasFile(L".live"));
    EXPECT_EQ(Run("haconf", "-makerw"), "VCS WARNING V-16-1-10364 Cluster already writable.\n");
    Run("haconf", "-dump -makero");
    EXPECT_EQ(Run("hares", "-value G-Mount VolumeName"), "Vol\n");
}

TEST_F(ToolMode, AChangeKeepsTheSettingsOfTheProduct) {
    WriteFile(L".state.json", R"({"settings": {"ThirdPartyClusterType": 1, "DataRootPath": "F:\\Gate"}})");
    Run("haconf", "-makerw");
    EXPECT_THAT(ReadFile(L".state.json"), HasSubstr("\"mode\": \"rw\""));
    EXPECT_THAT(ReadFile(L".state.json"), HasSubstr("  \"settings\": {\n"
                                                    "    \"ThirdPartyClusterType\": 1,\n"
                                                    "    \"DataRootPath\": \"F:\\\\Gate\"\n"
                                                    "  }\n"));
}

TEST_F(ToolMode, AppliesToHaconfOnlyInItsThreeForms) {
    for (const char* arguments : {"", "-makero", "-makerw -dump", "-dump -other"}) {
        EXPECT_EQ(Run("haconf", arguments), "usage: haconf -makerw | -dump [-makero]\n") << arguments;
        EXPECT_EQ(m_exitCode, 2);
    }
}
