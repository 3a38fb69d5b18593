// Variables of the environment, and texts that refer to them.
#include "common/Environment.h"

#include <winsock2.h>
#include <windows.h>

#include <gtest/gtest.h>

using common::EnvironmentVariable;
using common::ExpandVariables;

namespace {

class Environment : public testing::Test {
protected:
    ~Environment() override {
        Set(nullptr);
    }
    static void Set(const wchar_t* value) {
        SetEnvironmentVariableW(L"COMMON_TEST", value);
    }
};

} // namespace

TEST_F(Environment, AVariableIsReadWhole) {
    for (const std::size_t length :
         {std::size_t{1}, std::size_t{255}, std::size_t{256}, std::size_t{257}, std::size_t{32000}}) {
        const std::wstring value(length, L'\u00e4');
        Set(value.c_str());
        EXPECT_EQ(EnvironmentVariable(L"COMMON_TEST"), value) << length;
        EXPECT_EQ(EnvironmentVariable(L"common_test"), value) << "letter case does not matter";
    }
}

TEST_F(Environment, AnEmptyVariableIsLikeNone) {
    Set(nullptr);
    EXPECT_EQ(EnvironmentVariable(L"COMMON_TEST"), L"");
    Set(L"");
    EXPECT_EQ(EnvironmentVariable(L"COMMON_TEST"), L"");
}

TEST_F(Environment, ReferencesAreReplaced) {
    Set(L"value");
    EXPECT_EQ(ExpandVariables(L"<%COMMON_TEST%> %Common_Test%"), L"<value> value");
    EXPECT_EQ(ExpandVariables(L""), L"");
    EXPECT_EQ(ExpandVariables(L"100% of %COMMON_TEST"), L"100% of %COMMON_TEST");
    Set(nullptr);
    EXPECT_EQ(ExpandVariables(L"<%COMMON_TEST%>"), L"<%COMMON_TEST%>") << "there is no such variable";
}

TEST_F(Environment, AReferenceMayGrowTheText) {
    const std::wstring value(10000, L'x');
    Set(value.c_str());
    EXPECT_TRUE(ExpandVariables(L"%COMMON_TEST%%COMMON_TEST%!") == value + value + L"!");
}
