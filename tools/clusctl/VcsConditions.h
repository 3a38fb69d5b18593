// Why no system, group or resource of VCS meets the conditions of --where.
#ifndef CLUSCTL_VCSCONDITIONS_H
#define CLUSCTL_VCSCONDITIONS_H

#include "LogCapture.h"
#include "Report.h"
#include "ShownValues.h"

#include <clus_VeritasCluster.h>

struct ConditionedKind {
    const char* singular; // "group"
    const wchar_t* tool;  // whose -display shows all attributes
    TableForm form;
};

// The tools list nothing, too, where a name is misspelt. Throws Failure, not found, when no such object has one of the
// attributes; the report gets a warning for a type or a group that none has, and for another value that is there in
// another letter case. Nothing is said of what cannot be read, of
// conditions of another kind (NAME!=VALUE, NAME=~VALUE), and of secrets. To be called when nothing was listed.
void JudgeConditions(const LogCapture& log, const ConditionedKind& kind, const NameValuePairList& conditions,
                     Report& report);

#endif
