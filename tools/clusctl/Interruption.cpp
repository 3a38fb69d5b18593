#include "Interruption.h"

#include "SimulatedTime.h"
#include "Stream.h"

#include <atomic>

namespace {

const DWORD LongestAwaited = 1000; // milliseconds

// Written by the system's thread that reports the event.
std::atomic<bool> Pending(false);
// Whether the events are the command's to take.
std::atomic<bool> Watching(false);
// Both of the command's own thread.
bool IsTold = false;
int Shields = 0;

// Signalled for good by the first event. Lives as long as the process, as the system's thread may use it at any time.
HANDLE Event() {
    static const HANDLE event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    return event;
}

BOOL WINAPI Note(DWORD kind) {
    if (!Watching) {
        return FALSE;
    }
    const bool isKey = kind == CTRL_C_EVENT || kind == CTRL_BREAK_EVENT;
    if (Pending.exchange(true) && isKey) {
        TerminateProcess(GetCurrentProcess(), ExitInterrupted);
    }
    Stream(STD_ERROR_HANDLE)
        .Write(isKey ? "clusctl: interrupted: the step in progress is finished first; a second Ctrl+C ends at once\n"
                     : "clusctl: interrupted: the step in progress is finished first\n");
    SetEvent(Event());
    if (!isKey) {
        Sleep(INFINITE); // on return the system would end the process; it does not wait for ever either
    }
    return TRUE;
}

// No longer than until the user interrupts the command.
void WaitFor(std::chrono::milliseconds time) {
    if (SimulatedTime::IsInForce()) {
        SimulatedTime::Pass(time);
    } else {
        WaitForSingleObject(Event(), static_cast<DWORD>(time.count()));
    }
}

} // namespace

Interruption::Interruption() {
    Event();
    Watching = true;
    SetConsoleCtrlHandler(&Note, TRUE);
}

// The handler stays: to take it away waits for one that is at work, and that of a closed console does not return.
Interruption::~Interruption() {
    Watching = false;
}

bool Interruption::IsPending() {
    return Pending;
}

void Interruption::RequireNone() {
    if (Pending) {
        throw Failure(Errors::Interrupted, "interrupted before anything was changed");
    }
}

void Interruption::AwaitPending() {
    WaitFor(std::chrono::milliseconds(LongestAwaited));
}

void Interruption::Check() {
    if (Pending && !IsTold && Shields == 0) {
        IsTold = true;
        throw Interrupted();
    }
}

void Interruption::Wait(std::chrono::milliseconds time) {
    if (IsTold) {
        Sleep(static_cast<DWORD>(time.count()));
        return;
    }
    WaitFor(time);
    Check();
}

Interruption::Shield::Shield() {
    ++Shields;
}

Interruption::Shield::~Shield() {
    --Shields;
}
