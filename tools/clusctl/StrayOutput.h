// What programs print that the library starts without redirection: kept out of this program's own output.
#ifndef CLUSCTL_STRAYOUTPUT_H
#define CLUSCTL_STRAYOUTPUT_H

#include "common/Handle.h"

#include <winsock2.h>
#include <windows.h>

// While it lives, programs that are started get a standard output and a standard error that lead nowhere, unless they
// are given others. The library runs a tool so when the file for its output cannot be opened. There is one at a time.
class StrayOutput {
public:
    StrayOutput();
    ~StrayOutput();
    StrayOutput(const StrayOutput&) = delete;
    StrayOutput& operator=(const StrayOutput&) = delete;

    // This program's own STD_OUTPUT_HANDLE or STD_ERROR_HANDLE, whether or not one of these lives.
    static HANDLE Own(DWORD standardHandle);

private:
    common::Handle m_nowhere;
    HANDLE m_output;
    HANDLE m_errors;
};

#endif
