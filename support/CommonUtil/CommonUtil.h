// Common helpers of the product: text, paths, services. This is the default implementation of the interface; the
// product's own CommonUtil.dll can take its place.
#ifndef COMMONUTIL_H
#define COMMONUTIL_H

#include <winsock2.h>
#include <windows.h>

#include <cstddef>
#include <string>

#if defined(COMMONUTIL_BUILD)
#define COMMONUTIL_API __declspec(dllexport)
#else
#define COMMONUTIL_API __declspec(dllimport)
#endif

namespace OS {

typedef std::wstring x_wstring;

// A failed platform call.
class COMMONUTIL_API CException {
public:
    explicit CException(DWORD code);

    // The Win32 error code.
    DWORD GetErrorCode() const;

private:
    DWORD m_code;
};

} // namespace OS

namespace NS_StringUtils {

// Joins two pieces of a path with one backslash at the seam, whatever separators (either slash, any number) the pieces
// bring there. An empty piece gives the other one unchanged.
COMMONUTIL_API OS::x_wstring concatPath(const OS::x_wstring& head, const OS::x_wstring& tail);

} // namespace NS_StringUtils

// Whether the first `length` characters of `path` are a folder path ready to have a name appended: a drive root
// ("C:\"), a folder with a drive letter ("C:\Mount\") or a UNC share or folder below it ("\\server\share\"), ending in
// a backslash. False for null and empty text, forward slashes, empty or overlong names, characters that a name cannot
// hold, and device or volume names ("Disk1Partition2\", "\\?\Volume{...}\"). Nothing is looked up: the folder need not
// exist.
COMMONUTIL_API bool CheckPathFormat(const wchar_t* path, size_t length);

// One service of the service control manager, opened for querying.
class COMMONUTIL_API CServiceManager {
public:
    // Null `machineName`: this computer. Throws OS::CException with the platform's error code when the service control
    // manager or the service cannot be opened.
    CServiceManager(const wchar_t* serviceName, const wchar_t* machineName);
    ~CServiceManager();
    CServiceManager(const CServiceManager&) = delete;
    CServiceManager& operator=(const CServiceManager&) = delete;

    // The service's current state (SERVICE_STOPPED, SERVICE_RUNNING, ...). Throws OS::CException.
    DWORD QueryServiceStatus();

private:
    SC_HANDLE m_hManager;
    SC_HANDLE m_hService;
};

#endif
