// This test program as a child process: what several processes do to one model file.
#ifndef CHILDPROGRAM_H
#define CHILDPROGRAM_H

#include <winsock2.h>
#include <windows.h>

#include <map>
#include <string>

// Environment variables of the child; CLUSSIM_ ones of this process are not inherited.
typedef std::map<std::wstring, std::wstring> Variables;

// "create PREFIX COUNT [FIRST]": creates resources PREFIX0, PREFIX1, ... in group EVS1; endless with COUNT 0.
// "online NAME": brings a resource online and ends with the code of that call.
// "state NAME": ends with the resource's state, 1000 added.
// "open": ends with 0, or the last error of OpenCluster.
class Child {
public:
    Child(const std::wstring& arguments, const Variables& variables);
    ~Child(); // stops it when it still runs
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    DWORD Wait();         // its exit code
    void Stop();          // at once, in the middle of whatever it does
    std::string Errors(); // what it wrote to standard error; after Wait

private:
    HANDLE m_process;
    HANDLE m_errors; // the reading end
};

#endif
