// Lines that several processes append to one file.
#include "ChildProgram.h"
#include "FolderTest.h"

#include "common/AppendFile.h"
#include "common/FileLock.h"
#include "common/Files.h"

#include <sstream>

using common::AppendFile;

class AppendedLines : public FolderTest {
protected:
    std::string Read(const wchar_t* name) const {
        return common::ReadWholeFile(Path(name));
    }
};

TEST_F(AppendedLines, AppendsToWhatIsThere) {
    common::WriteWholeFile(Path(L"a"), "first\n");
    AppendFile file(Path(L"a"));
    EXPECT_FALSE(file.IsOpen());
    EXPECT_EQ(file.Append("second\n"), 0u);
    EXPECT_TRUE(file.IsOpen());
    EXPECT_EQ(file.Append(""), 0u);
    EXPECT_EQ(file.Append("third\nfourth\n"), 0u);
    EXPECT_EQ(Read(L"a"), "first\nsecond\nthird\nfourth\n");
}

TEST_F(AppendedLines, MakesTheFile) {
    AppendFile file(Path(L"a"));
    EXPECT_EQ(file.Open(), 0u);
    EXPECT_EQ(Read(L"a"), "");
}

TEST_F(AppendedLines, SaysWhyItCannotBeOpened) {
    EXPECT_EQ(AppendFile(Path(L"b\\a")).Open(), static_cast<DWORD>(ERROR_PATH_NOT_FOUND));
    EXPECT_EQ(AppendFile(Path(L"b\\a")).Append("x"), static_cast<DWORD>(ERROR_PATH_NOT_FOUND));
    EXPECT_EQ(AppendFile(m_folder).Append("x"), static_cast<DWORD>(ERROR_ACCESS_DENIED));
    EXPECT_NE(AppendFile().Append("x"), 0u);
}

TEST_F(AppendedLines, MayBeRenamedWhileItIsOpenAndBeginsAnewOnceClosed) {
    AppendFile file(Path(L"a"));
    EXPECT_EQ(file.Append("one\n"), 0u);
    EXPECT_TRUE(MoveFileW(Path(L"a").c_str(), Path(L"b").c_str()));
    EXPECT_EQ(file.Append("two\n"), 0u);
    file.Close();
    EXPECT_EQ(file.Append("three\n"), 0u);
    EXPECT_EQ(Read(L"b"), "one\ntwo\n");
    EXPECT_EQ(Read(L"a"), "three\n");
}

TEST_F(AppendedLines, AStoppedProcessDoesNotStopTheOthers) {
    const std::wstring name = L"common_test." + std::to_wstring(GetCurrentProcessId());
    const common::Handle ready(CreateEventW(nullptr, TRUE, FALSE, name.c_str()));
    Child holder(L"hold \"" + Path(L"a") + L"\" " + name);
    ASSERT_EQ(WaitForSingleObject(ready.get(), 30000), static_cast<DWORD>(WAIT_OBJECT_0));
    AppendFile file(Path(L"a"));
    const DWORD begin = GetTickCount();
    EXPECT_EQ(file.Append("one\n"), 0u);
    const DWORD waited = GetTickCount();
    EXPECT_GE(waited - begin, 1500u);
    EXPECT_EQ(file.Append("two\n"), 0u);
    EXPECT_LT(GetTickCount() - waited, 1500u) << "it does not wait twice";
    EXPECT_EQ(Read(L"a"), "one\ntwo\n");
}

TEST_F(AppendedLines, KeepsTheLinesOfTwoProcessesWhole) {
    const int count = 200;
    {
        Child first(L"append \"" + Path(L"a") + L"\" abc " + std::to_wstring(count));
        Child second(L"append \"" + Path(L"a") + L"\" \u00e4 " + std::to_wstring(count));
        EXPECT_EQ(first.Wait(), 0u);
        EXPECT_EQ(second.Wait(), 0u);
    }
    std::istringstream lines(Read(L"a"));
    int firsts = 0;
    int seconds = 0;
    for (std::string line; std::getline(lines, line);) {
        if (line.find_first_not_of("abc") == std::string::npos) {
            EXPECT_EQ(line.size(), 1200u);
            ++firsts;
        } else {
            EXPECT_EQ(line.find_first_not_of("\xC3\xA4"), std::string::npos) << line;
            EXPECT_EQ(line.size(), 800u);
            ++seconds;
        }
    }
    EXPECT_EQ(firsts, count);
    EXPECT_EQ(seconds, count);
}
