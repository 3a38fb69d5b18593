// "vcs product delete": takes the product's resource set out of a group.
#ifndef CLUSCTL_VCSPRODUCTDELETION_H
#define CLUSCTL_VCSPRODUCTDELETION_H

#include "LogCapture.h"
#include "Report.h"

#include <cstdint>
#include <string>

struct ProductDeleteOptions {
    std::wstring group;
    std::uint32_t timeout = 120; // seconds; for all resources together to go offline
    bool opens = false;
};

// Throws Failure before anything is changed, FailureWithReport after.
Report DeleteVcsProduct(const LogCapture& log, const ProductDeleteOptions& options);

#endif
