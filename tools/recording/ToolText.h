// The command lines and outputs of VCS tools as a recording has them: without secrets, and without names on demand.
#ifndef RECORDING_TOOLTEXT_H
#define RECORDING_TOOLTEXT_H

#include "common/Anonymiser.h"

#include <string>
#include <string_view>

namespace recording {

// Whether the tool only asks: no other one is run by a recording that allows no changes.
bool IsQuestion(const std::wstring& commandLine);

// The command line with the mask in place of what is secret.
std::wstring MaskedCommand(const std::wstring& commandLine);

// What the tool of this true command line printed, with the mask in place of what is secret. One character per byte,
// whole lines.
std::wstring MaskedOutput(const std::wstring& commandLine, const std::wstring& output);

// Names replaced, as far as the tool's columns say what is one.
std::string AnonymousCommand(const std::string& commandLine, common::Anonymiser& anonymiser);
std::string AnonymousOutput(const std::string& commandLine, const std::string& output, common::Anonymiser& anonymiser);

// What VCS calls states, attributes' values and the like: they are no names.
void KeepWordsOfVcs(common::Anonymiser& anonymiser);

} // namespace recording

#endif
