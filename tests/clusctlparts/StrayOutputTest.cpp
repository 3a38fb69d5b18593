// A tool that is run without redirection must not print between what clusctl prints.
#include "StrayOutput.h"

#include "ChildProgram.h"

#include "common/Files.h"
#include "common/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

class StrayOutputs : public testing::Test {
protected:
    StrayOutputs() {
        SetStdHandle(STD_OUTPUT_HANDLE, m_file.get());
        SetStdHandle(STD_ERROR_HANDLE, m_file.get());
    }
    ~StrayOutputs() override {
        SetStdHandle(STD_OUTPUT_HANDLE, m_output);
        SetStdHandle(STD_ERROR_HANDLE, m_errors);
    }

    // Starts a program that prints "a", as the library starts a tool whose capture file cannot be opened.
    static void Run() {
        std::wstring commandLine = ChildCommand(L"print a");
        STARTUPINFOW startup = {};
        startup.cb = sizeof(startup);
        PROCESS_INFORMATION information = {};
        ASSERT_TRUE(CreateProcessW(nullptr, &commandLine[0], nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup,
                                   &information));
        const common::Handle thread(information.hThread);
        const common::Handle process(information.hProcess);
        EXPECT_EQ(WaitForSingleObject(process.get(), 60000), WAIT_OBJECT_0);
        DWORD exitCode = 1;
        GetExitCodeProcess(process.get(), &exitCode);
        EXPECT_EQ(exitCode, 0u);
    }

    std::string Printed() const {
        return common::ReadWholeFile(m_path);
    }

    const HANDLE m_output = GetStdHandle(STD_OUTPUT_HANDLE);
    const HANDLE m_errors = GetStdHandle(STD_ERROR_HANDLE);
    common::TemporaryFolder m_folder{L"stray output"};
    const std::wstring m_path = m_folder.File(L"output");
    SECURITY_ATTRIBUTES m_inheritable = {sizeof(m_inheritable), nullptr, TRUE};
    const common::Handle m_file{CreateFileW(m_path.c_str(), FILE_APPEND_DATA,
                                            FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, &m_inheritable,
                                            CREATE_NEW, 0, nullptr)};
};

} // namespace

TEST_F(StrayOutputs, GoNowhereWhileTheyAreKeptOut) {
    {
        const StrayOutput stray;
        Run();
        EXPECT_EQ(Printed(), "");
        EXPECT_EQ(StrayOutput::Own(STD_OUTPUT_HANDLE), m_file.get());
        EXPECT_EQ(StrayOutput::Own(STD_ERROR_HANDLE), m_file.get());
    }
    Run();
    EXPECT_EQ(Printed(), "aa") << "and come back afterwards";
    EXPECT_EQ(StrayOutput::Own(STD_OUTPUT_HANDLE), m_file.get());
}
