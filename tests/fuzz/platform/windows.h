// Stands in for the platform's header where code of the simulators, the support libraries and clusctl is fuzzed on this
// computer: what that code uses of it, and no more. A wchar_t has 32 bits here; texts hold UTF-16 all the same.
#ifndef FUZZ_PLATFORM_WINDOWS_H
#define FUZZ_PLATFORM_WINDOWS_H

#include <cstddef>
#include <cstdint>
#include <cwchar>

typedef std::uint32_t DWORD;
typedef std::int32_t LONG;
typedef int BOOL;
typedef unsigned char BYTE;
typedef wchar_t* LPWSTR;
typedef const wchar_t* LPCWSTR;
typedef void* HANDLE;
typedef struct RegistryKeyOfProcess* HKEY;

enum : DWORD {
    ERROR_SUCCESS = 0,
    ERROR_INVALID_FUNCTION = 1,
    ERROR_FILE_NOT_FOUND = 2,
    ERROR_PATH_NOT_FOUND = 3,
    ERROR_ACCESS_DENIED = 5,
    ERROR_INVALID_HANDLE = 6,
    ERROR_NOT_ENOUGH_MEMORY = 8,
    ERROR_INVALID_DATA = 13,
    ERROR_OUTOFMEMORY = 14,
    ERROR_NOT_READY = 21,
    ERROR_SHARING_PAUSED = 70,
    ERROR_INVALID_PARAMETER = 87,
    ERROR_INSUFFICIENT_BUFFER = 122,
    ERROR_INVALID_NAME = 123,
    ERROR_BUSY = 170,
    ERROR_ALREADY_EXISTS = 183,
    ERROR_MORE_DATA = 234,
    WAIT_TIMEOUT = 258,
    ERROR_IO_PENDING = 997,
    ERROR_CIRCULAR_DEPENDENCY = 1059,
    ERROR_SERVICE_DOES_NOT_EXIST = 1060,
    ERROR_SERVICE_NOT_ACTIVE = 1062,
    ERROR_LOGON_FAILURE = 1326,
    ERROR_TIMEOUT = 1460,
    RPC_S_INVALID_STRING_BINDING = 1700,
    RPC_S_UNKNOWN_IF = 1717,
    RPC_S_SERVER_UNAVAILABLE = 1722,
    RPC_S_SERVER_TOO_BUSY = 1723,
    RPC_S_CALL_FAILED = 1726,
    EPT_S_NOT_REGISTERED = 1753,
    ERROR_DEPENDENT_RESOURCE_EXISTS = 5001,
    ERROR_DEPENDENCY_NOT_FOUND = 5002,
    ERROR_DEPENDENCY_ALREADY_EXISTS = 5003,
    ERROR_RESOURCE_NOT_ONLINE = 5004,
    ERROR_HOST_NODE_NOT_AVAILABLE = 5005,
    ERROR_RESOURCE_NOT_AVAILABLE = 5006,
    ERROR_RESOURCE_NOT_FOUND = 5007,
    ERROR_OBJECT_ALREADY_EXISTS = 5010,
    ERROR_GROUP_NOT_AVAILABLE = 5012,
    ERROR_GROUP_NOT_FOUND = 5013,
    ERROR_HOST_NODE_NOT_RESOURCE_OWNER = 5015,
    ERROR_HOST_NODE_NOT_GROUP_OWNER = 5016,
    ERROR_RESMON_ONLINE_FAILED = 5018,
    ERROR_RESOURCE_ONLINE = 5019,
    ERROR_INVALID_STATE = 5023,
    ERROR_CORE_RESOURCE = 5026,
    ERROR_RESOURCE_FAILED = 5038,
    ERROR_CLUSTER_NODE_NOT_FOUND = 5042,
    ERROR_CLUSTER_NODE_DOWN = 5050,
    ERROR_CLUSTER_NODE_NOT_MEMBER = 5052,
    ERROR_CLUSTER_NODE_NOT_PAUSED = 5058,
    ERROR_INVALID_OPERATION_ON_QUORUM = 5068,
    ERROR_DEPENDENCY_NOT_ALLOWED = 5069,
    ERROR_CLUSTER_RESTYPE_NOT_SUPPORTED = 5079,
    ERROR_CLUSTER_NODE_PAUSED = 5070,
    ERROR_CLUSTER_RESOURCE_TYPE_NOT_FOUND = 5078,
    ERROR_RESMON_INVALID_STATE = 5084
};

// Texts

enum : unsigned {
    CP_UTF8 = 65001,
    MB_ERR_INVALID_CHARS = 8,
    LOCALE_INVARIANT = 0x7f,
    LCMAP_UPPERCASE = 0x200,
    FORMAT_MESSAGE_FROM_SYSTEM = 0x1000,
    FORMAT_MESSAGE_IGNORE_INSERTS = 0x200,
    FORMAT_MESSAGE_MAX_WIDTH_MASK = 0xff
};

int MultiByteToWideChar(unsigned codePage, DWORD flags, const char* text, int length, LPWSTR result, int room);
int WideCharToMultiByte(unsigned codePage, DWORD flags, LPCWSTR text, int length, char* result, int room,
                        const char* standIn, BOOL* usedStandIn);
// Letters of ASCII only.
int LCMapStringW(DWORD locale, DWORD flags, LPCWSTR text, int length, LPWSTR result, int room);
// There are no texts.
DWORD FormatMessageW(DWORD flags, const void* source, DWORD code, DWORD language, LPWSTR buffer, DWORD room, void*);
int _wcsicmp(const wchar_t* a, const wchar_t* b);

// Environment and registry: those of platform::Process (Process.h)

#define HKEY_LOCAL_MACHINE (static_cast<HKEY>(nullptr))
enum : DWORD {
    KEY_QUERY_VALUE = 1,
    REG_SZ = 1,
    REG_EXPAND_SZ = 2
};

DWORD GetEnvironmentVariableW(LPCWSTR name, LPWSTR buffer, DWORD room);
DWORD ExpandEnvironmentStringsW(LPCWSTR text, LPWSTR buffer, DWORD room);
LONG RegOpenKeyExW(HKEY key, LPCWSTR path, DWORD options, DWORD access, HKEY* result);
LONG RegQueryValueExW(HKEY key, LPCWSTR name, DWORD* reserved, DWORD* type, BYTE* data, DWORD* bytes);
LONG RegCloseKey(HKEY key);

// Nothing is opened here that would have to be closed.
#define INVALID_HANDLE_VALUE (reinterpret_cast<HANDLE>(static_cast<std::intptr_t>(-1)))
inline BOOL CloseHandle(HANDLE) {
    return 1;
}

#endif
