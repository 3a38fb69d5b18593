// The environment of this process.
#ifndef COMMON_ENVIRONMENT_H
#define COMMON_ENVIRONMENT_H

#include <string>

namespace common {

// Of any length. Empty when there is no such variable: an empty one counts as absent, as that is how a command prompt
// removes one.
std::wstring EnvironmentVariable(const wchar_t* name);

// The text with each %NAME% of an existing variable replaced; as it stands when that fails.
std::wstring ExpandVariables(const std::wstring& text);

} // namespace common

#endif
