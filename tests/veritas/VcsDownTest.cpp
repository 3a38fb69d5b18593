// Tools that cannot reach the engine, that are killed in the middle of their output, or that print rubbish.
#include "Runs.h"

#include <algorithm>
#include <random>

using namespace harness;

namespace {

const DWORD Killed = 0xC000013A;

// How an output is split, line by line, as plainly as can be.
Names ExpectedTokens(const std::string& output) {
    Names tokens;
    std::string text = output.substr(0, output.find('\x1A'));
    for (std::size_t end = 0; (end = text.find("\r\n", end)) != std::string::npos; ++end) {
        text.erase(end, 1);
    }
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        std::string line = text.substr(start, std::min<std::size_t>(end - start, 511));
        line.erase(std::find(line.begin(), line.end(), '\0'), line.end());
        std::wstring token;
        for (const char character : line + " ") {
            if (character != ' ' && character != '\t') {
                token += static_cast<wchar_t>(static_cast<unsigned char>(character));
            } else if (!token.empty()) {
                tokens.push_back(token);
                token.clear();
            }
        }
        start = end + 1;
    }
    return tokens;
}

// Every second token, once.
Names ExpectedNames(const Names& tokens) {
    Names names;
    for (std::size_t i = 0; i < tokens.size(); i += 2) {
        if (std::find(names.begin(), names.end(), tokens[i]) == names.end()) {
            names.push_back(tokens[i]);
        }
    }
    return names;
}

// The engine does not run: every tool prints the same line
// --------------------------------------------------------------

class VeritasDown : public VeritasTest {
protected:
    VeritasDown() {
        tools.AnswerPrefix(L"ha", "VCS ERROR V-16-1-10600 Cannot connect to VCS engine\r\n", 1);
        tools.AnswerPrefix(L"vcsencrypt", "VCS ERROR V-16-1-10600 Cannot connect to VCS engine\r\n", 1);
    }
};

TEST_F(VeritasDown, TheMessageIsTakenForSystems) {
    EXPECT_EQ(Systems(cluster),
              (Names{L"VCS", L"ERROR", L"V-16-1-10600", L"Cannot", L"connect", L"to", L"VCS", L"engine"}));
}

TEST_F(VeritasDown, TheMessageIsTakenForGroupsAndResources) {
    Names groups;
    EXPECT_TRUE(cluster.EnumGroupNames(groups));
    EXPECT_EQ(groups, (Names{L"VCS", L"V-16-1-10600", L"connect"}));
    Names resources;
    EXPECT_TRUE(cluster.EnumResourceNamesW(resources));
    EXPECT_EQ(resources, (Names{L"VCS", L"V-16-1-10600", L"connect"}));
}

TEST_F(VeritasDown, ThereAreNoDependencies) {
    Names parents = {L"P"};
    Names children = {L"C"};
    EXPECT_TRUE(cluster.EnumResDependencies(L"R", parents, children));
    EXPECT_EQ(parents, Names{L"P"});
    EXPECT_EQ(children, Names{L"C"});
}

TEST_F(VeritasDown, ThereIsNoAttribute) {
    std::wstring value = L"OLD";
    EXPECT_FALSE(cluster.GetResourceAttribute(L"R", L"A", value));
    EXPECT_EQ(value, L"OLD");
}

TEST_F(VeritasDown, NoGroupIsOnline) {
    bool online = true;
    std::wstring system = L"OLD";
    EXPECT_TRUE(cluster.GetGroupOnlineNode(L"G", online, system, true));
    EXPECT_FALSE(online);
    EXPECT_EQ(system, L"OLD");
}

TEST_F(VeritasDown, NoGroupIsFoundAfterEachWordWasAskedFor) {
    std::wstring group = L"OLD";
    EXPECT_FALSE(cluster.FindGroupNameByVirtualServerName(L"EVS1", group));
    EXPECT_EQ(group, L"OLD");
    EXPECT_EQ(
        tools.TakeCommandLines(),
        (CommandList{L"hares -list  Type=Lanman  VirtualName=EVS1 ", L"hares -display VCS -attribute Group ",
                     L"hares -display V-16-1-10600 -attribute Group ", L"hares -display connect -attribute Group "}));
}

TEST_F(VeritasDown, TheFirstWordIsTakenForAServicesResource) {
    std::wstring resource;
    EXPECT_TRUE(cluster.GetGenericServiceResNameByServiceName(L"G", L"Svc", resource));
    EXPECT_EQ(resource, L"VCS");
}

TEST_F(VeritasDown, OperationsSucceedSinceTheirToolsRan) {
    EXPECT_TRUE(cluster.SwitchToReadWriteMode());
    EXPECT_TRUE(cluster.CreateResource(L"R", L"T", L"G", L"C", {{L"A", L"1"}}));
    EXPECT_TRUE(cluster.LinkResource(L"R", L"C"));
    EXPECT_TRUE(cluster.DeleteResource(L"R"));
    EXPECT_TRUE(cluster.TurnOnOrOffResource(L"R", L"N", true));
    EXPECT_TRUE(cluster.TurnOnOrOffResource(L"R", L"N", false));
    EXPECT_TRUE(cluster.SwitchToReadOnlyMode());
    EXPECT_EQ(tools.TakeCommandLines().size(), 13u);
}

TEST_F(VeritasDown, TheFirstWordIsTakenForAnEncryptedPassword) {
    std::wstring encrypted;
    EXPECT_TRUE(cluster.EncryptVeritasPassword(L"p", encrypted));
    EXPECT_EQ(encrypted, L"VCS");
}

TEST_F(VeritasDown, TheMessageAndItsExitCodeAreInTheLog) {
    Systems(cluster);
    EXPECT_EQ(TakeLog(), RunLog("hasys -list ", {"I Process exit code: 1",
                                                 "I Result: VCS ERROR V-16-1-10600 Cannot connect to VCS engine"}));
}

// Tools that are not there
// ---------------------------------------------------------------------------------------------

TEST_F(VeritasDown, WithoutToolsQueriesFailAndOnlyTheirOutputsDefaultsChange) {
    Platform().FailCall("CreateProcessW", ERROR_FILE_NOT_FOUND, 1, FaultMode::FromThenOn);
    Names names = {L"OLD"};
    Names others = {L"OLD"};
    std::wstring text = L"OLD";
    bool online = true;
    EXPECT_FALSE(cluster.EnumSystemNames(names));
    EXPECT_FALSE(cluster.EnumGroupNames(names));
    EXPECT_FALSE(cluster.EnumResourceNamesW(names));
    EXPECT_FALSE(cluster.EnumResDependencies(L"R", names, others));
    EXPECT_FALSE(cluster.GetResourceAttribute(L"R", L"A", text));
    EXPECT_FALSE(cluster.GetGroupOnlineNode(L"G", online, text, true));
    EXPECT_FALSE(cluster.FindGroupNameByVirtualServerName(L"V", text));
    EXPECT_FALSE(cluster.GetGenericServiceResNameByServiceName(L"G", L"S", text));
    EXPECT_FALSE(cluster.EncryptVeritasPassword(L"p", text));
    EXPECT_FALSE(cluster.SwitchToReadWriteMode());
    EXPECT_FALSE(cluster.SwitchToReadOnlyMode());
    EXPECT_FALSE(cluster.LinkResource(L"P", L"C"));
    EXPECT_FALSE(cluster.TurnOnOrOffResource(L"R", L"N", true));
    EXPECT_TRUE(cluster.CreateResource(L"R", L"T", L"G", L"C", {{L"A", L"1"}}));
    EXPECT_TRUE(cluster.DeleteResource(L"R"));
    EXPECT_EQ(names, Names{L"OLD"});
    EXPECT_EQ(others, Names{L"OLD"});
    EXPECT_EQ(text, L"OLD");
    EXPECT_FALSE(online);
    EXPECT_EQ(tools.CommandLines(), CommandList());
}

// Outputs that end early, and outputs of anything
// ------------------------------------------------------------------------

class VeritasBrokenOutput : public VeritasTest {
protected:
    Names Groups(const std::string& output, DWORD exitCode = 0) {
        Names groups;
        tools.AnswerNext(output, exitCode);
        EXPECT_TRUE(cluster.EnumGroupNames(groups));
        return groups;
    }
};

TEST_F(VeritasBrokenOutput, AListThatEndsAnywhereGivesWhatItHolds) {
    const std::string whole = "EVS1\t\tNODE1\r\nEVS1\t\tNODE2\r\nEVS22\t\tNODE1\r\n";
    for (std::size_t size = 0; size <= whole.size(); ++size) {
        const std::string output = whole.substr(0, size);
        EXPECT_EQ(Groups(output, Killed), ExpectedNames(ExpectedTokens(output))) << size;
    }
    EXPECT_EQ(Groups("EVS1\t\tNODE1\r\nEV", Killed), (Names{L"EVS1", L"EV"}));
    EXPECT_EQ(Groups("EVS1\t\tNODE1\r", Killed), Names{L"EVS1"});
}

TEST_F(VeritasBrokenOutput, AStateThatEndsEarlyIsNoState) {
    const std::string whole = "#Group Attribute System Value\r\nG State NODE1 |ONLINE|";
    for (std::size_t size = 0; size <= whole.size(); ++size) {
        tools.AnswerNext(whole.substr(0, size), Killed);
        bool online = false;
        std::wstring system = L"OLD";
        EXPECT_TRUE(cluster.GetGroupOnlineNode(L"G", online, system, true));
        EXPECT_EQ(online, size == whole.size()) << size;
        EXPECT_EQ(system, size == whole.size() ? L"NODE1" : L"OLD") << size;
    }
}

TEST_F(VeritasBrokenOutput, DependenciesThatEndEarlyGiveTheRowsThatAreThere) {
    const std::string whole = "#Group Parent Child\r\nG R C1\r\nG R C2\r\n";
    for (std::size_t size = 0; size <= whole.size(); ++size) {
        const std::string output = whole.substr(0, size);
        const Names tokens = ExpectedTokens(output);
        Names expected;
        for (std::size_t child = 5; child < tokens.size(); child += 3) {
            expected.push_back(tokens[child]);
        }
        Names parents;
        Names children;
        tools.AnswerNext(output, Killed);
        EXPECT_TRUE(cluster.EnumResDependencies(L"R", parents, children));
        EXPECT_EQ(children, expected) << size;
        EXPECT_EQ(parents, Names()) << size;
    }
}

TEST_F(VeritasBrokenOutput, AnAttributeThatEndsEarlyIsWhatIsThereOfItsValue) {
    const std::string before = "#Resource Attribute System Value\r\nR A global ";
    const std::string whole = before + "F:\\a b";
    for (std::size_t size = 0; size <= whole.size(); ++size) {
        tools.AnswerNext(whole.substr(0, size), Killed);
        std::wstring value = L"OLD";
        EXPECT_EQ(cluster.GetResourceAttribute(L"R", L"A", value), size > before.size()) << size;
        std::string expected = size > before.size() ? whole.substr(before.size(), size - before.size()) : "OLD";
        if (expected.back() == ' ') {
            expected.pop_back();
        }
        EXPECT_EQ(value, Utf16(expected)) << size;
    }
}

TEST_F(VeritasBrokenOutput, RandomBytesAreSplitLikeAnyText) {
    std::mt19937 random(20261121);
    const std::string alphabet("ab \t\r\n\r\n  \0\x1A\xFF", 13);
    for (int round = 0; round < 120; ++round) {
        // Bytes of all kinds, or many separators; without the end of text in every other.
        std::string output(random() % (round % 10 == 0 ? 20000 : 1500), '\0');
        for (char& byte : output) {
            byte = round % 2 ? alphabet[random() % alphabet.size()] : static_cast<char>(random());
        }
        if (round % 4 >= 2) {
            std::replace(output.begin(), output.end(), '\x1A', 'z');
        }
        SCOPED_TRACE(round);
        const Names tokens = ExpectedTokens(output);
        tools.AnswerNext(output, Killed);
        EXPECT_EQ(Systems(cluster), tokens);
        EXPECT_EQ(Groups(output, Killed), ExpectedNames(tokens));
    }
}

TEST_F(VeritasBrokenOutput, RandomBytesHoldNoStateAndNoDependency) {
    std::mt19937 random(7);
    for (int round = 0; round < 40; ++round) {
        std::string output(random() % 3000, '\0');
        std::generate(output.begin(), output.end(), [&random] { return static_cast<char>(random()); });
        SCOPED_TRACE(round);
        tools.AnswerPrefix(L"ha", output);
        bool online = true;
        std::wstring system = L"OLD";
        EXPECT_TRUE(cluster.GetGroupOnlineNode(L"Group", online, system, true));
        EXPECT_FALSE(online);
        EXPECT_EQ(system, L"OLD");
        Names parents;
        Names children;
        EXPECT_TRUE(cluster.EnumResDependencies(L"Resource", parents, children));
        EXPECT_EQ(parents, Names());
        EXPECT_EQ(children, Names());
    }
}

} // namespace
