#include "Secrets.h"

#include "common/Text.h"
#include "core/ToolSecrets.h"

#include <algorithm>

namespace vcssim {

namespace {

const char* const Mask = "***";

bool IsOneOf(const std::string& text, const std::vector<std::string>& others) {
    return std::find(others.begin(), others.end(), text) != others.end();
}

bool IsSecretAttribute(const std::string& name) {
    return clus::IsSecretAttribute(common::ToUtf16(name));
}

// Whether all of an argument is a secret.
bool IsSecret(const std::string& tool, const std::vector<std::string>& arguments, std::size_t place) {
    const std::string& argument = arguments[place];
    if (tool == "vcsencrypt") {
        return place != 0 || !IsOneOf(argument, {"-agent", "-vcs", "-help"});
    }
    // hares -modify RESOURCE Password VALUE, and the same with -global
    return tool == "hares" && place > 2 && (arguments[0] == "-modify" || arguments[0] == "-global") &&
           IsSecretAttribute(arguments[2]) && !argument.empty() &&
           !IsOneOf(argument, {"-sys", "-add", "-update", "-delete", "-keys"}) && arguments[place - 1] != "-sys";
}

// Where the secret of an argument begins; npos when it holds none.
std::size_t FindSecret(const std::string& tool, const std::vector<std::string>& arguments, std::size_t place) {
    const std::string& argument = arguments[place];
    if (tool == "hares" && place > 0 && arguments[0] == "-list") { // Password=VALUE
        const std::size_t equals = argument.find('=');
        const bool isAsked = equals != std::string::npos && equals + 1 < argument.size();
        return isAsked && IsSecretAttribute(argument.substr(0, equals)) ? equals + 1 : std::string::npos;
    }
    return IsSecret(tool, arguments, place) ? 0 : std::string::npos;
}

// The output with *** in place of the values in the rows of secret attributes.
std::string WithoutSecretRows(const std::string& output) {
    // One character per byte, as the library reads it.
    const std::wstring masked = clus::WithoutSecrets(std::wstring(output.begin(), output.end()), clus::ToolSecret());
    std::string bytes;
    for (const wchar_t c : masked) {
        bytes += static_cast<char>(c);
    }
    return bytes;
}

} // namespace

std::vector<std::string> WithoutSecrets(const std::string& tool, const std::vector<std::string>& arguments) {
    std::vector<std::string> shown = arguments;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::size_t begin = FindSecret(tool, arguments, i);
        if (begin != std::string::npos) {
            shown[i].replace(begin, std::string::npos, Mask);
        }
    }
    return shown;
}

std::string WithoutSecrets(const std::string& tool, const std::vector<std::string>& arguments, std::string output) {
    std::vector<std::string> secrets;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::size_t begin = FindSecret(tool, arguments, i);
        if (begin < arguments[i].size()) {
            secrets.push_back(arguments[i].substr(begin));
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
    return WithoutSecretRows(output);
}

} // namespace vcssim
