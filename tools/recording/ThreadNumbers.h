// Threads counted in the order in which they first ask. By their IDs they could not be: the system gives these again.
#ifndef RECORDING_THREADNUMBERS_H
#define RECORDING_THREADNUMBERS_H

#include <atomic>
#include <cstdint>

namespace recording {

class ThreadNumbers {
public:
    ThreadNumbers() : m_owner(++Owners()) {
    }
    ThreadNumbers(const ThreadNumbers&) = delete;
    ThreadNumbers& operator=(const ThreadNumbers&) = delete;

    // Of the thread that asks.
    unsigned Own() {
        thread_local std::uint64_t owner = 0; // of the number
        thread_local unsigned number = 0;
        if (owner != m_owner) {
            owner = m_owner;
            number = m_next++;
        }
        return number;
    }

private:
    static std::atomic<std::uint64_t>& Owners() {
        static std::atomic<std::uint64_t> count(0);
        return count;
    }

    const std::uint64_t m_owner;
    std::atomic<unsigned> m_next{0};
};

} // namespace recording

#endif
