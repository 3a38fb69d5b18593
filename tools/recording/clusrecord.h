// clusrecord.dll: records what the process around it asks of its cluster; docs/recordings.md.
#ifndef CLUSRECORD_H
#define CLUSRECORD_H

#include <winsock2.h>
#include <windows.h>

#ifdef CLUSRECORD_BUILD
#define CLUSRECORD_API extern "C" __declspec(dllexport)
#else
#define CLUSRECORD_API extern "C" __declspec(dllimport)
#endif

#define CLUSRECORD_ALLOW_CHANGES 0x1 // without it calls that would change the cluster are refused with code 5
#define CLUSRECORD_ANONYMISE 0x2     // names and addresses are replaced

// Records from now on the calls of the cluster API of all modules that are loaded, and the VCS tools that clusutil.dll
// starts, to a file, which must not be there. With a null pointer for the file ends the recording, once the calls and
// tool runs under way are done, and gives back the code of the first write that failed; so does the end of the process,
// but for the last line. Not to be called from within such a call. Other threads may be asking the cluster. The DLL
// stays loaded from the first recording on. The Win32 code: 0; ERROR_FILE_EXISTS and the like; ERROR_ALREADY_EXISTS
// when one is being made; ERROR_INVALID_PARAMETER for unknown flags; ERROR_NOT_FOUND when there is none to end;
// ERROR_NOT_ENOUGH_MEMORY.
CLUSRECORD_API DWORD WINAPI ClusRecord(LPCWSTR file, DWORD flags);

#endif
