// A main.cf in a folder of its own, and the tools run on it in this process.
#ifndef TOOLTEST_H
#define TOOLTEST_H

#include "Run.h"

#include "common/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

class ToolTest : public ::testing::Test {
protected:
    ToolTest();

    // Two systems; group G with resources of several types, G-Mount online on NODE1; group H without a state.
    static const char* const Sample;

    void WriteFile(const std::wstring& suffix, const std::string& bytes) const; // L"" is the main.cf
    std::string ReadFile(const std::wstring& suffix) const;
    bool HasFile(const std::wstring& suffix) const;
    std::wstring Path(const std::wstring& suffix) const;

    // Runs a tool and gives what it prints on both streams, lines ended by \n. The arguments are separated by blanks.
    std::string Run(const std::string& tool, const std::string& arguments);
    std::string RunWith(const std::string& tool, const std::vector<std::string>& arguments);

    vcssim::Environment m_environment;
    int m_exitCode = -1; // of the last run
    std::vector<vcssim::OutputPiece> m_pieces;

private:
    const common::TemporaryFolder m_folder{L"vcssim"};
};

#endif
