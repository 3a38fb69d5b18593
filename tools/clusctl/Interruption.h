// Ctrl+C, and the end of the console or the session, while a command is at work on the cluster.
#ifndef CLUSCTL_INTERRUPTION_H
#define CLUSCTL_INTERRUPTION_H

#include "Failure.h"

#include <chrono>

// The user wants the command to end: thrown between two steps, once. The library lets it through, as it does with what
// any tool-run callback throws, and closes what it has open.
class Interrupted : public Failure {
public:
    Interrupted() : Failure(Errors::Interrupted, "interrupted") {
    }
};

// While it lives, a first Ctrl+C, or the closing of the console, is only noted and said, so that the step in progress
// is finished and what was opened is closed; a second Ctrl+C ends the process at once. There is one at a time.
class Interruption {
public:
    Interruption();
    ~Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;

    static bool IsPending();

    // Before the first change: throws Failure (Interrupted) when the user has interrupted the command.
    static void RequireNone();

    // Between two steps: throws Interrupted when the user has interrupted the command, unless that was thrown before.
    static void Check();

    // Waits a second at most, no longer than until the user interrupts the command.
    static void AwaitPending();

    // Waits as long, or throws Interrupted.
    static void Wait(std::chrono::milliseconds time);

    // While it lives nothing is thrown: what was opened is being closed.
    class Shield {
    public:
        Shield();
        ~Shield();
        Shield(const Shield&) = delete;
        Shield& operator=(const Shield&) = delete;
    };
};

#endif
