// One process, or thread, at a time for a file.
#include "ChildProgram.h"
#include "FolderTest.h"

#include "common/FileLock.h"
#include "common/Files.h"

using common::FileLock;

class FileLocking : public FolderTest {
protected:
    struct Attempt {
        std::wstring path;
        DWORD timeout;
        DWORD code;
    };

    // The code that another thread gets.
    static DWORD CodeElsewhere(const std::wstring& path, DWORD timeout = 50) {
        Attempt attempt = {path, timeout, 0};
        const common::Handle thread(CreateThread(
            nullptr, 0,
            [](void* context) -> DWORD {
                Attempt& given = *static_cast<Attempt*>(context);
                FileLock lock(given.path);
                const FileLock::Turn turn(lock, given.timeout);
                given.code = turn ? static_cast<DWORD>(ERROR_SUCCESS) : turn.Code();
                return 0;
            },
            &attempt, 0, nullptr));
        WaitForSingleObject(thread.get(), INFINITE);
        return attempt.code;
    }
};

TEST_F(FileLocking, IsOnesAlone) {
    FileLock lock(Path(L"a"));
    {
        const FileLock::Turn turn(lock);
        ASSERT_TRUE(turn);
        EXPECT_EQ(CodeElsewhere(Path(L"a")), static_cast<DWORD>(WAIT_TIMEOUT));
        EXPECT_EQ(CodeElsewhere(Path(L"b")), 0u) << "another file";
    }
    EXPECT_EQ(CodeElsewhere(Path(L"a")), 0u);
    EXPECT_FALSE(common::FileExists(Path(L"a"))) << "nothing is written";
}

TEST_F(FileLocking, MayBeTakenAgainByWhoHasIt) {
    FileLock lock(Path(L"a"));
    FileLock another(Path(L"a"));
    const FileLock::Turn turn(lock);
    {
        const FileLock::Turn again(lock);
        EXPECT_TRUE(again);
        const FileLock::Turn once(another);
        EXPECT_TRUE(once);
    }
    EXPECT_EQ(CodeElsewhere(Path(L"a")), static_cast<DWORD>(WAIT_TIMEOUT)) << "the first turn goes on";
}

TEST_F(FileLocking, IsTheSameHoweverThePathIsSpelled) {
    FileLock lock(Path(L"Model.json"));
    const FileLock::Turn turn(lock);
    std::vector<std::wstring> spellings = {
        Path(L"MODEL.JSON"),       Path(L"x\\..\\Model.json"),       Path(L".\\Model.json"),
        m_folder + L"/Model.json", L"\\\\?\\" + Path(L"Model.json"),
    };
    wchar_t current[MAX_PATH];
    GetCurrentDirectoryW(MAX_PATH, current);
    SetCurrentDirectoryW(m_folder.c_str());
    spellings.emplace_back(L"Model.json");
    wchar_t shortFolder[MAX_PATH];
    ASSERT_NE(GetShortPathNameW(m_folder.c_str(), shortFolder, MAX_PATH), 0u);
    if (m_folder != shortFolder) { // not every volume has short names
        spellings.push_back(shortFolder + std::wstring(L"\\Model.json"));
    }
    for (const std::wstring& spelling : spellings) {
        EXPECT_EQ(CodeElsewhere(spelling), static_cast<DWORD>(WAIT_TIMEOUT)) << testing::PrintToString(spelling);
    }
    SetCurrentDirectoryW(current);
}

TEST_F(FileLocking, StaysTheSameWhenTheFileIsReplaced) {
    common::WriteWholeFile(Path(L"a"), "old");
    FileLock lock(Path(L"a"));
    const FileLock::Turn turn(lock);
    common::WriteWholeFile(Path(L"a"), "new");
    EXPECT_EQ(CodeElsewhere(Path(L"a")), static_cast<DWORD>(WAIT_TIMEOUT));
}

TEST_F(FileLocking, NeedsTheFolderAndLooksForItAgain) {
    FileLock lock(Path(L"later\\a"));
    {
        const FileLock::Turn turn(lock);
        EXPECT_FALSE(turn);
        EXPECT_EQ(turn.Code(), static_cast<DWORD>(ERROR_PATH_NOT_FOUND));
    }
    CreateDirectoryW(Path(L"later").c_str(), nullptr);
    EXPECT_TRUE(FileLock::Turn(lock));
    FileLock none;
    EXPECT_FALSE(FileLock::Turn(none));
}

TEST_F(FileLocking, IsGivenUpByAProcessThatDies) {
    const std::wstring name = L"common_test." + std::to_wstring(GetCurrentProcessId());
    const common::Handle ready(CreateEventW(nullptr, TRUE, FALSE, name.c_str()));
    Child holder(L"hold \"" + Path(L"a") + L"\" " + name);
    ASSERT_EQ(WaitForSingleObject(ready.get(), 30000), static_cast<DWORD>(WAIT_OBJECT_0));
    FileLock lock(Path(L"A"));
    EXPECT_EQ(FileLock::Turn(lock, 50).Code(), static_cast<DWORD>(WAIT_TIMEOUT));
    holder.Stop();
    EXPECT_TRUE(FileLock::Turn(lock, 10000));
}

TEST_F(FileLocking, LosesNothingOfProcessesThatChangeAFileAtOnce) {
    common::WriteWholeFile(Path(L"a"), "0");
    Child first(L"count \"" + Path(L"a") + L"\" 40");
    Child second(L"count \"" + Path(L"x\\..\\A") + L"\" 40");
    EXPECT_EQ(first.Wait(), 0u);
    EXPECT_EQ(second.Wait(), 0u);
    EXPECT_EQ(common::ReadWholeFile(Path(L"a")), "80");
}
