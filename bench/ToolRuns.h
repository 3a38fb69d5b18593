// The benchmark's own tool, started by the library in place of the VCS tools, or bare.
#ifndef TOOLRUNS_H
#define TOOLRUNS_H

#include "ProcessClock.h"

#include <winsock2.h>
#include <windows.h>

#include <cstddef>
#include <memory>
#include <string>

namespace bench {

// The folder that the benchmark lies in, with a backslash at the end.
std::wstring BenchFolder();

// The path of the small tool that lies beside the benchmark. Without arguments it prints BenchToolBytes bytes; see
// BenchTool.cpp.
std::wstring BenchToolPath();
const std::size_t BenchToolBytes = 14;

// Starts a program with its output in a file, waits for it and reads the file: at most 4,096 bytes of it. These are the
// calls that a run of a VCS tool needs. Throws std::runtime_error when one fails. `processorTime`, in seconds, is that
// of the program.
std::string OutputOfProcess(const std::wstring& program, const std::wstring& arguments,
                            double* processorTime = nullptr);

// Replaces the library's CreateProcessW while one lives.
class ToolReplacement {
public:
    // Every tool the library starts is this one.
    static ToolReplacement Start(const std::wstring& tool);
    // No tool is started: the output is written at once.
    static ToolReplacement Write(const std::string& output);

    ToolReplacement(ToolReplacement&& other) noexcept;
    ~ToolReplacement();

    // What writing outputs has taken until now: a tool would do that.
    RunTime Written() const;

private:
    struct Patch;
    explicit ToolReplacement(std::unique_ptr<Patch> patch);

    std::unique_ptr<Patch> m_patch;
};

} // namespace bench

#endif
