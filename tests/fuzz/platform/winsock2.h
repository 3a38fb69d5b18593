// Stands in for the platform's header, which has to come before windows.h and is used for nothing else.
#ifndef FUZZ_PLATFORM_WINSOCK2_H
#define FUZZ_PLATFORM_WINSOCK2_H

#include "windows.h"

#endif
