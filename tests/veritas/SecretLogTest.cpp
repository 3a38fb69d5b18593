// That a password never reaches the debug-log file. The log is configured once per process, so the library logs from a
// child process: this program, running one of its own tests.
#include "ChildProcess.h"
#include "RealTools.h"

#include "common/Files.h"

using namespace harness;

namespace {

const wchar_t Password[] = L"Pa55-word";
const wchar_t Encrypted[] = L"gPiRcLrUtq";

// Also what the child process runs. No recorder here: the library writes to its real log.
TEST(VeritasSecretProcess, EncryptsWithTheLogAsItIsConfigured) {
    const HeapTap heap;
    PlatformTap platform;
    ToolScript tools(platform);
    tools.Answer(std::wstring(L"vcsencrypt -agent ") + Password, "gPiRcLrUtq\r\n");
    tools.Answer(L"haconf -makerw ", "shown\r\n");
    std::wstring encrypted;
    EXPECT_TRUE(CVeritasCluster().EncryptVeritasPassword(Password, encrypted));
    EXPECT_EQ(encrypted, Encrypted);
    EXPECT_TRUE(CVeritasCluster().SwitchToReadWriteMode());
    platform.FailCall("CreateProcessW", ERROR_FILE_NOT_FOUND);
    EXPECT_FALSE(CVeritasCluster().EncryptVeritasPassword(Password, encrypted));
}

TEST(VeritasSecret, TheDebugLogFileHoldsNeitherThePasswordNorItsEncryptedForm) {
    const PrivateFolder folder;
    ChildProcess child(L"\"" + ProgramPath() + L"\" --gtest_filter=VeritasSecretProcess.* --gtest_brief=1",
                       {{L"CLUSUTIL_LOG_FILE", folder.File(L"log.txt")}, {L"CLUSUTIL_LOG_LEVEL", L"all"}});
    EXPECT_EQ(child.Wait(), 0u);
    EXPECT_EQ(folder.Entries(), Names{L"log.txt"});

    const std::string log = common::ReadWholeFile(folder.File(L"log.txt"));
    EXPECT_THAT(log, ::testing::HasSubstr("Command line is ***"));
    EXPECT_THAT(log, ::testing::HasSubstr("Result: ***"));
    EXPECT_THAT(log, ::testing::HasSubstr("Command line: haconf -makerw"));
    EXPECT_THAT(log, ::testing::HasSubstr("Result: shown"));
    EXPECT_THAT(log, ::testing::Not(::testing::HasSubstr(Utf8(Password))));
    EXPECT_THAT(log, ::testing::Not(::testing::HasSubstr(Utf8(Encrypted))));
}

} // namespace
