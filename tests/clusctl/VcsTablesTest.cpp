#include "MainCfText.h"
#include "VcsTable.h"

#include <CfDocument.h>

#include <gtest/gtest.h>

TEST(ShownValues, RowsKeepTheirPlacesAndHeadersAreNone) {
    const std::vector<ShownValue> rows = ReadShownValues("#Resource Attribute System Value\n"
                                                         "EVS1-IP Address global 192.0.2.1\n"
                                                         "EVS1-IP State NODE1 ONLINE\n"
                                                         "EVS1-Rep Keys global HKLM\\A B\t\tHKLM\\C\t1\n",
                                                         TableForm::ObjectSystemValue);
    ASSERT_EQ(rows.size(), 3U);
    EXPECT_EQ(rows[0].object, "EVS1-IP");
    EXPECT_EQ(rows[0].system, "global");
    EXPECT_EQ(rows[1].system, "NODE1");
    EXPECT_EQ(rows[1].value, "ONLINE");
    EXPECT_EQ(rows[2].Parts(), (std::vector<std::string>{"HKLM\\A B", "", "HKLM\\C", "1"}));
    EXPECT_TRUE(ShownValue().Parts().empty());
}

TEST(ShownValues, FormsLackWhatTheirTablesLack) {
    const std::vector<ShownValue> systems = ReadShownValues("NODE1 SysState RUNNING\n", TableForm::ObjectValue);
    ASSERT_EQ(systems.size(), 1U);
    EXPECT_EQ(systems[0].system, "");
    EXPECT_EQ(systems[0].value, "RUNNING");
    const std::vector<ShownValue> cluster = ReadShownValues("ClusterName mail\n", TableForm::Value);
    ASSERT_EQ(cluster.size(), 1U);
    EXPECT_EQ(cluster[0].object, "");
    EXPECT_EQ(cluster[0].attribute, "ClusterName");
}

TEST(ShownValues, RowsWithTooFewWordsArePassedOver) {
    const auto rows = ReadRows("EVS1 A B\nEVS1\nEVS2 C D E\n", 3);
    ASSERT_EQ(rows.size(), 2U);
    EXPECT_EQ(rows[1], (std::vector<std::string>{"EVS2", "C", "D", "E"}));
}

TEST(MainCfText, SecretsAreMaskedAndCounted) {
    std::size_t count = 0;
    const std::string masked = MaskedMainCf("group G (\n\tSystemList = { N = 0 }\n\t)\n\tGenericService S (\n"
                                            "\t\tPassword = fooBAR\n\t\tAccessToken = t0k3n\n"
                                            "\t\tServiceName = Spooler\n\t\t)\n",
                                            count);
    EXPECT_EQ(count, 2U);
    EXPECT_EQ(masked.find("fooBAR"), std::string::npos);
    EXPECT_EQ(masked.find("t0k3n"), std::string::npos);
    EXPECT_NE(masked.find("ServiceName = Spooler"), std::string::npos);
    EXPECT_EQ(MaskedMainCf(masked, count), masked);
    EXPECT_THROW(MaskedMainCf("group (", count), vcssim::CfError);
}

TEST(MainCfText, AConfigurationIsMadeOfWhatTheToolsShow) {
    ShownConfiguration shown;
    shown.cluster = ReadShownValues("ClusterName mail\n", TableForm::Value);
    shown.systems = ReadShownValues("NODE1 SysState RUNNING\n", TableForm::ObjectValue);
    shown.groups = ReadShownValues("EVS1 SystemList global NODE1\t0\n", TableForm::ObjectSystemValue);
    shown.resources = ReadShownValues("EVS1-IP Type global IP\nEVS1-IP Group global EVS1\n"
                                      "EVS1-IP Address global 192.0.2.1\n"
                                      "EVS1-NIC Type global NIC\nEVS1-NIC Group global EVS1\n",
                                      TableForm::ObjectSystemValue);
    shown.resourceLinks = {{"EVS1", "EVS1-IP", "EVS1-NIC"}};
    const vcssim::CfDocument made(MakeMainCf(shown, vcssim::TypeTable()).text);
    ASSERT_EQ(made.Groups().size(), 1U);
    ASSERT_NE(made.ResourceNamed("EVS1-IP"), nullptr);
    const vcssim::CfAttribute* const address = made.ResourceNamed("EVS1-IP")->Find("Address", "");
    ASSERT_NE(address, nullptr);
    EXPECT_EQ(address->value.text, "192.0.2.1");
    ASSERT_EQ(made.Groups()[0].links.size(), 1U);
    EXPECT_EQ(made.Groups()[0].links[0].child, "EVS1-NIC");
}

namespace {

bool Shows(const wchar_t* value, const wchar_t* given) {
    return ShowsGiven({L"EVS1-Gate", L"ServiceName", L"global", value}, given);
}

} // namespace

TEST(GivenValues, AreShownWhateverIsBetweenTheWords) {
    EXPECT_TRUE(Shows(L"GateHost", L"GateHost"));
    EXPECT_TRUE(Shows(L"GateHost", L"\"GateHost\""));
    EXPECT_TRUE(Shows(L"NT Authority", L" \"NT  Authority\""));
    EXPECT_TRUE(Shows(L"HKLM\\SOFTWARE\\A B\t", L"\"HKLM\\SOFTWARE\\A B\" \"\""));
    EXPECT_TRUE(Shows(L"\\Gate\\RegRep", L"\\\\Gate\\RegRep"));
    EXPECT_TRUE(Shows(L"b\ta", L"a b a"));
    EXPECT_TRUE(Shows(L"", L"\"\""));
}

TEST(GivenValues, AreNotShownByOthers) {
    EXPECT_FALSE(Shows(L"", L"GateHost"));
    EXPECT_FALSE(Shows(L"GateHost", L"\"\""));
    EXPECT_FALSE(Shows(L"gatehost", L"GateHost"));
    EXPECT_FALSE(Shows(L"10", L"600"));
    EXPECT_FALSE(Shows(L"NT", L"\"NT Authority\""));
    EXPECT_FALSE(Shows(L"NT Authority more", L"\"NT Authority\""));
}

TEST(GivenValues, OfWhatIsPutTogetherAnyWillDo) {
    for (const wchar_t* given :
         {L"-add a", L"%-5", L"\"%-y -n\"", L"a %-b", L"{a, b}", L"\"say \\\"hi\\\"\"", L"\"Stra\u00dfe\""}) {
        EXPECT_TRUE(Shows(L"x", given));
        EXPECT_FALSE(Shows(L"", given));
    }
}

TEST(GivenValues, OfASecretItCountsWhetherThereIsOne) {
    const auto shows = [](const wchar_t* value, const wchar_t* given) {
        return ShowsGiven({L"EVS1-Gate", L"Password", L"global", value}, given);
    };
    EXPECT_TRUE(shows(L"***", L"\"gnFHkn\""));
    EXPECT_TRUE(shows(L"", L"\"\""));
    EXPECT_FALSE(shows(L"", L"***"));
    EXPECT_FALSE(shows(L"***", L"\"\""));
}
