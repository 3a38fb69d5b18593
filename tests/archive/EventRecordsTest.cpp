// The records of the event log are read within their bounds.
#include "EventRecords.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace {

typedef std::vector<unsigned char> Bytes;

void Put(Bytes& bytes, std::size_t at, std::uint32_t number, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i) {
        bytes[at + i] = static_cast<unsigned char>(number >> (8 * i));
    }
}

void Append(Bytes& bytes, const std::wstring& text) {
    for (const wchar_t c : text + L'\0') {
        bytes.push_back(static_cast<unsigned char>(c));
        bytes.push_back(static_cast<unsigned char>(c >> 8));
    }
}

// As the system lays it out: a head of 56 bytes, the source, the texts.
Bytes Record(std::uint16_t type, const std::vector<std::wstring>& texts) {
    Bytes bytes(56);
    Append(bytes, L"ClusSvc");
    Put(bytes, 36, static_cast<std::uint32_t>(bytes.size()), 4);
    for (const std::wstring& text : texts) {
        Append(bytes, text);
    }
    Put(bytes, 0, static_cast<std::uint32_t>(bytes.size()), 4);
    Put(bytes, 12, 1164221103, 4);
    Put(bytes, 20, 0xC0000000U + 1069, 4); // with its severity
    Put(bytes, 24, type, 2);
    Put(bytes, 26, static_cast<std::uint32_t>(texts.size()), 2);
    return bytes;
}

Bytes operator+(Bytes one, const Bytes& other) {
    one.insert(one.end(), other.begin(), other.end());
    return one;
}

} // namespace

TEST(EventRecords, EachIsReadWithItsTexts) {
    std::vector<EventRecord> records;
    EXPECT_TRUE(ReadEventRecords(Record(1, {L"EXVS Store", L""}) + Record(2, {}) + Record(4, {L"x"}), records));
    ASSERT_EQ(records.size(), 3U);
    EXPECT_EQ(records[0].time, 1164221103U);
    EXPECT_EQ(records[0].id, 1069);
    EXPECT_STREQ(records[0].level, "error");
    EXPECT_EQ(records[0].source, L"ClusSvc");
    EXPECT_EQ(records[0].texts, (std::vector<std::wstring>{L"EXVS Store", L""}));
    EXPECT_STREQ(records[1].level, "warning");
    EXPECT_TRUE(records[1].texts.empty());
    EXPECT_STREQ(records[2].level, "information");
    EXPECT_EQ(records[2].texts, std::vector<std::wstring>{L"x"});
}

TEST(EventRecords, WhatStandsBeforeAMalformedOneIsRead) {
    const Bytes whole = Record(1, {L"text"});
    for (std::size_t size = 1; size < whole.size(); ++size) {
        std::vector<EventRecord> records;
        EXPECT_FALSE(ReadEventRecords(whole + Bytes(whole.begin(), whole.begin() + static_cast<long>(size)), records));
        EXPECT_EQ(records.size(), 1U);
    }
    Bytes none = whole;
    Put(none, 0, 0, 4); // a length that would never end
    std::vector<EventRecord> records;
    EXPECT_FALSE(ReadEventRecords(none, records));
    EXPECT_TRUE(records.empty());
}

TEST(EventRecords, TextsEndWithTheRecord) {
    Bytes bytes = Record(1, {L"text"});
    Put(bytes, 26, 0xFFFF, 2); // more texts than there are
    std::vector<EventRecord> records;
    EXPECT_TRUE(ReadEventRecords(bytes, records));
    EXPECT_EQ(records.at(0).texts, std::vector<std::wstring>{L"text"});
    Put(bytes, 36, 0xFFFFFFF0U, 4); // and elsewhere
    records.clear();
    EXPECT_TRUE(ReadEventRecords(bytes, records));
    EXPECT_TRUE(records.at(0).texts.empty());
}
