#include "Attack.h"

#include "GuardedMemory.h"

#include <cstdio>

namespace hostile {

namespace {

const std::size_t MostCalls = 200000;

Attack* theAttack = nullptr;

const DWORD Codes[] = {1,    2,    3,    4,    5,    6,    8,    13,   14,   19,   21,   22,   24,        31,   32,
                       33,   39,   50,   53,   64,   80,   87,   108,  109,  111,  112,  120,  121,       122,  123,
                       126,  127,  170,  183,  203,  206,  232,  234,  258,  259,  487,  995,  997,       998,  1008,
                       1053, 1060, 1062, 1115, 1168, 1223, 1326, 1359, 1450, 1460, 1702, 1717, 1722,      1723, 1726,
                       1818, 5000, 5002, 5004, 5006, 5007, 5010, 5012, 5013, 5019, 5023, 5038, 0xFFFFFFFF};

const wchar_t* const Names[] = {
    L"EVS1",
    L"EVS2",
    L"evs1.example.com",
    L"EVS1 Name",
    L"EVS1 Disk",
    L"NODE-A",
    L"NODE-B",
    L"localhost",
    L"192.0.2.1",
    L"",
    L" ",
    L"a",
    L"Zz",
    L"F:\\data",
    L"%s%n%d",
    L"EVS1-OXAHostService",
    L"OXAHostService",
    L"MSExchangeIS",
    L"MountV1",
    L"MountV2",
    L"\x00e4\x4e2d\xd800",
    L"A name that is longer than fifteen characters, and than the room that most ask with at first"};

const wchar_t* const Types[] = {L"clusRDLL",
                                L"clusRDLL",
                                L"clusRDLLCCR",
                                L"Network Name",
                                L"Network Name",
                                L"IP Address",
                                L"Physical Disk",
                                L"Microsoft Exchange SMTP Server Instance",
                                L"Microsoft Exchange Information Store",
                                L"Microsoft Exchange System Attendant",
                                L"",
                                L"clusrdll"};

} // namespace

std::uint64_t Chance::Next() {
    std::uint64_t z = m_state += 0x9e3779b97f4a7c15u;
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9u;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebu;
    return z ^ (z >> 31);
}

Attack& TheAttack() {
    return *theAttack;
}

void SetAttack(Attack* attack) {
    theAttack = attack;
}

DWORD Attack::Failure() {
    return chance.Of(Codes);
}

DWORD Attack::Code() {
    return Fails() ? Failure() : static_cast<DWORD>(ERROR_SUCCESS);
}

void Attack::StartOperation(std::size_t number, const char* name) {
    const std::size_t moods[] = {3, 20, 100, 1000, 10000};
    m_operation = number;
    m_name = name;
    m_calls = 0;
    m_oneFailureIn = chance.Of(moods);
}

void Attack::CountCall() {
    if (++m_calls == MostCalls) {
        Fail("it does not end");
    }
}

void Attack::Fail(const char* what) {
    // Straight to the handle: the heap may be broken.
    char text[512];
    const int length = std::snprintf(text, sizeof(text), "seed %llu, %s, operation %llu (%s), platform call %llu: %s\n",
                                     static_cast<unsigned long long>(m_seed), m_deployment,
                                     static_cast<unsigned long long>(m_operation), m_name,
                                     static_cast<unsigned long long>(m_calls), what);
    DWORD written = 0;
    WriteFile(GetStdHandle(STD_ERROR_HANDLE), text, static_cast<DWORD>(length), &written, nullptr);
    TerminateProcess(GetCurrentProcess(), 3);
    for (;;) {
    }
}

void* Attack::Open(Kind kind) {
    m_lastHandle += 16;
    void* const handle = reinterpret_cast<void*>(m_lastHandle);
    m_handles[handle] = kind;
    return handle;
}

bool Attack::IsOpen(const void* handle, Kind kind) {
    const auto found = m_handles.find(handle);
    if (found != m_handles.end() && found->second != kind) {
        Fail("a handle is used as one of another kind");
    }
    return found != m_handles.end();
}

void Attack::Close(const void* handle, Kind kind) {
    if (!IsOpen(handle, kind)) {
        Fail("a handle is closed that is not open");
    }
    m_handles.erase(handle);
}

bool Attack::Uses(const void* handle, Kind kind) {
    if (!handle) {
        return false;
    }
    const bool isOpen = IsOpen(handle, kind);
    if (!isOpen && kind != Kind::Group) { // a group keeps its handle when it is closed, as callers rely on
        Fail("a handle is used that is not open");
    }
    return isOpen;
}

const wchar_t* SomeName(Chance& chance) {
    return chance.Of(Names);
}

const wchar_t* SomeType(Chance& chance) {
    return chance.Of(Types);
}

DWORD SomeLength(Chance& chance, DWORD given) {
    switch (chance.Below(10)) {
    case 0:
        return 0;
    case 1:
        return 0xFFFFFFFF;
    case 2:
        return given - 1;
    case 3:
        return given + 1;
    case 4:
        return 2 * given;
    case 5:
        return 0x7FFFFFFF;
    case 6:
        return chance.OneIn(200) ? 8 * 1024 * 1024 - 1 : 8 * 1024 * 1024;
    case 7:
        return static_cast<DWORD>(chance.Below(5000));
    case 8:
        return static_cast<DWORD>(chance.Next());
    default:
        return given;
    }
}

} // namespace hostile
