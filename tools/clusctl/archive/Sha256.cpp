#include "archive/Sha256.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace archive {

namespace {

const std::size_t BlockBytes = 64;
const std::size_t LengthBytes = 8;

typedef std::array<std::uint32_t, 8> State;

// The first 32 bits of the fractional parts of the square roots of the first 8 primes, and of the cube roots of the
// first 64.
const State Start = {0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a, 0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};
const std::uint32_t Constants[] = {
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

std::uint32_t Rotated(std::uint32_t value, unsigned int bits) {
    return (value >> bits) | (value << (32 - bits));
}

void Add(State& state, const std::string& text, std::size_t at) {
    std::array<std::uint32_t, 64> words = {};
    for (std::size_t i = 0; i < 16; ++i) {
        for (std::size_t byte = 0; byte < 4; ++byte) {
            words[i] = (words[i] << 8) | static_cast<unsigned char>(text[at + i * 4 + byte]);
        }
    }
    for (std::size_t i = 16; i < words.size(); ++i) {
        const std::uint32_t near15 = words[i - 15];
        const std::uint32_t near2 = words[i - 2];
        words[i] = words[i - 16] + words[i - 7] + (Rotated(near15, 7) ^ Rotated(near15, 18) ^ (near15 >> 3)) +
                   (Rotated(near2, 17) ^ Rotated(near2, 19) ^ (near2 >> 10));
    }
    State s = state;
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::uint32_t first = s[7] + (Rotated(s[4], 6) ^ Rotated(s[4], 11) ^ Rotated(s[4], 25)) +
                                    ((s[4] & s[5]) ^ (~s[4] & s[6])) + Constants[i] + words[i];
        const std::uint32_t second = (Rotated(s[0], 2) ^ Rotated(s[0], 13) ^ Rotated(s[0], 22)) +
                                     ((s[0] & s[1]) ^ (s[0] & s[2]) ^ (s[1] & s[2]));
        s = {first + second, s[0], s[1], s[2], s[3] + first, s[4], s[5], s[6]};
    }
    for (std::size_t i = 0; i < state.size(); ++i) {
        state[i] += s[i];
    }
}

// With a bit of 1, zeros up to a whole block, and the number of bits.
std::string Padded(const std::string& bytes) {
    std::string text = bytes + '\x80';
    while (text.size() % BlockBytes != BlockBytes - LengthBytes) {
        text += '\0';
    }
    const std::uint64_t bits = static_cast<std::uint64_t>(bytes.size()) * 8;
    for (int shift = 56; shift >= 0; shift -= 8) {
        text += static_cast<char>(bits >> shift);
    }
    return text;
}

} // namespace

std::string Sha256(const std::string& bytes) {
    State state = Start;
    const std::string text = Padded(bytes);
    for (std::size_t at = 0; at < text.size(); at += BlockBytes) {
        Add(state, text, at);
    }
    std::string digits;
    for (const std::uint32_t word : state) {
        for (int shift = 28; shift >= 0; shift -= 4) {
            digits += "0123456789abcdef"[(word >> shift) & 0xF];
        }
    }
    return digits;
}

} // namespace archive
