// Whole files, and what is told when they cannot be read or written.
#include "FolderTest.h"

#include "common/Files.h"

#include <atomic>
#include <thread>

using testing::EndsWith;

using common::FileError;
using common::FileExists;
using common::ReadWholeFile;
using common::WriteWholeFile;

class Files : public FolderTest {
protected:
    // What the attempt is told to have failed with.
    template <typename Attempt> static FileError ErrorOf(Attempt attempt) {
        try {
            attempt();
        } catch (const FileError& error) {
            return error;
        }
        ADD_FAILURE() << "nothing failed";
        return FileError(L"", "", 0);
    }
};

TEST_F(Files, AreWrittenAndReadByteForByte) {
    std::string bytes("\0\r\n\x1A\xFF", 5);
    for (const std::size_t size : {std::size_t{0}, std::size_t{5}, std::size_t{65536}, std::size_t{200001}}) {
        bytes.resize(size, 'x');
        WriteWholeFile(Path(L"a"), bytes);
        EXPECT_EQ(ReadWholeFile(Path(L"a")), bytes) << size;
        EXPECT_FALSE(FileExists(Path(L"a.new")));
    }
}

TEST_F(Files, AreReadFromWhereTheHandleStands) {
    WriteWholeFile(Path(L"a"), "0123456789");
    const common::Handle file = common::OpenForReading(Path(L"a"));
    SetFilePointer(file.get(), 7, nullptr, FILE_BEGIN);
    EXPECT_EQ(common::ReadToEnd(file, Path(L"a")), "789");
}

TEST_F(Files, AReaderSeesTheOldFileToItsEnd) {
    WriteWholeFile(Path(L"a"), "old");
    common::Handle file = common::OpenForReading(Path(L"a"));
    WriteWholeFile(Path(L"b"), "new");
    EXPECT_EQ(common::ReadToEnd(file, Path(L"a")), "old");
    file.Close();
    common::MoveFileOver(Path(L"b"), Path(L"a"));
    EXPECT_EQ(ReadWholeFile(Path(L"a")), "new");
    EXPECT_FALSE(FileExists(Path(L"b")));
}

TEST_F(Files, SomebodyWhoJustLooksIsWaitedFor) {
    WriteWholeFile(Path(L"a"), "old");
    HANDLE const reader =
        CreateFileW(Path(L"a").c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    std::atomic<bool> isClosed(false);
    std::thread closer([&] {
        Sleep(150);
        isClosed = true;
        CloseHandle(reader);
    });
    WriteWholeFile(Path(L"a"), "new");
    EXPECT_TRUE(isClosed);
    closer.join();
    EXPECT_EQ(ReadWholeFile(Path(L"a")), "new");
}

TEST_F(Files, SomebodyWhoStaysIsGivenUpAndNothingIsLeft) {
    WriteWholeFile(Path(L"a"), "old");
    const common::Handle reader(
        CreateFileW(Path(L"a").c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
    const FileError error = ErrorOf([this] { WriteWholeFile(Path(L"a"), "new"); });
    EXPECT_STREQ(error.Attempt(), "replaced");
    EXPECT_EQ(error.Path(), Path(L"a"));
    EXPECT_EQ(ReadWholeFile(Path(L"a")), "old");
    EXPECT_FALSE(FileExists(Path(L"a.new")));
}

TEST_F(Files, AMissingFileOrFolderIsToldApart) {
    const FileError file = ErrorOf([this] { ReadWholeFile(Path(L"\u00e4")); });
    EXPECT_EQ(file.Code(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
    EXPECT_THAT(file.what(), EndsWith("\\\xC3\xA4: cannot be read: there is no such file (2)"));
    const FileError folder = ErrorOf([this] { ReadWholeFile(Path(L"b\\a")); });
    EXPECT_EQ(folder.Code(), static_cast<DWORD>(ERROR_PATH_NOT_FOUND));
    EXPECT_THAT(folder.what(), EndsWith("\\a: cannot be read: there is no such folder (3)"));
}

TEST_F(Files, ANameThatNoFileCanHaveIsToldApart) {
    const FileError tooLong = ErrorOf([this] { WriteWholeFile(Path(std::wstring(256, L'x').c_str()), "new"); });
    EXPECT_EQ(tooLong.Code(), static_cast<DWORD>(ERROR_FILENAME_EXCED_RANGE));
    EXPECT_THAT(tooLong.what(), EndsWith("xx: cannot be written: the name is too long (206)"));
    const FileError missing = ErrorOf([this] { ReadWholeFile(Path(std::wstring(255, L'x').c_str())); });
    EXPECT_EQ(missing.Code(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
}

TEST_F(Files, AFileThatCannotBeWrittenStaysAsItWas) {
    WriteWholeFile(Path(L"a"), "old");
    CreateDirectoryW(Path(L"a.new").c_str(), nullptr); // where the new file is to be made
    const FileError error = ErrorOf([this] { WriteWholeFile(Path(L"a"), "new"); });
    EXPECT_STREQ(error.Attempt(), "written");
    EXPECT_THAT(error.what(), EndsWith("\\a: cannot be written: access is denied (5)"));
    EXPECT_EQ(ReadWholeFile(Path(L"a")), "old");
    WriteWholeFile(Path(L"a"), "new", L".4711.new");
    EXPECT_EQ(ReadWholeFile(Path(L"a")), "new") << "a suffix of its own is another file";
    EXPECT_THAT(ErrorOf([this] { WriteWholeFile(Path(L"b\\a"), ""); }).what(),
                EndsWith("\\a: cannot be written: there is no such folder (3)"));
}

TEST_F(Files, ADeadWritersRestIsOverwritten) {
    WriteWholeFile(Path(L"a.new"), "half a fi");
    WriteWholeFile(Path(L"a"), "new");
    EXPECT_EQ(ReadWholeFile(Path(L"a")), "new");
    EXPECT_FALSE(FileExists(Path(L"a.new")));
}

TEST_F(Files, ErrorsNameTheirReason) {
    EXPECT_STREQ(FileError(L"a", "written", ERROR_DISK_FULL).what(), "a: cannot be written: the disk is full (112)");
    EXPECT_STREQ(FileError(L"a", "written", ERROR_HANDLE_DISK_FULL).what(),
                 "a: cannot be written: the disk is full (39)");
    EXPECT_STREQ(FileError(L"a", "locked", ERROR_CRC).what(), "a: cannot be locked: error (23)");
}

TEST_F(Files, AreRemovedWhereThereAreAny) {
    WriteWholeFile(Path(L"a"), "");
    EXPECT_TRUE(FileExists(Path(L"a")));
    common::RemoveFile(Path(L"a"));
    EXPECT_FALSE(FileExists(Path(L"a")));
    EXPECT_NO_THROW(common::RemoveFile(Path(L"a")));
    CreateDirectoryW(Path(L"b").c_str(), nullptr);
    EXPECT_TRUE(FileExists(Path(L"b"))) << "a folder counts";
    EXPECT_STREQ(ErrorOf([this] { common::RemoveFile(Path(L"b")); }).Attempt(), "removed");
}

TEST_F(Files, PathsBecomeAbsolute) {
    EXPECT_EQ(common::FullPath(Path(L"x\\..\\a")), Path(L"a"));
    EXPECT_EQ(common::FullPath(L""), L"");
    const std::wstring longName(MAX_PATH + 40, L'x');
    EXPECT_EQ(common::FullPath(L"C:\\" + longName), L"C:\\" + longName);
}

TEST(HandleOwner, TakesNoHandleForNone) {
    EXPECT_FALSE(common::Handle());
    EXPECT_FALSE(common::Handle(nullptr));
    EXPECT_FALSE(common::Handle(INVALID_HANDLE_VALUE));
}

TEST(HandleOwner, ClosesOnceWhereverItIsMoved) {
    const HANDLE event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    DWORD flags = 0;
    {
        common::Handle first(event);
        common::Handle second(std::move(first));
        first = common::Handle(CreateEventW(nullptr, TRUE, FALSE, nullptr));
        first = std::move(second);
        EXPECT_EQ(first.get(), event);
        EXPECT_FALSE(second);
        EXPECT_TRUE(GetHandleInformation(event, &flags));
    }
    EXPECT_FALSE(GetHandleInformation(event, &flags));
}
