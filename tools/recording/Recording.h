// A recording: what a process asked of its cluster, and what it was answered, as lines of JSON; docs/recordings.md.
#ifndef RECORDING_RECORDING_H
#define RECORDING_RECORDING_H

#include "common/Json.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace recording {

const int FormatVersion = 1;

// The first line.
struct Header {
    std::string program; // "clusctl 1.0.0"
    std::string begun;   // "2026-11-22T15:42:10Z"
    common::Json command = common::Json::array();
    std::string cluster;   // "failover", "vcs", or empty for a process that may ask both
    std::string computer;  // its name
    common::Json settings; // the product's settings; null when it is not installed
    common::Json tools = common::Json::array();
    bool isAnonymised = false;
    bool allowsChanges = false;
    std::vector<std::string> unseen; // functions that the recorded modules import, and whose calls are not recorded
};

const char EmptyObject[] = "{}";

// A call of the cluster API.
struct RecordedCall {
    std::string name;
    std::string in = EmptyObject; // JSON on one line, an object; not made a document before it is asked for
    std::string out = EmptyObject;
    std::int64_t result = 0;                // a handle's number, a code, a truth, a state
    std::optional<std::uint32_t> lastError; // when the call has set it
    bool isRefused = false;                 // it has not been made
    unsigned thread = 0;                    // in the order of their first calls
    double time = 0;                        // milliseconds since the recording was begun
    double took = 0;                        // milliseconds
};

// What a tool printed on one of its outputs: one character per byte.
struct Printed {
    bool isError = false;
    std::string text; // UTF-8
};

// What the tool printed, byte by byte.
std::string BytesOfText(const std::string& text);

// A run of a VCS tool.
struct RecordedTool {
    std::string commandLine;
    std::uint32_t startError = 0; // why it could not be started
    std::uint32_t exitCode = 0;
    std::vector<Printed> output; // in the order in which it came, whole lines
    bool isRefused = false;
    bool isTooLong = false; // it printed more than is kept; not written
    unsigned thread = 0;
    double time = 0;
    double took = 0;
};

std::string LineOf(const Header& header);
std::string LineOf(const RecordedCall& call);
std::string LineOf(const RecordedTool& tool);
// The last line of a recording that was not cut short.
std::string EndLine(std::uint64_t calls, std::uint64_t tools, const common::Json& exitCode);

struct Recording {
    Header header;
    std::vector<RecordedCall> calls;
    std::vector<RecordedTool> tools;
    bool isCut = false; // its end is missing: the process was ended by force
};

// Whether a text begins as a recording does.
bool IsRecording(const std::string& text);

// A last line without its end is left out. Throws common::JsonError, with the number of the line, for what is no
// recording, or one of another version.
Recording ReadRecording(const std::string& text);

} // namespace recording

#endif
