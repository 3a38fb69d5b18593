// This test program as a child process: what several processes do to one file.
#ifndef CHILDPROGRAM_H
#define CHILDPROGRAM_H

#include "ChildProcess.h"

#include <cstddef>
#include <string>

// "append PATH TEXT COUNT": appends so many lines of 400 times TEXT.
// "hold PATH EVENT": takes the file's turn, sets the named event, and keeps the turn until it is stopped.
// "write WHOLE LINES TAG": again and again until it is stopped, writes the one file as a whole and appends a line to
// the other one, both made of the three letters TAG and a colon. "count PATH COUNT": so often, in a turn: reads a
// number from the file and writes the next one.
const std::size_t WholeFileLength = 200000;  // characters
const std::size_t AppendedLineLength = 2000; // without its end

class Child : public harness::ChildProcess {
public:
    explicit Child(const std::wstring& arguments);
};

#endif
