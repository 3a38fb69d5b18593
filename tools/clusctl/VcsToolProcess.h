// A run of a VCS tool for which the library has no member.
#ifndef CLUSCTL_VCSTOOLPROCESS_H
#define CLUSCTL_VCSTOOLPROCESS_H

#include <string>

struct ToolOutput {
    std::string output; // both without carriage returns
    std::string errors;
    std::string raw; // the output with them
    unsigned long exitCode = 0;
};

// Runs a tool ("hagrp") with arguments that stand as they are on its command line, without input, and waits for its
// end. Its two streams go through files of the current folder: a VcsFolder has to be in use. The run is told to the
// ToolRuns, like those of the library, so that a ToolWatch judges of it; nothing is thrown for a tool that is missing,
// cannot be started or fails. Throws Interrupted. To be called by one thread.
ToolOutput RunVcsTool(const std::wstring& tool, const std::wstring& arguments);

// Whether there is such a tool to run; in a replay, whether the recorded command ran it.
bool HasVcsTool(const std::wstring& tool);

#endif
