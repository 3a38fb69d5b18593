// A call of a recording, taken apart.
#ifndef CLUSCTL_HEARDCALL_H
#define CLUSCTL_HEARDCALL_H

#include "Json.h"
#include "RecordedObjects.h"

#include <Bytes.h>
#include <Recording.h>

#include <cstdint>
#include <string>

struct HeardCall {
    explicit HeardCall(const recording::RecordedCall& call);

    const std::string& name;
    const Json in;
    const Json out;
    const std::int64_t result;
    const std::uint32_t lastError; // 0 when the call has not set it
};

// Of inputs and outputs; empty, or 0, when there is none. Of a text with its length the text.
std::string TextIn(const Json& object, const char* name);
std::uint64_t NumberIn(const Json& object, const char* name);
recording::Bytes BytesIn(const Json& object, const char* name);

// [class, subclass] of CLUSCTL_..._GET_CLASS_INFO.
Json ClassIn(const recording::Bytes& bytes);

// Whether a control asks for the name of an object, of whatever kind.
bool AsksName(std::uint32_t control);
std::string NameIn(const recording::Bytes& bytes);

// What a control asks of an object of this kind; null when it is none that a model has.
struct AskedPart {
    const char* part;
    Json (*read)(const recording::Bytes& bytes); // throws Failure when the bytes are malformed
};
const AskedPart* PartAsked(RecordedKind kind, std::uint32_t control);

#endif
