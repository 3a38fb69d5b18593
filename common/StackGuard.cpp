// What GCC's -fstack-protector calls, in place of libssp: that one asks CryptoAPI for its cookie, which loads DLLs
// while the loader holds its lock. Linked into every binary that mingw-w64 builds; Visual Studio has its own.
#include <windows.h>

#include <cstdint>

// The names that the compiler refers to.
extern "C" {
std::uintptr_t __stack_chk_guard = 0x00002B992DDFA200; // until the constructor below has run
[[noreturn]] void __stack_chk_fail();
}

namespace {

const unsigned StackCookieCheckFailure = 2; // FAST_FAIL_STACK_COOKIE_CHECK_FAILURE, not in every platform header

std::uint64_t Mixed(std::uint64_t value) { // the last step of splitmix64
    value = (value ^ value >> 30) * 0xBF58476D1CE4E5B9;
    value = (value ^ value >> 27) * 0x94D049BB133111EB;
    return value ^ value >> 31;
}

// Before any other constructor of the binary: no protected function is active when the cookie changes. Calls nothing
// but kernel32, which is safe while a DLL is attached.
__attribute__((constructor(101))) void MakeCookie() {
    FILETIME time;
    GetSystemTimeAsFileTime(&time);
    LARGE_INTEGER counter;
    QueryPerformanceCounter(&counter);
    std::uint64_t cookie = Mixed(static_cast<std::uint64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime);
    cookie = Mixed(cookie ^ static_cast<std::uint64_t>(counter.QuadPart));
    cookie = Mixed(cookie ^ (static_cast<std::uint64_t>(GetCurrentProcessId()) << 32 | GetCurrentThreadId()));
    cookie = Mixed(cookie ^ reinterpret_cast<std::uintptr_t>(&time)); // where the system put this thread's stack
    __stack_chk_guard = cookie & ~std::uint64_t{0xFF};                // a zero byte first: no text can write it
}

} // namespace

// Ends the process at once, without handlers that would run on the broken stack.
void __stack_chk_fail() {
    asm volatile("int $0x29" : : "c"(StackCookieCheckFailure) : "memory"); // __fastfail
    __builtin_unreachable();
}
