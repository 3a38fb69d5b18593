// What programs are told of each tool run.
#include "VeritasTest.h"

#include <thread>

using namespace harness;

namespace {

class VeritasToolRunReport : public VeritasTest {
protected:
    VeritasToolRunReport() {
        SetVeritasToolRunCallback(&VeritasToolRunReport::Take, this);
    }
    ~VeritasToolRunReport() override {
        SetVeritasToolRunCallback(nullptr, nullptr);
    }

    // The runs since the last call: command line, outcome, output.
    Texts Told() {
        Texts told;
        told.swap(m_told);
        return told;
    }

private:
    static void Take(const CVeritasToolRun& run, void* context) {
        std::string text = Utf8(run.commandLine) + "| ";
        if (!run.started) {
            text += "not started " + std::to_string(run.startError) + (run.exitCodeKnown ? ", yet its code" : "");
        } else if (run.exitCodeKnown) {
            text += "ended " + std::to_string(run.exitCode);
        } else {
            text += "ended somehow";
        }
        text += run.captureError != 0 ? ", astray " + std::to_string(run.captureError) : "";
        static_cast<VeritasToolRunReport*>(context)->m_told.push_back(
            text + " | " + (run.output ? Utf8(std::wstring(run.output, run.cchOutput)) : "unread"));
    }

    Texts m_told;
};

TEST_F(VeritasToolRunReport, HoldsCommandLineExitCodeAndWholeOutput) {
    tools.Answer(L"hasys -list ", "NODE1\r\nNODE2\r\n", 3);
    Names systems;
    EXPECT_TRUE(cluster.EnumSystemNames(systems));
    EXPECT_EQ(Told(), Texts{"hasys -list | ended 3 | NODE1\nNODE2\n"});

    tools.Answer(L"haconf -makerw ", "");
    EXPECT_TRUE(cluster.SwitchToReadWriteMode());
    EXPECT_EQ(Told(), Texts{"haconf -makerw | ended 0 | "});
}

TEST_F(VeritasToolRunReport, TellsWhyAToolWasNotStarted) {
    tools.FailStart(1, ERROR_FILE_NOT_FOUND);
    EXPECT_FALSE(cluster.SwitchToReadWriteMode());
    EXPECT_EQ(Told(), Texts{"haconf -makerw | not started 2 | unread"});

    Platform().FailCall("GetTempFileNameW", ERROR_ACCESS_DENIED);
    SetLastError(0);
    EXPECT_FALSE(cluster.SwitchToReadWriteMode());
    EXPECT_EQ(GetLastError(), DWORD(ERROR_ACCESS_DENIED));
    EXPECT_EQ(Told(), Texts{"haconf -makerw | not started 5 | unread"});
}

TEST_F(VeritasToolRunReport, TellsThatNeitherTheCaptureFileNorTheToolCameUp) {
    Platform().FailCall("CreateFileW", ERROR_SHARING_VIOLATION, 1, FaultMode::FromThenOn);
    tools.FailStart(1, ERROR_FILE_NOT_FOUND);
    EXPECT_FALSE(cluster.SwitchToReadWriteMode());
    EXPECT_EQ(Told(), Texts{"haconf -makerw | not started 2, astray 32 | unread"});
}

TEST_F(VeritasToolRunReport, TellsOfAToolThatIsNotStartedForNoReason) {
    tools.FailStart(1, ERROR_SUCCESS);
    EXPECT_TRUE(cluster.SwitchToReadWriteMode());
    EXPECT_EQ(Told(), Texts{"haconf -makerw | not started 0 | "});
}

TEST_F(VeritasToolRunReport, TellsThatAnOutputWentAstrayOrCouldNotBeRead) {
    tools.Answer(L"haconf -makerw ", "lost\r\n");
    for (int tries = 0; tries < 21; ++tries) { // as long as the library tries
        Platform().FailCall("CreateFileW", ERROR_SHARING_VIOLATION);
    }
    EXPECT_TRUE(cluster.SwitchToReadWriteMode());
    EXPECT_EQ(Told(), Texts{"haconf -makerw | ended 0, astray 32 | "});

    Platform().FailCall("_wsopen", ENOENT);
    EXPECT_FALSE(cluster.SwitchToReadWriteMode());
    EXPECT_EQ(Told(), Texts{"haconf -makerw | ended 0 | unread"});

    Platform().FailCall("GetExitCodeProcess", ERROR_INVALID_HANDLE);
    EXPECT_TRUE(cluster.SwitchToReadWriteMode());
    EXPECT_EQ(Told(), Texts{"haconf -makerw | ended somehow | lost\n"});
}

TEST_F(VeritasToolRunReport, MasksWhatVcsencryptGetsAndGivesButNotItsMessages) {
    tools.Answer(L"vcsencrypt -agent topsecret", "gPiRcLrUtq\r\n");
    std::wstring encrypted;
    EXPECT_TRUE(cluster.EncryptVeritasPassword(L"topsecret", encrypted));
    EXPECT_EQ(encrypted, L"gPiRcLrUtq");
    EXPECT_EQ(Told(), Texts{"vcsencrypt -agent ***| ended 0 | ***"});

    tools.Answer(L"vcsencrypt -agent x1y2z3", "VCS ERROR V-16-1-10 cannot use x1y2z3\r\n", 1);
    EXPECT_TRUE(cluster.EncryptVeritasPassword(L"x1y2z3", encrypted));
    EXPECT_EQ(Told(), Texts{"vcsencrypt -agent ***| ended 1 | VCS ERROR V-16-1-10 cannot use ***\n"});

    tools.Answer(L"vcsencrypt -agent silent", "");
    EXPECT_TRUE(cluster.EncryptVeritasPassword(L"silent", encrypted));
    EXPECT_EQ(Told(), Texts{"vcsencrypt -agent ***| ended 0 | "});
}

TEST_F(VeritasToolRunReport, MasksAPasswordThatAMessageRepeatsWithoutItsQuotes) {
    const char message[] = "VCS ERROR V-16-1-10 cannot use ";
    const struct {
        const wchar_t* argument;
        const char* repeated;
    } passwords[] = {
        {L"\"top secret\"", "top secret"}, {L"\"top secret\"", "secret"}, {L"\"top secret\"", "\"top secret\""},
        {L"\"a1\\\"b2 c3\"", "a1\"b2 c3"}, {L"a1\\\"b2", "a1\"b2"},       {L"top secret", "secret"}};
    for (const auto& password : passwords) {
        tools.AnswerNext(message + std::string(password.repeated) + "\r\n", 1);
        std::wstring encrypted;
        EXPECT_TRUE(cluster.EncryptVeritasPassword(password.argument, encrypted));
        EXPECT_EQ(Told(), Texts{"vcsencrypt -agent ***| ended 1 | " + std::string(message) + "***\n"});
    }
}

TEST_F(VeritasToolRunReport, ShowsALongCommandLineAsItIsCutForTheTool) {
    const size_t most = 16383;
    tools.AllowUnscripted();
    const std::wstring beginning = L"hares -delete ";
    cluster.DeleteResource((std::wstring(most - beginning.size(), L'x') + L"yz").c_str());
    EXPECT_EQ(Told(), Texts{Utf8(tools.Runs().back().commandLine) + "| ended 0 | "});
    EXPECT_EQ(tools.Runs().back().commandLine, beginning + std::wstring(most - beginning.size(), L'x'));
}

TEST_F(VeritasToolRunReport, MasksALongPasswordAsItIsCutForTheTool) {
    const std::wstring beginning = L"vcsencrypt -agent ";
    const std::wstring passed(16383 - beginning.size(), L'x');
    tools.AnswerNext("VCS ERROR V-16-1-10 too long: " + Utf8(passed) + "\r\n", 1);
    std::wstring encrypted;
    EXPECT_TRUE(cluster.EncryptVeritasPassword((passed + L"yz").c_str(), encrypted));
    EXPECT_EQ(Told(), Texts{"vcsencrypt -agent ***| ended 1 | VCS ERROR V-16-1-10 too long: ***\n"});
}

TEST_F(VeritasToolRunReport, HoldsAnOutputBeyondItsNullCharacters) {
    tools.Answer(L"haconf -makerw ", std::string("one\0two\r\nthree\r\n", 16));
    EXPECT_TRUE(cluster.SwitchToReadWriteMode());
    EXPECT_EQ(Told(), Texts{"haconf -makerw | ended 0 | " + std::string("one\0two\nthree\n", 14)});
}

TEST_F(VeritasToolRunReport, MasksPasswordsThatAreSetOrShown) {
    tools.AnswerPrefix(L"hares -add", "");
    tools.AnswerPrefix(L"hares -modify", "no such attribute: gPiRc\r\n");
    EXPECT_TRUE(cluster.CreateResource(L"r", L"GenericService", L"g", nullptr, {{L"Password", L"\"gPiRc\""}}));
    EXPECT_EQ(Told(), (Texts{"hares -add r GenericService g | ended 0 | ",
                             "hares -modify r  Password ***| ended 0 | no such attribute: ***\n"}));

    tools.AnswerPrefix(L"hares -display", "#Resource Attribute System Value\r\nr Password global gPiRc\r\n");
    std::wstring value;
    EXPECT_TRUE(cluster.GetResourceAttribute(L"r", L"Password", value));
    EXPECT_EQ(value, L"gPiRc");
    EXPECT_EQ(Told(), Texts{"hares -display r -attribute Password | ended 0 | #Resource Attribute System Value\n"
                            "r Password global ***\n"});
}

TEST_F(VeritasToolRunReport, ChangesNeitherLogNorCallsNorLastError) {
    tools.Answer(L"haconf -makerw ", "done\r\n");
    EXPECT_TRUE(cluster.SwitchToReadWriteMode());
    const std::string log = TakeLog();
    const std::string journal = TakeJournal();
    SetVeritasToolRunCallback(nullptr, nullptr);
    EXPECT_TRUE(cluster.SwitchToReadWriteMode());
    EXPECT_EQ(TakeLog(), log);
    EXPECT_EQ(TakeJournal(), journal);
    EXPECT_EQ(Told().size(), 1u);

    SetVeritasToolRunCallback([](const CVeritasToolRun&, void*) { SetLastError(ImpossibleCode); }, nullptr);
    tools.FailStart(1, ERROR_FILE_NOT_FOUND);
    EXPECT_FALSE(cluster.SwitchToReadWriteMode());
    EXPECT_EQ(GetLastError(), DWORD(ERROR_FILE_NOT_FOUND));
    Platform().FailCall("GetTempFileNameW", ERROR_ACCESS_DENIED);
    EXPECT_FALSE(cluster.SwitchToReadWriteMode());
    EXPECT_EQ(GetLastError(), DWORD(ERROR_ACCESS_DENIED));
}

TEST_F(VeritasToolRunReport, AFunctionMayTakeItselfAway) {
    static int calls = 0;
    calls = 0;
    SetVeritasToolRunCallback(
        [](const CVeritasToolRun&, void*) {
            ++calls;
            SetVeritasToolRunCallback(nullptr, nullptr);
        },
        nullptr);
    tools.AnswerPrefix(L"haconf", "");
    EXPECT_TRUE(cluster.SwitchToReadWriteMode());
    EXPECT_TRUE(cluster.SwitchToReadOnlyMode());
    EXPECT_EQ(calls, 1);
}

TEST_F(VeritasToolRunReport, IsNotGivenToAFunctionThatIsTakenAwayWhileTheOutputIsRead) {
    tools.Answer(L"haconf -makerw ", "done\r\n");
    const ImportPatch<int(int), struct CloseTag> patch(FindImports(LibraryModule(), AnyCRuntime, "_close"),
                                                       [&](int file) {
                                                           SetVeritasToolRunCallback(nullptr, nullptr);
                                                           return patch.Next(file);
                                                       });
    EXPECT_TRUE(cluster.SwitchToReadWriteMode());
    EXPECT_EQ(Told(), Texts());
}

TEST_F(VeritasToolRunReport, AFunctionThatThrowsEndsTheMemberBetweenTwoRuns) {
    struct Enough {};
    static int calls = 0;
    calls = 0;
    SetVeritasToolRunCallback(
        [](const CVeritasToolRun&, void*) {
            if (++calls == 2) {
                throw Enough();
            }
        },
        nullptr);
    tools.AnswerPrefix(L"hares", "");
    EXPECT_THROW(cluster.TurnOnOrOffResource(L"r", L"NODE1", true), Enough);
    EXPECT_EQ(tools.TakeCommandLines(), (CommandList{L"hares -clear  r", L"hares -probe r -sys  NODE1"}));

    // The next member runs as ever; that nothing is left of the other one is found at the end of every test.
    EXPECT_TRUE(cluster.TurnOnOrOffResource(L"r", L"NODE1", true));
    EXPECT_EQ(tools.TakeCommandLines().size(), 3u);
    EXPECT_EQ(calls, 5);
}

TEST_F(VeritasToolRunReport, IsGivenOneAtATimeToWhicheverFunctionIsRegistered) {
    tools.AnswerPrefix(L"haconf", "");
    static long running = 0;
    static long most = 0;
    static long calls = 0;
    running = most = calls = 0;
    const VeritasToolRunCallback count = [](const CVeritasToolRun&, void*) {
        most = (std::max)(most, InterlockedIncrement(&running));
        ++calls; // by one thread at a time
        InterlockedDecrement(&running);
    };
    SetVeritasToolRunCallback(count, nullptr);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([this] {
            for (int run = 0; run < 25; ++run) {
                cluster.SwitchToReadWriteMode();
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(most, 1);
    EXPECT_EQ(calls, 100);
}

TEST_F(VeritasToolRunReport, IsMadeWithoutTextsWhenThereIsNoMemoryForThem) {
    static std::string told;
    SetVeritasToolRunCallback(
        [](const CVeritasToolRun& run, void*) {
            const HarnessScope scope;
            told += Utf8(run.commandLine) + (run.output ? "| read " : "| unread ") + std::to_string(run.cchOutput) +
                    " ended " + std::to_string(run.exitCode) + "\n";
        },
        nullptr);
    const std::string output(100, 'x');
    tools.Answer(L"haconf -makerw ", output + "\r\n", 3);
    const std::string whole = "haconf -makerw | read 101 ended 3\n";
    bool wasShort = false;
    for (unsigned n = 1; told != whole; ++n) {
        ASSERT_LT(n, 100u) << "the report is never whole: " << told;
        told.clear();
        Heap().FailAllocation(n, FaultMode::Once);
        Heap().StartOperation();
        bool threw = false;
        bool result = false;
        try {
            result = cluster.SwitchToReadWriteMode();
        } catch (const std::bad_alloc&) {
            threw = true;
        }
        Heap().EndOperation();
        Heap().FailAllocation(0, FaultMode::Once);
        if (threw) {
            EXPECT_EQ(told, "");
        } else {
            EXPECT_TRUE(result);
            EXPECT_THAT((Texts{whole, "| unread 0 ended 3\n"}), ::testing::Contains(told));
            wasShort = wasShort || told != whole;
        }
    }
    EXPECT_TRUE(wasShort);
}

} // namespace
