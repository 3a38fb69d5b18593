// Bytes that a resource gives as the answer to a control code, instead of the simulator's own.
#ifndef CONTROLANSWER_H
#define CONTROLANSWER_H

#include "ClusterFixture.h"

#include <cstring>
#include <string>
#include <vector>

namespace harness {

typedef std::vector<unsigned char> Bytes;

inline Bytes& operator+=(Bytes& bytes, DWORD number) {
    for (int shift = 0; shift < 32; shift += 8) {
        bytes.push_back(static_cast<unsigned char>(number >> shift));
    }
    return bytes;
}

inline Bytes& operator+=(Bytes& bytes, const std::wstring& text) {
    for (const wchar_t c : text) {
        bytes.push_back(static_cast<unsigned char>(c));
        bytes.push_back(static_cast<unsigned char>(c >> 8));
    }
    return bytes;
}

// The text with its terminator, as a control answers with it.
inline Bytes TextBytes(const std::wstring& text) {
    Bytes bytes;
    bytes += text + L'\0';
    return bytes;
}

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

// A value list entry with padding.
inline Bytes Entry(DWORD syntax, const Bytes& value) {
    Bytes bytes;
    bytes += syntax;
    bytes += static_cast<DWORD>(value.size());
    bytes.insert(bytes.end(), value.begin(), value.end());
    bytes.resize((bytes.size() + 3) & ~std::size_t(3));
    return bytes;
}

inline Bytes Concat(std::initializer_list<Bytes> parts) {
    Bytes bytes;
    for (const Bytes& part : parts) {
        bytes.insert(bytes.end(), part.begin(), part.end());
    }
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
