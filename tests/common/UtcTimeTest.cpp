// The time of the day, for programs and for people.
#include "common/UtcTime.h"

#include <winsock2.h>
#include <windows.h>

#include <gmock/gmock.h>

using testing::MatchesRegex;

namespace {

TEST(UtcTime, IsTheSystemsInBothForms) {
    SYSTEMTIME now;
    GetSystemTime(&now);
    const std::string programs = common::UtcNow();
    const std::string people = common::ShownUtcNow();
    EXPECT_THAT(programs, MatchesRegex("\\d\\d\\d\\d-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\dZ"));
    EXPECT_THAT(people, MatchesRegex("\\d\\d\\d\\d-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d UTC"));
    EXPECT_GE(std::stoi(programs), now.wYear); // it may be New Year's Eve
    EXPECT_LE(std::stoi(programs), now.wYear + 1);
}

TEST(UtcTime, SecondsOf1970BecomeAMoment) {
    EXPECT_EQ(common::UtcTime(0), "1970-01-01T00:00:00Z");
    EXPECT_EQ(common::UtcTime(1164221103), "2006-11-22T18:45:03Z");
    EXPECT_EQ(common::UtcTime(0xFFFFFFFF), "2106-02-07T06:28:15Z");
}

} // namespace
