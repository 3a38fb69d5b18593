// What is kept of the tools' answers: shared, not copied, and nothing of one that is too long.
#include "ToolRuns.h"

#include "Failure.h"

#include <gtest/gtest.h>

namespace {

// A tool that printed the text, as the library tells of it.
CVeritasToolRun Printed(const std::wstring& text) {
    CVeritasToolRun run = {};
    run.commandLine = L"hares -list ";
    run.started = true;
    run.exitCodeKnown = true;
    run.output = text.c_str();
    run.cchOutput = text.size();
    return run;
}

} // namespace

TEST(ToolAnswers, AreSharedByAllWhoAskForThem) {
    const ToolRuns runs;
    ToolRuns::Tell(Printed(L" EVS1  NODE1\n"), 0);
    const std::vector<ToolRun> one = runs.Since(0);
    const std::vector<ToolRun> other = runs.Since(0);
    ASSERT_EQ(one.size(), 1u);
    EXPECT_EQ(one[0].Output(), L" EVS1  NODE1\n");
    EXPECT_EQ(one[0].firstLine, "EVS1 NODE1");
    EXPECT_EQ(one[0].output, other[0].output) << "a copy";
}

TEST(ToolAnswers, OfTheMostThatIsTakenAreTaken) {
    const ToolRuns runs;
    EXPECT_NO_THROW(ToolRuns::Tell(Printed(std::wstring(LongestToolOutput, L'x')), 0));
    EXPECT_EQ(runs.Since(0)[0].Output().size(), LongestToolOutput);
}

TEST(ToolAnswers, ThatAreLongerAreRefusedAndNotKept) {
    const ToolRuns runs;
    const std::wstring text(LongestToolOutput + 1, L'x');
    try {
        ToolRuns::Tell(Printed(text), 0);
        ADD_FAILURE() << "it is taken";
    } catch (const Failure& failure) {
        EXPECT_STREQ(failure.what(),
                     "the VCS tool \"hares -list\" printed more than the 64 MB that are taken of an answer");
    }
    const std::vector<ToolRun> kept = runs.Since(0);
    ASSERT_EQ(kept.size(), 1u);
    EXPECT_TRUE(kept[0].isTooLong);
    EXPECT_FALSE(kept[0].isRead);
    EXPECT_EQ(kept[0].output, nullptr);
}
