// From the bytes that a tool prints to tokens and texts, and how long command lines may be.
#include "Runs.h"

using namespace harness;

namespace {

class VeritasRunnerText : public VeritasTest {
protected:
    // The value that an attribute display shows, which has to be there.
    std::wstring Value(const std::string& bytes) {
        tools.AnswerNext("#Resource Attribute System Value\r\nR A global " + bytes);
        std::wstring value;
        EXPECT_TRUE(cluster.GetResourceAttribute(L"R", L"A", value));
        return value;
    }
};

// Bytes --------------------------------------------------------------------------------------------------------------

TEST_F(VeritasRunnerText, BlanksTabsAndLineEndsSeparateTokensAndNothingElse) {
    EXPECT_EQ(Tokens(*this, "a b\tc\nd\r\n \t \n\n  e  \t f"), (Names{L"a", L"b", L"c", L"d", L"e", L"f"}));
    EXPECT_EQ(Tokens(*this, "\"a b\" 'c d' e,f;g\v\fh"), (Names{L"\"a", L"b\"", L"'c", L"d'", L"e,f;g\v\fh"}));
}

TEST_F(VeritasRunnerText, CarriageReturnAndLineFeedAreOneLineEndAndALoneCarriageReturnIsACharacter) {
    EXPECT_EQ(Tokens(*this, "a\r\nb\nc\rd\r\n"), (Names{L"a", L"b", L"c\rd"}));
    EXPECT_EQ(TakeLog(),
              RunLog("hasys -list ", {"I Process exit code: 0", "I Result: a", "I Result: b", "I Result: c\rd"}));
}

TEST_F(VeritasRunnerText, AnOutputOfLineEndsHasNoTokens) {
    EXPECT_EQ(Tokens(*this, "\r\n\r\n\n"), Names());
    EXPECT_EQ(TakeLog(), RunLog("hasys -list ", {"I Process exit code: 0", "I Result: ", "I Result: ", "I Result: "}));
}

TEST_F(VeritasRunnerText, EachByteIsOneCharacter) {
    std::string bytes;
    std::wstring characters;
    for (int byte = 0x80; byte <= 0xff; ++byte) {
        bytes += static_cast<char>(byte);
        characters += static_cast<wchar_t>(byte);
    }
    EXPECT_EQ(Tokens(*this, "x" + bytes + "y\r\n"), Names{L"x" + characters + L"y"});
    EXPECT_EQ(Value("x" + bytes + "y\r\n"), L"x" + characters + L"y");
    EXPECT_EQ(Tokens(*this, "\xef\xbb\xbfNODE1\r\n"), Names{L"\u00ef\u00bb\u00bfNODE1"});
}

TEST_F(VeritasRunnerText, ControlZEndsTheText) {
    EXPECT_EQ(Tokens(*this, "a b\r\nc\x1a d\r\ne\r\n"), (Names{L"a", L"b", L"c"}));
    EXPECT_EQ(TakeLog(), RunLog("hasys -list ", {"I Process exit code: 0", "I Result: a b", "I Result: c"}));
    EXPECT_EQ(Tokens(*this, "\x1a\r\na\r\n"), Names());
}

TEST_F(VeritasRunnerText, ANullCharacterEndsItsLine) {
    EXPECT_EQ(Tokens(*this, std::string("a b\0c d\r\ne\r\n", 13)), (Names{L"a", L"b", L"e"}));
}

TEST_F(VeritasRunnerText, AValueKeepsItsInnerBlanks) {
    EXPECT_EQ(Value("one  two\tthree  \r\n"), L"one  two\tthree");
}

// Error rules --------------------------------------------------------------------------------------------------------

TEST_F(VeritasRunnerText, ATextIsAnErrorWhenItBeginsSoInAnyCase) {
    for (const char* output : {"VCS WARNING V-16-1-10011 x\r\n", "vcs warning x\r\n", "VCS ERROR V-16-1-10600 x\r\n",
                               "Vcs Error", "VCS ERRORS\r\n"}) {
        tools.AnswerNext(std::string(output) + "R A global x\r\n");
        std::wstring value = L"before";
        EXPECT_FALSE(cluster.GetResourceAttribute(L"R", L"A", value)) << output;
        EXPECT_EQ(value, L"before");
    }
    for (const char* output : {" VCS ERROR\r\n", "VCS  ERROR\r\n", "VCS NOTICE\r\n", "#\r\n"}) {
        tools.AnswerNext(std::string(output) + "R A global VCS ERROR\r\n");
        std::wstring value;
        EXPECT_TRUE(cluster.GetResourceAttribute(L"R", L"A", value)) << output;
        EXPECT_EQ(value, L"VCS ERROR");
    }
}

TEST_F(VeritasRunnerText, AListIsAnErrorByItsSecondTokenUnlessItsFirstIsVcs) {
    for (const char* output : {"G1 ERROR", "G1 warning x\r\n", "G1\r\nError\r\n"}) {
        tools.AnswerNext(output);
        Names systems = {L"before"};
        EXPECT_FALSE(cluster.EnumSystemNames(systems)) << output;
        EXPECT_EQ(systems, Names{L"before"});
    }
    EXPECT_EQ(Tokens(*this, "VCS WARNING V-16-1-10133\r\n"), (Names{L"VCS", L"WARNING", L"V-16-1-10133"}));
    EXPECT_EQ(Tokens(*this, "vcs error\r\n"), (Names{L"vcs", L"error"}));
    EXPECT_EQ(Tokens(*this, "ERROR\r\n"), Names{L"ERROR"});
    EXPECT_EQ(Tokens(*this, "G1 ERRORS\r\n"), (Names{L"G1", L"ERRORS"}));
    EXPECT_EQ(Tokens(*this, "G1 x ERROR\r\n"), (Names{L"G1", L"x", L"ERROR"}));
}

// Long lines ---------------------------------------------------------------------------------------------------------

TEST_F(VeritasRunnerText, ALineIsCutTo511CharactersBeforeItIsSplit) {
    for (const std::size_t length : {1u, 510u, 511u, 512u, 513u, 600u, 4095u, 4096u, 4097u, 100000u}) {
        EXPECT_EQ(Tokens(*this, std::string(length, 'a') + "\r\nb\r\n"),
                  (Names{Repeated(length < 511 ? length : 511, L'a'), L"b"}))
            << length;
    }
}

TEST_F(VeritasRunnerText, ATokenAcrossTheLimitIsCutAndThoseBehindItAreLost) {
    EXPECT_EQ(Tokens(*this, std::string(505, 'a') + " " + std::string(94, 'b') + "\r\n"),
              (Names{Repeated(505, L'a'), Repeated(5, L'b')}));
    EXPECT_EQ(Tokens(*this, std::string(509, 'a') + " bc\r\n"), (Names{Repeated(509, L'a'), L"b"}));
    EXPECT_EQ(Tokens(*this, std::string(510, 'a') + " bc\r\n"), Names{Repeated(510, L'a')});
    EXPECT_EQ(Tokens(*this, std::string(511, 'a') + " bc\r\n"), Names{Repeated(511, L'a')});
    EXPECT_EQ(Tokens(*this, std::string(600, ' ') + "bc\r\nd\r\n"), Names{L"d"});
}

TEST_F(VeritasRunnerText, TheLogShowsLongLinesWhole) {
    for (const std::size_t length : {510u, 511u, 512u, 600u, 100000u}) {
        const std::string line(length, 'a');
        Tokens(*this, line + "\r\n");
        EXPECT_EQ(TakeLog(), RunLog("hasys -list ", {"I Process exit code: 0", "I Result: " + line}));
    }
}

// Command lines ------------------------------------------------------------------------------------------------------

TEST_F(VeritasRunnerText, ACommandLineIsCutBehind16383Characters) {
    const std::wstring command = L"vcsencrypt -agent ";
    for (const std::size_t length : {16381u, 16382u, 16383u, 16384u, 16385u, 20000u}) {
        tools.AnswerNext("gPi\r\n");
        const std::wstring password = Repeated(length - command.size());
        std::wstring encrypted;
        EXPECT_TRUE(cluster.EncryptVeritasPassword(password.c_str(), encrypted));
        const std::size_t expected = length < 16383 ? length : 16383;
        EXPECT_EQ(tools.TakeCommandLines(), CommandList{(command + password).substr(0, expected)}) << length;
    }
}

TEST_F(VeritasRunnerText, ACommandThatIsTooLongItselfIsCutToo) {
    const std::wstring resource = Repeated(20000);
    tools.AnswerNext("");
    std::wstring value;
    EXPECT_FALSE(cluster.GetResourceAttribute(resource.c_str(), L"A", value)); // nothing was shown
    const std::wstring line = (L"hares -display " + resource).substr(0, 16383);
    EXPECT_EQ(tools.TakeCommandLines(), CommandList{line});
    EXPECT_EQ(TakeLog(), RunLog(Utf8(line), {"I Process exit code: 0"}));
}

TEST_F(VeritasRunnerText, CharactersOutsideAsciiReachTheCommandLine) {
    const NameValuePairList filter = {{L"Name", L"Gr\u00fc\u00dfe-\u65e5\u672c"}};
    tools.AnswerNext("");
    Systems(cluster, &filter);
    EXPECT_EQ(tools.TakeCommandLines(), CommandList{L"hasys -list  Name=Gr\u00fc\u00dfe-\u65e5\u672c "});
}

// Memory -------------------------------------------------------------------------------------------------------------

std::string Times(std::size_t count, const std::string& text) {
    std::string repeated;
    while (count-- > 0) {
        repeated += text;
    }
    return repeated;
}

// Whatever the output looks like, and whether or not somebody is told of it.
TEST_F(VeritasRunnerText, ARunTakesNoMoreThanTwentyTimesTheBytesOfItsOutput) {
    const std::string outputs[] = {Times(100000, "a\n"),
                                   Times(12500, "a a a a a a a a\n"),
                                   Times(20000, "NODE-0001\r\n"),
                                   Times(4000, "EVS1-InformationStore\t\tNODE-0001 \r\n"),
                                   Times(100000, "a "),
                                   std::string(200000, 'x'),
                                   Times(100000, "\n")};
    for (const bool isTold : {false, true}) {
        if (isTold) {
            SetVeritasToolRunCallback([](const CVeritasToolRun&, void*) {}, nullptr);
        }
        for (const std::string& output : outputs) {
            tools.AnswerNext(output);
            std::size_t peak = 0;
            {
                Names systems;
                Heap().StartOperation();
                EXPECT_TRUE(cluster.EnumSystemNames(systems));
                Heap().EndOperation();
                peak = Heap().PeakBytes();
            }
            EXPECT_GE(peak, 2 * output.size()) << "of a text of " << output.substr(0, 20);
            EXPECT_LE(peak, 20 * output.size()) << output.substr(0, 20);
            Forget();
        }
    }
    SetVeritasToolRunCallback(nullptr, nullptr);
}

} // namespace
