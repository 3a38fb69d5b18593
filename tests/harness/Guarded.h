// Memory that shows who wrote where: filled with 0xcc, between two rows of guard bytes.
#ifndef HARNESS_GUARDED_H
#define HARNESS_GUARDED_H

#include <cstddef>
#include <cstring>
#include <new>

namespace harness {

const unsigned char PoisonByte = 0xcc;
const unsigned char GuardByte = 0xa5;

// Bytes that still hold the poison, seen from `data` on.
inline bool IsPoison(const void* data, std::size_t size) {
    const auto* bytes = static_cast<const unsigned char*>(data);
    for (std::size_t i = 0; i < size; ++i) {
        if (bytes[i] != PoisonByte) {
            return false;
        }
    }
    return true;
}

// `count` records of a bytewise copyable type, as a caller's array would hold them.
template <typename T, std::size_t count = 1> class Guarded {
public:
    Guarded() {
        std::memset(m_memory, GuardByte, sizeof(m_memory));
        std::memset(m_memory + GuardSize, PoisonByte, sizeof(T) * count);
    }

    T* get() {
        return reinterpret_cast<T*>(m_memory + GuardSize);
    }
    T& operator[](std::size_t index) {
        return get()[index];
    }
    T* operator->() {
        return get();
    }
    T& operator*() {
        return *get();
    }

    // Nothing was written before or behind the records.
    bool GuardsIntact() const {
        for (std::size_t i = 0; i < GuardSize; ++i) {
            if (m_memory[i] != GuardByte || m_memory[GuardSize + sizeof(T) * count + i] != GuardByte) {
                return false;
            }
        }
        return true;
    }
    bool Untouched(std::size_t index = 0) const {
        return IsPoison(m_memory + GuardSize + sizeof(T) * index, sizeof(T));
    }

private:
    static const std::size_t GuardSize = 64;
    static const std::size_t Alignment = 16;
    static const std::size_t Size = (GuardSize + sizeof(T) * count + GuardSize + Alignment - 1) / Alignment * Alignment;

    alignas(Alignment) unsigned char m_memory[Size];
};

} // namespace harness

#endif
