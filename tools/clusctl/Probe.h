// What a probe of a cluster asks: whether it behaves, as far as reading shows, as the simulators do.
#ifndef CLUSCTL_PROBE_H
#define CLUSCTL_PROBE_H

#include "Report.h"

#include <map>
#include <string>
#include <vector>

class LogCapture;

// A rule that a simulator keeps. docs/probe.md lists all, with what they rest on.
struct ProbeRule {
    const char* id;
    const char* says;
};

const std::vector<ProbeRule>& FailoverRules();
const std::vector<ProbeRule>& VcsRules();

// What was found about the rules of one kind of cluster. A rule of which nothing is said cannot be answered here.
class ProbeAnswers {
public:
    explicit ProbeAnswers(const std::vector<ProbeRule>& rules) : m_rules(rules) {
    }

    // One observation. `seen` tells what was seen, without any name; `object` the object at which. The first one that
    // differs stands for the rule.
    void Saw(const char* rule, bool isAsSimulated, const std::string& seen,
             const std::wstring& object = std::wstring());

    // Records of "rule", "answer", "seen" and, with `showsNames`, "object".
    Json Records(bool showsNames) const;
    size_t CountDiffering() const;
    size_t CountAnswered() const;

private:
    struct Answer {
        bool isAsSimulated;
        std::string seen;
        std::wstring object;
    };
    const std::vector<ProbeRule>& m_rules;
    std::map<std::string, Answer> m_answers;
};

// Read this computer's cluster only. Throw Failure when it does not answer.
ProbeAnswers ProbeFailoverCluster();
ProbeAnswers ProbeVcs(const LogCapture& log);

class CommandLine;

void AddProbeCommand(CommandLine& commandLine);

#endif
