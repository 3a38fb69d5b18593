// vcsencrypt: a word of letters that stands for the password. It cannot be turned back.
#include "Tools.h"

#include <cstdint>

namespace vcssim {

namespace {

const char* const Letters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
const std::size_t LetterCount = 52;
const std::size_t WordLength = 24;

std::string Word(const std::string& text) {
    std::string word;
    std::uint64_t hash = 14695981039346656037ULL;
    while (word.size() < WordLength) {
        for (const char c : text) {
            hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211ULL;
        }
        hash = (hash ^ (hash >> 29)) * 0xBF58476D1CE4E5B9ULL + word.size();
        word += Letters[(hash >> 32) % LetterCount];
    }
    return word;
}

char Folded(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool Shows(const std::string& word, const std::string& password) {
    for (std::size_t at = 0; at + password.size() <= word.size(); ++at) {
        std::size_t same = 0;
        while (same < password.size() && Folded(word[at + same]) == Folded(password[same])) {
            ++same;
        }
        if (same == password.size()) {
            return true;
        }
    }
    return false;
}

} // namespace

void RunVcsencrypt(Output& output, Arguments arguments) {
    const std::string use = arguments.Next();
    if (use != "-agent" && use != "-vcs") {
        throw UsageError();
    }
    if (arguments.IsEmpty()) {
        output.Simulated("99060", "There is no password to encrypt");
        return;
    }
    std::string password = arguments.Next();
    while (!arguments.IsEmpty()) {
        password += " " + arguments.Next();
    }
    // By chance a short password may occur in its own word.
    std::string word;
    std::string salt = use;
    do {
        salt += ' ';
        word = Word(salt + password);
    } while (!password.empty() && Shows(word, password));
    if (output.Switches().encryptPrompts) {
        output.Print("Enter Password:\nEnter Again:\n");
    }
    output.Print(word + "\n");
}

} // namespace vcssim
