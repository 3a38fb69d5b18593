// This test program as a child process: what several processes do to one file.
#ifndef CHILDPROGRAM_H
#define CHILDPROGRAM_H

#include "common/Handle.h"

#include <string>

// "append PATH TEXT COUNT": appends so many lines of 400 times TEXT.
// "hold PATH EVENT": takes the file's turn, sets the named event, and keeps the turn until it is stopped.
// "count PATH COUNT": so often, in a turn: reads a number from the file and writes the next one.
class Child {
public:
    explicit Child(const std::wstring& arguments);
    ~Child(); // stops it when it still runs
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    DWORD Wait(); // its exit code
    void Stop();  // at once, in the middle of whatever it does

private:
    common::Handle m_process;
};

#endif
