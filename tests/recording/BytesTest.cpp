// What must not be in a recording is hidden in the bytes that the cluster gives, which keep their length.
#include "Bytes.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

using recording::Bytes;
using recording::Clean;
using recording::ControlData;

namespace {

const std::uint32_t Sz = 0x00010003;
const std::uint32_t Binary = 0x00010001;

void AddNumber(Bytes& bytes, std::uint32_t number) {
    for (int shift = 0; shift < 32; shift += 8) {
        bytes.push_back(static_cast<unsigned char>(number >> shift));
    }
}

Bytes TextBytes(const std::wstring& text) {
    Bytes bytes;
    for (const wchar_t c : text + L'\0') {
        bytes.push_back(static_cast<unsigned char>(c));
        bytes.push_back(static_cast<unsigned char>(c >> 8));
    }
    return bytes;
}

void AddEntry(Bytes& bytes, std::uint32_t syntax, const Bytes& value) {
    AddNumber(bytes, syntax);
    AddNumber(bytes, static_cast<std::uint32_t>(value.size()));
    bytes.insert(bytes.end(), value.begin(), value.end());
    bytes.resize((bytes.size() + 3) / 4 * 4);
}

Bytes ListOf(const std::wstring& name, std::uint32_t syntax, const Bytes& value) {
    Bytes bytes;
    AddNumber(bytes, 1);
    AddEntry(bytes, 0x00040003, TextBytes(name));
    AddEntry(bytes, syntax, value);
    AddNumber(bytes, 0);
    return bytes;
}

std::wstring Renamed(const std::wstring& name) {
    return std::wstring(name.size(), L'n');
}

} // namespace

TEST(RecordedBytes, SecretTextsBecomeAsterisksOfTheirLength) {
    Bytes list = ListOf(L"AdminPASSWORD", Sz, TextBytes(L"hunter2"));
    Clean(list, ControlData::Properties, nullptr);
    EXPECT_EQ(list, ListOf(L"AdminPASSWORD", Sz, TextBytes(L"*******")));
}

TEST(RecordedBytes, OtherSecretsBecomeZeros) {
    Bytes list = ListOf(L"clientSecret", Binary, {0xc0, 0xff, 0xee});
    Clean(list, ControlData::Properties, nullptr);
    EXPECT_EQ(list, ListOf(L"clientSecret", Binary, {0, 0, 0}));
}

TEST(RecordedBytes, WhatIsNoSecretStays) {
    const Bytes list = ListOf(L"Path", Sz, TextBytes(L"F:\\data"));
    Bytes cleaned = list;
    Clean(cleaned, ControlData::Properties, nullptr);
    EXPECT_EQ(cleaned, list);
}

TEST(RecordedBytes, NamesAreReplacedAndBinaryValuesAreErasedOnDemand) {
    Bytes text = ListOf(L"Path", Sz, TextBytes(L"EXVS1"));
    Clean(text, ControlData::Properties, Renamed);
    EXPECT_EQ(text, ListOf(L"Path", Sz, TextBytes(L"nnnnn")));
    Bytes binary = ListOf(L"Blob", Binary, {1, 2, 3});
    Clean(binary, ControlData::Properties, Renamed);
    EXPECT_EQ(binary, ListOf(L"Blob", Binary, {0, 0, 0}));
}

// A network name's, for one, holds the password of its account.
TEST(RecordedBytes, BinaryValuesAreErased) {
    Bytes binary = ListOf(L"ResourceData", Binary, {1, 2, 3});
    Clean(binary, ControlData::Properties, nullptr);
    EXPECT_EQ(binary, ListOf(L"ResourceData", Binary, {0, 0, 0}));
    for (const std::uint32_t number : {0x00010002, 0x00010006, 0x00010007, 0x0001000C}) {
        Bytes kept = ListOf(L"Count", number, {1, 2, 3, 4, 5, 6, 7, 8});
        Clean(kept, ControlData::Properties, nullptr);
        EXPECT_EQ(kept, ListOf(L"Count", number, {1, 2, 3, 4, 5, 6, 7, 8}));
    }
}

TEST(RecordedBytes, NothingOfAnotherTextStaysBehindTheOneThatIsReplaced) {
    Bytes left = TextBytes(L"EXVS1");
    const Bytes rest = TextBytes(L"OTHER");
    Bytes erased = TextBytes(L"nnnnn");
    erased.resize(erased.size() + rest.size());
    left.insert(left.end(), rest.begin(), rest.end());
    Bytes list = ListOf(L"Path", Sz, left);
    Clean(list, ControlData::Properties, Renamed);
    EXPECT_EQ(list, ListOf(L"Path", Sz, erased));
    Clean(left, ControlData::Name, Renamed);
    EXPECT_EQ(left, erased);
}

// The bytes up to the next entry are whatever lay in the cluster's memory.
TEST(RecordedBytes, WhatIsBetweenTheEntriesIsErased) {
    Bytes list = ListOf(L"Path", Sz, TextBytes(L"F:"));
    const Bytes clean = list;
    list[list.size() - 4 - 1] = 0xcc;
    list[list.size() - 4 - 2] = 0xcc;
    Clean(list, ControlData::Properties, nullptr);
    EXPECT_EQ(list, clean);
}

TEST(RecordedBytes, AListThatIsCutIsErasedFromThere) {
    Bytes list = ListOf(L"Password", Sz, TextBytes(L"hunter2"));
    const std::size_t value = list.size() - 4 - 16;
    list.resize(list.size() - 8); // the value says that it is longer than what is there
    Clean(list, ControlData::Properties, nullptr);
    for (std::size_t i = value; i < list.size(); ++i) {
        EXPECT_EQ(list[i], 0) << i;
    }
}

TEST(RecordedBytes, WhatIsBehindAListDoesNotCount) {
    const Bytes list = ListOf(L"Path", Sz, TextBytes(L"F:\\data"));
    Bytes longer = list;
    longer.resize(list.size() + 100, 0xcc);
    EXPECT_EQ(recording::PropertyListSize(longer.data(), longer.size()), list.size());
}

TEST(RecordedBytes, OfUnknownControlsNothingIsShown) {
    Bytes bytes = {1, 2, 3};
    Clean(bytes, recording::OutputOf(0x01000321), nullptr);
    EXPECT_EQ(bytes, (Bytes{0, 0, 0}));
}

TEST(RecordedBytes, ControlsThatChangeAreKnownByTheirCodes) {
    EXPECT_TRUE(recording::IsChangingControl(0x01400086));  // SET_PRIVATE_PROPERTIES
    EXPECT_TRUE(recording::IsChangingControl(0x0140005E));  // SET_COMMON_PROPERTIES
    EXPECT_FALSE(recording::IsChangingControl(0x01000081)); // GET_PRIVATE_PROPERTIES
    EXPECT_FALSE(recording::IsChangingControl(0x01000191)); // STORAGE_GET_DISK_INFO
}
