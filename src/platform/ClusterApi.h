// The library's one place that includes the platform's cluster headers.
#ifndef CLUS_PLATFORM_CLUSTERAPI_H
#define CLUS_PLATFORM_CLUSTERAPI_H

#include <winsock2.h>
#include <windows.h>

#include <clusapi.h>
#if defined(__MINGW32__)
// mingw-w64's clusapi.h compiles only for targets before Windows Vista (the build sets _WIN32_WINNT accordingly), and
// its resapi.h names this type without declaring it.
typedef struct CLUSPROP_FILETIME* PCLUSPROP_FILETIME;
#endif
#include <resapi.h>

#endif
