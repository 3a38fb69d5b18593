// What the tests of the command runner share: the log of one run, and texts.
#ifndef RUNNERFIXTURE_H
#define RUNNERFIXTURE_H

#include "VeritasTest.h"

#include "clus_VeritasCluster.h"

#include <string>
#include <vector>

namespace harness {

typedef std::vector<std::wstring> Names;

const char RunEnter[] = "> CVeritasCluster::ExecuteVeritasCommand_";
const char RunLeave[] = "< CVeritasCluster::ExecuteVeritasCommand_";
const char RunTempFile[] = "I temp file name: .\\ha-XXXX.tmp";

inline std::wstring Repeated(std::size_t length, wchar_t character = L'x') {
    return std::wstring(length, character);
}

class RunnerTest : public VeritasTest {
protected:
    // The log of one run; `between` is what lies between the command line and the leaving line.
    static std::string RunLog(const std::string& commandLine, const std::vector<std::string>& between) {
        std::vector<std::string> lines = {RunEnter, RunTempFile, "I Command line: " + commandLine};
        lines.insert(lines.end(), between.begin(), between.end());
        lines.push_back(RunLeave);
        return Lines(lines);
    }

    // The systems listed by a tool, which has to succeed.
    Names Systems(const NameValuePairList* filter = nullptr) {
        Names systems;
        EXPECT_TRUE(cluster.EnumSystemNames(systems, filter));
        return systems;
    }

    // What the tokens of an output are.
    Names Tokens(const std::string& output) {
        tools.AnswerNext(output);
        return Systems();
    }

    CVeritasCluster cluster;
};

} // namespace harness

#endif
