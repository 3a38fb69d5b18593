// Telling a registered callback what became of each tool run.
#ifndef CLUS_VERITAS_TOOLRUNREPORT_H
#define CLUS_VERITAS_TOOLRUNREPORT_H

#include "platform/ToolProcess.h"

#include <string>

namespace clus::veritas {

// Whether a callback is registered. Costs next to nothing: asked at every run.
bool IsToolRunReported();

// Calls it. `commandLine`, which begins with `command`, is what the tool got. `isSecret`: neither its remainder nor
// what the tool made of it may be seen. `output` is null when it could not be read. Does not throw for want of memory,
// keeps the last-error value, and leaves no copy of a secret behind.
void ReportToolRun(const wchar_t* command, const wchar_t* commandLine, bool isSecret, const ToolProcess& process,
                   const std::wstring* output);

} // namespace clus::veritas

#endif
