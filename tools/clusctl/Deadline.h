// How long this tool asks again and again.
#ifndef CLUSCTL_DEADLINE_H
#define CLUSCTL_DEADLINE_H

#include "Interruption.h"
#include "SimulatedTime.h"

#include <chrono>
#include <cstdint>

// A point in time from now on.
class Deadline {
public:
    explicit Deadline(std::uint32_t seconds) : m_end(Now() + std::chrono::seconds(seconds)) {
    }
    bool IsOver() const {
        return Now() >= m_end;
    }

private:
    static std::chrono::steady_clock::time_point Now() {
        return std::chrono::steady_clock::now() + SimulatedTime::Passed();
    }

    const std::chrono::steady_clock::time_point m_end;
};

// Between two questions. Throws Interrupted.
inline void Pause() {
    Interruption::Wait(std::chrono::seconds(1));
}

#endif
