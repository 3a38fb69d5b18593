// What a tool prints, and its exit code. Lines end with \n here; the line end of the options is put in when it is
// written.
#ifndef VCSSIM_OUTPUT_H
#define VCSSIM_OUTPUT_H

#include "Options.h"

#include <string>
#include <vector>

namespace vcssim {

struct OutputPiece {
    bool toErrors = false;
    std::string text;
};

class Output {
public:
    explicit Output(const Options& options) : m_options(options) {
    }

    void Print(const std::string& text);

    // The messages of the tools. A warning or an error makes the exit code 1.
    void Notice(const char* number, const std::string& text);
    void Warning(const char* number, const std::string& text);
    void Error(const char* number, const std::string& text);
    void EngineDown();
    // Where the real text is not known: marked as made up.
    void Simulated(const char* number, const std::string& text);
    // The simulator itself cannot go on; nothing printed before counts.
    void Failure(const std::string& text);
    void Usage(const std::string& text); // exit code 2

    int ExitCode() const {
        return m_exitCode;
    }
    const Options& Switches() const {
        return m_options;
    }
    // With the line ends of the options.
    std::vector<OutputPiece> Pieces() const;
    std::string Joined() const;

private:
    void Add(bool toErrors, const std::string& text);

    Options m_options;
    std::vector<OutputPiece> m_pieces;
    int m_exitCode = 0;
};

// The rows of -list: the first column padded, then the system.
struct ListRow {
    std::string name;
    std::string system;
};
void PrintList(Output& output, const std::vector<ListRow>& rows);

// The rows of -display and -state. `kind` is "Group", "Resource" or "System"; systems have no system column.
struct DisplayRow {
    std::string name;
    std::string attribute;
    std::string system;
    std::vector<std::string> parts; // of the value
};
void PrintDisplay(Output& output, const std::string& kind, const std::vector<DisplayRow>& rows);

std::string JoinedParts(const std::vector<std::string>& parts);
std::string Padded(const std::string& text, std::size_t width);

} // namespace vcssim

#endif
