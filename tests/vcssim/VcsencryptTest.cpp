#include "ToolTest.h"

#include <algorithm>
#include <cctype>

using ::testing::HasSubstr;
using ::testing::Not;

namespace {

std::string Lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
    return text;
}

} // namespace

using Vcsencrypt = ToolTest;

TEST_F(Vcsencrypt, PrintsAWordOfLetters) {
    const std::string output = RunWith("vcsencrypt", {"-agent", "Secret1"});
    EXPECT_EQ(m_exitCode, 0);
    ASSERT_GT(output.size(), 1u);
    EXPECT_EQ(output.back(), '\n');
    EXPECT_TRUE(std::all_of(output.begin(), output.end() - 1, [](unsigned char c) { return std::isalpha(c) != 0; }));
}

TEST_F(Vcsencrypt, GivesTheSameWordForTheSamePassword) {
    const std::string output = RunWith("vcsencrypt", {"-agent", "secret"});
    EXPECT_EQ(RunWith("vcsencrypt", {"-agent", "secret"}), output);
    EXPECT_NE(RunWith("vcsencrypt", {"-vcs", "secret"}), output);
    EXPECT_NE(RunWith("vcsencrypt", {"-agent", "secres"}), output);
    EXPECT_NE(RunWith("vcsencrypt", {"-agent", "secret", "x"}), output);
}

TEST_F(Vcsencrypt, NeverShowsThePassword) {
    for (char first = 'a'; first <= 'z'; ++first) {
        EXPECT_THAT(Lower(RunWith("vcsencrypt", {"-agent", std::string(1, first)})),
                    Not(HasSubstr(std::string(1, first))));
        for (char second = 'a'; second <= 'z'; ++second) {
            const std::string password = {first, second};
            EXPECT_THAT(Lower(RunWith("vcsencrypt", {"-agent", password})), Not(HasSubstr(password)));
        }
    }
}

TEST_F(Vcsencrypt, FailsAtOnceWithoutAPassword) {
    EXPECT_EQ(RunWith("vcsencrypt", {"-agent"}),
              "VCS WARNING V-16-1-99060 (simulated) There is no password to encrypt\n");
    EXPECT_EQ(m_exitCode, 1);
}

TEST_F(Vcsencrypt, PromptsWhenAsked) {
    const std::string bare = RunWith("vcsencrypt", {"-agent", "secret"});
    m_environment.options.encryptPrompts = true;
    EXPECT_EQ(RunWith("vcsencrypt", {"-agent", "secret"}), "Enter Password:\nEnter Again:\n" + bare);
}

TEST_F(Vcsencrypt, TakesAnEmptyPassword) {
    EXPECT_EQ(RunWith("vcsencrypt", {"-agent", ""}).size(), 25u);
    EXPECT_EQ(m_exitCode, 0);
}
