// VCS: a tool run against the bare calls, and lists of resources against the splitting of their text alone.
#ifndef BENCHVERITAS_H
#define BENCHVERITAS_H

namespace bench {

// Measures and prints. Throws std::runtime_error when a result is not the expected one.
void MeasureVeritas();

} // namespace bench

#endif
