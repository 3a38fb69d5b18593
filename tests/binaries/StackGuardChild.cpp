// A process that fills its stack's buffer of 16 characters with as many as it is told, or else prints its guard's
// cookie.
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

extern "C" std::uintptr_t __stack_chk_guard;

namespace {

__attribute__((noinline)) int Fill(int count) {
    volatile char buffer[16];
    for (int i = 0; i < count; ++i) {
        buffer[i] = 1;
    }
    return buffer[0];
}

} // namespace

int main(int argc, char** argv) {
    if (argc > 1) {
        return Fill(std::atoi(argv[1])) == 1 ? 0 : 1;
    }
    std::printf("%016" PRIxPTR, __stack_chk_guard);
    return 0;
}
