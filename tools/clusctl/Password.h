// Passwords: from the environment or standard input, never from the command line.
#ifndef CLUSCTL_PASSWORD_H
#define CLUSCTL_PASSWORD_H

#include <string>

// The variable CLUSCTL_PASSWORD, which the processes started later do not see, or else the first line of standard
// input, typed unseen on a terminal. Throws Failure when there is none.
std::wstring ReadPassword();

// As an argument that reaches a program unchanged: in quotes when it holds a blank or a quote.
std::wstring AsArgument(const std::wstring& text);

// Overwrites the text.
void Forget(std::wstring& text);

#endif
