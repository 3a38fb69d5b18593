// Bytes that a resource gives as the answer to a control code, instead of the simulator's own.
#ifndef CONTROLANSWER_H
#define CONTROLANSWER_H

#include "Bytes.h"
#include "ClusterFixture.h"

#include <cstring>
#include <string>
#include <vector>

namespace harness {

// A partition entry of a disk's value list: syntax, length 1120, flags, then the device name in room for 260
// characters.
inline Bytes PartitionEntry(const std::wstring& device) {
    Bytes bytes;
    bytes += DWORD(0x00080001);
    bytes += DWORD(1120);
    bytes += DWORD(1);
    bytes += device;
    bytes.resize(8 + 1120);
    return bytes;
}

struct ControlAnswerTag;

// Answers every control of clusutil.dll with the same bytes, by the platform's rules; the last-error value is left
// alone.
class ControlAnswer
    : public ImportPatch<DWORD(HRESOURCE, HNODE, DWORD, LPVOID, DWORD, LPVOID, DWORD, LPDWORD), ControlAnswerTag> {
public:
    explicit ControlAnswer(const Bytes& bytes)
        : ImportPatch(FindImports(LibraryModule(), "clusapi.dll", "ClusterResourceControl"),
                      [bytes](HRESOURCE, HNODE, DWORD, LPVOID, DWORD, LPVOID out, DWORD cbOut, LPDWORD cb) -> DWORD {
                          *cb = static_cast<DWORD>(bytes.size());
                          if (cbOut < bytes.size()) {
                              return ERROR_MORE_DATA;
                          }
                          std::memcpy(out, bytes.data(), bytes.size());
                          return ERROR_SUCCESS;
                      }) {
    }
};

} // namespace harness

#endif
