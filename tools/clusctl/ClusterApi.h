// The platform's cluster API, for what the library's classes do not offer.
#ifndef CLUSCTL_CLUSTERAPI_H
#define CLUSCTL_CLUSTERAPI_H

#include <clus_Cluster.h>

#include <clusapi.h>

#endif
