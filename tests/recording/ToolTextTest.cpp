// The command lines and outputs of VCS tools in a recording: which may be run, what is masked, which words are names.
#include "ToolText.h"

#include <gtest/gtest.h>

using recording::IsQuestion;
using recording::MaskedCommand;
using recording::MaskedOutput;
using recording::Printed;
using recording::ReplayedOutput;

namespace {

class RecordedNames : public testing::Test {
protected:
    RecordedNames() {
        recording::KeepWordsOfVcs(anonymiser);
    }
    // A tool's whole output, on its first stream.
    std::string Shown(const std::string& output) {
        return recording::AnonymousPrint(anonymiser).Of({false, output});
    }
    std::string Command(const std::string& command) {
        return recording::AnonymousCommand(command, anonymiser);
    }

    common::Anonymiser anonymiser;
};

} // namespace

TEST(RecordedTools, OnlyQuestionsPass) {
    for (const wchar_t* command :
         {L"hares -list ", L"hagrp -state EVS1 ", L"hasys -display NODE1", L"hares -dep EVS1-IP", L"haclus -state",
          L"hares -value EVS1-IP Address", L"hastatus -sum", L"haconf -help", L"vcsencrypt -agent x",
          L"C:\\vcs\\bin\\hares.exe -list"}) {
        EXPECT_TRUE(IsQuestion(command)) << command;
    }
    for (const wchar_t* command :
         {L"hares -modify EVS1-IP Address x", L"haconf -makerw", L"haconf -dump -makero", L"hares -add -list T G",
          L"hagrp -online EVS1 -sys NODE1", L"hares -delete -display", L"hares", L"", L"cmd /c hares -list"}) {
        EXPECT_FALSE(IsQuestion(command)) << command;
    }
}

TEST(RecordedTools, SecretsOfCommandLinesAreMasked) {
    EXPECT_EQ(MaskedCommand(L"hares -modify EVS1-SVC Password hunter2"), L"hares -modify EVS1-SVC Password ***");
    EXPECT_EQ(MaskedCommand(L"vcsencrypt -agent hunter2"), L"vcsencrypt -agent ***");
    EXPECT_EQ(MaskedCommand(L"hares -list Type=IP"), L"hares -list Type=IP");
}

TEST(RecordedTools, SecretsOfOutputsAreMasked) {
    EXPECT_EQ(MaskedOutput(L"vcsencrypt -agent hunter2", L"fRpTsUvW\r\n"), L"***\n");
    EXPECT_EQ(MaskedOutput(L"hares -value EVS1-SVC Password", L"fRpTsUvW\r\n"), L"***\n");
    EXPECT_EQ(MaskedOutput(L"hares -display EVS1-SVC", L"EVS1-SVC Password global fRpTsUvW\r\n"),
              L"EVS1-SVC Password global ***\n");
    EXPECT_EQ(MaskedOutput(L"hares -modify EVS1-SVC Password hunter2", L"VCS WARNING V-16-1-10 no hunter2 here\r\n"),
              L"VCS WARNING V-16-1-10 no *** here\r\n");
}

// A replay has to go on as the command did: with a word that can be a password, or without.
TEST(RecordedTools, WhatEncryptionPrintsIsReplayedInItsForm) {
    const std::wstring command = L"vcsencrypt -agent hunter2";
    const auto replayed = [&command](const wchar_t* printed) {
        std::string text;
        for (const wchar_t c : MaskedOutput(command, printed)) {
            text += static_cast<char>(c);
        }
        return ReplayedOutput(command, text);
    };
    EXPECT_EQ(replayed(L"fRpTsUvW\r\n"), "xxxxxxxx\n");
    EXPECT_EQ(replayed(L"Enter Password:\r\nEnter Again:\r\nfRpTsUvW\r\n"),
              "Enter Password:\nEnter Again:\nxxxxxxxx\n");
    EXPECT_EQ(replayed(L"the password is fRpTsUvW\r\n"), "*** ***\n");
    EXPECT_EQ(replayed(L"VCS ERROR V-16-1-10600 Cannot connect to VCS engine"),
              "VCS ERROR V-16-1-10600 Cannot connect to VCS engine");
    EXPECT_EQ(replayed(L""), "");
    EXPECT_EQ(ReplayedOutput(L"hares -value EVS1-SVC Password", "***\n"), "***\n");
}

TEST_F(RecordedNames, AreThoseOfTheColumns) {
    EXPECT_EQ(Shown("EVS1 \t\tNODE1\r\n"), "BABA \t\tBABAB\r\n");
    EXPECT_EQ(Shown("#Group       Attribute             System     Value\r\n"
                    "EVS1         State                 NODE1      |ONLINE|\r\n"),
              "#Group       Attribute             System     Value\r\n"
              "BABA         State                 BABAB      |ONLINE|\r\n");
    EXPECT_EQ(Shown("EVS1-IP Address global 192.0.2.21\r\n"), "BABA-IP Address global 100.0.0.10\r\n");
    EXPECT_EQ(Command("hares -list  Group=EVS1  Type=Lanman "), "hares -list  Group=BABA  Type=Lanman ");
    EXPECT_EQ(Command("hares -display EVS1-IP -attribute Address"), "hares -display BABA-IP -attribute Address");
}

// Each tool has columns of its own: what stands in the second one is an attribute only where its title says so.
TEST_F(RecordedNames, AreTakenByTheTitlesOfTheirColumns) {
    EXPECT_EQ(Shown("#Attribute   Value\nClusterName  MAILFARM\n"), "#Attribute   Value\nClusterName  BABABABA\n");
    EXPECT_EQ(Shown("#Group Parent Child\nEVS1 EVS1-SA EVS1-IP\n"), "#Group Parent Child\nBABA BABA-SA BABA-IP\n");
    EXPECT_EQ(Shown("#System Attribute Value\nNODE1 SysState RUNNING\n"),
              "#System Attribute Value\nBABAB SysState RUNNING\n");
    EXPECT_EQ(Shown("#Resource Attribute System Value\nEVS1-IP AcmeTag global ACME secret\n"),
              "#Resource Attribute System Value\nBABA-IP AcmeTag global BABE bababa\n");
    EXPECT_EQ(Shown("EVS1 is what NODE1 owns\n").find("NODE1"), std::string::npos);
}

TEST_F(RecordedNames, AreReplacedInMessagesWhetherTheyWereMetBeforeOrNot) {
    EXPECT_EQ(Shown("VCS WARNING V-16-1-40131 Group EVS1 does not exist in the local cluster\r\n"),
              "VCS WARNING V-16-1-40131 Group BABA does not exist in the local cluster\r\n");
    EXPECT_EQ(Shown("VCS WARNING V-16-1-10905 Dependency between 'EVS1' and 'ACME' already exists\n"),
              "VCS WARNING V-16-1-10905 Dependency between 'BABA' and 'BABE' already exists\n");
    EXPECT_EQ(recording::AnonymousPrint(anonymiser).Of({true, "cannot open acmelist\n"}).find("acmelist"),
              std::string::npos);
}

TEST_F(RecordedNames, AreAllWordsOfACommandLineButOptionsAndAttributes) {
    EXPECT_EQ(Command("hares -modify EVS1-SVC Arguments acme=hidden -acme"),
              "hares -modify BABA-BAB Arguments babe=bababa -babe");
    EXPECT_EQ(Command("hagrp -online EVS1 -sys NODE1"), "hagrp -online BABA -sys BABAB");
}
