// What a member of several runs told and did, in one text: its log with each run as one line, and the events of the
// journal.
#ifndef STORY_H
#define STORY_H

#include "VeritasTest.h"

#include <algorithm>
#include <string>

namespace harness {

typedef CVeritasVirtualServerInfo Server;

// The log, each run of a tool shown as "$ " and its command line, or as "* " when the log keeps it secret.
inline std::string Told(VeritasTest& test) {
    const CommandList commands = test.tools.TakeCommandLines();
    Texts told;
    std::size_t count = 0;
    bool running = false;
    for (const std::string& line : Split(test.TakeLog())) {
        if (line == "> CVeritasCluster::ExecuteVeritasCommand_") {
            running = true;
        } else if (line == "< CVeritasCluster::ExecuteVeritasCommand_") {
            running = false;
        } else if (!running) {
            told.push_back(line);
        } else if (BeginsWith(line, "I Command line")) {
            const std::string command = count < commands.size() ? Utf8(commands[count]) : "nothing was run";
            ++count;
            const bool secret = line == "I Command line is ***";
            EXPECT_TRUE(secret || line == "I Command line: " + command) << line;
            told.push_back((secret ? "* " : "$ ") + command);
        }
    }
    EXPECT_EQ(count, commands.size()) << "runs that were not logged";
    return Lines(told);
}

inline bool IsRun(const std::string& line) {
    return BeginsWith(line, "$ ") || BeginsWith(line, "* ");
}

// The runs among what is told.
inline std::size_t RunsIn(const Texts& told) {
    return static_cast<std::size_t>(std::count_if(told.begin(), told.end(), IsRun));
}

// The journal's lines about tools, services and time, in order.
inline Texts Events(VeritasTest& test) {
    Texts events;
    for (const std::string& line : Split(test.TakeJournal())) {
        for (const char* call :
             {"CreateProcessW(", "CServiceManager(", "~CServiceManager(", "QueryServiceStatus(", "Sleep("}) {
            if (BeginsWith(line, call)) {
                events.push_back(line);
            }
        }
    }
    return events;
}

// Those about a service being awaited.
inline Texts Waiting(VeritasTest& test) {
    Texts waiting;
    for (const std::string& event : Events(test)) {
        if (!BeginsWith(event, "CreateProcessW(")) {
            waiting.push_back(event);
        }
    }
    return waiting;
}

// The looks at a service that does not start, with the time between them.
inline Texts LooksInVain(const std::string& serviceName, unsigned count) {
    Texts waiting = {"CServiceManager(" + serviceName + ",NULL)"};
    for (unsigned i = 0; i < count; ++i) {
        waiting.push_back("QueryServiceStatus()");
        waiting.push_back("Sleep(1000)");
    }
    waiting.push_back("~CServiceManager()");
    return waiting;
}

inline Texts RunsAtOnce(const std::string& serviceName) {
    return {"CServiceManager(" + serviceName + ",NULL)", "QueryServiceStatus()", "Sleep(10000)", "~CServiceManager()"};
}

// The commands that bring a resource online.
inline Texts TurnOn(const std::string& resource, const std::string& system) {
    return {"$ hares -clear  " + resource, "$ hares -probe " + resource + " -sys  " + system,
            "$ hares -online " + resource + " -sys " + system + " "};
}

// From now on commands that change the cluster print nothing.
inline void AcceptChanges(ToolScript& tools) {
    for (const wchar_t* beginning :
         {L"hares -add ", L"hares -modify ", L"hares -link ", L"hares -clear ", L"hares -probe ", L"hares -online "}) {
        tools.AnswerPrefix(beginning, "");
    }
}

} // namespace harness

#endif
