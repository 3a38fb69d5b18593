// The value of a resource's attribute.
#include "Runs.h"

using namespace harness;

namespace {

const std::string AttributeHeader = "#Resource    Attribute             System     Value\r\n";

class VeritasAttribute : public VeritasTest {
protected:
    // The value read from an output; "<none>" when there is none, in which case the value before must be untouched.
    std::wstring Value(const std::string& output) {
        tools.AnswerNext(output);
        std::wstring value = L"OLD";
        if (!cluster.GetResourceAttribute(L"R", L"A", value)) {
            EXPECT_EQ(value, L"OLD") << output;
            return L"<none>";
        }
        return value;
    }
};

TEST_F(VeritasAttribute, IsTheFourthColumnOfTheFirstRow) {
    tools.Answer(L"hares -display EVS1-Disk -attribute DriveLetter ",
                 AttributeHeader + "EVS1-Disk    DriveLetter           global     F:\r\n");
    std::wstring value = L"OLD";
    EXPECT_TRUE(cluster.GetResourceAttribute(L"EVS1-Disk", L"DriveLetter", value));
    EXPECT_EQ(value, L"F:");
    EXPECT_EQ(tools.TakeCommandLines(), CommandList{L"hares -display EVS1-Disk -attribute DriveLetter "});
    EXPECT_EQ(TakeLog(),
              RunLog("hares -display EVS1-Disk -attribute DriveLetter ",
                     {"I Process exit code: 0", "I Result: #Resource    Attribute             System     Value",
                      "I Result: EVS1-Disk    DriveLetter           global     F:"}));
}

TEST_F(VeritasAttribute, InnerBlanksAreKeptAndTrailingOnesRemoved) {
    EXPECT_EQ(Value(AttributeHeader + "R A global C:\\Program Files\\My  App \t \r\n"), L"C:\\Program Files\\My  App");
    EXPECT_EQ(Value(AttributeHeader + "R\tA\tglobal\tone\ttwo  three\t\r\n"), L"one\ttwo  three");
    EXPECT_EQ(Value(AttributeHeader + "R A global v \v\f\r \n"), L"v");
}

TEST_F(VeritasAttribute, QuotesAreKept) {
    EXPECT_EQ(Value(AttributeHeader + "R A global \"HKLM\\A B\" \"\"\r\n"), L"\"HKLM\\A B\" \"\"");
}

TEST_F(VeritasAttribute, OfSeveralSystemsTheFirstOnesValueIsTaken) {
    EXPECT_EQ(Value(AttributeHeader + "R A NODE2 two\r\nR A NODE1 one\r\n"), L"two");
    EXPECT_EQ(Value(AttributeHeader + "R A NODE2\r\nR A NODE1 one\r\n"), L"<none>");
}

TEST_F(VeritasAttribute, TheNamesInTheRowAreNotCompared) {
    EXPECT_EQ(Value("anything\nX Y Z value\n"), L"value");
}

TEST_F(VeritasAttribute, TheHeaderIsSkippedWhateverItIs) {
    EXPECT_EQ(Value("R A global first\nR A global second\n"), L"second");
    EXPECT_EQ(Value("\nR A global v\n"), L"v");
}

TEST_F(VeritasAttribute, AnEmptySecondLineHasNoValue) {
    EXPECT_EQ(Value(AttributeHeader + "\r\nR A global v\r\n"), L"<none>");
    EXPECT_EQ(Value(AttributeHeader + " \t\r\nR A global v\r\n"), L"<none>");
}

TEST_F(VeritasAttribute, WithoutASecondLineThereIsNone) {
    EXPECT_EQ(Value(""), L"<none>");
    EXPECT_EQ(Value(AttributeHeader), L"<none>");
    EXPECT_EQ(Value("R A global v"), L"<none>");
}

TEST_F(VeritasAttribute, AValueThatIsEmptyOrMissingIsNone) {
    EXPECT_EQ(Value(AttributeHeader + "R"), L"<none>");
    EXPECT_EQ(Value(AttributeHeader + "R A"), L"<none>");
    EXPECT_EQ(Value(AttributeHeader + "R A global"), L"<none>");
    EXPECT_EQ(Value(AttributeHeader + "R A global     \t \r\n"), L"<none>");
}

TEST_F(VeritasAttribute, TheLastLineNeedsNoEnd) {
    EXPECT_EQ(Value(AttributeHeader + "R A global v w"), L"v w");
}

TEST_F(VeritasAttribute, BlanksBeforeTheRowDoNotCountAsColumns) {
    EXPECT_EQ(Value(AttributeHeader + "  \tR A global v\n"), L"v");
}

TEST_F(VeritasAttribute, AMessageOfVcsIsAnErrorInAnyCase) {
    for (const char* message : {"VCS WARNING V-16-1-10260 text", "VCS ERROR V-16-1-10600 text", "vcs warning",
                                "Vcs Error", "VCS ERRORS", "VCS WARNINGS"}) {
        EXPECT_EQ(Value(std::string(message) + "\nR A global v\n"), L"<none>") << message;
    }
}

TEST_F(VeritasAttribute, WordsThatOnlyResembleAMessageAreAHeader) {
    for (const char* header :
         {" VCS ERROR", "VCS  ERROR", "VCS\tERROR", "VCS NOTICE x", "R ERROR x", "xVCS ERROR", "VCS", "VCS ERRO"}) {
        EXPECT_EQ(Value(std::string(header) + "\nR A global v\n"), L"v") << header;
    }
    EXPECT_EQ(Value(AttributeHeader + "R A global VCS ERROR\n"), L"VCS ERROR");
    EXPECT_EQ(Value("x\nVCS ERROR global v\n"), L"v");
}

TEST_F(VeritasAttribute, TheExitCodeIsNoMatter) {
    tools.AnswerNext(AttributeHeader + "R A global v\n", 1);
    std::wstring value;
    EXPECT_TRUE(cluster.GetResourceAttribute(L"R", L"A", value));
    EXPECT_EQ(value, L"v");
}

TEST_F(VeritasAttribute, ALongValueIsWhole) {
    const std::string text = std::string(400, 'a') + " " + std::string(700, 'b');
    EXPECT_EQ(Value(AttributeHeader + "R A global " + text + "  \r\n"), Utf16(text));
}

TEST_F(VeritasAttribute, AValueThatBeginsBehindTheFirst511CharactersIsNone) {
    // Columns of `before` characters in all, blanks included, then the value.
    const auto valueBehind = [this](std::size_t before) {
        return Value(AttributeHeader + std::string(before - 5, 'r') + " A g value\r\n");
    };
    EXPECT_EQ(valueBehind(509), L"value");
    EXPECT_EQ(valueBehind(510), L"value");
    EXPECT_EQ(valueBehind(511), L"<none>");
    EXPECT_EQ(valueBehind(600), L"<none>");
}

TEST_F(VeritasAttribute, BytesAboveAsciiAreOneCharacterEach) {
    EXPECT_EQ(Value(AttributeHeader + "R A global \xC3\xA4 \xFF\r\n"), L"\u00C3\u00A4 \u00FF");
}

TEST_F(VeritasAttribute, NullCountsAsAnEmptyName) {
    tools.AnswerNext(AttributeHeader);
    std::wstring value = L"OLD";
    EXPECT_FALSE(cluster.GetResourceAttribute(nullptr, nullptr, value));
    EXPECT_EQ(value, L"OLD");
    EXPECT_EQ(tools.TakeCommandLines(), CommandList{L"hares -display  -attribute  "});
}

TEST_F(VeritasAttribute, AToolThatCannotBeRunLeavesTheValueAlone) {
    tools.AnswerPrefix(L"hares -display", AttributeHeader + "R A global v\r\n");
    for (const FailingCall& failing : CallsThatFailARun) {
        SCOPED_TRACE(failing.name);
        Platform().FailCall(failing.call, ERROR_ACCESS_DENIED);
        std::wstring value = L"OLD";
        EXPECT_FALSE(cluster.GetResourceAttribute(L"R", L"A", value));
        EXPECT_EQ(value, L"OLD");
    }
}

} // namespace
