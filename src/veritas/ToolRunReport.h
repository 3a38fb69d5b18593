// Telling a registered callback what became of each tool run.
#ifndef CLUS_VERITAS_TOOLRUNREPORT_H
#define CLUS_VERITAS_TOOLRUNREPORT_H

#include "platform/ToolProcess.h"

#include <string>

namespace clus::veritas {

// Whether a callback is registered. Costs next to nothing: asked at every run.
bool IsToolRunReported();

// Calls it. `isSecret`: neither the arguments nor what the tool made of them may be seen. `output` is null when it
// could not be read. Keeps the last-error value.
void ReportToolRun(const wchar_t* command, const wchar_t* arguments, bool isSecret, const ToolProcess& process,
                   const std::wstring* output);

} // namespace clus::veritas

#endif
