// Secrets of VCS tools: what is taken for one, and what stands in its place.
#include "core/ToolSecrets.h"
#include "core/TextEraser.h"

#include <gtest/gtest.h>

#include <string>

namespace {

struct Masked {
    std::wstring line;
    std::wstring secret;
};

// The line with the mask in place of its secret, and the secret without the quotes and blanks around it.
Masked Take(const std::wstring& line) {
    const size_t begin = clus::FindSecret(line);
    if (begin == std::wstring::npos) {
        return {line, L""};
    }
    const std::wstring marks = L"\" ";
    const size_t first = line.find_first_not_of(marks, begin);
    return {line.substr(0, begin) + clus::SecretMask, line.substr(first, line.find_last_not_of(marks) + 1 - first)};
}

std::wstring Without(const std::wstring& output, const std::wstring& secret) {
    return clus::WithoutSecrets(output, clus::ToolSecret(secret));
}

std::wstring Messages(const std::wstring& output, const std::wstring& secret) {
    return clus::MessagesWithoutSecrets(output, clus::ToolSecret(secret));
}

TEST(ToolSecretAttribute, EndsInAWordForASecretInAnyLetterCase) {
    for (const wchar_t* name :
         {L"Password", L"ADMINPASSWORD", L"ClientSecret", L"secret", L"AccessToken", L"TOKEN", L"ApiKey", L"key"}) {
        EXPECT_TRUE(clus::IsSecretAttribute(name));
    }
    for (const wchar_t* name :
         {L"PasswordAge", L"assword", L"Keys", L"KeyPath", L"SecretName", L"TokenLife", L"ey", L""}) {
        EXPECT_FALSE(clus::IsSecretAttribute(name));
    }
}

TEST(ToolSecretOfACommandLine, IsWhatAPasswordIsSetTo) {
    const Masked quoted = Take(L"hares -modify EVS1-Svc  Password \"x y\"");
    EXPECT_EQ(quoted.line, L"hares -modify EVS1-Svc  Password ***");
    EXPECT_EQ(quoted.secret, L"x y");
    const Masked bare = Take(L"hares -modify EVS1-Svc  Password gPiRc ");
    EXPECT_EQ(bare.line, L"hares -modify EVS1-Svc  Password ***");
    EXPECT_EQ(bare.secret, L"gPiRc");
}

TEST(ToolSecretOfACommandLine, FollowsTheFirstModifyWhateverTheResourceIsCalled) {
    const Masked masked = Take(L"hares -modify -modify Password gPiRc");
    EXPECT_EQ(masked.line, L"hares -modify -modify Password ***");
    EXPECT_EQ(masked.secret, L"gPiRc");
}

TEST(ToolSecretOfACommandLine, IsWhatALocalPasswordBecomesOfAllSystems) {
    const Masked masked = Take(L"hares -global EVS1-Svc Password gPiRc");
    EXPECT_EQ(masked.line, L"hares -global EVS1-Svc Password ***");
    EXPECT_EQ(masked.secret, L"gPiRc");
}

TEST(ToolSecretOfACommandLine, IsWhatAListIsAskedFor) {
    const Masked filter = Take(L"hares -list  Type=GenericService   Password=gPiRc ");
    EXPECT_EQ(filter.line, L"hares -list  Type=GenericService   Password=***");
    EXPECT_EQ(filter.secret, L"gPiRc");
}

TEST(ToolSecretOfACommandLine, IsATokenOrAKeyToo) {
    EXPECT_EQ(Take(L"hares -modify Web AccessToken t0k3n").line, L"hares -modify Web AccessToken ***");
    EXPECT_EQ(Take(L"hares -list ApiKey=k1").line, L"hares -list ApiKey=***");
    EXPECT_EQ(Take(L"hares -modify Reg Keys \"HKLM\\SOFTWARE\" \"\"").line,
              L"hares -modify Reg Keys \"HKLM\\SOFTWARE\" \"\"");
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

TEST(ToolSecretOfARow, IsTheValueOfAPassword) {
    EXPECT_EQ(clus::FindShownSecret(L"r   AdminPassword   global   \"gPiRc x\""), 29u);
    EXPECT_EQ(clus::FindShownSecret(L"r Password global \"\""), 18u);
}

TEST(ToolSecretOfARow, IsNothingElse) {
    for (const wchar_t* line : {L"r Password global", L"Password r global x", L"r Group global Password", L""}) {
        EXPECT_EQ(clus::FindShownSecret(line), std::wstring::npos);
    }
}

TEST(ToolSecretInAnOutput, IsTheValueOfAPasswordsRow) {
    EXPECT_EQ(Without(L"#Resource Attribute System Value\nr   Password   global   gPiRc x \nr Group global "
                      L"Password\n",
                      L""),
              L"#Resource Attribute System Value\nr   Password   global   ***\nr Group global Password\n");
    EXPECT_EQ(Without(L"r Password global", L""), L"r Password global");
}

TEST(ToolSecretInAnOutput, IsFoundWhereverItIsRepeated) {
    EXPECT_EQ(Without(L"cannot set gPiRc: gPiRcgPiRc\nfine", L"gPiRc"), L"cannot set ***: ******\nfine");
    EXPECT_EQ(Without(L"", L"gPiRc"), L"");
    EXPECT_EQ(Without(L"***", L"*"), L"*********");
}

TEST(ToolSecretInAnOutput, IsMaskedAsGivenAndAsTheToolGetsIt) {
    const std::wstring blank = L"\"top secret\"";
    EXPECT_EQ(Without(L"bad: \"top secret\"!", blank), L"bad: ***!");
    EXPECT_EQ(Without(L"bad: top secret!", blank), L"bad: ***!");
    const std::wstring quote = L"\"a1\\\"b2 c3\""; // a1"b2 c3
    EXPECT_EQ(Without(L"bad: \"a1\\\"b2 c3\", a1\\\"b2 c3, a1\"b2 c3", quote), L"bad: ***, ***, ***");
    const std::wstring backslashes = L"\"x\\y \\\\\\\"z\\\\\""; // x\y \"z\ .
    EXPECT_EQ(Without(L"bad: x\\y \\\"z\\.", backslashes), L"bad: ***.");
    EXPECT_EQ(Without(L"bad: a\"b", L"a\\\"b"), L"bad: ***");
}

TEST(ToolSecretInAnOutput, IsMaskedWordByWord) {
    EXPECT_EQ(Without(L"no such option: secret (after top)", L"\"top secret\""), L"no such option: *** (after ***)");
    EXPECT_EQ(Without(L"no such option: secret", L"top secret"), L"no such option: ***");
    EXPECT_EQ(Without(L"no such option: a1\"b2, c3", L"\"a1\\\"b2 c3\""), L"no such option: ***, ***");
}

TEST(ToolSecretInAnOutput, LeavesNoPartOfFormsThatOverlap) {
    EXPECT_EQ(Without(L"<abcd>", L"ab bcd"), L"<***>");
    EXPECT_EQ(Without(L"<abcabcab>", L"abcab"), L"<***>");
}

TEST(ToolSecretInAMessage, LeavesTheWordsThatNameTheMessage) {
    EXPECT_EQ(Messages(L"VCS ERROR V-16-1-10600 Cannot connect to VCS engine\n", L"x1"),
              L"VCS ERROR V-16-1-10600 Cannot connect to VCS engine\n");
    EXPECT_EQ(Messages(L"VCS WARNING V-16-1-1 ERROR VCS V-16-1-1", L"\"VCS ERROR V-16-1-1\""),
              L"VCS WARNING V-16-1-1 *** *** ***");
    EXPECT_EQ(Messages(L"VCS ERROR V-x1 is bad", L"V-x1"), L"VCS ERROR *** is bad");
    EXPECT_EQ(Messages(L"VCS ERROR", L"x1"), L"VCS ERROR");
    EXPECT_EQ(Messages(L"VCS ERROR V-16-1-10 top secret: top, \"top secret\"\n", L"\"top secret\""),
              L"VCS ERROR V-16-1-10 ***: ***, ***\n");
}

TEST(ToolSecretInAMessage, HidesAllElse) {
    EXPECT_EQ(Messages(L"", L"x1"), L"");
    EXPECT_EQ(Messages(L"gPiRc\n", L"x1"), L"***");
    EXPECT_EQ(Messages(L" \t gPiRc \r\n", L"x1"), L"***");
    EXPECT_EQ(Messages(L"\n", L"x1"), L"***");
    EXPECT_EQ(Messages(L"VCS WARNING V-16-1-10 old key\n\ngPiRc\n", L"x1"), L"VCS WARNING V-16-1-10 old key\n\n***\n");
}

// A caller can tell a result from a prompt and what else stands in its place.
TEST(ToolSecretInAMessage, ShowsThatThereAreSeveralWords) {
    for (const wchar_t* output : {L"Enter Password:\ngPiRc\n", L"a b", L"a\tb", L"a\rb", L" a b c \n"}) {
        EXPECT_EQ(Messages(output, L"x1"), L"*** ***");
    }
}

// Its bytes are single characters of the output, which ones depends on the tool.
TEST(ToolSecretInAMessage, HidesTheWholeTextWhenTheSecretIsNotAscii) {
    EXPECT_EQ(Messages(L"VCS ERROR V-16-1-10 cannot use p\u00c3\u00a4ss\nsee p\u00c3\u00a4ss\n", L"p\u00e4ss"),
              L"VCS ERROR V-16-1-10 ***\n***\n");
    EXPECT_EQ(Messages(L"VCS ERROR V-16-1-10 bad\n", L"\u0080"), L"VCS ERROR V-16-1-10 ***\n"); // the first such
    EXPECT_EQ(Messages(L"VCS ERROR V-16-1-10 bad\n", L"\x7f"), L"VCS ERROR V-16-1-10 bad\n");   // the last one before
    EXPECT_EQ(Messages(L"VCS ERROR V-16-1-10", L"p\u00e4ss"), L"VCS ERROR V-16-1-10");
    EXPECT_EQ(Messages(L"VCS ERROR bad p\u00c3\u00a4ss\n", L"p\u00e4ss"), L"VCS ERROR ***\n"); // without a number
}

TEST(TextEraser, LeavesNothing) {
    wchar_t text[] = L"secret!";
    { const clus::TextEraser eraser(text, 6); }
    EXPECT_EQ(std::wstring(text, 8), std::wstring(6, L'\0') + std::wstring(L"!\0", 2));
}

} // namespace
