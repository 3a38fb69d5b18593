#include "Conditions.h"

#include <gmock/gmock.h>

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using vcssim::AttributeRow;
using vcssim::Condition;

namespace {

std::vector<std::string> Matching(const std::string& text, const std::vector<AttributeRow>& rows) {
    Condition condition;
    EXPECT_TRUE(vcssim::ParseCondition(text, condition));
    return vcssim::MatchingSystems({condition}, {"A", "B"}, [&](const std::string& attribute) {
        return attribute == "X" ? rows : std::vector<AttributeRow>();
    });
}

} // namespace

TEST(Condition, IsReadInItsThreeForms) {
    Condition condition;
    ASSERT_TRUE(vcssim::ParseCondition("Name=a=b", condition));
    EXPECT_EQ(condition.attribute, "Name");
    EXPECT_EQ(condition.kind, Condition::Equal);
    EXPECT_EQ(condition.value, "a=b");
    ASSERT_TRUE(vcssim::ParseCondition("Name!=", condition));
    EXPECT_EQ(condition.kind, Condition::NotEqual);
    EXPECT_EQ(condition.value, "");
    ASSERT_TRUE(vcssim::ParseCondition("Name=~a", condition));
    EXPECT_EQ(condition.kind, Condition::Prefix);
    EXPECT_EQ(condition.value, "a");
}

TEST(Condition, NeedsAnAttributeAndASign) {
    Condition condition;
    EXPECT_FALSE(vcssim::ParseCondition("Name", condition));
    EXPECT_FALSE(vcssim::ParseCondition("=value", condition));
    EXPECT_FALSE(vcssim::ParseCondition("!=value", condition));
    EXPECT_FALSE(vcssim::ParseCondition("", condition));
}

TEST(Condition, HoldsForEverySystemOfAGlobalValue) {
    EXPECT_THAT(Matching("X=1", {{"global", {"1"}}}), ElementsAre("A", "B"));
    EXPECT_THAT(Matching("X!=1", {{"global", {"1"}}}), IsEmpty());
}

TEST(Condition, HoldsForTheSystemOfALocalValue) {
    EXPECT_THAT(Matching("X=1", {{"A", {"1"}}, {"B", {"2"}}}), ElementsAre("A"));
    EXPECT_THAT(Matching("X!=1", {{"A", {"1"}}, {"B", {"2"}}}), ElementsAre("B"));
}

TEST(Condition, HoldsForAListWithSuchAMember) {
    EXPECT_THAT(Matching("X=b", {{"global", {"a", "b"}}}), ElementsAre("A", "B"));
    EXPECT_THAT(Matching("X!=b", {{"global", {"a", "b"}}}), IsEmpty());
    EXPECT_THAT(Matching("X=", {{"global", {}}}), ElementsAre("A", "B"));
}

TEST(Condition, NeverHoldsForAnAttributeThatIsNotThere) {
    EXPECT_THAT(Matching("Y=1", {{"global", {"1"}}}), IsEmpty());
    EXPECT_THAT(Matching("Y!=1", {{"global", {"1"}}}), IsEmpty());
    EXPECT_THAT(Matching("Y=~", {{"global", {"1"}}}), IsEmpty());
}
