// Passwords: from the environment or standard input, never from the command line.
#ifndef CLUSCTL_PASSWORD_H
#define CLUSCTL_PASSWORD_H

#include <string>

// Takes the variable CLUSCTL_PASSWORD out of the environment, so that no process that is started gets it. To be called
// before anything else. Throws Failure when it cannot be taken out.
void TakePasswordFromEnvironment();

// What that variable held, or else the first line of standard input, typed unseen on a terminal. Throws Failure when
// there is none.
std::wstring ReadPassword();

// As an argument that reaches a program unchanged: in quotes when it holds a blank or a quote.
std::wstring AsArgument(const std::wstring& text);

// Overwrites the text.
void Forget(std::wstring& text);

#endif
