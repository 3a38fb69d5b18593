// This process is a command of a rehearsal: it works on a private copy, in simulated time, and tells what it did.
#ifndef CLUSCTL_REHEARSEDRUN_H
#define CLUSCTL_REHEARSEDRUN_H

#include "Simulation.h"

#include <string>

// The folder in which such a process writes what it did. Only together with --model.
extern const wchar_t RehearsalVariable[];

// What the copy is one of, as people are told.
extern const wchar_t RehearsedVariable[];

// The support bundle that the copy's cluster comes from; empty for none.
extern const wchar_t RehearsedBundleVariable[];

class RehearsedRun {
public:
    // Takes these variables out of the environment. Nothing else happens without them, or without --model.
    explicit RehearsedRun(bool hasModel);
    // Writes what has been done to a failover cluster into the folder.
    ~RehearsedRun();
    RehearsedRun(const RehearsedRun&) = delete;
    RehearsedRun& operator=(const RehearsedRun&) = delete;

    // To be called when the simulator is loaded, and the library.
    void Begin(Answering asked);

    static bool IsOne();

    // Empty when this process is none.
    static const std::wstring& Rehearsed();
    static const std::wstring& Bundle();
};

#endif
