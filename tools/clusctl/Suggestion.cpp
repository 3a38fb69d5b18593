#include "Suggestion.h"

#include "Text.h"

#include <algorithm>

namespace {

// How many characters have to be inserted, left out, replaced or swapped with their neighbour.
size_t Distance(const std::string& from, const std::string& to) {
    std::vector<std::vector<size_t>> cost(from.size() + 1, std::vector<size_t>(to.size() + 1));
    for (size_t i = 0; i <= from.size(); ++i) {
        for (size_t j = 0; j <= to.size(); ++j) {
            if (i == 0 || j == 0) {
                cost[i][j] = i + j;
                continue;
            }
            const size_t replaced = cost[i - 1][j - 1] + (from[i - 1] == to[j - 1] ? 0 : 1);
            cost[i][j] = std::min({cost[i - 1][j] + 1, cost[i][j - 1] + 1, replaced});
            if (i > 1 && j > 1 && from[i - 1] == to[j - 2] && from[i - 2] == to[j - 1]) {
                cost[i][j] = std::min(cost[i][j], cost[i - 2][j - 2] + 1);
            }
        }
    }
    return cost[from.size()][to.size()];
}

const size_t LongestWord = 40; // a longer one is no misspelt word, and would cost time

// The length of the words that both begin with, with the blanks behind them.
size_t SharedWords(const std::string& one, const std::string& other) {
    const auto end = std::mismatch(one.begin(), one.end(), other.begin(), other.end()).first;
    const size_t blank = std::string(one.begin(), end).rfind(' ');
    return blank == std::string::npos ? 0 : blank + 1;
}

// More than a third of the letters wrong is another word. The beginning of a word stands for it. Words before it that
// are right tell nothing of how near it is.
bool IsNear(const std::string& word, const std::string& candidate, size_t distance) {
    const size_t letters = word.size() - SharedWords(word, candidate);
    return distance <= std::max<size_t>(1, letters / 3) || (letters >= 3 && StartsWith(candidate, word)) ||
           StartsWith(candidate, word + " ");
}

} // namespace

std::string DidYouMean(const std::string& word, const std::vector<std::string>& candidates) {
    const std::string wanted = Lower(word);
    const std::string* nearest = nullptr;
    size_t least = 0;
    if (wanted.size() > 1 && wanted.size() <= LongestWord) {
        for (const std::string& candidate : candidates) {
            const size_t distance = Distance(wanted, Lower(candidate));
            if (IsNear(wanted, Lower(candidate), distance) && (nearest == nullptr || distance < least)) {
                nearest = &candidate;
                least = distance;
            }
        }
    }
    return nearest == nullptr ? std::string() : "; did you mean " + Quoted(*nearest) + "?";
}
