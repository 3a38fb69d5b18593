// Files that are missing, half written, or cannot be replaced.
#include "ToolTest.h"

#include <winsock2.h>
#include <windows.h>

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;

using ToolBrokenFile = ToolTest;

TEST_F(ToolBrokenFile, SaysWhichFileAndLineIsBroken) {
    WriteFile(L"", "system NODE1\ngroup G (\n\tSystemList = { NODE1 0 }\n\t)\n");
    const std::string message = Run("hagrp", "-list");
    EXPECT_THAT(message, StartsWith("VCS ERROR V-16-1-99001 (simulated) "));
    EXPECT_THAT(message, EndsWith("\\main.cf, line 3: expected ',' or '}' in the value of 'SystemList', found '0'\n"));
    EXPECT_EQ(m_exitCode, 1);
    ASSERT_EQ(m_pieces.size(), 1u);
    EXPECT_TRUE(m_pieces[0].toErrors);
}

TEST_F(ToolBrokenFile, ChangesNothingOfABrokenFile) {
    const std::string broken = std::string(Sample) + "\tIP G-New (\n";
    WriteFile(L"", broken);
    const std::string state = ReadFile(L".state.json");
    for (const char* change : {"-add New IP G", "-modify G-IP Address 1", "-online G-IP -sys NODE1"}) {
        EXPECT_THAT(Run("hares", change), HasSubstr("line 52: expected an attribute or ')' of 'G-New'")) << change;
        EXPECT_EQ(m_exitCode, 1);
    }
    EXPECT_THAT(Run("haconf", "-dump -makero"), HasSubstr("line 52"));
    EXPECT_EQ(ReadFile(L""), broken);
    EXPECT_EQ(ReadFile(L".state.json"), state);
    EXPECT_FALSE(HasFile(L".live"));
}

TEST_F(ToolBrokenFile, SaysWhatIsMissing) {
    m_environment.mainCf.clear();
    EXPECT_EQ(Run("hasys", "-list"), "VCS ERROR V-16-1-99001 (simulated) VCSSIM_MAIN_CF is not set\n");
    m_environment.mainCf = Path(L".absent");
    EXPECT_THAT(Run("hasys", "-list"), EndsWith("main.cf.absent: cannot be read: there is no such file (2)\n"));
    EXPECT_EQ(m_exitCode, 1);
}

TEST_F(ToolBrokenFile, SaysWhatIsWrongWithTheState) {
    const auto messageOf = [&](const char* state) {
        WriteFile(L".state.json", state);
        const std::string message = Run("hasys", "-list");
        EXPECT_EQ(m_exitCode, 1);
        return message;
    };
    EXPECT_THAT(messageOf("{"), HasSubstr("main.cf.state.json: "));
    EXPECT_THAT(messageOf("[]"), EndsWith("main.cf.state.json: is no JSON object\n"));
    EXPECT_THAT(messageOf(R"({"mode": 1})"), EndsWith("mode: is neither \"rw\" nor \"ro\"\n"));
    EXPECT_THAT(messageOf(R"({"colour": 1})"), EndsWith("there is no member 'colour'\n"));
    EXPECT_THAT(messageOf(R"({"resources": {"a": {"b": 1}}})"), EndsWith("resources.a.b: is no text\n"));
    EXPECT_THAT(messageOf(R"({"resources": []})"), EndsWith("resources: is no object of objects\n"));
    EXPECT_THAT(messageOf(R"({"probed": {"a": "b"}})"), EndsWith("probed: is no object of lists\n"));
    EXPECT_THAT(messageOf(R"({"failing": {"a": [1]}})"), EndsWith("failing.a: is no list of systems\n"));
    EXPECT_THAT(messageOf(R"({"systems": 1})"), EndsWith("systems: is no object\n"));
    EXPECT_THAT(messageOf(R"({"settings": []})"), EndsWith("settings: is no object\n"));
    EXPECT_THAT(messageOf(R"({"settings": {"IsCluster": true}})"),
                EndsWith("settings.IsCluster: is no text or number\n"));
}

TEST_F(ToolBrokenFile, NothingIsOnlineOnASystemThatDoesNotRun) {
    const auto answerTo = [&](const std::string& systemState, const std::string& members) {
        WriteFile(L".state.json",
                  R"({"mode": "rw", "systems": {"NODE1": ")" + systemState +
                      R"("}, "resources": {"G-IP": {"NODE1": "OFFLINE"}, "G-NIC": {"NODE1": "ONLINE"}, )" +
                      R"("G-Mount": {"NODE1": "ONLINE|STATE UNKNOWN"}})" + members + "}");
        return Run("hasys", "-list");
    };
    const auto refusal = [](const std::string& systemState) {
        return "main.cf.state.json: resources.G-Mount.NODE1: the system NODE1 is " + systemState +
               " and has nothing online; with \"downSystems\": \"accepted\" it may have\n";
    };
    for (const char* const state : {"EXITED", "FAULTED", "REMOTE_BUILD", "UNKNOWN"}) {
        EXPECT_THAT(answerTo(state, ""), EndsWith(refusal(state)));
        EXPECT_THAT(m_exitCode, 1);
        EXPECT_THAT(answerTo(state, R"(, "downSystems": "refused")"), EndsWith(refusal(state)));
        EXPECT_EQ(answerTo(state, R"(, "downSystems": "accepted")"), "NODE1\nNODE2\n");
        EXPECT_EQ(answerTo(state, R"(, "clock": 3)"), "NODE1\nNODE2\n") << "the cluster notices";
    }
    const std::string before = ReadFile(L"");
    EXPECT_THAT(answerTo("EXITED", ""), EndsWith(refusal("EXITED")));
    const std::string state = ReadFile(L".state.json");
    for (const char* const change :
         {"-modify G-IP Address 1", "-online G-IP -sys NODE2", "-offline G-Mount -sys NODE1"}) {
        EXPECT_THAT(Run("hares", change), EndsWith(refusal("EXITED")));
    }
    EXPECT_EQ(ReadFile(L".state.json"), state);
    EXPECT_EQ(ReadFile(L""), before);
    EXPECT_EQ(answerTo("RUNNING", ""), "NODE1\nNODE2\n");
    EXPECT_EQ(answerTo("LEAVING", ""), "NODE1\nNODE2\n") << "it takes them offline";
    EXPECT_THAT(answerTo("EXITED", R"(, "downSystems": true)"),
                EndsWith("downSystems: is neither \"refused\" nor \"accepted\"\n"));
    WriteFile(L".state.json", R"({"systems": {"NODE1": "EXITED"}, "resources": {"G-Mount": {"NODE2": "ONLINE"}}})");
    EXPECT_EQ(Run("hasys", "-list"), "NODE1\nNODE2\n") << "what is persistent is online on each";
}

TEST_F(ToolBrokenFile, SaysWhatIsWrongWithTheTypes) {
    WriteFile(L"", "include \"main.cf.types\"\nsystem NODE1\n");
    WriteFile(L".types", "type T (\n\tfloat X\n\t)\n");
    EXPECT_THAT(Run("hasys", "-list"),
                EndsWith("main.cf.types, line 2: expected str, i18nstr, int, boolean or keylist, found 'float'\n"));
}

TEST_F(ToolBrokenFile, KeepsTheOldFileWhenTheNewOneCannotBeWritten) {
    // Where the new file is to be made there is a folder.
    CreateDirectoryW(Path(L".live.new").c_str(), nullptr);
    EXPECT_THAT(Run("hares", "-modify G-IP Address 1"), HasSubstr("main.cf.live: cannot be written: "));
    EXPECT_EQ(m_exitCode, 1);
    EXPECT_EQ(Run("hares", "-value G-IP Address"), "10.1.2.3\n");
    EXPECT_EQ(ReadFile(L""), Sample);
    RemoveDirectoryW(Path(L".live.new").c_str());

    Run("hares", "-modify G-IP Address 1");
    CreateDirectoryW(Path(L".previous.new").c_str(), nullptr);
    EXPECT_THAT(Run("haconf", "-dump -makero"), HasSubstr("main.cf.previous: cannot be written: "));
    EXPECT_EQ(m_exitCode, 1);
    EXPECT_EQ(ReadFile(L""), Sample);
    RemoveDirectoryW(Path(L".previous.new").c_str());
    EXPECT_EQ(Run("haconf", "-dump -makero"), "");
    EXPECT_EQ(ReadFile(L".previous"), Sample);
}

TEST_F(ToolBrokenFile, DoesNothingWithoutTheLock) {
    // Where the lock file is to be made there is a folder.
    CreateDirectoryW(Path(L".lock").c_str(), nullptr);
    const std::string state = ReadFile(L".state.json");
    for (const char* change : {"-modify G-IP Address 1", "-online G-IP -sys NODE1", "-value G-IP Address"}) {
        EXPECT_THAT(Run("hares", change), EndsWith("main.cf.lock: cannot be locked: access is denied (5)\n"));
        EXPECT_EQ(m_exitCode, 1);
    }
    EXPECT_FALSE(HasFile(L".live"));
    EXPECT_EQ(ReadFile(L".state.json"), state);
    RemoveDirectoryW(Path(L".lock").c_str());
    EXPECT_EQ(Run("hares", "-modify G-IP Address 1"), "");

    m_environment.mainCf = Path(L".folder\\main.cf");
    EXPECT_THAT(Run("hasys", "-list"), EndsWith("main.cf.lock: cannot be locked: there is no such folder (3)\n"));
    EXPECT_EQ(m_exitCode, 1);
}

TEST_F(ToolBrokenFile, AnswersEveryTruncationWithoutHarm) {
    const std::string text(Sample);
    int broken = 0;
    for (std::size_t length = 0; length < text.size(); length += 7) {
        WriteFile(L"", text.substr(0, length));
        const std::string output = Run("hares", "-display");
        broken += m_exitCode;
        EXPECT_TRUE(m_exitCode == 0 || output.find(", line ") != std::string::npos) << output;
        EXPECT_EQ(ReadFile(L""), text.substr(0, length));
    }
    EXPECT_GT(broken, 20);
}
