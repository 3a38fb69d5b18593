// A program that this one starts, with what it prints taken.
#ifndef CLUSCTL_CHILDPROGRAM_H
#define CLUSCTL_CHILDPROGRAM_H

#include "Password.h"

#include "common/Handle.h"

#include <string>
#include <utility>
#include <vector>

typedef std::vector<std::wstring> Words;

// Set in the child's environment; a variable with an empty value is not there.
typedef std::vector<std::pair<std::wstring, std::wstring>> Variables;

struct ProgramResult {
    unsigned long exitCode = 0;
    std::string output;
    std::string errors;
};

class ChildProgram {
public:
    // Starts it in the folder in which this program was started. `program` is a full path; the words reach it
    // unchanged. What it prints goes to two files in `folder`, or where this program's own output goes when that is
    // empty. Standard input is this program's. It finds `password` in CLUSCTL_PASSWORD, and takes it out. Throws
    // Failure.
    ChildProgram(const std::wstring& program, const Words& words, const Variables& variables,
                 const std::wstring& folder, const Password* password = nullptr);

    // Waits for its end: it may be at work in a folder that goes next.
    ~ChildProgram();
    ChildProgram(const ChildProgram&) = delete;
    ChildProgram& operator=(const ChildProgram&) = delete;

    // Waits for its end. Throws Failure when its output cannot be read.
    ProgramResult Finish() const;

    // The first of them to end; all have to run.
    static std::size_t FirstToEnd(const std::vector<const ChildProgram*>& programs);

private:
    std::wstring m_folder;
    common::Handle m_process;
};

// Of this program.
std::wstring OwnPath();

#endif
