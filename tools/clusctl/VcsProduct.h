// "vcs product create": the product's resource set of a group.
#ifndef CLUSCTL_VCSPRODUCT_H
#define CLUSCTL_VCSPRODUCT_H

#include "LogCapture.h"
#include "Report.h"

#include <string>

struct ProductCreateOptions {
    std::wstring group;
    std::wstring mount;
    std::wstring regRep;
    std::wstring dataPath;
    bool quarantine = false;
    bool remoteConfig = false;
    std::wstring accountGroup;
    std::wstring accountUser;
    int delayOnline = 600;
    int delayOffline = 600;
    bool opens = false;
};

// Throws Failure, or WrongUsage before anything is changed.
Report CreateVcsProduct(const LogCapture& log, const ProductCreateOptions& options);

// One resource of a report: what became of it.
Json ProductRecord(const std::wstring& name, const std::wstring& service, bool existed);
extern const Columns ProductColumns;

#endif
