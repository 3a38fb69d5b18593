// Leads a member function of the loaded clusutil.dll elsewhere, for the library's own calls too: for results that the
// member never gives of itself, but that its callers have to answer.
#ifndef HARNESS_DETOUR_H
#define HARNESS_DETOUR_H

#include "ImportPatch.h"

#include <cstring>
#include <stdexcept>

namespace harness {

class Detour {
public:
    // `replacement` gets the object as its first argument.
    template <typename Member, typename Replacement> Detour(Member member, Replacement* replacement) {
        static_assert(sizeof(member) >= sizeof(m_code), "a member function's address comes first in its pointer");
        std::memcpy(&m_code, &member, sizeof(m_code));
        if (m_code[0] == 0xFF && m_code[1] == 0x25) { // the caller's own jump through its import table
            long distance = 0;
            std::memcpy(&distance, m_code + 2, sizeof(distance));
            std::memcpy(&m_code, m_code + 6 + distance, sizeof(m_code));
        }
        std::memcpy(m_old, m_code, sizeof(m_old));
        unsigned char jump[sizeof(m_old)] = {0x48, 0xB8, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xE0}; // mov rax, ...; jmp rax
        void* const target = reinterpret_cast<void*>(replacement);
        std::memcpy(jump + 2, &target, sizeof(target));
        Write(jump);
    }
    ~Detour() {
        Write(m_old);
    }
    Detour(const Detour&) = delete;
    Detour& operator=(const Detour&) = delete;

private:
    void Write(const unsigned char* code) {
        DWORD protection = 0;
        if (!VirtualProtect(m_code, sizeof(m_old), PAGE_EXECUTE_READWRITE, &protection)) {
            throw std::runtime_error("the library's code cannot be written");
        }
        std::memcpy(m_code, code, sizeof(m_old));
        VirtualProtect(m_code, sizeof(m_old), protection, &protection);
        FlushInstructionCache(GetCurrentProcess(), m_code, sizeof(m_old));
    }

    unsigned char* m_code = nullptr;
    unsigned char m_old[12] = {};
};

} // namespace harness

#endif
