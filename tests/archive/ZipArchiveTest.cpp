// Archives that are written and read again, and those that are refused.
#include "archive/ZipArchive.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>

using namespace archive;

namespace {

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
    return text;
}

// Why an archive is refused; empty when it is not.
std::string Refusal(const std::string& bytes) {
    try {
        ReadZip(bytes);
        return std::string();
    } catch (const ArchiveError& error) {
        return error.what();
    }
}

} // namespace

TEST(ZipArchive, WhatIsWrittenIsRead) {
    const std::string binary("\0\r\n\xff", 4);
    const std::string large(300000, 'x');
    const std::string bytes = WriteZip({{"a.json", binary}, {"main.cf", large}, {"empty", ""}});
    EXPECT_TRUE(LooksLikeZip(bytes));
    EXPECT_LT(bytes.size(), large.size() / 10);
    const std::vector<File> files = ReadZip(bytes);
    ASSERT_EQ(files.size(), 3U);
    EXPECT_EQ(files[0].name, "a.json");
    EXPECT_EQ(files[0].bytes, binary);
    EXPECT_EQ(files[1].bytes, large);
    EXPECT_EQ(files[2].bytes, "");
}

// Of 8 megabytes, or of as many as the variable ARCHIVE_MEGABYTES says.
TEST(ZipArchive, ManyMegabytesAreWrittenAndRead) {
    const char* const asked = std::getenv("ARCHIVE_MEGABYTES");
    const std::size_t megabytes = asked == nullptr ? 8 : std::strtoul(asked, nullptr, 10);
    std::string log(megabytes * 1000 * 1000, 'x');
    log.back() = 'y';
    const std::vector<File> files = ReadZip(WriteZip({{"log.txt", log}, {"last", "z"}}));
    ASSERT_EQ(files.size(), 2U);
    EXPECT_TRUE(files[0].bytes == log);
    EXPECT_EQ(files[1].bytes, "z");
}

TEST(ZipArchive, TheSameFilesGiveTheSameBytes) {
    EXPECT_EQ(WriteZip({{"a", "1"}}), WriteZip({{"a", "1"}}));
}

TEST(ZipArchive, NamesThatLeadElsewhereAreRefused) {
    const std::string bytes = WriteZip({{"abcdefgh", "text"}});
    for (const char* const name :
         {"../abcde", "..\\abcde", "C:abcdef", "/abcdefg", "con.abcd", ".abcdefg", "abcdefg."}) {
        ASSERT_EQ(std::strlen(name), 8U);
        EXPECT_FALSE(IsPlainName(name)) << name;
        EXPECT_EQ(Refusal(Replaced(bytes, "abcdefgh", name)), "the archive has a file whose name is not a plain one")
            << name;
    }
}

TEST(ZipArchive, NoTwoFilesHaveOneName) {
    EXPECT_THROW(WriteZip({{"a.txt", "1"}, {"A.TXT", "2"}}), ArchiveError);
    const std::string bytes = WriteZip({{"first", "1"}, {"other", "2"}});
    EXPECT_EQ(Refusal(Replaced(bytes, "other", "FIRST")), "the archive has two files of the name FIRST");
}

TEST(ZipArchive, ThereAreBounds) {
    std::vector<File> files;
    for (std::size_t i = 0; i <= MostFiles; ++i) {
        files.push_back({"file" + std::to_string(i), ""});
    }
    EXPECT_THROW(WriteZip(files), ArchiveError);
    EXPECT_TRUE(IsPlainName(std::string(64, 'a')));
    EXPECT_FALSE(IsPlainName(std::string(65, 'a')));
}

TEST(ZipArchive, ADamagedOneIsRefused) {
    const std::string bytes = WriteZip({{"a.txt", std::string(1000, 'a') + std::string(1000, 'b')}});
    EXPECT_NE(Refusal(""), "");
    EXPECT_NE(Refusal("PK\x03\x04"), "");
    EXPECT_NE(Refusal(bytes.substr(0, bytes.size() / 2)), "");
    std::string changed = bytes;
    const std::size_t text = 30 + std::strlen("a.txt"); // behind the head of the first file
    changed[text + 4] = static_cast<char>(changed[text + 4] ^ 1);
    EXPECT_NE(Refusal(changed), "");
}

// Each entry of the directory leads to the same compressed bytes: kilobytes become gigabytes.
TEST(ZipArchive, FilesThatShareTheirBytesAreRefused) {
    const std::string bytes = WriteZip({{"file00", std::string(4 * 1024 * 1024, 'x')}});
    const std::size_t directory = bytes.find("PK\x01\x02");
    const std::size_t end = bytes.find("PK\x05\x06");
    ASSERT_NE(directory, std::string::npos);
    ASSERT_NE(end, std::string::npos);
    const std::string entry = bytes.substr(directory, end - directory);
    std::string bomb = bytes.substr(0, directory);
    std::string tail = bytes.substr(end);
    for (int number = 10; number < 13; ++number) {
        bomb += Replaced(entry, "file00", "file" + std::to_string(number));
    }
    tail[8] = tail[10] = 3; // entries, on this disk and in all
    const std::size_t size = 3 * entry.size();
    tail[12] = static_cast<char>(size & 0xFF);
    tail[13] = static_cast<char>(size >> 8);
    EXPECT_EQ(Refusal(bomb + tail), "the files of the archive share their bytes");
    EXPECT_EQ(Refusal(bytes), "");
}
