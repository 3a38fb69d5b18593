// Secrets of VCS tools: what is taken for one, and what stands in its place.
#include "core/ToolSecrets.h"

#include <gtest/gtest.h>

#include <string>

namespace {

struct Masked {
    std::wstring line;
    std::wstring secret;
};

Masked Take(std::wstring line) {
    Masked masked;
    masked.secret = clus::TakeSecret(line);
    masked.line = line;
    return masked;
}

TEST(ToolSecretAttribute, EndsInPasswordInAnyLetterCase) {
    EXPECT_TRUE(clus::IsSecretAttribute(L"Password"));
    EXPECT_TRUE(clus::IsSecretAttribute(L"ADMINPASSWORD"));
    EXPECT_FALSE(clus::IsSecretAttribute(L"PasswordAge"));
    EXPECT_FALSE(clus::IsSecretAttribute(L"assword"));
    EXPECT_FALSE(clus::IsSecretAttribute(L""));
}

TEST(ToolSecretOfACommandLine, IsWhatAPasswordIsSetTo) {
    const Masked quoted = Take(L"hares -modify EVS1-Svc  Password \"x y\"");
    EXPECT_EQ(quoted.line, L"hares -modify EVS1-Svc  Password ***");
    EXPECT_EQ(quoted.secret, L"x y");
    const Masked bare = Take(L"hares -modify EVS1-Svc  Password gPiRc ");
    EXPECT_EQ(bare.line, L"hares -modify EVS1-Svc  Password ***");
    EXPECT_EQ(bare.secret, L"gPiRc");
}

TEST(ToolSecretOfACommandLine, IsWhatAListIsAskedFor) {
    const Masked filter = Take(L"hares -list  Type=GenericService   Password=gPiRc ");
    EXPECT_EQ(filter.line, L"hares -list  Type=GenericService   Password=***");
    EXPECT_EQ(filter.secret, L"gPiRc");
}

TEST(ToolSecretOfACommandLine, IsNoNameThatLooksLikeOne) {
    for (const wchar_t* line : {L"hares -modify Password  Enabled 1", L"hares -display Password -attribute Group",
                                L"hares -delete AdminPassword", L"hares -modify EVS1-Svc  Password \"\"",
                                L"hares -modify EVS1-Svc  Password", L"", L"Password x"}) {
        const Masked masked = Take(line);
        EXPECT_EQ(masked.line, line);
        EXPECT_EQ(masked.secret, L"");
    }
}

TEST(ToolSecretInAnOutput, IsTheValueOfAPasswordsRow) {
    EXPECT_EQ(
        clus::WithoutSecrets(L"#Resource Attribute System Value\nr   Password   global   gPiRc x \nr Group global "
                             L"Password\n",
                             L""),
        L"#Resource Attribute System Value\nr   Password   global   ***\nr Group global Password\n");
    EXPECT_EQ(clus::WithoutSecrets(L"r Password global", L""), L"r Password global");
}

TEST(ToolSecretInAnOutput, IsFoundWhereverItIsRepeated) {
    EXPECT_EQ(clus::WithoutSecrets(L"cannot set gPiRc: gPiRcgPiRc\nfine", L"gPiRc"), L"cannot set ***: ******\nfine");
    EXPECT_EQ(clus::WithoutSecrets(L"", L"gPiRc"), L"");
    EXPECT_EQ(clus::WithoutSecrets(L"***", L"*"), L"*********");
}

} // namespace
