// _wsopen where it is no import: the Universal C Runtime's header has it inline and imports _wsopen_dispatch.
#ifndef HARNESS_OPENDISPATCH_H
#define HARNESS_OPENDISPATCH_H

#include <vector>

namespace harness {

// Stands a pointer to a _wsopen of four arguments between the callers of _wsopen_dispatch and the runtime, and returns
// where it is, to be replaced like an import; nothing without such entries. It stays for as long as the process lives.
std::vector<void**> OpensThroughDispatch(const std::vector<void**>& dispatchEntries);

} // namespace harness

#endif
