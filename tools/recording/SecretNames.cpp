#include "SecretNames.h"

#include <algorithm>

namespace recording {

bool IsSecretPropertyName(const std::string& name) {
    std::string lower = name;
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    for (const char* const word : {"password", "secret", "key", "token"}) {
        if (lower.find(word) != std::string::npos) {
            return true;
        }
    }
    return false;
}

} // namespace recording
