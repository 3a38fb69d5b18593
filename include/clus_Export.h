// Import/export marker of clusutil.dll and the platform headers that every public header needs.
#ifndef CLUS_EXPORT_H
#define CLUS_EXPORT_H

#if defined(CLUSUTIL_BUILD)
#define CLUSUTIL_API __declspec(dllexport)
#else
#define CLUSUTIL_API __declspec(dllimport)
#endif

// Before windows.h, which on its own pulls in the old winsock.h; not behind it, where the two clash.
#if !defined(_WINDOWS_) && !defined(_INC_WINDOWS)
#include <winsock2.h>
#endif
#include <windows.h>

// The cluster API's handle types. Repeating its typedefs keeps callers free of clusapi.h and of its version quirks.
typedef struct _HCLUSTER* HCLUSTER;
typedef struct _HRESOURCE* HRESOURCE;
typedef struct _HGROUP* HGROUP;
typedef struct _HNODE* HNODE;

// Exported classes hold standard strings and pass them over the DLL border: caller and library share one C++ runtime.
#if defined(_MSC_VER)
#define CLUSUTIL_SHARED_RUNTIME_BEGIN __pragma(warning(push)) __pragma(warning(disable : 4251))
#define CLUSUTIL_SHARED_RUNTIME_END __pragma(warning(pop))
#else
#define CLUSUTIL_SHARED_RUNTIME_BEGIN
#define CLUSUTIL_SHARED_RUNTIME_END
#endif

#endif
