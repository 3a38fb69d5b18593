// The platform's cluster headers, for the DLLs that provide what these declare as imports.
#ifndef CLUSSIM_EXPORTEDAPI_H
#define CLUSSIM_EXPORTEDAPI_H

#include <winsock2.h>
#include <windows.h>

#include <clusapi.h>
#if defined(__MINGW32__)
typedef struct CLUSPROP_FILETIME* PCLUSPROP_FILETIME; // named by mingw-w64's resapi.h without a declaration
#endif
#include <resapi.h>

#endif
