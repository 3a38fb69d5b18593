#include "CommonUtil.h"

#include <cwchar>

#include <gtest/gtest.h>

using NS_StringUtils::concatPath;

TEST(ConcatPath, PutsOneSeparatorAtTheSeam) {
    const struct {
        const wchar_t* head;
        const wchar_t* tail;
        const wchar_t* path;
    } cases[] = {
        {L"C:\\Data", L"CCRVSDB", L"C:\\Data\\CCRVSDB"},
        {L"C:\\Data\\", L"CCRVSDB", L"C:\\Data\\CCRVSDB"},
        {L"C:\\Data", L"\\CCRVSDB", L"C:\\Data\\CCRVSDB"},
        {L"C:\\Data\\", L"\\CCRVSDB", L"C:\\Data\\CCRVSDB"},
        {L"C:\\Data\\\\", L"\\\\\\CCRVSDB", L"C:\\Data\\CCRVSDB"},
        {L"C:/Data/", L"/CCRVSDB/x", L"C:/Data\\CCRVSDB/x"},
        {L"C:/Data/\\", L"\\/CCRVSDB", L"C:/Data\\CCRVSDB"},
        {L"C:", L"Data", L"C:\\Data"},
        {L"\\", L"Data\\Store", L"\\Data\\Store"},
        {L"\\", L"\\Data\\Store\\", L"\\Data\\Store\\"},
        {L"C:\\Data", L"\\", L"C:\\Data\\"},
        {L"\\", L"\\", L"\\"},
        {L"\\\\server\\share", L"folder\\", L"\\\\server\\share\\folder\\"},
        {L"a\\\\b", L"c\\\\d", L"a\\\\b\\c\\\\d"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(std::wstring(c.path), concatPath(c.head, c.tail));
    }
}

TEST(ConcatPath, GivesTheOtherPieceUnchangedWhenOneIsEmpty) {
    EXPECT_EQ(L"\\\\Data\\/", concatPath(L"", L"\\\\Data\\/"));
    EXPECT_EQ(L"C:\\Data\\\\", concatPath(L"C:\\Data\\\\", L""));
    EXPECT_EQ(L"", concatPath(L"", L""));
}

TEST(CheckPathFormat, AcceptsFoldersThatEndInABackslash) {
    const std::wstring longName(255, L'n');
    for (const std::wstring& path : {
             std::wstring(L"C:\\"),
             std::wstring(L"z:\\"),
             std::wstring(L"F:\\Mount Points\\Store 1\\"),
             std::wstring(L"C:\\a.b\\..\\c\\"),
             std::wstring(L"C:\\\u65e5\u672c\\"),
             L"C:\\" + longName + L"\\",
             std::wstring(L"\\\\server\\share\\"),
             std::wstring(L"\\\\10.0.0.1\\c$\\folder\\"),
             std::wstring(L"\\\\server.example.org\\share\\a\\b\\"),
             std::wstring(L"C:\\[x] {y} (z) & % ! ' ; , = + ~ @\\"),
         }) {
        EXPECT_TRUE(CheckPathFormat(path.c_str(), path.size())) << testing::PrintToString(path);
    }
}

TEST(CheckPathFormat, RejectsEverythingElse) {
    const std::wstring longName(256, L'n');
    for (const std::wstring& path : {
             std::wstring(L""),
             std::wstring(L"\\"),
             std::wstring(L"C"),
             std::wstring(L"C:"),
             std::wstring(L"C:\\Data"),
             std::wstring(L"C:Data\\"),
             std::wstring(L"1:\\"),
             std::wstring(L"\u00c4:\\"),
             std::wstring(L"CC:\\"),
             std::wstring(L"C:/"),
             std::wstring(L"C:\\a/b\\"),
             std::wstring(L"C:\\\\"),
             std::wstring(L"C:\\a\\\\b\\"),
             std::wstring(L"C:\\a<\\"),
             std::wstring(L"C:\\a>\\"),
             std::wstring(L"C:\\a:\\"),
             std::wstring(L"C:\\a\"\\"),
             std::wstring(L"C:\\a|\\"),
             std::wstring(L"C:\\a?\\"),
             std::wstring(L"C:\\a*\\"),
             std::wstring(L"C:\\a\tb\\"),
             std::wstring(L"C:\\a\nb\\"),
             std::wstring(L"C:\\a\0b\\", 7),
             L"C:\\" + longName + L"\\",
             std::wstring(L"Disk1Partition2\\"),
             std::wstring(L"Data\\"),
             std::wstring(L"\\Data\\"),
             std::wstring(L"\\Device\\HarddiskVolume1\\"),
             std::wstring(L"\\\\?\\C:\\Data\\"),
             std::wstring(L"\\\\?\\Volume{6f1a9f2e-0000-11ee-8c99-0242ac120002}\\"),
             std::wstring(L"\\\\.\\C:\\"),
             std::wstring(L"\\\\.\\PhysicalDrive0\\x\\"),
             std::wstring(L"\\??\\C:\\"),
             std::wstring(L"\\\\"),
             std::wstring(L"\\\\\\"),
             std::wstring(L"\\\\server\\"),
             std::wstring(L"\\\\server\\share"),
             std::wstring(L"\\\\server\\\\"),
             std::wstring(L"\\\\server\\..\\"),
             std::wstring(L"\\\\server\\share\\a"),
             std::wstring(L"//server/share/"),
         }) {
        EXPECT_FALSE(CheckPathFormat(path.c_str(), path.size())) << testing::PrintToString(path);
    }
    EXPECT_FALSE(CheckPathFormat(nullptr, 0));
    EXPECT_FALSE(CheckPathFormat(nullptr, 10));
}

TEST(CheckPathFormat, LooksAtTheGivenLengthOnly) {
    const wchar_t path[] = L"C:\\Data\\x*";
    EXPECT_FALSE(CheckPathFormat(path, 0));
    EXPECT_FALSE(CheckPathFormat(path, 2));
    EXPECT_TRUE(CheckPathFormat(path, 3));
    EXPECT_FALSE(CheckPathFormat(path, 7));
    EXPECT_TRUE(CheckPathFormat(path, 8));
    EXPECT_FALSE(CheckPathFormat(path, 10));
}

TEST(CheckPathFormat, ReadsNothingBehindTheGivenLengthOrTheTerminator) {
    BYTE* const pages = static_cast<BYTE*>(VirtualAlloc(nullptr, 8192, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE));
    DWORD protection = 0;
    ASSERT_TRUE(VirtualProtect(pages + 4096, 4096, PAGE_NOACCESS, &protection));
    wchar_t* const unterminated = reinterpret_cast<wchar_t*>(pages + 4096) - 8;
    std::wmemcpy(unterminated, L"C:\\Data\\", 8);
    EXPECT_TRUE(CheckPathFormat(unterminated, 8));
    for (const wchar_t* text : {L"C", L"C:", L"C:\\", L"C:\\D", L"\\", L"\\\\", L"\\\\s", L"\\\\s\\", L"\\\\s\\t\\"}) {
        const size_t size = std::wcslen(text) + 1;
        wchar_t* const terminated = reinterpret_cast<wchar_t*>(pages + 4096) - size;
        std::wmemcpy(terminated, text, size);
        EXPECT_FALSE(CheckPathFormat(terminated, 100));
    }
    VirtualFree(pages, 0, MEM_RELEASE);
}
