// The MountV resources that carry a group's Exchange data.
#include "Story.h"
#include "ToolTables.h"

using namespace harness;

namespace {

class VeritasTopMount : public VeritasTest {
protected:
    // SA depends on Lanman, M2 and M1; the group's volumes are M1, M2 and M3.
    VeritasTopMount() {
        tools.Answer(Attendants, Listed({"SA"}));
        tools.Answer(Deps("SA"), Dependencies({{"SA", "Lanman"}, {"SA", "M2"}, {"SA", "M1"}, {"IS", "SA"}}));
        tools.Answer(Mounts, Listed({"M1", "M2", "M3"}));
    }

    static std::wstring Deps(const std::string& resource) {
        return L"hares -dep " + Utf16(resource);
    }
    bool Find() {
        return cluster.FindMostParentMountVResourceNameInGroup(L"EVS1", mounts);
    }

    const wchar_t* const Attendants = L"hares -list  Type=ExchService  Service=MSExchangeSA  Group=EVS1 ";
    const wchar_t* const Mounts = L"hares -list  Type=MountV  Group=EVS1 ";
    const Texts listing = {"> FindMostParentMountVResourceNameInGroup", "I Finding Exchange SA resource for group EVS1",
                           "$ hares -list  Type=ExchService  Service=MSExchangeSA  Group=EVS1 "};
    const Texts attendant = {"I Exchange SA: SA", "I Finding the resources that ExchangeSA depends on.",
                             "$ hares -dep SA"};
    const Texts volumes = {"$ hares -list  Type=MountV  Group=EVS1 "};
    const Texts leave = {"< FindMostParentMountVResourceNameInGroup"};
    Names mounts = {L"before"};
};

TEST_F(VeritasTopMount, IndependentVolumesAreAllGivenInTheOrderOfTheAttendantsDependencies) {
    tools.Answer(Deps("M1"), Dependencies({{"M1", "Disk"}, {"SA", "M1"}}));
    tools.Answer(Deps("M2"), Dependencies({{"M2", "Disk"}, {"SA", "M2"}}));
    EXPECT_TRUE(Find());
    EXPECT_EQ(mounts, (Names{L"M2", L"M1"}));
    EXPECT_EQ(Told(*this), Lines(listing + attendant + volumes + Texts{"$ hares -dep M2", "$ hares -dep M1"} + leave));
}

TEST_F(VeritasTopMount, AVolumeThatDependsOnAnotherCandidateIsDropped) {
    tools.Answer(Deps("M1"), Dependencies({{"M1", "Disk"}, {"M2", "M1"}}));
    tools.Answer(Deps("M2"), Dependencies({{"M2", "Disk"}, {"M2", "M1"}}));
    EXPECT_TRUE(Find());
    EXPECT_EQ(mounts, Names{L"M1"});
}

TEST_F(VeritasTopMount, OfAChainOnlyTheLowestIsLeft) {
    tools.AnswerNext(Listed({"SA"}));
    tools.AnswerNext(Dependencies({{"SA", "M3"}, {"SA", "M2"}, {"SA", "M1"}}));
    tools.Answer(Deps("M3"), Dependencies({{"M3", "M2"}}));
    tools.Answer(Deps("M2"), Dependencies({{"M3", "M2"}, {"M2", "M1"}}));
    tools.Answer(Deps("M1"), Dependencies({{"M2", "M1"}}));
    EXPECT_TRUE(Find());
    EXPECT_EQ(mounts, Names{L"M1"});
}

TEST_F(VeritasTopMount, DependingOnAVolumeThatIsNoCandidateDoesNotMatter) {
    tools.Answer(Deps("M1"), Dependencies({{"M1", "M3"}}));
    tools.Answer(Deps("M2"), Dependencies({{"M2", "M3"}}));
    EXPECT_TRUE(Find());
    EXPECT_EQ(mounts, (Names{L"M2", L"M1"}));
}

TEST_F(VeritasTopMount, WhatDependsOnACandidateDoesNotMatter) {
    tools.Answer(Deps("M1"), Dependencies({{"M2", "M1"}}));
    tools.Answer(Deps("M2"), Dependencies({}));
    EXPECT_TRUE(Find());
    EXPECT_EQ(mounts, (Names{L"M2", L"M1"}));
}

TEST_F(VeritasTopMount, OnlyTheAttendantsOwnDependenciesAreCandidates) {
    tools.AnswerNext(Listed({"SA"}));
    tools.AnswerNext(Dependencies({{"M1", "SA"}, {"M3", "SA"}, {"SA", "M2"}}));
    tools.Answer(Deps("M2"), Dependencies({}));
    EXPECT_TRUE(Find());
    EXPECT_EQ(mounts, Names{L"M2"});
    EXPECT_EQ(Told(*this), Lines(listing + attendant + volumes + Texts{"$ hares -dep M2"} + leave));
}

TEST_F(VeritasTopMount, NamesOfVolumesCompareWithCase) {
    tools.AnswerNext(Listed({"SA"}));
    tools.AnswerNext(Dependencies({{"SA", "m1"}, {"SA", "M2"}}));
    tools.Answer(Deps("M2"), Dependencies({{"M2", "m2"}}));
    EXPECT_TRUE(Find());
    EXPECT_EQ(mounts, Names{L"M2"});
}

TEST_F(VeritasTopMount, TheFirstOfSeveralAttendantsIsTaken) {
    tools.AnswerNext(Listed({"SA", "SA2"}));
    tools.Answer(Deps("M1"), Dependencies({}));
    tools.Answer(Deps("M2"), Dependencies({}));
    EXPECT_TRUE(Find());
    EXPECT_EQ(mounts, (Names{L"M2", L"M1"}));
}

TEST_F(VeritasTopMount, WithoutAttendantTheListIsEmptiedAndNothingFailed) {
    tools.AnswerNext("");
    EXPECT_TRUE(Find());
    EXPECT_EQ(mounts, Names());
    EXPECT_EQ(Told(*this), Lines(listing + volumes + leave));
}

TEST_F(VeritasTopMount, WithoutVolumesTheListIsEmptiedAndNothingFailed) {
    tools.AnswerNext(Listed({"SA"}));
    tools.AnswerNext(Dependencies({{"SA", "M2"}}));
    tools.AnswerNext("");
    EXPECT_TRUE(Find());
    EXPECT_EQ(mounts, Names());
    EXPECT_EQ(Told(*this), Lines(listing + attendant + volumes + leave));
}

TEST_F(VeritasTopMount, AnAttendantWithoutDependenciesHasNoVolumes) {
    tools.AnswerNext(Listed({"SA"}));
    tools.AnswerNext(Dependencies({}));
    EXPECT_TRUE(Find());
    EXPECT_EQ(mounts, Names());
    EXPECT_EQ(Told(*this), Lines(listing + attendant + volumes + leave));
}

TEST_F(VeritasTopMount, ACandidateWhoseDependenciesCannotBeReadIsDroppedWithoutFailure) {
    tools.FailStart(Deps("M2"), ERROR_FILE_NOT_FOUND);
    tools.Answer(Deps("M1"), Dependencies({}));
    EXPECT_TRUE(Find());
    EXPECT_EQ(mounts, Names{L"M1"});
}

TEST_F(VeritasTopMount, AnAttendantListThatVcsRefusesEndsTheSearch) {
    tools.AnswerNext("EVS1 ERROR\r\n");
    EXPECT_FALSE(Find());
    EXPECT_EQ(mounts, Names{L"before"});
    EXPECT_EQ(Told(*this), Lines(listing + leave));
}

TEST_F(VeritasTopMount, AVolumeListThatVcsRefusesIsAFailure) {
    tools.AnswerNext(Listed({"SA"}));
    tools.AnswerNext(Dependencies({{"SA", "M2"}}));
    tools.AnswerNext("EVS1 WARNING\r\n");
    EXPECT_FALSE(Find());
    EXPECT_EQ(mounts, Names{L"before"});
    EXPECT_EQ(Told(*this), Lines(listing + attendant + volumes + leave));
}

TEST_F(VeritasTopMount, NullCountsAsAnEmptyGroup) {
    tools.AnswerPrefix(L"hares -list ", "");
    Names names;
    EXPECT_TRUE(cluster.FindMostParentMountVResourceNameInGroup(nullptr, names));
    EXPECT_EQ(tools.TakeCommandLines(), (CommandList{L"hares -list  Type=ExchService  Service=MSExchangeSA  Group= ",
                                                     L"hares -list  Type=MountV  Group= "}));
}

} // namespace
