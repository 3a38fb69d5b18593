// Value lists as the cluster answers them, whole, cut short and with lengths that lie.
#include "core/ValueList.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

using clus::ValueListReader;

typedef std::vector<unsigned char> Bytes;

struct Entry {
    std::uint32_t syntax;
    std::wstring text;
};

bool operator==(const Entry& a, const Entry& b) {
    return a.syntax == b.syntax && a.text == b.text;
}

void PutDword(Bytes& bytes, std::uint32_t value) {
    for (int shift = 0; shift < 32; shift += 8) {
        bytes.push_back(static_cast<unsigned char>(value >> shift));
    }
}

void PutText(Bytes& bytes, std::uint32_t syntax, std::uint32_t length, const std::wstring& text) {
    PutDword(bytes, syntax);
    PutDword(bytes, length);
    for (const wchar_t c : text + L'\0') {
        bytes.push_back(static_cast<unsigned char>(c));
        bytes.push_back(static_cast<unsigned char>(c >> 8));
    }
    while (bytes.size() % 4 != 0) {
        bytes.push_back(0);
    }
}

// Reads the list from inside a larger array whose other bytes are letters: what is read past the end shows.
std::vector<Entry> ReadAll(const Bytes& list) {
    Bytes memory(list.size() + 64, 'Z');
    std::copy(list.begin(), list.end(), memory.begin());
    std::vector<Entry> entries;
    ValueListReader reader(memory.data(), list.size());
    while (reader.Next()) {
        entries.push_back({reader.Syntax(), reader.TextAt(clus::EntryHeaderSize)});
        if (entries.size() > list.size()) {
            ADD_FAILURE() << "more entries than bytes";
            break;
        }
    }
    EXPECT_FALSE(reader.Next()) << "an ended list starts again";
    return entries;
}

Bytes ThreeEntries() {
    Bytes list;
    PutText(list, 0x11, 6, L"ab");
    PutText(list, 0x22, 4, L"c");
    PutText(list, 0x33, 8, L"def");
    return list;
}

const std::vector<Entry> Three = {{0x11, L"ab"}, {0x22, L"c"}, {0x33, L"def"}};

TEST(ValueList, EmptyListHasNoEntries) {
    EXPECT_TRUE(ReadAll({}).empty());
    ValueListReader reader(nullptr, 0);
    EXPECT_FALSE(reader.Next());
}

TEST(ValueList, EntriesComeInOrder) {
    Bytes list = ThreeEntries();
    PutDword(list, 0);
    EXPECT_EQ(ReadAll(list), Three);
}

TEST(ValueList, EndMarkMayBeMissing) {
    EXPECT_EQ(ReadAll(ThreeEntries()), Three);
}

TEST(ValueList, NothingBehindTheEndMarkIsRead) {
    Bytes list = ThreeEntries();
    PutDword(list, 0);
    PutText(list, 0x44, 4, L"x");
    EXPECT_EQ(ReadAll(list), Three);
}

TEST(ValueList, EndMarkWithLengthEndsToo) {
    Bytes list;
    PutDword(list, 0);
    PutDword(list, 0);
    PutText(list, 0x44, 4, L"x");
    EXPECT_TRUE(ReadAll(list).empty());
}

TEST(ValueList, CutAtEveryLengthItEndsWithTheBytes) {
    Bytes whole = ThreeEntries();
    PutDword(whole, 0);
    const std::size_t starts[] = {0, 16, 28}; // of the entries
    for (std::size_t size = 0; size <= whole.size(); ++size) {
        std::vector<Entry> expected;
        for (std::size_t i = 0; i < 3; ++i) {
            if (size >= starts[i] + 8) {
                const std::size_t characters = (size - starts[i] - 8) / 2;
                expected.push_back({Three[i].syntax, Three[i].text.substr(0, characters)});
            }
        }
        EXPECT_EQ(ReadAll(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size))), expected) << size;
    }
}

TEST(ValueList, LengthBeyondTheBytesEndsTheList) {
    for (const std::uint32_t length :
         {17u, 20u, 0x1000u, 0x7fffffffu, 0x80000000u, 0xfffffffcu, 0xfffffffdu, 0xfffffffeu, 0xffffffffu}) {
        Bytes list;
        PutText(list, 0x11, length, L"ab");
        PutText(list, 0x22, 4, L"c");
        const std::vector<Entry> expected = {{0x11, L"ab"}};
        EXPECT_EQ(ReadAll(list), expected) << length;
    }
}

TEST(ValueList, LengthIsRoundedUpToFour) {
    for (const std::uint32_t length : {5u, 6u, 7u, 8u}) {
        Bytes list;
        PutText(list, 0x11, length, L"ab");
        PutText(list, 0x22, 4, L"c");
        const std::vector<Entry> expected = {{0x11, L"ab"}, {0x22, L"c"}};
        EXPECT_EQ(ReadAll(list), expected) << length;
    }
}

TEST(ValueList, EmptyValueIsAnEntry) {
    Bytes list;
    PutDword(list, 0x11);
    PutDword(list, 0);
    PutText(list, 0x22, 4, L"c");
    ValueListReader reader(list.data(), list.size());
    ASSERT_TRUE(reader.Next());
    EXPECT_EQ(reader.Syntax(), 0x11u);
    ASSERT_TRUE(reader.Next());
    EXPECT_EQ(reader.Syntax(), 0x22u);
    EXPECT_EQ(reader.TextAt(8), L"c");
    EXPECT_FALSE(reader.Next());
}

TEST(ValueList, ListOfEmptyValuesEnds) {
    Bytes list;
    for (int i = 0; i < 100; ++i) {
        PutDword(list, 0x11);
        PutDword(list, 0);
    }
    EXPECT_EQ(ReadAll(list).size(), 100u);
}

TEST(ValueList, TextMayStartInsideTheValue) {
    Bytes list;
    PutDword(list, 0x00080001);
    PutDword(list, 8);
    PutDword(list, 7);
    PutDword(list, 'E');
    ValueListReader reader(list.data(), list.size());
    ASSERT_TRUE(reader.Next());
    EXPECT_EQ(reader.TextAt(12), L"E");
}

TEST(ValueList, TextBehindTheBytesIsEmpty) {
    const Bytes list = ThreeEntries();
    ValueListReader reader(list.data(), list.size());
    ASSERT_TRUE(reader.Next());
    EXPECT_EQ(reader.TextAt(list.size()), L"");
    EXPECT_EQ(reader.TextAt(list.size() + 1), L"");
    EXPECT_EQ(reader.TextAt(list.size() - 1), L"");
}

TEST(TextInBuffer, EndsAtTheTerminatorOrTheBytes) {
    const unsigned char bytes[] = {'a', 0, 'b', 1, 0, 0, 'c', 0, 'd'};
    EXPECT_EQ(clus::TextInBuffer(bytes, sizeof(bytes), 0), L"a\u0162");
    EXPECT_EQ(clus::TextInBuffer(bytes, 4, 0), L"a\u0162");
    EXPECT_EQ(clus::TextInBuffer(bytes, 3, 0), L"a");
    EXPECT_EQ(clus::TextInBuffer(bytes, sizeof(bytes), 6), L"c");
    EXPECT_EQ(clus::TextInBuffer(bytes, 1, 0), L"");
    EXPECT_EQ(clus::TextInBuffer(bytes, 0, 0), L"");
    EXPECT_EQ(clus::TextInBuffer(nullptr, 0, 0), L"");
}

TEST(TextInBuffer, CharactersWithOneZeroByteAreNoTerminators) {
    const unsigned char bytes[] = {0, 1, 1, 0, 0, 0};
    EXPECT_EQ(clus::TextInBuffer(bytes, sizeof(bytes), 0), L"\u0100\u0001");
}

} // namespace
