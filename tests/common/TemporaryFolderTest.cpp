// Folders for temporary files: each is another one, and leaves nothing behind.
#include "common/TemporaryFolder.h"

#include "common/Files.h"

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

using common::FileExists;
using common::TemporaryFolder;
using common::WriteWholeFile;

TEST(TemporaryFolders, AreEmptyAndDiffer) {
    const TemporaryFolder first(L"name with blanks");
    const TemporaryFolder second(L"name with blanks");
    EXPECT_NE(first.Path(), second.Path());
    EXPECT_TRUE(FileExists(first.Path()));
    EXPECT_TRUE(FileExists(second.Path()));
    EXPECT_THAT(first.Entries(), IsEmpty());
}

TEST(TemporaryFolders, AreNotThoseThatAStoppedProcessLeft) {
    const TemporaryFolder left(L"common");
    const std::wstring next = left.Path().substr(0, left.Path().size() - 1) + L"2";
    ASSERT_TRUE(CreateDirectoryW(next.c_str(), nullptr));
    EXPECT_NE(TemporaryFolder(L"common").Path(), next);
    EXPECT_TRUE(RemoveDirectoryW(next.c_str()));
}

TEST(TemporaryFolders, GoWithTheFilesAndTheEmptyFoldersInThem) {
    std::wstring path;
    {
        const TemporaryFolder folder(L"common");
        path = folder.Path();
        WriteWholeFile(folder.File(L"b"), "text");
        SetFileAttributesW(folder.File(L"b").c_str(), FILE_ATTRIBUTE_READONLY);
        ASSERT_TRUE(CreateDirectoryW(folder.File(L"a").c_str(), nullptr));
        EXPECT_THAT(folder.Entries(), ElementsAre(L"a", L"b"));
    }
    EXPECT_FALSE(FileExists(path));
}

TEST(TemporaryFolders, TellWhenTheyCannotBeRemoved) {
    const TemporaryFolder folder(L"common");
    const common::Handle held(
        CreateFileW(folder.File(L"a").c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr));
    ASSERT_TRUE(held);
    EXPECT_FALSE(folder.Remove());
    EXPECT_TRUE(FileExists(folder.File(L"a")));
}

TEST(TemporaryFolders, KeepTheLastFileAsLongAsAnotherOneIsThere) {
    TemporaryFolder folder(L"common");
    folder.RemoveLast(L"a");
    WriteWholeFile(folder.File(L"a"), "text");
    common::Handle held(CreateFileW(folder.File(L"b").c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr));
    ASSERT_TRUE(held);
    WriteWholeFile(folder.File(L"c"), "text");
    EXPECT_FALSE(folder.Remove());
    EXPECT_THAT(folder.Entries(), ElementsAre(L"a", L"b"));
    held.Close();
    EXPECT_TRUE(folder.Remove());
    EXPECT_FALSE(FileExists(folder.Path()));
}

TEST(TemporaryFolders, TellWhyTheyCannotBeMade) {
    try {
        const TemporaryFolder folder(L"no such folder\\name");
        ADD_FAILURE() << "made " << common::FileError(folder.Path(), "", 0).what();
    } catch (const common::FileError& error) {
        EXPECT_EQ(error.Code(), static_cast<DWORD>(ERROR_PATH_NOT_FOUND));
        EXPECT_THAT(error.what(), HasSubstr("cannot be created: there is no such folder (3)"));
    }
}
