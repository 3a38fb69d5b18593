// What the fuzz targets share.
#ifndef FUZZINPUT_H
#define FUZZINPUT_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

// A heap block of exactly the given size, so that AddressSanitizer sees a read of one byte too many.
class ExactBlock {
public:
    ExactBlock(const std::uint8_t* data, std::size_t size) : m_block(new unsigned char[size]), m_size(size) {
        if (size != 0) {
            std::memcpy(m_block.get(), data, size);
        }
    }
    const unsigned char* Data() const {
        return m_block.get();
    }
    std::size_t Size() const {
        return m_size;
    }

private:
    std::unique_ptr<unsigned char[]> m_block;
    std::size_t m_size;
};

inline std::string AsText(const std::uint8_t* data, std::size_t size) {
    return std::string(reinterpret_cast<const char*>(data), size);
}

// The parts between the separators; one more than there are of those.
inline std::vector<std::string> PartsOf(const std::string& text, char separator) {
    std::vector<std::string> parts(1);
    for (const char c : text) {
        if (c == separator) {
            parts.emplace_back();
        } else {
            parts.back() += c;
        }
    }
    return parts;
}

// Takes the text up to the first line feed, which goes too; all of it when there is none.
inline std::string TakeLine(std::string& text) {
    const std::size_t end = text.find('\n');
    const std::string line = text.substr(0, end);
    text.erase(0, end == std::string::npos ? end : end + 1);
    return line;
}

// One character per byte, as the library reads what a tool prints.
inline std::wstring WideOf(const std::string& bytes) {
    std::wstring text;
    for (const char c : bytes) {
        text += static_cast<wchar_t>(static_cast<unsigned char>(c));
    }
    return text;
}

#define FUZZ_CHECK(condition)                                                                   \
    do {                                                                                        \
        if (!(condition)) {                                                                     \
            std::fprintf(stderr, "%s:%d: does not hold: %s\n", __FILE__, __LINE__, #condition); \
            std::abort();                                                                       \
        }                                                                                       \
    } while (false)

#endif
