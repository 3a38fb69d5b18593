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

} // namespace
