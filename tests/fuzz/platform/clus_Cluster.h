// Stands in for the library's header: what is fuzzed of clusctl takes bytes and asks no cluster.
#ifndef FUZZ_PLATFORM_CLUS_CLUSTER_H
#define FUZZ_PLATFORM_CLUS_CLUSTER_H

#include "windows.h"

#endif
