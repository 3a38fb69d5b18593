#include "PlainWords.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iterator>

namespace {

const char PlainMark = '\0'; // no argument holds one

} // namespace

std::vector<std::string> WithPlainWords(const std::vector<std::string>& arguments) {
    const auto mark = std::find(arguments.begin(), arguments.end(), TailMark);
    std::vector<std::string> words(arguments.begin(), mark);
    if (mark != arguments.end()) {
        std::transform(mark + 1, arguments.end(), std::back_inserter(words),
                       [](const std::string& word) { return PlainMark + word; });
    }
    return words;
}

void TakePlainWords(CLI::App& app) {
    for (CLI::Option* argument : app.get_options([](const CLI::Option* option) { return option->get_positional(); })) {
        argument->transform(&WithoutMark);
    }
    for (CLI::App* member : app.get_subcommands({})) {
        TakePlainWords(*member);
    }
}

bool IsPlain(const std::string& word) {
    return !word.empty() && word.front() == PlainMark;
}

std::string WithoutMark(const std::string& word) {
    return IsPlain(word) ? word.substr(1) : word;
}
