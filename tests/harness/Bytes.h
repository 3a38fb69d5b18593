// Bytes of the cluster's lists, put together the way the format describes them: little-endian numbers, UTF-16 texts,
// entries of syntax, length and value with padding.
#ifndef HARNESS_BYTES_H
#define HARNESS_BYTES_H

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

namespace harness {

typedef std::vector<unsigned char> Bytes;

inline Bytes& operator+=(Bytes& bytes, std::uint32_t number) {
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

inline Bytes Concat(std::initializer_list<Bytes> parts) {
    Bytes bytes;
    for (const Bytes& part : parts) {
        bytes.insert(bytes.end(), part.begin(), part.end());
    }
    return bytes;
}

inline Bytes NumberBytes(std::uint32_t number) {
    Bytes bytes;
    bytes += number;
    return bytes;
}

// The text with its terminator.
inline Bytes TextBytes(const std::wstring& text) {
    Bytes bytes;
    bytes += text + L'\0';
    return bytes;
}

// An entry of a list, with padding.
inline Bytes Entry(std::uint32_t syntax, const Bytes& value) {
    Bytes bytes = Concat({NumberBytes(syntax), NumberBytes(static_cast<std::uint32_t>(value.size())), value});
    bytes.resize((bytes.size() + 3) & ~std::size_t(3));
    return bytes;
}

// A list of one property.
inline Bytes PropertyListOf(const std::wstring& name, std::uint32_t syntax, const Bytes& value) {
    return Concat({NumberBytes(1), Entry(0x00040003, TextBytes(name)), Entry(syntax, value), NumberBytes(0)});
}

} // namespace harness

#endif
