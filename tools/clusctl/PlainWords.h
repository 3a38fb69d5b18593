// The words behind "--" of a command line: neither options nor sub-commands, whatever they look like.
#ifndef CLUSCTL_PLAINWORDS_H
#define CLUSCTL_PLAINWORDS_H

#include <CLI/App.hpp>

#include <string>
#include <vector>

constexpr char TailMark[] = "--";

// The arguments without the first "--". The parser lets words behind it be plain only while a command still takes
// arguments, so they get a mark that lets it take them for nothing else.
std::vector<std::string> WithPlainWords(const std::vector<std::string>& arguments);

// Lets the arguments of `app`, and of all below it, be taken without the mark.
void TakePlainWords(CLI::App& app);

// Of a word that the parser left over.
bool IsPlain(const std::string& word);
std::string WithoutMark(const std::string& word);

#endif
