// "vcs product create": the product's resource set of a group.
#ifndef CLUSCTL_VCSPRODUCT_H
#define CLUSCTL_VCSPRODUCT_H

#include "LogCapture.h"
#include "Report.h"

#include <string>

struct ProductCreateOptions {
    std::string group;
    std::string mount;
    std::string regRep;
    std::string dataPath;
    bool quarantine = false;
    bool remoteConfig = false;
    std::string accountGroup;
    std::string accountUser;
    int delayOnline = 600;
    int delayOffline = 600;
    bool opens = false;
    bool isDryRun = false;
};

// Throws Failure, or WrongUsage before anything is changed.
Report CreateVcsProduct(const LogCapture& log, const ProductCreateOptions& options);

// One resource of a report: what became of it.
Json ProductRecord(const std::wstring& name, const std::string& service, bool existed);
extern const Columns ProductColumns;

extern const char HostServiceName[];
extern const char QuarantineServiceName[];
extern const char RemoteConfigServiceName[];

#endif
