// What a probe of a cluster asks: whether it behaves, as far as reading shows, as the simulators do.
#ifndef CLUSCTL_PROBE_H
#define CLUSCTL_PROBE_H

#include "Json.h"
#include "VcsToolProcess.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

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

    // The same of an answer that is a code. One that is no answer to the question is passed over.
    void SawCode(const char* rule, unsigned long code, unsigned long expected,
                 const std::wstring& object = std::wstring());

    // Records of "rule", "answer", "seen" and, with `showsNames`, "object".
    Json Records(bool showsNames) const;
    // "as simulated", "differs" or "not answerable here".
    const char* AnswerTo(const std::string& rule) const;

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

// Whether a Win32 code says only that the question was not answered: reading is denied, the cluster or the object is
// not reached, memory is short. It tells nothing about a rule.
bool IsRefusal(unsigned long code);

// "code 234"
std::string CodeText(unsigned long code);

// Reads this computer's cluster only. Throws Failure when it does not answer, or was lost on the way.
ProbeAnswers ProbeFailoverCluster();

// The tool and its arguments: `ask(L"hagrp", L"-list")`.
typedef std::function<ToolOutput(const std::wstring&, const std::wstring&)> AskTool;

// Reads VCS only. What `ask` throws goes through.
ProbeAnswers ProbeVcs(const AskTool& ask);

class CommandLine;

void AddProbeCommand(CommandLine& commandLine);

#endif
