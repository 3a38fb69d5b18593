// What is read once per process, with each platform call, read of the settings file and allocation of the first reading
// failing. Every test is a process of its own, so each one has a first reading.
#include "FaultSweep.h"
#include "SettingsFiles.h"

#include <cstdio>
#include <new>
#include <thread>

using namespace harness;

namespace {

// One more than the first reading makes.
const unsigned LastCall = 8;
// The first of them open the settings file and read its two lines. Without these the key is the default one, which is
// not there.
const unsigned LastCallForTheKey = 3;
const unsigned LastAllocation = 36;

enum class What {
    Call,
    Allocation
};

class FirstReadSweep : public HostTest,
                       public ::testing::WithParamInterface<std::tuple<What, unsigned, FaultMode, DWORD>> {
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
        Platform().FailNthCall(Kind() == What::Call ? n : 0, mode, std::get<3>(GetParam()));
        Heap().FailAllocation(Kind() == What::Allocation ? n : 0, mode);
    }
    void EndFailing() {
        Platform().FailNthCall(0, FaultMode::Once, 0);
        Heap().FailAllocation(0, FaultMode::Once);
    }

    SettingsFiles files{*this};

private:
    // The settings file's calls fail like those of the platform, which stand in the tap.
    bool Fails(const char* function) {
        const HarnessScope scope;
        DWORD code = 0;
        return Platform().ShouldFail(function, std::string(function) + "()", &code);
    }

    ImportPatch<FILE*(const wchar_t*, const wchar_t*), struct OpenTag> m_open{
        FindImports(LibraryModule(), AnyCRuntime, "_wfopen"),
        [this](const wchar_t* path, const wchar_t* mode) -> FILE* {
            return Fails("_wfopen") ? nullptr : m_open.Next(path, mode);
        }};
    ImportPatch<char*(char*, int, FILE*), struct ReadTag> m_read{
        FindImports(LibraryModule(), AnyCRuntime, "fgets"), [this](char* line, int size, FILE* file) -> char* {
            return Fails("fgets") ? nullptr : m_read.Next(line, size, file);
        }};
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
    TellSwept(1, fired ? 1 : 0);
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
    const bool isKeyLost = Kind() == What::Call && std::get<1>(GetParam()) <= LastCallForTheKey;
    EXPECT_EQ(journal.find("(SOFTWARE\\Other)") == std::string::npos, isKeyLost) << journal;
    const bool answerFailed = isKeyLost || call.find("RegOpenKeyExW") != std::string::npos ||
                              call.find("RegQueryValueExW") != std::string::npos;
    const bool all = std::get<2>(GetParam()) == FaultMode::FromThenOn;
    if (!fired || Kind() == What::Allocation || !(answerFailed || all)) {
        EXPECT_EQ(result, "true") << call << "\n" << journal;
    } else if (answerFailed) {
        EXPECT_EQ(result, "false") << call << "\n" << journal;
    }
}

// The codes take turns, or each call has all of them.
std::vector<FirstReadSweep::ParamType> FailingCalls() {
    const std::vector<DWORD>& codes = CodesOfFailingCalls();
    std::vector<FirstReadSweep::ParamType> calls;
    std::size_t turn = 0;
    for (const FaultMode mode : {FaultMode::Once, FaultMode::FromThenOn}) {
        for (unsigned n = 1; n <= LastCall; ++n) {
            const std::size_t first = turn++ % codes.size();
            for (std::size_t i = 0; i < (IsWholeSweep() ? codes.size() : 1); ++i) {
                calls.emplace_back(What::Call, n, mode, codes[(first + i) % codes.size()]);
            }
        }
        ++turn; // the same call meets another code
    }
    return calls;
}

INSTANTIATE_TEST_SUITE_P(Calls, FirstReadSweep, ::testing::ValuesIn(FailingCalls()));
INSTANTIATE_TEST_SUITE_P(Allocations, FirstReadSweep,
                         ::testing::Combine(::testing::Values(What::Allocation),
                                            ::testing::Range(1u, LastAllocation + 1),
                                            ::testing::Values(FaultMode::Once, FaultMode::FromThenOn),
                                            ::testing::Values(DWORD(ERROR_SUCCESS)))); // memory tells no code

} // namespace
