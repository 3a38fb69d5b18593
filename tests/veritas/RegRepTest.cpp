// Finding the product's RegRep resource and the volume below it.
#include "ProductNames.h"
#include "Story.h"
#include "ToolTables.h"

using namespace harness;

namespace {

// The volume below a RegRep resource

class VeritasShareDisk : public VeritasTest {
protected:
    void Answer(const std::string& mounts, const std::string& dependencies) {
        tools.AnswerNext(mounts);
        tools.AnswerNext(dependencies);
    }
    bool Get() {
        return cluster.GetKOVAShareDiskResNameByRegRepName(L"EVS1", L"RegRep", mount);
    }

    const std::string commands = Lines({"$ hares -list  Type=MountV  Group=EVS1 ", "$ hares -dep RegRep"});
    std::wstring mount = L"before";
};

TEST_F(VeritasShareDisk, IsTheFirstVolumeInTheOrderOfTheDependencies) {
    Answer(Listed({"M1", "M2", "M3"}),
           Dependencies({{"RegRep", "Lanman"}, {"RegRep", "M3"}, {"RegRep", "M1"}, {"Host", "RegRep"}}));
    EXPECT_TRUE(Get());
    EXPECT_EQ(mount, L"M3");
    EXPECT_EQ(Told(*this), commands);
}

TEST_F(VeritasShareDisk, IsNotAVolumeThatDependsOnTheRegRepResource) {
    Answer(Listed({"M1", "M2"}), Dependencies({{"M1", "RegRep"}, {"RegRep", "M2"}}));
    EXPECT_TRUE(Get());
    EXPECT_EQ(mount, L"M2");
}

TEST_F(VeritasShareDisk, ComparesVolumesWithCaseAndTheRegRepResourceWithout) {
    Answer(Listed({"M1", "M2"}), Dependencies({{"regrep", "m1"}, {"REGREP", "M2"}}));
    EXPECT_TRUE(Get());
    EXPECT_EQ(mount, L"M2");
}

TEST_F(VeritasShareDisk, IsUntouchedWhenTheRegRepResourceDependsOnNoVolumeOfTheGroup) {
    Answer(Listed({"M1"}), Dependencies({{"RegRep", "M9"}}));
    EXPECT_TRUE(Get());
    Answer(Listed({"M1"}), Dependencies({}));
    EXPECT_TRUE(Get());
    Answer("", Dependencies({{"RegRep", "M1"}}));
    EXPECT_TRUE(Get());
    EXPECT_EQ(mount, L"before");
}

TEST_F(VeritasShareDisk, IsNotLookedForWhenVolumesCannotBeListed) {
    tools.AnswerNext("EVS1 ERROR\r\n");
    EXPECT_FALSE(Get());
    EXPECT_EQ(mount, L"before");
    EXPECT_EQ(Told(*this), Lines({"$ hares -list  Type=MountV  Group=EVS1 "}));
}

TEST_F(VeritasShareDisk, NullNamesCountAsEmpty) {
    tools.Answer(L"hares -list  Type=MountV  Group= ", "");
    tools.Answer(L"hares -dep ", "");
    EXPECT_TRUE(cluster.GetKOVAShareDiskResNameByRegRepName(nullptr, nullptr, mount));
    EXPECT_EQ(mount, L"before");
}

// The RegRep resource

class VeritasExistingRegRep : public VeritasTest {
protected:
    void Answer(const Texts& resources) {
        tools.Answer(L"hares -list  Group=EVS1  Type=RegRep ", Listed(resources));
    }
    void Keys(const std::string& resource, const std::string& keys) {
        tools.Answer(L"hares -display " + Utf16(resource) + L" -attribute Keys ", Shown(resource, "Keys", keys));
    }
    bool Find() {
        return cluster.FindExistingKOVARegRepResName(L"EVS1", regRep);
    }

    const std::string key = "HKLM\\" + ProductKeyText;
    std::wstring regRep = L"before";
};

TEST_F(VeritasExistingRegRep, IsTheOneWhoseKeysAreTheProductsKey) {
    Answer({"R1", "R2", "R3"});
    Keys("R1", "HKLM\\SOFTWARE\\Other");
    Keys("R2", key);
    EXPECT_TRUE(Find());
    EXPECT_EQ(regRep, L"R2");
    EXPECT_EQ(Told(*this), Lines({"$ hares -list  Group=EVS1  Type=RegRep ", "$ hares -display R1 -attribute Keys ",
                                  "$ hares -display R2 -attribute Keys "}));
}

TEST_F(VeritasExistingRegRep, ComparesKeysWithoutCase) {
    Answer({"R1"});
    Keys("R1", "hklm\\software\\PLINTHCORE\\zyntra gate\\currentversion");
    EXPECT_TRUE(Find());
    EXPECT_EQ(regRep, L"R1");
}

TEST_F(VeritasExistingRegRep, NeedsTheWholeValueToBeTheKey) {
    Answer({"R1", "R2", "R3", "R4", "R5"});
    Keys("R1", key + "\\Sub");
    Keys("R2", "\"" + key + "\" \"\"");
    Keys("R3", "HKLM" + ProductKeyText);
    Keys("R4", "HKLM\\\\" + ProductKeyText);
    Keys("R5", ProductKeyText);
    EXPECT_TRUE(Find());
    EXPECT_EQ(regRep, L"before");
}

TEST_F(VeritasExistingRegRep, IsUntouchedAndNoFailureWhenOthersReplicateOtherKeys) {
    Answer({"R1"});
    Keys("R1", "HKLM\\SOFTWARE\\Other");
    regRep.clear();
    EXPECT_TRUE(Find());
    EXPECT_EQ(regRep, L"");
}

TEST_F(VeritasExistingRegRep, IsUntouchedAndNoFailureWhenTheGroupHasNone) {
    Answer({});
    EXPECT_TRUE(Find());
    EXPECT_EQ(regRep, L"before");
    EXPECT_EQ(Told(*this), Lines({"$ hares -list  Group=EVS1  Type=RegRep "}));
}

TEST_F(VeritasExistingRegRep, IsLookedForFurtherWhenOnesKeysCannotBeRead) {
    Answer({"R1", "R2", "R3"});
    tools.FailStart(L"hares -display R1 -attribute Keys ", ERROR_FILE_NOT_FOUND);
    tools.Answer(L"hares -display R2 -attribute Keys ", "VCS WARNING V-16 " + key + "\r\na b c " + key + "\r\n");
    Keys("R3", key);
    EXPECT_TRUE(Find());
    EXPECT_EQ(regRep, L"R3");
}

TEST_F(VeritasExistingRegRep, FailsWhenTheResourcesCannotBeListed) {
    tools.Answer(L"hares -list  Group=EVS1  Type=RegRep ", "R1 WARNING\r\n");
    EXPECT_FALSE(Find());
    EXPECT_EQ(regRep, L"before");
    EXPECT_EQ(Told(*this), Lines({"$ hares -list  Group=EVS1  Type=RegRep "}));
}

TEST_F(VeritasExistingRegRep, IsSoughtByTheCompiledInKeyWhateverTheRegistryHolds) {
    Registry().SetText(ProductKey, L"DataRootPath", L"D:\\Data");
    Answer({"R1"});
    Keys("R1", key);
    EXPECT_TRUE(Find());
    EXPECT_EQ(regRep, L"R1");
    EXPECT_THAT(TakeJournal(), ::testing::Not(::testing::HasSubstr("RegOpenKeyExW")));
}

TEST_F(VeritasExistingRegRep, NullCountsAsAnEmptyGroup) {
    tools.Answer(L"hares -list  Group=  Type=RegRep ", "");
    EXPECT_TRUE(cluster.FindExistingKOVARegRepResName(nullptr, regRep));
}

} // namespace
