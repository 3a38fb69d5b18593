// Functions that change the cluster, and of which nothing but that is known: they are refused, and never made.
#ifndef RECORDING_CHANGINGCALLS_H
#define RECORDING_CHANGINGCALLS_H

#include "Interception.h"

#include <string>

namespace recording {

// A call without arguments whose entry answers whatever its callers hand over; without an interceptor it refuses by
// itself. Null when there is none of this name. None of them is in the table of calls.
const Call* FindChangingCall(const std::string& name);

// The answer of a call that is not made.
Slot Failed(const Call& call, DWORD code);

} // namespace recording

#endif
