// Programs of this build run as processes, in turns.
#ifndef PROCESSRUNS_H
#define PROCESSRUNS_H

#include "Measurement.h"

#include <cstddef>
#include <functional>
#include <string>

namespace bench {

const wchar_t ModelFile[] = L"model.json"; // in the current directory

// Command lines.
std::wstring Clusctl(const std::wstring& arguments);
std::wstring Bare(const std::wstring& command); // this program, which makes the command's cluster calls alone
std::wstring Quoted(const std::wstring& program);

// Runs a program without its output.
RunTime TimeOfRun(const std::wstring& commandLine);

// A contestant that runs the command line. What `prepare` does takes none of its time.
TimedContestant Program(const std::string& name, const std::wstring& commandLine,
                        const std::function<void()>& prepare = nullptr);

void WriteText(const wchar_t* path, const std::string& text);
void WriteModelFile(const std::string& text);

} // namespace bench

#endif
