// The language of the faults, new and old spellings.
#include "ErrorOf.h"

#include "common/FaultGrammar.h"

#include <gmock/gmock.h>

using testing::HasSubstr;

using common::Fault;
using common::FaultError;
using common::ParseFault;
using common::ParseFaults;

namespace {

// Everything that was said, one after the other.
std::string Told(const Fault& fault) {
    std::string told =
        "[" + fault.call + "|" + fault.object + "|" + std::to_string(fault.first) + (fault.onlyFirst ? "]" : "+]");
    const auto add = [&told](const char* name, const auto& number) {
        told += number ? std::string(" ") + name + ":" + std::to_string(*number) : "";
    };
    add("code", fault.code);
    add("state", fault.state);
    told += fault.output ? " output:" + *fault.output : "";
    add("random", fault.random);
    add("repeat", fault.repeat);
    add("kill", fault.kill);
    told += fault.delayMs != 0 ? " delay:" + std::to_string(fault.delayMs) : "";
    told += fault.hangs ? " hang" : "";
    told += fault.toErrors ? " errors" : "";
    return told;
}

std::string ToldOf(const std::string& text) {
    return Told(ParseFault(text));
}

std::string ProblemOf(const std::string& text) {
    return ErrorOf<FaultError>([&text] { ParseFault(text); });
}

std::string ToldOfFile(const std::string& text) {
    std::string told;
    for (const Fault& fault : ParseFaults(text)) {
        told += Told(fault) + "\n";
    }
    return told;
}

std::string ProblemOfFile(const std::string& text) {
    return ErrorOf<FaultError>([&text] { ParseFaults(text); });
}

} // namespace

TEST(FaultGrammar, ACallFailsWithACode) {
    EXPECT_EQ(ToldOf("OpenCluster=5"), "[OpenCluster||1+] code:5");
    EXPECT_EQ(ToldOf("OpenClusterResource@EVS1 Disk#2=5007"), "[OpenClusterResource|EVS1 Disk|2] code:5007");
    EXPECT_EQ(ToldOf("OpenClusterResource#2+=0x1234"), "[OpenClusterResource||2+] code:4660");
    EXPECT_EQ(ToldOf("OpenCluster=0xFFFFFFFF"), "[OpenCluster||1+] code:4294967295");
    EXPECT_EQ(ToldOf("GetClusterResourceState@EVS1 IP=state:130"), "[GetClusterResourceState|EVS1 IP|1+] state:130");
    EXPECT_EQ(ToldOf("GetClusterResourceState=state:-1"), "[GetClusterResourceState||1+] state:-1");
    EXPECT_EQ(ToldOf("OpenClusterNode=5 "), "[OpenClusterNode||1+] code:5") << "blanks around an effect";
}

TEST(FaultGrammar, NamesMayHoldTheSeparators) {
    EXPECT_EQ(ToldOf("Open@a=b#c#3+=5"), "[Open|a=b#c|3+] code:5");
    EXPECT_EQ(ToldOf("Open@a@b=5=6"), "[Open|a@b=5|1+] code:6");
    EXPECT_EQ(ToldOf("hares@-list Type=NIC=kill:0"), "[hares|-list Type=NIC|1+] kill:0");
}

TEST(FaultGrammar, AToolDoesEverythingThatObjectsSay) {
    EXPECT_EQ(ToldOf(R"(hares@-add *#2=1,output:"VCS WARNING made up\r\n",stream:errors)"),
              "[hares|-add *|2] code:1 output:VCS WARNING made up\r\n errors");
    EXPECT_EQ(ToldOf("*@-list*=delay_ms:2000"), "[|-list*|1+] delay:2000");
    EXPECT_EQ(ToldOf("=hang"), "[||1+] hang");
    EXPECT_EQ(ToldOf("hasys=random:4096, repeat:18446744073709551615, kill:8 , stream:out"),
              "[hasys||1+] random:4096 repeat:18446744073709551615 kill:8");
    EXPECT_EQ(ToldOf("hasys=-1"), "[hasys||1+] code:-1");
}

TEST(FaultGrammar, AQuotedTextIsOneOfJson) {
    EXPECT_EQ(ToldOf(R"(a=output:"x=5,#1=\"@\\")"), "[a||1+] output:x=5,#1=\"@\\");
    EXPECT_EQ(ToldOf(R"(a=output:"b=output:\"c\"",7)"), "[a||1+] code:7 output:b=output:\"c\"");
    EXPECT_EQ(ToldOf("a=output:\"\""), "[a||1+] output:");
    EXPECT_EQ(ToldOf(R"(a=output:"\u00e4")"), "[a||1+] output:\xC3\xA4");
}

TEST(FaultGrammar, SaysWhatIsMalformed) {
    EXPECT_EQ(ProblemOf(""), "there is no '=' with an effect behind it");
    EXPECT_EQ(ProblemOf("Nonsense"), "there is no '=' with an effect behind it");
    EXPECT_EQ(ProblemOf("a="), "behind '=' an effect is expected");
    EXPECT_EQ(ProblemOf("a=5,"), "behind ',' an effect is expected");
    EXPECT_EQ(ProblemOf("a=colour:1"), "there is no effect 'colour:1'");
    EXPECT_EQ(ProblemOf("a=5 6"), "a comma or the end is expected behind an effect, found '6'");
    EXPECT_EQ(ProblemOf("a=5x"), "a comma or the end is expected behind an effect, found 'x'");
    EXPECT_EQ(ProblemOf("a=0x"), "code: a number is expected, found ''");
    EXPECT_EQ(ProblemOf("a=4294967296"), "code: the number is too large");
    EXPECT_EQ(ProblemOf("a=kill:18446744073709551616"), "kill: the number is too large");
    EXPECT_EQ(ProblemOf("a=state"), "state: a colon and a value are expected");
    EXPECT_EQ(ProblemOf("a=state:"), "state: a number is expected, found ''");
    EXPECT_EQ(ProblemOf("a=random:-1"), "random: a number is expected, found '-1'");
    EXPECT_EQ(ProblemOf("a=stream:both"), "stream: out or errors is expected");
    EXPECT_EQ(ProblemOf("a=output:x"), "output: a text in double quotes is expected");
    EXPECT_EQ(ProblemOf("a=output:\"x"), "output: the closing double quote is missing");
    EXPECT_EQ(ProblemOf("a=output:\"x\\"), "output: the closing double quote is missing");
    EXPECT_THAT(ProblemOf(R"(a=output:"\x")"), HasSubstr("output: "));
    EXPECT_EQ(ProblemOf("a=hang,hang"), "hang: the effect stands twice");
    EXPECT_EQ(ProblemOf("a=5,6"), "code: the effect stands twice");
    EXPECT_EQ(ProblemOf("a@=5"), "behind '@' an object is expected");
    for (const char* occurrence : {"0", "x", "", "+", "-1", "99999999999999999999"}) {
        EXPECT_EQ(ProblemOf(std::string("a#") + occurrence + "=5"),
                  std::string("behind '#' a number from 1 on is expected, or one with a +, found '") + occurrence +
                      "'");
    }
}

TEST(FaultGrammar, TheProblemIsThatOfTheAttemptThatCameFurthest) {
    EXPECT_EQ(ProblemOf("hares@Type=NIC=exit:x"), "there is no effect 'exit:x'");
    EXPECT_EQ(ProblemOf(R"(hares=output:"a=b",colour:1)"), "there is no effect 'colour:1'");
}

TEST(FaultGrammar, OccurrencesAreCounted) {
    Fault second = ParseFault("a#2=5");
    EXPECT_FALSE(second.Occurs());
    EXPECT_TRUE(second.Occurs());
    EXPECT_FALSE(second.Occurs());
    Fault later = ParseFault("a#2+=5");
    EXPECT_FALSE(later.Occurs());
    EXPECT_TRUE(later.Occurs());
    EXPECT_TRUE(later.Occurs());
    EXPECT_TRUE(ParseFault("a=5").Occurs());
}

TEST(FaultFile, HoldsOneFaultALine) {
    EXPECT_EQ(ToldOfFile("\xEF\xBB\xBF// the first two runs\r\n"
                         "\r\n"
                         "  hares@-list*#1=9\r\n"
                         "hares=output:\"a\\nb\"\t\n"
                         "// hagrp=1"),
              "[hares|-list*|1] code:9\n[hares||1+] output:a\nb\n");
    EXPECT_EQ(ToldOfFile(""), "");
    EXPECT_EQ(ProblemOfFile("hares=1\n\nhasys"), "line 3: there is no '=' with an effect behind it");
}

TEST(FaultFile, MayBeAListOfTextsAndObjects) {
    EXPECT_EQ(ToldOfFile(R"( [
        {"tool": "hares", "arguments": "-add *", "nth": 2, "output": "x\r\n", "exit": 1, "comment": "why"},
        "hasys=kill:8",
        {"random": 4096, "repeat": 3, "stream": "errors", "kill": 7, "delay_ms": 20, "hang": true},
        {"nth": 0, "exit": -3, "stream": "out", "hang": false}])"),
              "[hares|-add *|2] code:1 output:x\r\n\n"
              "[hasys||1+] kill:8\n"
              "[||0+] random:4096 repeat:3 kill:7 delay:20 hang errors\n"
              "[||0+] code:-3\n");
    Fault each = ParseFaults(R"([{"exit": 1}])").at(0);
    EXPECT_TRUE(each.Occurs());
    EXPECT_TRUE(each.Occurs());
    EXPECT_EQ(ToldOfFile("[]"), "");
}

TEST(FaultFile, SaysWhatIsMalformedInAList) {
    EXPECT_EQ(ProblemOfFile("{}"), "is no list");
    EXPECT_EQ(ProblemOfFile("[{}, 1]"), "fault 1: is no object");
    EXPECT_EQ(ProblemOfFile(R"(["hasys"])"), "fault 0: there is no '=' with an effect behind it");
    EXPECT_EQ(ProblemOfFile(R"([{"colour": 1}])"), "fault 0: there is no member 'colour'");
    EXPECT_EQ(ProblemOfFile(R"([{"nth": -1}])"), "fault 0: nth is no number");
    EXPECT_EQ(ProblemOfFile(R"([{"tool": 1}])"), "fault 0: tool is no text");
    EXPECT_EQ(ProblemOfFile(R"([{"exit": "x"}])"), "fault 0: exit is no number");
    EXPECT_EQ(ProblemOfFile(R"([{"stream": "both"}])"), "fault 0: stream is neither \"out\" nor \"errors\"");
    EXPECT_THAT(ProblemOfFile("["), HasSubstr("line 1, column 2"));
}
