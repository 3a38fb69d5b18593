// This test program as a child process: what several processes do to one model file.
#ifndef CHILDPROGRAM_H
#define CHILDPROGRAM_H

#include "ChildProcess.h"

#include <memory>
#include <string>

// Environment variables of the child; the simulator's of this process are not inherited.
using harness::Variables;

// "create PREFIX COUNT [FIRST]": creates resources PREFIX0, PREFIX1, ... in group EVS1; endless with COUNT 0.
// "online NAME": brings a resource online and ends with the code of that call.
// "state NAME": ends with the resource's state, 1000 added.
// "open": ends with 0, or the last error of OpenCluster.
class Child {
public:
    Child(const std::wstring& arguments, const Variables& variables);

    DWORD Wait() {
        return m_process->Wait();
    }
    void Stop() {
        m_process->Stop();
    }
    std::string Errors(); // what it wrote to standard error; after Wait

private:
    std::unique_ptr<harness::ChildProcess> m_process;
    common::Handle m_errors; // the reading end
};

#endif
