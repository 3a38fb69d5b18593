// A tool of the VCS simulator, run in this process on files in memory.
#ifndef CLUSCTL_TESTS_SIMULATEDTOOL_H
#define CLUSCTL_TESTS_SIMULATEDTOOL_H

#include "Options.h"
#include "VcsToolProcess.h"

#include <string>

// `arguments`: words with blanks between them.
ToolOutput RunSimulatedTool(const std::wstring& mainCf, const vcssim::Options& options, const std::string& tool,
                            const std::string& arguments);

#endif
