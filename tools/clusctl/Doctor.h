// What keeps servers from being served, step by step, as the library decides it. Nothing is changed.
#ifndef CLUSCTL_DOCTOR_H
#define CLUSCTL_DOCTOR_H

#include "Json.h"
#include "LogCapture.h"

#include <string>
#include <vector>

enum class FindingLevel {
    Ok,
    Note, // worth knowing, nothing is wrong
    Warning,
    Error
};

// "ok", "note", "warning", "error".
const char* LevelWord(FindingLevel level);

// One thing that the doctor can find; docs/doctor.md tells cause and mend of each. The codes are stable.
struct DoctorCode {
    const char* name; // "data-path-missing"
    FindingLevel level;
    const char* effect; // what the library does because of it; empty when all is well
};

struct Finding {
    const DoctorCode* code;
    std::wstring group; // empty: about this computer or its cluster
    std::string object; // "Zyntra Gate (EXVS-MAIL1)"
    std::string seen;   // a sentence
    std::string mend;   // the commands that mend it (InTurn), or what to do; empty when nothing is known to
    std::string ask;    // a command that tells more of it and mends nothing; may be empty
};

class Findings {
public:
    // The group that what is added from now on is about; empty for none.
    void SetGroup(const std::wstring& group) {
        m_group = group;
    }
    // `code` has to be one of the table.
    void Add(const char* code, const std::string& object, const std::string& seen,
             const std::string& mend = std::string(), const std::string& ask = std::string());
    // Of what nothing is known to mend before the question is answered.
    void AddQuestion(const char* code, const std::string& object, const std::string& seen, const std::string& ask) {
        Add(code, object, seen, std::string(), ask);
    }

    const std::vector<Finding>& All() const {
        return m_findings;
    }
    size_t Count(FindingLevel level) const;
    FindingLevel Worst() const; // Ok when there are none

    // A record each: level, code, group, object, seen, effect, mend, ask.
    Json Records() const;

private:
    std::wstring m_group;
    std::vector<Finding> m_findings;
};

struct DoctorRequest {
    std::wstring wanted;      // a network name or a group, in any letter case; empty for all
    bool allowsWritableTools; // --allow-writable-tools
};

// This computer, its cluster (ClusterInUse.h), and each group that could be a virtual server, or only the wanted one.
// Throws Failure (ServerNotFound) when there is no such group.
Findings Diagnose(const LogCapture& log, const DoctorRequest& request);

#endif
