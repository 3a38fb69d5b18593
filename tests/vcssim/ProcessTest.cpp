// The programs themselves: several at once, faults, journal.
#include "ChildProcess.h"
#include "ToolTest.h"

#include "common/FileLock.h"

#include <winsock2.h>
#include <windows.h>

#include <nlohmann/json.hpp>

#include <memory>
#include <sstream>

using harness::ChildProcess;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

class ToolPrograms : public ToolTest {
protected:
    ToolPrograms() {
        SetEnvironmentVariableW(L"VCSSIM_MAIN_CF", Path(L"").c_str());
        SetEnvironmentVariableW(L"VCSSIM_JOURNAL", Path(L".journal").c_str());
        SetEnvironmentVariableW(L"VCSSIM_OPTIONS", L"lineend=lf");
        SetEnvironmentVariableW(L"VCSSIM_FAULTS", nullptr);
    }

    void UseFaults(const std::string& json) {
        WriteFile(L".faults", json);
        SetEnvironmentVariableW(L"VCSSIM_FAULTS", Path(L".faults").c_str());
    }

    // Starts a tool from the folder of this program, both streams into `capture`.
    static std::unique_ptr<ChildProcess> Start(const std::wstring& commandLine, const std::wstring& capture) {
        SECURITY_ATTRIBUTES inheritable = {sizeof(inheritable), nullptr, TRUE};
        const common::Handle file(CreateFileW(capture.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                              &inheritable, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
        return std::make_unique<ChildProcess>(commandLine, harness::Variables(),
                                              harness::ChildStreams{file.get(), file.get()});
    }

    std::string RunProcess(const std::wstring& commandLine) {
        m_processExit = Start(commandLine, Path(L".out"))->Wait();
        return ReadFile(L".out");
    }

    std::vector<nlohmann::json> Journal() const {
        std::istringstream stream(ReadFile(L".journal"));
        std::vector<nlohmann::json> entries;
        std::string line;
        while (std::getline(stream, line)) {
            entries.push_back(nlohmann::json::parse(line));
        }
        return entries;
    }

    DWORD m_processExit = 0;
};

TEST_F(ToolPrograms, PrintsBothStreamsAndExits) {
    EXPECT_EQ(RunProcess(L"hasys -list "), "NODE1\nNODE2\n");
    EXPECT_EQ(m_processExit, 0u);
    EXPECT_EQ(RunProcess(L"haconf -makerw "), "VCS WARNING V-16-1-10364 Cluster already writable.\n");
    EXPECT_EQ(m_processExit, 1u);
    EXPECT_EQ(RunProcess(L"hagrp -state H"), "#Group       Attribute             System     Value\n"
                                             "H            State                 NODE2      |OFFLINE|\n");
    EXPECT_EQ(RunProcess(L"hares -modify  G-RegRep Keys \"HKLM\\X Y\" \"\" "), "");
    EXPECT_EQ(RunProcess(L"hares -value G-RegRep Keys"), "HKLM\\X Y\t\n");
    EXPECT_EQ(RunProcess(L"vcsencrypt -agent secret").size(), 25u);
}

TEST_F(ToolPrograms, EndsLinesWithCrLfByDefault) {
    SetEnvironmentVariableW(L"VCSSIM_OPTIONS", nullptr);
    EXPECT_EQ(RunProcess(L"hasys -list"), "NODE1\r\nNODE2\r\n");
}

TEST_F(ToolPrograms, RefusesUnknownSwitches) {
    SetEnvironmentVariableW(L"VCSSIM_OPTIONS", L"colour=red");
    EXPECT_THAT(RunProcess(L"hasys -list"), HasSubstr("VCSSIM_OPTIONS: there is no switch 'colour=red'"));
    EXPECT_EQ(m_processExit, 2u);
}

TEST_F(ToolPrograms, KeepsUnicodeAndEightBitTexts) {
    RunProcess(L"hares -modify G-Mount VolumeName \"\u00e4\u4e2d\"");
    EXPECT_THAT(ReadFile(L".live"), HasSubstr("VolumeName = \"\xC3\xA4\xE4\xB8\xAD\"\n"));
    EXPECT_EQ(RunProcess(L"hares -value G-Mount VolumeName"), "\xC3\xA4\xE4\xB8\xAD\n");
    EXPECT_EQ(RunProcess(L"hares -list VolumeName=\u00e4\u4e2d State=ONLINE"), "G-Mount\t\tNODE1\n");
}

TEST_F(ToolPrograms, WritesAJournal) {
    RunProcess(L"hares -list Type=NIC");
    RunProcess(L"hares -nonsense");
    const std::vector<nlohmann::json> entries = Journal();
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0].dump(), R"({"arguments":["-list","Type=NIC"],"exit":0,)"
                                 R"("output":"G-NIC\t\tNODE1\nG-NIC\t\tNODE2\n","tool":"hares"})");
    EXPECT_EQ(entries[1]["exit"], 2);
}

TEST_F(ToolPrograms, LetsEventsHappenAtTheirTime) {
    UseFaults("time@40=event:\"engine-stop\"\ntime@20=event:\"fault G-IP NODE1\"\nhasys=event:\"wait 1\"\n");
    WriteFile(L"", "system NODE1\nsystem NODE2\n\ngroup G (\n\tSystemList = { NODE1 = 0, NODE2 = 1 }\n\t)\n\n\tIP G-IP "
                   "(\n\t\t)\n");
    WriteFile(L".state.json", R"({"resources": {"G-IP": {"NODE1": "ONLINE"}}, "clock": 100})");
    EXPECT_EQ(RunProcess(L"hagrp -state G -sys NODE1"), "ONLINE\n"); // from here on the seconds count
    EXPECT_EQ(RunProcess(L"vcssim wait 19"), "");
    EXPECT_EQ(RunProcess(L"vcssim wait 11"), "");
    EXPECT_EQ(RunProcess(L"hagrp -state G -sys NODE2"), "ONLINE\n");
    EXPECT_EQ(RunProcess(L"vcssim clock"), "130\n");
    EXPECT_THAT(RunProcess(L"vcssim timeline"), StartsWith("   120  resource G-IP is FAULTED on NODE1: fault\n"));
    EXPECT_EQ(RunProcess(L"hasys -list"), "NODE1\nNODE2\n"); // an event of its own, and 131
    EXPECT_EQ(RunProcess(L"vcssim wait 100"), "");
    EXPECT_EQ(RunProcess(L"vcssim clock"), "231\n");
    EXPECT_THAT(RunProcess(L"hagrp -list"), HasSubstr("Cannot connect to VCS engine"));
    EXPECT_EQ(RunProcess(L"vcssim engine-start"), "");
    EXPECT_EQ(RunProcess(L"hagrp -list"), "G\t\tNODE1\nG\t\tNODE2\n"); // each happens once
    std::vector<std::string> told;
    for (const nlohmann::json& entry : Journal()) {
        told.push_back(entry.contains("event") ? entry["event"].get<std::string>()
                                               : entry["tool"].get<std::string>() + entry["arguments"].dump());
    }
    EXPECT_THAT(told, testing::IsSupersetOf({"fault G-IP NODE1", "engine-stop", "vcssim[\"wait\",\"11\"]"}));
}

// Before that, the time was another clock's.
TEST_F(ToolPrograms, LetsSecondsBeginBehindTheSettingOfAClock) {
    UseFaults("time@30=event:\"engine-stop\"\n");
    EXPECT_EQ(RunProcess(L"vcssim clock 1000"), "");
    EXPECT_THAT(RunProcess(L"hasys -list"), "NODE1\nNODE2\n");
    EXPECT_EQ(RunProcess(L"vcssim wait 31"), "");
    EXPECT_THAT(RunProcess(L"hasys -list"), HasSubstr("Cannot connect to VCS engine"));
}

// What falls due while no tool runs happens before the next one does.
TEST_F(ToolPrograms, LetsEventsHappenByTheComputersClockToo) {
    UseFaults("time@0=event:\"engine-stop\"\ntime@3600=event:\"engine-start\"\n");
    EXPECT_THAT(RunProcess(L"hasys -list"), HasSubstr("Cannot connect to VCS engine"));
    EXPECT_THAT(RunProcess(L"hasys -list"), HasSubstr("Cannot connect to VCS engine"));
    WriteFile(L".faults.counts", std::to_string(SIZE_MAX) + "\n1000\n"); // long ago
    EXPECT_EQ(RunProcess(L"hasys -list"), "NODE1\nNODE2\n");
}

TEST_F(ToolPrograms, LetsEventsHappenBetweenRuns) {
    UseFaults(
        "hagrp@-state G -sys *#2=event:\"move G NODE2\"\n*#5=event:\"engine-stop\"\n*#7=event:\"engine-start\"\n");
    WriteFile(L"", "system NODE1\nsystem NODE2\n\ngroup G (\n\tSystemList = { NODE1 = 0, NODE2 = 1 }\n\t)\n\n\tIP G-IP "
                   "(\n\t\t)\n");
    WriteFile(L".state.json", R"({"resources": {"G-IP": {"NODE1": "ONLINE"}}, "clock": 0})");
    const std::string noEngine = "VCS ERROR V-16-1-10600 Cannot connect to VCS engine\n";
    EXPECT_EQ(RunProcess(L"hagrp -state G -sys NODE1"), "ONLINE\n");
    EXPECT_EQ(RunProcess(L"hagrp -state G -sys NODE2"), "ONLINE\n");
    EXPECT_EQ(RunProcess(L"hagrp -state G -sys NODE1"), "OFFLINE\n");
    EXPECT_EQ(RunProcess(L"hasys -list"), "NODE1\nNODE2\n");
    EXPECT_EQ(RunProcess(L"hasys -list"), noEngine);
    EXPECT_EQ(m_processExit, 1u);
    EXPECT_EQ(RunProcess(L"vcsencrypt -agent secret"), noEngine);
    EXPECT_EQ(RunProcess(L"hasys -list"), "NODE1\nNODE2\n");
    const std::vector<nlohmann::json> entries = Journal();
    ASSERT_EQ(entries.size(), 10u);
    EXPECT_EQ(entries[1]["event"], "move G NODE2");
    EXPECT_EQ(entries[5].dump(), R"({"event":"engine-stop","exit":0,"output":""})");
    EXPECT_THAT(RunProcess(L"vcssim timeline"), HasSubstr("group G is ONLINE on NODE2"));
}

TEST_F(ToolPrograms, DoNothingWhenTheirEventCannotHappen) {
    UseFaults("hasys#1=event:\"system-down NOPE\"\n");
    EXPECT_EQ(RunProcess(L"hasys -list"),
              "VCS ERROR V-16-1-99001 (simulated) event \"system-down NOPE\": VCS WARNING V-16-1-10357 (simulated) "
              "System NOPE does not exist in the local cluster\n");
    EXPECT_EQ(m_processExit, 2u);
    EXPECT_EQ(RunProcess(L"hasys -list"), "NODE1\nNODE2\n");
}

TEST_F(ToolPrograms, KeepsTheStreamsOfTheJournalApart) {
    SetEnvironmentVariableW(L"VCSSIM_OPTIONS", nullptr);
    RunProcess(L"hares -dep H-Service");
    WriteFile(L".state.json", R"({"mode": "rw", "resources": {"G-Mount": {"NODE1": "FAULTED"}}})");
    RunProcess(L"hares -online G-Mount -sys NODE1");
    UseFaults(R"([{"tool": "hasys", "output": "made up", "stream": "errors", "kill": 4}])");
    RunProcess(L"hasys -list");
    const std::vector<nlohmann::json> entries = Journal();
    ASSERT_EQ(entries.size(), 3u);
    const std::string warning = "VCS WARNING V-16-1-50034 No Resource dependencies are configured\r\n";
    EXPECT_EQ(entries[0]["output"], warning);
    EXPECT_EQ(entries[0]["standardOutput"], "");
    EXPECT_EQ(entries[0]["standardError"], warning);
    EXPECT_THAT(entries[1]["output"].get<std::string>(), StartsWith("VCS NOTICE V-16-1-10284 "));
    EXPECT_FALSE(entries[1].contains("standardOutput") || entries[1].contains("standardError"));
    EXPECT_EQ(entries[2]["output"], "made");
    EXPECT_EQ(entries[2]["standardOutput"], "");
    EXPECT_EQ(entries[2]["standardError"], "made");
}

TEST_F(ToolPrograms, KeepsPasswordsOutOfTheJournal) {
    RunProcess(L"vcsencrypt -agent secret word");
    const std::vector<nlohmann::json> entries = Journal();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0]["arguments"].dump(), R"(["-agent","***","***"])");
    EXPECT_THAT(ReadFile(L".journal"), Not(HasSubstr("secret")));
}

TEST_F(ToolPrograms, MasksTextsOfAWrongUseOfVcsencrypt) {
    RunProcess(L"vcsencrypt topsecret");
    EXPECT_EQ(m_processExit, 2u);
    RunProcess(L"vcsencrypt topsecret -agent");
    RunProcess(L"vcsencrypt -help");
    const std::vector<nlohmann::json> entries = Journal();
    ASSERT_EQ(entries.size(), 3u);
    EXPECT_EQ(entries[0]["arguments"].dump(), R"(["***"])");
    EXPECT_EQ(entries[1]["arguments"].dump(), R"(["***","***"])");
    EXPECT_EQ(entries[2]["arguments"].dump(), R"(["-help"])");
    EXPECT_THAT(ReadFile(L".journal"), Not(HasSubstr("topsecret")));
}

TEST_F(ToolPrograms, MasksPasswordsThatAreSet) {
    RunProcess(L"hares -modify H-Service Password topsecret -sys NODE2");
    RunProcess(L"hares -modify H-Service Password \"\"");
    RunProcess(L"hares -modify H-Service UserAccount somebody");
    const std::vector<nlohmann::json> entries = Journal();
    ASSERT_EQ(entries.size(), 3u);
    EXPECT_EQ(entries[0]["arguments"].dump(), R"(["-modify","H-Service","Password","***","-sys","NODE2"])");
    EXPECT_EQ(entries[0]["exit"], 0);
    EXPECT_EQ(entries[1]["arguments"].dump(), R"(["-modify","H-Service","Password",""])");
    EXPECT_EQ(entries[2]["arguments"].dump(), R"(["-modify","H-Service","UserAccount","somebody"])");
    EXPECT_THAT(ReadFile(L".journal"), Not(HasSubstr("topsecret")));
}

TEST_F(ToolPrograms, MasksPasswordsThatAreMadeGlobal) {
    RunProcess(L"hares -global H-Service Password topsecret");
    const std::vector<nlohmann::json> entries = Journal();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0]["arguments"].dump(), R"(["-global","H-Service","Password","***"])");
    EXPECT_THAT(ReadFile(L".journal"), Not(HasSubstr("topsecret")));
}

TEST_F(ToolPrograms, MasksWhateverAttributeIsCalledAPassword) {
    for (const wchar_t* attribute : {L"AdminPassword", L"ADMINPASSWORD", L"PasswordAge"}) {
        RunProcess(std::wstring(L"hares -modify H-Service ") + attribute + L" topsecret");
    }
    const std::vector<nlohmann::json> entries = Journal();
    ASSERT_EQ(entries.size(), 3u);
    EXPECT_EQ(entries[0]["arguments"][3], "***");
    EXPECT_EQ(entries[1]["arguments"][3], "***");
    EXPECT_EQ(entries[2]["arguments"][3], "topsecret");
}

TEST_F(ToolPrograms, MasksPasswordsThatAreAskedForAndShown) {
    RunProcess(L"hares -modify H-Service Password topsecret");
    EXPECT_EQ(RunProcess(L"hares -list Password=topsecret Type=GenericService"), "H-Service\t\tNODE2\n");
    EXPECT_THAT(RunProcess(L"hares -display H-Service -attribute Password"), HasSubstr("topsecret"));
    const std::vector<nlohmann::json> entries = Journal();
    ASSERT_EQ(entries.size(), 3u);
    EXPECT_EQ(entries[1]["arguments"].dump(), R"(["-list","Password=***","Type=GenericService"])");
    EXPECT_THAT(entries[2]["output"].get<std::string>(), HasSubstr("***"));
    EXPECT_THAT(ReadFile(L".journal"), Not(HasSubstr("topsecret")));
}

TEST_F(ToolPrograms, MasksSecretsInTheOutputOfTheJournal) {
    UseFaults(R"([{"arguments": "-vcs*", "output": "got topsecret, topsecret twice", "kill": 8},
                  {"output": "got topsecret, topsecret twice"}])");
    EXPECT_EQ(RunProcess(L"vcsencrypt -agent topsecret top"), "got topsecret, topsecret twice");
    RunProcess(L"hares -modify H-Service Password topsecret");
    EXPECT_EQ(RunProcess(L"vcsencrypt -vcs topsecret"), "got tops");
    const std::vector<nlohmann::json> entries = Journal();
    ASSERT_EQ(entries.size(), 3u);
    EXPECT_EQ(entries[0]["output"], "got ***, *** twice");
    EXPECT_EQ(entries[1]["output"], "got ***, *** twice");
    EXPECT_EQ(entries[2]["output"], "got ***,");
}

TEST_F(ToolPrograms, LosesNothingWhenSeveralChangeAtOnce) {
    const int count = 16;
    std::vector<std::unique_ptr<ChildProcess>> processes;
    for (int i = 0; i < count; ++i) {
        processes.push_back(
            Start(L"hares -add New" + std::to_wstring(i) + L" MountV G", Path(L".out" + std::to_wstring(i))));
    }
    for (const auto& process : processes) {
        EXPECT_EQ(process->Wait(), 0u);
    }
    for (int i = 0; i < count; ++i) {
        EXPECT_EQ(Run("hares", "-value New" + std::to_string(i) + " Type"), "MountV\n");
    }
    EXPECT_EQ(Journal().size(), static_cast<std::size_t>(count));
    EXPECT_FALSE(HasFile(L".lock"));
    EXPECT_FALSE(HasFile(L".live.new"));
}

TEST_F(ToolPrograms, WaitsForItsTurn) {
    common::FileLock lock(Path(L".lock"));
    auto turn = std::make_unique<common::FileLock::Turn>(lock);
    const auto process = Start(L"hares -modify G-IP Address 1", Path(L".out"));
    EXPECT_TRUE(process->RunsFor(700));
    EXPECT_FALSE(HasFile(L".live"));
    turn.reset();
    EXPECT_EQ(process->Wait(), 0u);
    EXPECT_TRUE(HasFile(L".live"));
}

TEST_F(ToolPrograms, LeavesWholeFilesWhenItIsKilledAtAnyMoment) {
    for (int i = 0; i < 24; ++i) {
        const std::string before = Run("hares", "-value G-Mount VolumeName");
        const std::wstring value = L"Volume" + std::to_wstring(i);
        const auto process = Start(L"hares -modify G-Mount VolumeName " + value, Path(L".out"));
        Sleep(static_cast<DWORD>(i * 4));
        process->Stop();
        const std::string after = Run("hares", "-value G-Mount VolumeName");
        EXPECT_EQ(m_exitCode, 0) << after;
        EXPECT_TRUE(after == before || after == "Volume" + std::to_string(i) + "\n") << after;
    }
    EXPECT_EQ(Run("haconf", "-dump -makero"), "");
}

TEST_F(ToolPrograms, PrintsWhatAFaultSays) {
    UseFaults(R"([{"tool": "hares", "arguments": "-list*", "nth": 2, "output": "half a li", "exit": 5},
                  {"tool": "hasys", "output": "a\r\nb", "repeat": 3, "stream": "errors"}])");
    EXPECT_EQ(RunProcess(L"hares -list Type=NIC"), "G-NIC\t\tNODE1\nG-NIC\t\tNODE2\n");
    EXPECT_EQ(RunProcess(L"hares -list Type=NIC"), "half a li");
    EXPECT_EQ(m_processExit, 5u);
    EXPECT_EQ(RunProcess(L"hares -list Type=NIC"), "G-NIC\t\tNODE1\nG-NIC\t\tNODE2\n");
    EXPECT_EQ(RunProcess(L"hasys -list"), "a\r\nba\r\nba\r\nb");
    EXPECT_EQ(m_processExit, 0u);
}

TEST_F(ToolPrograms, TakesFaultsOneALineToo) {
    UseFaults("// as in the cluster simulator\n"
              "hares@-list Type=*#2=5,output:\"half a li\"\n"
              "hasys@-list*#2+=output:\"a\\r\\nb\",repeat:3,stream:errors\n"
              "hagrp=kill:8\n");
    EXPECT_EQ(RunProcess(L"hares -list Type=NIC"), "G-NIC\t\tNODE1\nG-NIC\t\tNODE2\n");
    EXPECT_EQ(RunProcess(L"hares -list Type=NIC"), "half a li");
    EXPECT_EQ(m_processExit, 5u);
    EXPECT_EQ(RunProcess(L"hares -list Type=NIC"), "G-NIC\t\tNODE1\nG-NIC\t\tNODE2\n");
    EXPECT_EQ(RunProcess(L"hasys -list"), "NODE1\nNODE2\n");
    EXPECT_EQ(RunProcess(L"hasys -list"), "a\r\nba\r\nba\r\nb");
    EXPECT_EQ(RunProcess(L"hasys -list"), "a\r\nba\r\nba\r\nb");
    EXPECT_EQ(m_processExit, 0u);
    EXPECT_EQ(RunProcess(L"hagrp -list Parallel=0").size(), 8u);
}

TEST_F(ToolPrograms, DoesNothingWhenAFaultTakesItsPlace) {
    UseFaults(R"([{"tool": "hares", "exit": 9}])");
    EXPECT_EQ(RunProcess(L"hares -modify G-IP Address 1"), "");
    EXPECT_EQ(m_processExit, 9u);
    EXPECT_FALSE(HasFile(L".live"));
}

TEST_F(ToolPrograms, DiesInMidOutput) {
    UseFaults(R"([{"tool": "hasys", "kill": 8}])");
    EXPECT_EQ(RunProcess(L"hasys -list"), "NODE1\nNO");
    EXPECT_EQ(Journal()[0]["output"], "NODE1\nNO");
}

TEST_F(ToolPrograms, PrintsRandomBytes) {
    UseFaults(R"([{"random": 4096}])");
    const std::string bytes = RunProcess(L"hagrp -list");
    EXPECT_EQ(bytes.size(), 4096u);
    EXPECT_NE(bytes.find('\0'), std::string::npos);
    EXPECT_EQ(RunProcess(L"hagrp -list"), bytes);
}

TEST_F(ToolPrograms, IsSlowWhenAsked) {
    UseFaults(R"([{"delay_ms": 700}])");
    const DWORD begin = GetTickCount();
    EXPECT_EQ(RunProcess(L"hasys -list"), "NODE1\nNODE2\n");
    EXPECT_GE(GetTickCount() - begin, 700u);
}

TEST_F(ToolPrograms, HangsWhenAskedWithoutHoldingOthersUp) {
    UseFaults(R"([{"tool": "hasys", "hang": true}])");
    const auto process = Start(L"hasys -list", Path(L".hanging"));
    EXPECT_TRUE(process->RunsFor(1000));
    EXPECT_EQ(RunProcess(L"hagrp -list Parallel=1"), "");
    process->Stop();
    EXPECT_EQ(Journal()[0]["exit"], nullptr);
}

TEST_F(ToolPrograms, SaysThatThereIsNotEnoughMemory) {
    for (const char* fault : {R"([{"output": "abc", "repeat": 1000000000000000}])", R"([{"random": 1000000000000000}])",
                              R"([{"output": "abc", "repeat": 18446744073709551615}])"}) {
        UseFaults(fault);
        EXPECT_EQ(RunProcess(L"hares -modify G-IP Address 1"),
                  "VCS ERROR V-16-1-99001 (simulated) there is not enough memory\r\n")
            << fault;
        EXPECT_EQ(m_processExit, 1u) << fault;
    }
    EXPECT_FALSE(HasFile(L".live"));
}

TEST_F(ToolPrograms, SaysWhatIsWrongWithTheFaults) {
    UseFaults("[{\"colour\": 1}]");
    EXPECT_THAT(RunProcess(L"hasys -list"), EndsWith("fault 0: there is no member 'colour'\n"));
    EXPECT_EQ(m_processExit, 2u);
    UseFaults("\nhasys=colour:1\n");
    EXPECT_THAT(RunProcess(L"hasys -list"), EndsWith("line 2: there is no effect 'colour:1'\n"));
    EXPECT_EQ(m_processExit, 2u);
    for (const char* fault : {"time=event:\"engine-stop\"", "time@x=event:\"engine-stop\"", "time@5=9",
                              "time@5#2=event:\"engine-stop\"", "time@5=event:\"engine-stop\",kill:3"}) {
        UseFaults(fault);
        EXPECT_THAT(RunProcess(L"hasys -list"), EndsWith("a time is so many seconds, and takes an event: "
                                                         "time@5=event:\"text\"\n"))
            << fault;
        EXPECT_EQ(m_processExit, 2u);
    }
    UseFaults("hasys=state:1");
    EXPECT_THAT(RunProcess(L"hasys -list"), EndsWith("state: a tool has none\n"));
    EXPECT_EQ(m_processExit, 2u);
}
