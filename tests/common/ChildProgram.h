// This test program as a child process: what several processes do to one file.
#ifndef CHILDPROGRAM_H
#define CHILDPROGRAM_H

#include "ChildProcess.h"

#include <string>

// "append PATH TEXT COUNT": appends so many lines of 400 times TEXT.
// "hold PATH EVENT": takes the file's turn, sets the named event, and keeps the turn until it is stopped.
// "count PATH COUNT": so often, in a turn: reads a number from the file and writes the next one.
class Child : public harness::ChildProcess {
public:
    explicit Child(const std::wstring& arguments);
};

#endif
