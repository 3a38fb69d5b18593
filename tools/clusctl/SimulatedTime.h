// Time that does not pass: in a rehearsal waiting takes none, and the simulated cluster's clock goes on instead.
#ifndef CLUSCTL_SIMULATEDTIME_H
#define CLUSCTL_SIMULATEDTIME_H

#include <chrono>
#include <functional>

namespace SimulatedTime {

// From now on, for this tool and for what the library sleeps. `advance` is told by how many milliseconds the cluster's
// clock has to go on. Throws Failure when the library's waiting cannot be caught.
void Begin(const std::function<void(unsigned)>& advance);

bool IsInForce();

void Pass(std::chrono::milliseconds time);

// Since the beginning.
std::chrono::milliseconds Passed();

} // namespace SimulatedTime

#endif
