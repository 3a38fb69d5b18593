// What is read once per process, with each platform call and allocation of the first reading failing. Every test is a
// process of its own, so each one has a first reading.
#include "SettingsFiles.h"

#include <new>
#include <thread>

using namespace harness;

namespace {

// One more than the first reading makes.
const unsigned LastCall = 4;
const unsigned LastAllocation = 36;

enum class What {
    Call,
    Allocation
};

class FirstReadSweep : public HostTest, public ::testing::WithParamInterface<std::tuple<What, unsigned, FaultMode>> {
protected:
    FirstReadSweep() {
        files.WriteConfig(std::string("# product key\r\n") + SettingsEntry);
        Registry().SetNumber(L"SOFTWARE\\Other", L"IsCluster", 1);
        Forget();
    }

    What Kind() const {
        return std::get<0>(GetParam());
    }
    void StartFailing() {
        const unsigned n = std::get<1>(GetParam());
        const FaultMode mode = std::get<2>(GetParam());
        Platform().FailNthCall(Kind() == What::Call ? n : 0, mode, ERROR_ACCESS_DENIED);
        Heap().FailAllocation(Kind() == What::Allocation ? n : 0, mode);
    }
    void EndFailing() {
        Platform().FailNthCall(0, FaultMode::Once, 0);
        Heap().FailAllocation(0, FaultMode::Once);
    }

    SettingsFiles files{*this};
};

TEST_P(FirstReadSweep, LeavesNoLockHeldAndNoHalfAnswer) {
    std::string result;
    StartFailing();
    Heap().StartOperation();
    try {
        result = CVirtualServerUtil::CheckIsClusterByRegKey() ? "true" : "false";
    } catch (const std::bad_alloc&) {
        result = "threw";
    }
    Heap().EndOperation();
    const bool fired = Kind() == What::Call ? Platform().Fired() : Heap().Fired();
    const std::string call = Platform().FiredCall();
    if (std::get<1>(GetParam()) == (Kind() == What::Call ? LastCall : LastAllocation)) {
        EXPECT_FALSE(fired) << "there is more to fail";
    }
    EndFailing();
    const std::string journal = TakeJournal();
    EXPECT_EQ(Platform().OpenKeys(), 0);

    // Another thread is not kept out, and the answer is settled, or read again after an exception.
    bool later = false;
    std::thread([&] { later = CVirtualServerUtil::CheckIsClusterByRegKey(); }).join();
    if (result == "threw") {
        EXPECT_EQ(Kind(), What::Allocation);
        EXPECT_TRUE(later) << journal;
        return;
    }
    EXPECT_EQ(later, result == "true");
    EXPECT_EQ(TakeJournal(), "") << "read again";
    const bool answerFailed =
        call.find("RegOpenKeyExW") != std::string::npos || call.find("RegQueryValueExW") != std::string::npos;
    const bool all = std::get<2>(GetParam()) == FaultMode::FromThenOn;
    if (!fired || Kind() == What::Allocation || !(answerFailed || all)) {
        EXPECT_EQ(result, "true") << call << "\n" << journal;
    } else if (answerFailed) {
        EXPECT_EQ(result, "false") << call << "\n" << journal;
    }
}

INSTANTIATE_TEST_SUITE_P(Calls, FirstReadSweep,
                         ::testing::Combine(::testing::Values(What::Call), ::testing::Range(1u, LastCall + 1),
                                            ::testing::Values(FaultMode::Once, FaultMode::FromThenOn)));
INSTANTIATE_TEST_SUITE_P(Allocations, FirstReadSweep,
                         ::testing::Combine(::testing::Values(What::Allocation),
                                            ::testing::Range(1u, LastAllocation + 1),
                                            ::testing::Values(FaultMode::Once, FaultMode::FromThenOn)));

} // namespace
