// Scripts that complete command lines in a shell: commands, options, the words and files that are their values.
#ifndef CLUSCTL_COMPLETION_H
#define CLUSCTL_COMPLETION_H

#include <CLI/App.hpp>

#include <string>

std::string BashCompletion(const CLI::App& root);
std::string PowerShellCompletion(const CLI::App& root);

#endif
