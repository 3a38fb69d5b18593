// Passwords in the form that VCS agents keep.
#include "Runs.h"

#include <algorithm>

using namespace harness;

namespace {

class VeritasEncryption : public VeritasTest {
protected:
    bool Encrypt(const std::wstring& password) {
        encrypted = L"OLD";
        return cluster.EncryptVeritasPassword(password.c_str(), encrypted);
    }
    // The log of a run; `exit` is what is told of the process.
    static std::string EncryptionLog(const Texts& exit) {
        return Lines(Texts{RunEnter, RunTempFile, "I Command line is ***"} + exit + Texts{"I Result: ***", RunLeave});
    }

    std::wstring encrypted;
};

TEST_F(VeritasEncryption, ThePasswordIsTheToolsArgumentAndItsOutputTheResult) {
    tools.Answer(L"vcsencrypt -agent secret", "hiqjtRlQ\r\n");
    EXPECT_TRUE(Encrypt(L"secret"));
    EXPECT_EQ(encrypted, L"hiqjtRlQ");
    EXPECT_EQ(tools.TakeCommandLines(), CommandList{L"vcsencrypt -agent secret"});
    EXPECT_EQ(TakeLog(), EncryptionLog({"I Process exit code: 0"}));
}

TEST_F(VeritasEncryption, ThePasswordIsNeitherQuotedNorEscaped) {
    tools.AnswerPrefix(L"vcsencrypt -agent ", "x\n");
    for (const wchar_t* password :
         {L"two words", L"\"quoted\"", L"%s%n%d", L"a\\", L" blank ", L"&|<>^", L"\u00E4\u20AC"}) {
        EXPECT_TRUE(Encrypt(password));
        EXPECT_EQ(tools.TakeCommandLines(), CommandList{std::wstring(L"vcsencrypt -agent ") + password});
    }
}

TEST_F(VeritasEncryption, OnlyTheFirstTokenOfTheOutputIsTaken) {
    for (const char* output : {"first second\n", "\r\n \tfirst\r\nsecond\r\n", "first\tx y z", "first"}) {
        tools.AnswerNext(output);
        EXPECT_TRUE(Encrypt(L"p")) << output;
        EXPECT_EQ(encrypted, L"first") << output;
    }
}

TEST_F(VeritasEncryption, WithoutOutputTheResultIsUntouchedAndNoFailure) {
    for (const char* output : {"", "\r\n", " \t\n\n"}) {
        tools.AnswerNext(output, 1);
        EXPECT_TRUE(Encrypt(L"p"));
        EXPECT_EQ(encrypted, L"OLD");
    }
}

TEST_F(VeritasEncryption, AMessageIsTakenForTheResult) {
    tools.AnswerNext("VCS ERROR V-16-1-10600 Cannot connect to VCS engine\r\n", 1);
    EXPECT_TRUE(Encrypt(L"p"));
    EXPECT_EQ(encrypted, L"VCS");
    tools.AnswerNext("x ERROR y\r\n", 1);
    EXPECT_TRUE(Encrypt(L"p"));
    EXPECT_EQ(encrypted, L"x");
}

TEST_F(VeritasEncryption, AToolThatCannotBeRunLeavesTheResultAlone) {
    tools.AnswerPrefix(L"vcsencrypt", "x\n");
    for (const FailingCall& failing : CallsThatFailARun) {
        SCOPED_TRACE(failing.name);
        Platform().FailCall(failing.call, ERROR_FILE_NOT_FOUND);
        EXPECT_FALSE(Encrypt(L"p"));
        EXPECT_EQ(encrypted, L"OLD");
    }
    Forget();
    tools.FailStart(1, ERROR_FILE_NOT_FOUND);
    EXPECT_FALSE(Encrypt(L"p"));
    EXPECT_EQ(TakeLog(), EncryptionLog({}));
}

TEST_F(VeritasEncryption, NeitherPasswordNorResultIsLogged) {
    tools.AnswerPrefix(L"vcsencrypt", "ENCRYPTED-FORM second-TOKEN\r\n");
    EXPECT_TRUE(Encrypt(L"my-SECRET pass-WORD"));
    EXPECT_EQ(encrypted, L"ENCRYPTED-FORM");
    const std::string log = TakeLog();
    for (const char* secret : {"SECRET", "WORD", "ENCRYPTED", "TOKEN"}) {
        EXPECT_EQ(log.find(secret), std::string::npos) << secret;
    }
    EXPECT_EQ(log, EncryptionLog({"I Process exit code: 0"}));
}

TEST_F(VeritasEncryption, NullCountsAsAnEmptyPassword) {
    tools.Answer(L"vcsencrypt -agent ", "x\n");
    EXPECT_TRUE(cluster.EncryptVeritasPassword(nullptr, encrypted));
    EXPECT_EQ(encrypted, L"x");
}

TEST_F(VeritasEncryption, TheNextRunIsLoggedInFull) {
    tools.AnswerPrefix(L"", "x\n");
    EXPECT_TRUE(Encrypt(L"p"));
    Forget();
    EXPECT_TRUE(cluster.DeleteResource(L"R"));
    EXPECT_EQ(TakeLog(), RunLog("hares -delete R ", {"I Process exit code: 0", "I Result: x"}));
}

TEST_F(VeritasEncryption, NoCommandLineIsLeftOnTheStack) {
    // The buffer is looked at where the run ends: when its file is deleted.
    const wchar_t* commandLine = nullptr;
    std::size_t cleared = 0;
    tools.onRun = [&commandLine](const ToolRun& run) { commandLine = run.arguments.commandLine; };
    const auto patch = PatchImport(kernel32, DeleteFileW, [&](LPCWSTR name) {
        cleared = static_cast<std::size_t>(std::count(commandLine, commandLine + 16384, L'\0'));
        return ::DeleteFileW(name);
    });
    tools.AnswerPrefix(L"vcsencrypt", "x\n");
    EXPECT_TRUE(Encrypt(L"secret"));
    EXPECT_EQ(cleared, 16384u);
    cleared = 0;
    Platform().FailCall("_wsopen", ERROR_SHARING_VIOLATION, 1, FaultMode::FromThenOn);
    EXPECT_FALSE(Encrypt(L"secret"));
    EXPECT_EQ(cleared, 16384u);
}

} // namespace
