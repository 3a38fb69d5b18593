// The list of the cluster's systems.
#include "Runs.h"

using namespace harness;

namespace {

const std::wstring ListSystems = L"hasys -list ";

class VeritasSystemList : public VeritasTest {
protected:
    // On a list that held something before.
    bool Enumerate(const NameValuePairList* filter = nullptr) {
        systems = {L"OLD"};
        return cluster.EnumSystemNames(systems, filter);
    }

    Names systems;
};

TEST_F(VeritasSystemList, ReplacesTheListByTheSystemsInTheToolsOrder) {
    tools.Answer(ListSystems, "NODE2\r\nNODE1\r\n");
    EXPECT_TRUE(Enumerate());
    EXPECT_EQ(systems, (Names{L"NODE2", L"NODE1"}));
    EXPECT_EQ(tools.TakeCommandLines(), CommandList{L"hasys -list "});
    EXPECT_EQ(TakeLog(), RunLog("hasys -list ", {"I Process exit code: 0", "I Result: NODE2", "I Result: NODE1"}));
}

TEST_F(VeritasSystemList, EveryTokenIsASystemAndNoneIsSkippedOrMerged) {
    tools.Answer(ListSystems, "#System Attribute\tValue\n\n NODE1 NODE1\nnode1\n");
    EXPECT_TRUE(Enumerate());
    EXPECT_EQ(systems, (Names{L"#System", L"Attribute", L"Value", L"NODE1", L"NODE1", L"node1"}));
}

TEST_F(VeritasSystemList, WithoutOutputTheListBecomesEmpty) {
    tools.Answer(ListSystems, "");
    EXPECT_TRUE(Enumerate());
    EXPECT_EQ(systems, Names());
}

TEST_F(VeritasSystemList, TheExitCodeIsNoMatter) {
    tools.Answer(ListSystems, "NODE1\r\n", 1);
    EXPECT_TRUE(Enumerate());
    EXPECT_EQ(systems, Names{L"NODE1"});
}

TEST_F(VeritasSystemList, AFilterBecomesConditionsInItsOrder) {
    tools.AnswerPrefix(ListSystems, "NODE1\n");
    const NameValuePairList filter = {{L"SysState", L"RUNNING"}, {L"Limits", L""}, {L"SysState", L"ADMIN WAIT"}};
    EXPECT_TRUE(Enumerate(&filter));
    EXPECT_EQ(systems, Names{L"NODE1"});
    EXPECT_EQ(tools.TakeCommandLines(), CommandList{L"hasys -list  SysState=RUNNING  Limits=  SysState=ADMIN WAIT "});
}

TEST_F(VeritasSystemList, AnEmptyFilterIsNoCondition) {
    tools.Answer(ListSystems, "NODE1\n");
    const NameValuePairList filter;
    EXPECT_TRUE(Enumerate(&filter));
    EXPECT_EQ(tools.TakeCommandLines(), CommandList{L"hasys -list "});
}

TEST_F(VeritasSystemList, AnErrorLeavesTheListAlone) {
    for (const char* output : {"NODE1 ERROR\n", "NODE1\tWarning text\r\n", "x\nerror\n", "V-16-1-1 WARNING a b c\n"}) {
        tools.AnswerNext(output);
        EXPECT_FALSE(Enumerate()) << output;
        EXPECT_EQ(systems, Names{L"OLD"}) << output;
    }
}

TEST_F(VeritasSystemList, WordsThatOnlyResembleAnErrorAreSystems) {
    for (const char* output : {"ERROR\n", "ERROR NODE1\n", "NODE1 ERRORS\n", "NODE1 NODE2 ERROR\n"}) {
        tools.AnswerNext(output);
        EXPECT_TRUE(Enumerate()) << output;
        EXPECT_NE(systems, Names{L"OLD"}) << output;
    }
}

TEST_F(VeritasSystemList, AMessageOfVcsIsTakenForSystems) {
    tools.Answer(ListSystems, "VCS WARNING V-16-1-50 text\r\n", 1);
    EXPECT_TRUE(Enumerate());
    EXPECT_EQ(systems, (Names{L"VCS", L"WARNING", L"V-16-1-50", L"text"}));
}

TEST_F(VeritasSystemList, AToolThatCannotBeRunLeavesTheListAlone) {
    tools.Answer(ListSystems, "NODE1\n");
    for (const FailingCall& failing : CallsThatFailARun) {
        SCOPED_TRACE(failing.name);
        Platform().FailCall(failing.call, ERROR_FILE_NOT_FOUND);
        EXPECT_FALSE(Enumerate());
        EXPECT_EQ(systems, Names{L"OLD"});
    }
    EXPECT_TRUE(Enumerate());
    EXPECT_EQ(systems, Names{L"NODE1"});
}

} // namespace
