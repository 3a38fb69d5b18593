// What the tests of single runs share: the log of a run, what its output becomes, and the calls that it cannot do
// without.
#ifndef RUNS_H
#define RUNS_H

#include "VeritasTest.h"

#include <string>

namespace harness {

const char RunEnter[] = "> CVeritasCluster::ExecuteVeritasCommand_";
const char RunLeave[] = "< CVeritasCluster::ExecuteVeritasCommand_";
const char RunTempFile[] = "I temp file name: .\\ha-XXXX.tmp";

// The log of one run; `between` is what lies between the command line and the leaving line.
inline std::string RunLog(const std::string& commandLine, const Texts& between) {
    return Lines(Texts{RunEnter, RunTempFile, "I Command line: " + commandLine} + between + Texts{RunLeave});
}

// The systems listed by a tool, which has to succeed.
inline Names Systems(const CVeritasCluster& cluster, const NameValuePairList* filter = nullptr) {
    Names systems;
    EXPECT_TRUE(cluster.EnumSystemNames(systems, filter));
    return systems;
}

// What the tokens of an output are.
inline Names Tokens(VeritasTest& test, const std::string& output) {
    test.tools.AnswerNext(output);
    return Systems(test.cluster);
}

// Each call whose failure alone fails a run, with what that means.
struct FailingCall {
    const char* name;
    const char* call;
};
const FailingCall CallsThatFailARun[] = {{"the capture file gets no name", "GetTempFileNameW"},
                                         {"the tool is not started", "CreateProcessW"},
                                         {"the output cannot be opened", "_wsopen"}};

inline std::wstring Repeated(std::size_t length, wchar_t character = L'x') {
    return std::wstring(length, character);
}

} // namespace harness

#endif
