// Which resources a resource depends on, and which depend on it.
#include "Runs.h"

using namespace harness;

namespace {

const std::string DependencyHeader = "#Group Parent      Child\r\n";

class VeritasDependencies : public VeritasTest {
protected:
    bool Ask(const std::string& output, const wchar_t* resource = L"R") {
        tools.AnswerNext(output);
        return cluster.EnumResDependencies(resource, parents, children);
    }
    // With empty lists.
    void Read(const std::string& output, const wchar_t* resource = L"R") {
        parents.clear();
        children.clear();
        EXPECT_TRUE(Ask(output, resource)) << output;
    }

    Names parents;
    Names children;
};

TEST_F(VeritasDependencies, AreToldApartByTheColumnOfTheResource) {
    tools.Answer(L"hares -dep EVS1-Store", DependencyHeader + "EVS1   EVS1-Store  EVS1-SA\r\n"
                                                              "EVS1   EVS1-Host   EVS1-Store\r\n");
    EXPECT_TRUE(cluster.EnumResDependencies(L"EVS1-Store", parents, children));
    EXPECT_EQ(children, Names{L"EVS1-SA"});
    EXPECT_EQ(parents, Names{L"EVS1-Host"});
    EXPECT_EQ(tools.TakeCommandLines(), CommandList{L"hares -dep EVS1-Store"});
    EXPECT_EQ(TakeLog(), RunLog("hares -dep EVS1-Store",
                                {"I Process exit code: 0", "I Result: #Group Parent      Child",
                                 "I Result: EVS1   EVS1-Store  EVS1-SA", "I Result: EVS1   EVS1-Host   EVS1-Store"}));
}

TEST_F(VeritasDependencies, SeveralStayInTheToolsOrder) {
    Read(DependencyHeader + "G R C2\nG P2 R\nG R C1\nG P1 R\nG R C3\n");
    EXPECT_EQ(children, (Names{L"C2", L"C1", L"C3"}));
    EXPECT_EQ(parents, (Names{L"P2", L"P1"}));
}

TEST_F(VeritasDependencies, TheResourceIsComparedWithoutCase) {
    Read(DependencyHeader + "G evs-DISK C\nG P Evs-Disk\n", L"EVS-disk");
    EXPECT_EQ(children, Names{L"C"});
    EXPECT_EQ(parents, Names{L"P"});
}

TEST_F(VeritasDependencies, WhatIsFoundIsComparedWithCase) {
    Read(DependencyHeader + "G R c\nG R C\nG R c\nG p R\nG P R\nG P R\n");
    EXPECT_EQ(children, (Names{L"c", L"C"}));
    EXPECT_EQ(parents, (Names{L"p", L"P"}));
}

TEST_F(VeritasDependencies, RowsOfOtherResourcesAreIgnored) {
    Read(DependencyHeader + "G A B\nR A B\nG RR B\nG A RR\n");
    EXPECT_EQ(children, Names());
    EXPECT_EQ(parents, Names());
}

TEST_F(VeritasDependencies, AResourceThatDependsOnItselfIsInBothLists) {
    Read(DependencyHeader + "G R r\n");
    EXPECT_EQ(children, Names{L"r"});
    EXPECT_EQ(parents, Names{L"R"});
}

TEST_F(VeritasDependencies, AHeaderAloneLeavesBothListsUnchanged) {
    parents = {L"P"};
    children = {L"C", L"C"};
    EXPECT_TRUE(Ask(DependencyHeader));
    EXPECT_EQ(parents, Names{L"P"});
    EXPECT_EQ(children, (Names{L"C", L"C"}));
}

TEST_F(VeritasDependencies, TheFirstThreeTokensAreSkippedWhateverTheyAre) {
    Read("G R C0\nG R C1\n");
    EXPECT_EQ(children, Names{L"C1"});
    Read("R\nR\nR\nG R C1\n");
    EXPECT_EQ(children, Names{L"C1"});
    EXPECT_EQ(parents, Names());
}

TEST_F(VeritasDependencies, AnIncompleteRowIsIgnored) {
    for (const char* rest : {"", "G", "G R", "G R\n\n"}) {
        Read(DependencyHeader + "G R C\n" + rest);
        EXPECT_EQ(children, Names{L"C"}) << rest;
        EXPECT_EQ(parents, Names()) << rest;
    }
    for (const char* output : {"", "#Group", "#Group Parent", "#Group Parent Child G", "#Group Parent Child G R"}) {
        Read(output);
        EXPECT_EQ(children, Names()) << output;
        EXPECT_EQ(parents, Names()) << output;
    }
}

TEST_F(VeritasDependencies, EarlierEntriesStayAndAreNotRepeated) {
    parents = {L"P1", L"X", L"X"};
    children = {L"C1", L"Y", L"Y"};
    EXPECT_TRUE(Ask(DependencyHeader + "G R C1\nG R C2\nG P1 R\nG P2 R\n"));
    EXPECT_EQ(parents, (Names{L"P1", L"X", L"X", L"P2"}));
    EXPECT_EQ(children, (Names{L"C1", L"Y", L"Y", L"C2"}));
}

TEST_F(VeritasDependencies, EachListHasItsOwnDuplicates) {
    parents = {L"A"};
    children = {L"B"};
    EXPECT_TRUE(Ask(DependencyHeader + "G R A\nG B R\n"));
    EXPECT_EQ(parents, (Names{L"A", L"B"}));
    EXPECT_EQ(children, (Names{L"B", L"A"}));
}

TEST_F(VeritasDependencies, OneListForBothTakesEachNameOnce) {
    Names both;
    tools.AnswerNext(DependencyHeader + "G R A\nG R B\nG A R\nG C R\n");
    EXPECT_TRUE(cluster.EnumResDependencies(L"R", both, both));
    EXPECT_EQ(both, (Names{L"A", L"B", L"C"}));
}

TEST_F(VeritasDependencies, AMessageIsNoFailureAndChangesNothing) {
    for (const char* output :
         {"VCS WARNING V-16-1-50034 No Resource dependencies are configured\r\n", "VCS ERROR V-16-1-1 text\r\n",
          "R ERROR R R R\n", "x WARNING a b c d\n", "VCS ERROR V-16-1-10600 Cannot connect to VCS engine\r\n"}) {
        tools.AnswerNext(output, 1);
        parents = {L"P"};
        children = {L"C"};
        EXPECT_TRUE(cluster.EnumResDependencies(L"R", parents, children)) << output;
        EXPECT_EQ(parents, Names{L"P"}) << output;
        EXPECT_EQ(children, Names{L"C"}) << output;
    }
}

TEST_F(VeritasDependencies, AnErrorInTheSecondColumnDoesNotHideTheRows) {
    Read("#Group ERROR Child\nG R C\n");
    EXPECT_EQ(children, Names{L"C"});
}

TEST_F(VeritasDependencies, NullCountsAsAnEmptyName) {
    Read(DependencyHeader + "G R C\n", nullptr);
    EXPECT_EQ(tools.TakeCommandLines(), CommandList{L"hares -dep "});
    EXPECT_EQ(children, Names());
    EXPECT_EQ(parents, Names());
}

TEST_F(VeritasDependencies, AToolThatCannotBeRunLeavesBothListsAlone) {
    tools.AnswerPrefix(L"hares -dep", DependencyHeader + "G R C\nG P R\n");
    for (const FailingCall& failing : CallsThatFailARun) {
        SCOPED_TRACE(failing.name);
        Platform().FailCall(failing.call, ERROR_ACCESS_DENIED);
        parents = {L"OLD P"};
        children = {L"OLD C"};
        EXPECT_FALSE(cluster.EnumResDependencies(L"R", parents, children));
        EXPECT_EQ(parents, Names{L"OLD P"});
        EXPECT_EQ(children, Names{L"OLD C"});
    }
}

} // namespace
