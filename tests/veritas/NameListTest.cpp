// The lists of service groups and of resources, which differ in their command only.
#include "Runs.h"

#include <cstdint>
#include <unordered_map>

using namespace harness;

namespace {

struct NameQuery {
    const char* name;
    const wchar_t* command;
    bool (CVeritasCluster::*enumerate)(Names&, const NameValuePairList*) const;

    friend void PrintTo(const NameQuery& query, std::ostream* out) {
        *out << query.name;
    }
};

class VeritasNameList : public VeritasTest, public ::testing::WithParamInterface<NameQuery> {
protected:
    bool Enumerate(Names& names, const NameValuePairList* filter = nullptr) {
        return (cluster.*GetParam().enumerate)(names, filter);
    }

    // The names found in an output when the list held `before`.
    Names Found(const std::string& output, Names before = Names()) {
        tools.AnswerNext(output);
        EXPECT_TRUE(Enumerate(before)) << output;
        return before;
    }

    const std::wstring command = GetParam().command;
};

INSTANTIATE_TEST_SUITE_P(Veritas, VeritasNameList,
                         ::testing::Values(NameQuery{"Groups", L"hagrp -list ", &CVeritasCluster::EnumGroupNames},
                                           NameQuery{"Resources", L"hares -list ",
                                                     &CVeritasCluster::EnumResourceNamesW}),
                         RowName());

TEST_P(VeritasNameList, NamesAreTheFirstOfTwoColumns) {
    tools.Answer(command, "EVS1      \t\tNODE1\r\nEVS2-LONG\t\tNODE1\r\n");
    Names names;
    EXPECT_TRUE(Enumerate(names));
    EXPECT_EQ(names, (Names{L"EVS1", L"EVS2-LONG"}));
    EXPECT_EQ(tools.TakeCommandLines(), CommandList{command});
    EXPECT_EQ(TakeLog(), RunLog(Utf8(command), {"I Process exit code: 0", "I Result: EVS1      \t\tNODE1",
                                                "I Result: EVS2-LONG\t\tNODE1"}));
}

TEST_P(VeritasNameList, ANameListedOncePerSystemIsReturnedOnce) {
    EXPECT_EQ(Found("A NODE1\nA NODE2\nB NODE1\nA NODE3\nB NODE2\nC NODE1\n"), (Names{L"A", L"B", L"C"}));
}

TEST_P(VeritasNameList, NamesThatDifferInCaseAreDifferent) {
    EXPECT_EQ(Found("evs NODE1\nEVS NODE1\nEvs NODE1\nEVS NODE2\n"), (Names{L"evs", L"EVS", L"Evs"}));
}

TEST_P(VeritasNameList, OneNameMayBeginAnother) {
    EXPECT_EQ(Found("EVS10 N\nEVS1 N\nEVS N\nEVS1 M\n"), (Names{L"EVS10", L"EVS1", L"EVS"}));
}

TEST_P(VeritasNameList, EarlierEntriesStayAndAreNotRepeated) {
    EXPECT_EQ(Found("B NODE1\nNEW NODE1\na NODE1\nNEW NODE2\n", {L"A", L"B", L"A", L"B"}),
              (Names{L"A", L"B", L"A", L"B", L"NEW", L"a"}));
}

TEST_P(VeritasNameList, ASystemOfTheSameNameIsNoName) {
    EXPECT_EQ(Found("A B\nC A\nB C\n"), (Names{L"A", L"C", L"B"}));
}

TEST_P(VeritasNameList, AnOddTokenAtTheEndIsAName) {
    EXPECT_EQ(Found("A"), Names{L"A"});
    EXPECT_EQ(Found("A NODE1\nB\n"), (Names{L"A", L"B"}));
    EXPECT_EQ(Found("A NODE1\nA\n"), Names{L"A"});
}

TEST_P(VeritasNameList, RowsAreCountedByTokensAndNotByLines) {
    EXPECT_EQ(Found("A\nB\nC D E\n\nF\n"), (Names{L"A", L"C", L"E"}));
}

TEST_P(VeritasNameList, WithoutOutputTheListIsUnchanged) {
    EXPECT_EQ(Found(""), Names());
    EXPECT_EQ(Found("\r\n \t\r\n", {L"A", L"A"}), (Names{L"A", L"A"}));
}

TEST_P(VeritasNameList, TheExitCodeIsNoMatter) {
    tools.Answer(command, "A NODE1\n", 1);
    Names names;
    EXPECT_TRUE(Enumerate(names));
    EXPECT_EQ(names, Names{L"A"});
}

TEST_P(VeritasNameList, AFilterBecomesConditionsInItsOrder) {
    tools.AnswerPrefix(command, "A NODE1\n");
    Names names;
    const NameValuePairList filter = {{L"Type", L"Lanman"}, {L"Group", L"G1"}, {L"Type", L"A B"}};
    EXPECT_TRUE(Enumerate(names, &filter));
    EXPECT_EQ(tools.TakeCommandLines(), CommandList{command + L" Type=Lanman  Group=G1  Type=A B "});
}

TEST_P(VeritasNameList, AnEmptyFilterIsNoCondition) {
    tools.Answer(command, "A NODE1\n");
    Names names;
    const NameValuePairList filter;
    EXPECT_TRUE(Enumerate(names, &filter));
    EXPECT_EQ(tools.TakeCommandLines(), CommandList{command});
}

TEST_P(VeritasNameList, AnErrorLeavesTheListAlone) {
    for (const char* output :
         {"EVS1 ERROR group is faulted\n", "EVS1\twarning\r\n", "EVS1 Error NODE1\nEVS2 NODE1\n"}) {
        tools.AnswerNext(output, 1);
        Names names = {L"OLD"};
        EXPECT_FALSE(Enumerate(names)) << output;
        EXPECT_EQ(names, Names{L"OLD"}) << output;
    }
}

TEST_P(VeritasNameList, OnlyTheSecondTokenMakesAnError) {
    EXPECT_EQ(Found("A NODE1\nB ERROR\n"), (Names{L"A", L"B"}));
    EXPECT_EQ(Found("ERROR NODE1\n"), Names{L"ERROR"});
    EXPECT_EQ(Found("A WARNINGS\n"), Names{L"A"});
}

TEST_P(VeritasNameList, AMessageOfVcsIsTakenForNames) {
    EXPECT_EQ(Found("VCS WARNING V-16-1-50031 No Groups are configured\r\n", {L"OLD"}),
              (Names{L"OLD", L"VCS", L"V-16-1-50031", L"Groups", L"configured"}));
    EXPECT_EQ(Found("vcs error x\n"), (Names{L"vcs", L"x"}));
}

TEST_P(VeritasNameList, AToolThatCannotBeRunLeavesTheListAlone) {
    tools.Answer(command, "A NODE1\n");
    for (const FailingCall& failing : CallsThatFailARun) {
        SCOPED_TRACE(failing.name);
        Platform().FailCall(failing.call, ERROR_FILE_NOT_FOUND);
        Names names = {L"OLD"};
        EXPECT_FALSE(Enumerate(names));
        EXPECT_EQ(names, Names{L"OLD"});
    }
}

TEST_P(VeritasNameList, LongListsAreCompleteAndInOrder) {
    std::string output;
    Names expected;
    for (int i = 0; i < 5000; ++i) {
        const std::string name = "resource-" + std::to_string(i);
        output += name + "\t\tNODE1\r\n" + name + "\t\tNODE2\r\n";
        expected.push_back(Utf16(name));
    }
    EXPECT_EQ(Found(output), expected);
}

TEST_P(VeritasNameList, NamesOfTheSameHashAreTwoNames) {
    // As the library folds it to 32 bits: some 80,000 names are enough for two of the same.
    std::unordered_map<std::uint32_t, int> numbers;
    const auto nameOf = [](int number) { return L"resource-" + std::to_wstring(number); };
    int first = 0;
    int second = 0;
    for (; first == 0; ++second) {
        ASSERT_LT(second, 1000000);
        const std::size_t hash = std::hash<std::wstring>()(nameOf(second));
        const auto found = numbers.emplace(static_cast<std::uint32_t>(hash ^ hash >> 16 >> 16), second);
        first = found.second ? 0 : found.first->second;
    }
    const std::wstring one = nameOf(first);
    const std::wstring two = nameOf(second - 1);
    EXPECT_EQ(Found(Utf8(one) + " N\n" + Utf8(two) + " N\nA N\n" + Utf8(one) + " M\nB N\n" + Utf8(two) + " M\n"),
              (Names{one, two, L"A", L"B"}));
}

TEST_P(VeritasNameList, KeepsItsNamesAndNotTheOutput) {
    std::string output;
    for (int i = 0; i < 20000; ++i) {
        output += i % 2 ? "EVS1\t\tNODE1\r\n" : "EVS2\t\tNODE1\r\n";
    }
    tools.AnswerNext(output);
    Names names;
    Heap().StartOperation();
    EXPECT_TRUE(Enumerate(names));
    Heap().EndOperation();
    EXPECT_EQ(names, (Names{L"EVS2", L"EVS1"}));
    EXPECT_LT(Heap().PeakBytes(), output.size() / 4);
    Forget();
}

TEST_P(VeritasNameList, AFunctionThatIsToldGetsTheWholeOutputBesides) {
    std::wstring told;
    SetVeritasToolRunCallback(
        [](const CVeritasToolRun& run, void* context) {
            static_cast<std::wstring*>(context)->assign(run.output, run.cchOutput);
        },
        &told);
    EXPECT_EQ(Found("A NODE1\r\n\r\nA NODE2\r\nB  NODE1"), (Names{L"A", L"B"}));
    EXPECT_EQ(told, L"A NODE1\n\nA NODE2\nB  NODE1\n");
    SetVeritasToolRunCallback(nullptr, nullptr);
}

TEST_P(VeritasNameList, AFunctionThatThrowsLeavesTheListAlone) {
    struct Enough {};
    SetVeritasToolRunCallback([](const CVeritasToolRun&, void*) { throw Enough(); }, nullptr);
    for (const Names& before : {Names(), Names{L"OLD"}}) {
        Names names = before;
        tools.AnswerNext("A NODE1\nB NODE1\n");
        EXPECT_THROW(Enumerate(names), Enough);
        EXPECT_EQ(names, before);
    }
    SetVeritasToolRunCallback(nullptr, nullptr);
}

TEST_P(VeritasNameList, LinesOfAnyLengthFollowOneAnother) {
    // Lengths around that of what is read at once, 4,096 bytes, and a line across several of them.
    std::string output;
    Names expected;
    for (const std::size_t length : {4090u, 3u, 4095u, 1u, 4096u, 9000u, 2u}) {
        const std::string name = "n" + std::to_string(expected.size());
        output += name + " " + std::string(length, 'x') + "\r\n";
        expected.push_back(Utf16(name));
    }
    EXPECT_EQ(Found(output), expected);
}

} // namespace
