// Secrets in the command lines and outputs of VCS tools. Pure functions.
#ifndef CLUS_CORE_TOOLSECRETS_H
#define CLUS_CORE_TOOLSECRETS_H

#include <string>

namespace clus {

// What stands for a secret.
const wchar_t SecretMask[] = L"***";

// Whether an attribute of this name holds a password: its name ends in "password", in any letter case.
bool IsSecretAttribute(const std::wstring& name);

// The secret of a command line: what it sets a password attribute to ("hares -modify RES Password x"), or asks for
// ("hares -list Password=x"), up to the end of the line. Takes it out of the line, where the mask stays, and gives it;
// empty when there is none.
std::wstring TakeSecret(std::wstring& commandLine);

// A tool's output with the mask in place of the values in the rows of password attributes (resource, attribute, system,
// value) and of `secret` wherever it occurs, with or without the quotes around it.
std::wstring WithoutSecrets(const std::wstring& output, const std::wstring& secret);

} // namespace clus

#endif
