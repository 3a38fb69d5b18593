// What goes into a call of the cluster API and what comes out of it, as JSON, and back.
#ifndef RECORDING_CALLDATA_H
#define RECORDING_CALLDATA_H

#include "Bytes.h"
#include "Interception.h"
#include "Recording.h"

#include <cstdint>
#include <functional>

namespace recording {

// Of handles, which are numbered as they are opened. 0 stands for none.
typedef std::function<std::uint64_t(Slot handle)> NumberOfHandle;

// JSON of a text, and back, which throws common::JsonError.
std::string JsonOf(const std::wstring& text);
std::wstring TextOf(const common::Json& text);

// Whether a result says that the call has done its work.
bool HasSucceeded(const Call& call, std::int64_t result);

// Of the bits of the slot that count.
std::int64_t ResultOf(const Call& call, Slot slot);

// Whether the call would change something.
bool Changes(const Call& call, const Slot* slots);

// What the caller hands over, as a JSON object. Secrets are masked, names replaced.
std::string Inputs(const Call& call, const Slot* slots, const NumberOfHandle& numberOf, const Rename& rename);

// The counts that the caller hands over, of which some are changed by the call.
class Counts {
public:
    Counts(const Call& call, const Slot* slots);
    DWORD At(std::size_t slot) const {
        return m_values[slot];
    }

private:
    DWORD m_values[8] = {};
};

// What the call has written, the same way.
std::string Outputs(const Call& call, const Slot* slots, const Counts& before, std::int64_t result,
                    const Rename& rename);

// Writes what a recorded call wrote. Throws common::JsonError for what cannot be, or has not enough room.
void WriteOutputs(const RecordedCall& recorded, const Call& call, const Slot* slots);

} // namespace recording

#endif
