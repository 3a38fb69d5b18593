// What the fuzz targets share.
#ifndef FUZZINPUT_H
#define FUZZINPUT_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

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

#define FUZZ_CHECK(condition)                                                                   \
    do {                                                                                        \
        if (!(condition)) {                                                                     \
            std::fprintf(stderr, "%s:%d: does not hold: %s\n", __FILE__, __LINE__, #condition); \
            std::abort();                                                                       \
        }                                                                                       \
    } while (false)

#endif
