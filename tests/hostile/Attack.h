// What the hostile platform and the operations under it share: chance, the handles that are open, and where it stands.
#ifndef HOSTILE_ATTACK_H
#define HOSTILE_ATTACK_H

#include <winsock2.h>
#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <map>

namespace hostile {

// The same numbers for the same seed, whatever the compiler.
class Chance {
public:
    explicit Chance(std::uint64_t seed) : m_state(seed) {
    }
    std::uint64_t Next();
    // 0 to n - 1.
    std::size_t Below(std::size_t n) {
        return static_cast<std::size_t>(Next() % n);
    }
    bool OneIn(std::size_t n) {
        return Below(n) == 0;
    }
    template <typename T, std::size_t count> const T& Of(const T (&choices)[count]) {
        return choices[Below(count)];
    }

private:
    std::uint64_t m_state;
};

enum class Kind {
    Cluster,
    Resource,
    Group,
    Node,
    Enumerator,
    Key,
    File,
    Process,
    Module
};

class Attack {
public:
    Attack(std::uint64_t seed, const char* deployment) : chance(seed), m_seed(seed), m_deployment(deployment) {
    }

    Chance chance;
    // What a failing call gives; ERROR_SUCCESS as often as the operation's mood wants it.
    DWORD Code();
    // A code that is no success.
    DWORD Failure();
    bool Fails() {
        return chance.OneIn(m_oneFailureIn);
    }

    void StartOperation(std::size_t number, const char* name);
    const char* OperationName() const {
        return m_name;
    }
    // Platform calls since it started. The process ends, with the operation told, when there are too many.
    void CountCall();
    std::size_t Calls() const {
        return m_calls;
    }

    // Tells what is wrong and where, and ends the process.
    [[noreturn]] void Fail(const char* what);

    // Values that were never given before.
    void* Open(Kind kind);
    // Whether it is open; an open handle of another kind is an error.
    bool IsOpen(const void* handle, Kind kind);
    // Ends the process unless it is open.
    void Close(const void* handle, Kind kind);
    // What must not be called with a handle that is closed. Null is passed on by many members as it is.
    bool Uses(const void* handle, Kind kind);
    const std::map<const void*, Kind>& Handles() const {
        return m_handles;
    }

    int winsockStarts = 0;

private:
    std::uint64_t m_seed;
    const char* m_deployment;
    std::size_t m_oneFailureIn = static_cast<std::size_t>(-1); // until the first operation
    std::size_t m_operation = 0;
    const char* m_name = "set-up";
    std::size_t m_calls = 0;
    std::uintptr_t m_lastHandle = 0;
    std::map<const void*, Kind> m_handles;
};

Attack& TheAttack();
void SetAttack(Attack* attack);

// The names that the platform tells and the operations ask for, so that some of them meet.
const wchar_t* SomeName(Chance& chance);
const wchar_t* SomeType(Chance& chance);
DWORD SomeLength(Chance& chance, DWORD given);

} // namespace hostile

#endif
