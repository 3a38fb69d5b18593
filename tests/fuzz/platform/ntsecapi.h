// Stands in for the platform's header.
#ifndef FUZZ_PLATFORM_NTSECAPI_H
#define FUZZ_PLATFORM_NTSECAPI_H

// Counts up: a run is the same each time.
void RtlGenRandom(unsigned char* bytes, unsigned count);

#endif
