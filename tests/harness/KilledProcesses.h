// Eight processes at work, of which one after another is killed and another one started in its place.
#ifndef HARNESS_KILLEDPROCESSES_H
#define HARNESS_KILLEDPROCESSES_H

#include "ChildProcess.h"

#include <array>
#include <functional>
#include <memory>
#include <random>
#include <string>

namespace harness {

class KilledProcesses {
public:
    // `number`: three digits, the process's own while less than a thousand are killed.
    typedef std::function<std::unique_ptr<ChildProcess>(const std::wstring& number)> Starter;

    // Starts all. They are killed `usual` times unless the environment variable CLUSUTIL_KILLS, as ./dev sweep sets
    // it, names another number.
    KilledProcesses(const Starter& start, int usual);
    ~KilledProcesses(); // tells how many were killed
    KilledProcesses(const KilledProcesses&) = delete;
    KilledProcesses& operator=(const KilledProcesses&) = delete;

    int Wanted() const {
        return m_wanted;
    }
    int Count() const {
        return m_count;
    }
    int Random(int below) {
        return static_cast<int>(m_random() % static_cast<unsigned>(below));
    }

    // Kills some process that far from now, which still has to run. Its number.
    std::wstring KillOne(DWORD milliseconds);
    // In the place of the one that was killed.
    void StartAnother();
    // Kills the rest, of which no count is taken. Their numbers.
    std::array<std::wstring, 8> StopAll();

private:
    struct Process {
        std::wstring number;
        std::unique_ptr<ChildProcess> child;
    };

    void Start(Process& process);

    const Starter m_start;
    const int m_wanted;
    std::mt19937 m_random{1};
    std::array<Process, 8> m_processes;
    Process* m_killed = nullptr;
    int m_started = 0;
    int m_count = 0;
};

} // namespace harness

#endif
