// Which web server, and which of its sites, serves the product's home directory. This is the default implementation of
// the interface; the product's own WebServerUtil.dll can take its place.
#ifndef WEBSERVERUTIL_H
#define WEBSERVERUTIL_H

#include <winsock2.h>
#include <windows.h>

#if defined(WEBSERVERUTIL_BUILD)
#define WEBSERVERUTIL_API __declspec(dllexport)
#else
#define WEBSERVERUTIL_API __declspec(dllimport)
#endif

class WEBSERVERUTIL_API CWebServer {
public:
    enum : int {
        ServerTypeIIS = 0,
        ServerTypeNone = -1
    };

    // Reads the web server's configuration: applicationHost.config (IIS 7 and later), or MetaBase.xml (IIS 6) when
    // there is no such file. A site serves the home directory when a physical path of one of its applications or
    // virtual directories is the home directory or a folder above it; the longest such path wins, among equal ones the
    // first in the file. Never throws.
    explicit CWebServer(const wchar_t* homeDir);
    ~CWebServer();
    CWebServer(const CWebServer&) = delete;
    CWebServer& operator=(const CWebServer&) = delete;

    // ServerTypeIIS when a site serves the home directory. Another value when none does, no IIS is installed, or its
    // configuration cannot be read.
    int GetServerType();

    // The number of that site, -1 when there is none.
    int GetIISSiteID();

private:
    int m_serverType;
    int m_siteId;
};

#endif
