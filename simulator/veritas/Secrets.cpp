#include "Secrets.h"

#include <algorithm>

namespace vcssim {

namespace {

const char* const Mask = "***";

bool IsOneOf(const std::string& text, const std::vector<std::string>& others) {
    return std::find(others.begin(), others.end(), text) != others.end();
}

bool IsSecret(const std::string& tool, const std::vector<std::string>& arguments, std::size_t place) {
    const std::string& argument = arguments[place];
    if (tool == "vcsencrypt") {
        return place != 0 || !IsOneOf(argument, {"-agent", "-vcs", "-help"});
    }
    // hares -modify RESOURCE Password VALUE
    return tool == "hares" && place > 2 && arguments[0] == "-modify" && arguments[2] == "Password" &&
           !argument.empty() && !IsOneOf(argument, {"-sys", "-add", "-update", "-delete", "-keys"}) &&
           arguments[place - 1] != "-sys";
}

} // namespace

std::vector<std::string> WithoutSecrets(const std::string& tool, const std::vector<std::string>& arguments) {
    std::vector<std::string> shown = arguments;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        if (IsSecret(tool, arguments, i)) {
            shown[i] = Mask;
        }
    }
    return shown;
}

std::string WithoutSecrets(const std::string& tool, const std::vector<std::string>& arguments, std::string output) {
    std::vector<std::string> secrets;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        if (IsSecret(tool, arguments, i) && !arguments[i].empty()) {
            secrets.push_back(arguments[i]);
        }
    }
    // One secret may be part of another.
    std::sort(secrets.begin(), secrets.end(),
              [](const std::string& a, const std::string& b) { return a.size() > b.size(); });
    const std::size_t maskSize = std::string(Mask).size();
    for (const std::string& secret : secrets) {
        for (std::size_t at = 0; (at = output.find(secret, at)) != std::string::npos; at += maskSize) {
            output.replace(at, secret.size(), Mask);
        }
    }
    return output;
}

} // namespace vcssim
