// What "clusctl status" tells, for its command and for the report.
#ifndef CLUSCTL_STATUS_H
#define CLUSCTL_STATUS_H

#include "LogCapture.h"
#include "Report.h"

#include "picture/ClusterPicture.h"
#include "picture/Health.h"

struct Status {
    picture::ClusterPicture cluster; // of kind None when this computer is in no cluster, and is to be in none
    picture::Health health;
};

// What cannot be read marks the report incomplete. Throws Failure when the cluster does not answer, unless the product
// is configured for a plain server and there is no failover cluster.
Status ReadStatus(const LogCapture& log, Report& report);

// cluster, health, nodes, servers, groups: the members of the document.
Json StatusJson(const Status& status);

#endif
