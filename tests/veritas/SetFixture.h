// What the tests of virtual server discovery and of the product's resource set share: the tools' tables, what was told
// and run, and a service manager of their own.
#ifndef SETFIXTURE_H
#define SETFIXTURE_H

#include "ServiceStandIn.h"
#include "VeritasTest.h"

#include "clus_VeritasCluster.h"

#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace harness {

typedef std::vector<std::wstring> Names;
typedef std::vector<std::string> Texts;
typedef CVeritasVirtualServerInfo Server;

const wchar_t ProductKey[] = L"SOFTWARE\\Plinthcore\\Zyntra Gate\\CurrentVersion";

// What "hares -list" and "hagrp -list" print.
inline std::string Listed(const Texts& names) {
    std::string text;
    for (const std::string& name : names) {
        text += name + "   NODE1\r\n";
    }
    return text;
}

// What "hares -dep" prints: of each pair the first depends on the second.
inline std::string Dependencies(const std::vector<std::pair<std::string, std::string>>& pairs) {
    std::string text = "#Group   Parent   Child\r\n";
    for (const auto& pair : pairs) {
        text += "EVS1   " + pair.first + "   " + pair.second + "\r\n";
    }
    return text;
}

// What "hares -display ... -attribute ..." prints.
inline std::string Shown(const std::string& resource, const std::string& attribute, const std::string& value) {
    return "#Resource   Attribute   System   Value\r\n" + resource + "   " + attribute + "   global   " + value +
           "\r\n";
}

// What "hagrp -state" prints: systems and states.
inline std::string States(const std::string& group, const std::vector<std::pair<std::string, std::string>>& pairs) {
    std::string text = "#Group   Attribute   System   Value\r\n";
    for (const auto& pair : pairs) {
        text += group + "   State   " + pair.first + "   " + pair.second + "\r\n";
    }
    return text;
}

inline Texts Split(const std::string& text) {
    Texts lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

inline Texts operator+(Texts left, const Texts& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

class SetTest : public VeritasTest {
protected:
    SetTest() {
        Registry();
    }

    // The log, each run of a tool shown as "$ " and its command line, or as "* " when the log keeps it secret.
    std::string Told() {
        const CommandList commands = tools.TakeCommandLines();
        Texts told;
        std::size_t count = 0;
        bool running = false;
        for (const std::string& line : Split(TakeLog())) {
            if (line == "> CVeritasCluster::ExecuteVeritasCommand_") {
                running = true;
            } else if (line == "< CVeritasCluster::ExecuteVeritasCommand_") {
                running = false;
            } else if (!running) {
                told.push_back(line);
            } else if (line.rfind("I Command line", 0) == 0) {
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

    // The journal's lines about tools, services and time, in order.
    Texts Events() {
        Texts events;
        for (const std::string& line : Split(TakeJournal())) {
            for (const char* call :
                 {"CreateProcessW(", "CServiceManager(", "~CServiceManager(", "QueryServiceStatus(", "Sleep("}) {
                if (line.rfind(call, 0) == 0) {
                    events.push_back(line);
                }
            }
        }
        return events;
    }
    // Those about a service being awaited.
    Texts Waiting() {
        Texts waiting;
        for (const std::string& event : Events()) {
            if (event.rfind("CreateProcessW(", 0) != 0) {
                waiting.push_back(event);
            }
        }
        return waiting;
    }

    // Commands that change the cluster print nothing.
    void AcceptChanges() {
        for (const wchar_t* beginning : {L"hares -add ", L"hares -modify ", L"hares -link ", L"hares -clear ",
                                         L"hares -probe ", L"hares -online "}) {
            tools.AnswerPrefix(beginning, "");
        }
    }

    ServiceStandIn service{Platform()};
    const CVeritasCluster cluster;
};

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

} // namespace harness

#endif
