// The command lines and outputs of VCS tools in a recording: which may be run, what is masked, which words are names.
#include "ToolText.h"

#include <gtest/gtest.h>

using recording::IsQuestion;
using recording::MaskedCommand;
using recording::MaskedOutput;

TEST(RecordedTools, OnlyQuestionsPass) {
    for (const wchar_t* command : {L"hares -list ", L"hagrp -state EVS1 ", L"hasys -display NODE1",
                                   L"hares -dep EVS1-IP", L"haclus -state", L"hares -value EVS1-IP Address",
                                   L"hastatus -sum", L"vcsencrypt -agent x", L"C:\\vcs\\bin\\hares.exe -list"}) {
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

TEST(RecordedTools, NamesAreThoseOfTheColumns) {
    common::Anonymiser anonymiser;
    recording::KeepWordsOfVcs(anonymiser);
    EXPECT_EQ(recording::AnonymousOutput("hagrp -list", "EVS1 \t\tNODE1\r\n", anonymiser), "BABA \t\tBABAB\r\n");
    EXPECT_EQ(recording::AnonymousOutput("hagrp -state EVS1",
                                         "#Group       Attribute             System     Value\r\n"
                                         "EVS1         State                 NODE1      |ONLINE|\r\n",
                                         anonymiser),
              "#Group       Attribute             System     Value\r\n"
              "BABA         State                 BABAB      |ONLINE|\r\n");
    EXPECT_EQ(recording::AnonymousOutput("hares -display EVS1-IP", "EVS1-IP Address global 192.0.2.21\r\n", anonymiser),
              "BABA-IP Address global 100.0.0.10\r\n");
    EXPECT_EQ(recording::AnonymousOutput("hares -dep X", "VCS WARNING V-16-1-10260 Resource EVS1-IP\r\n", anonymiser),
              "VCS WARNING V-16-1-10260 Resource BABA-IP\r\n");
    EXPECT_EQ(recording::AnonymousCommand("hares -list  Group=EVS1  Type=Lanman ", anonymiser),
              "hares -list  Group=BABA  Type=Lanman ");
    EXPECT_EQ(recording::AnonymousCommand("hares -display EVS1-IP -attribute Address", anonymiser),
              "hares -display BABA-IP -attribute Address");
}
